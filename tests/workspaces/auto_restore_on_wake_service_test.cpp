#include "workspaces/auto_restore_on_wake_service.h"

#include <gtest/gtest.h>

#include "foundation/manual_queue.h"
#include "platform/sim/simulated_desktop.h"
#include "support/temporary_folder.h"
#include "support/test_logging.h"
#include "workspaces/display_arrangement_capture.h"
#include "workspaces/display_arrangement_stability_service.h"
#include "workspaces/display_change_monitor_service.h"
#include "workspaces/workspace_restorer.h"
#include "workspaces/workspace_service.h"

namespace corvetta {
namespace {

using namespace std::chrono_literals;

class RecordingRestorer final : public WorkspaceRestorer {
public:
    bool isRestoring() const override { return restoring; }
    const std::string& restorationStatusMessage() const override { return status; }
    void restore(const Workspace&, RestoreTrigger trigger, RestoreCompletion) override {
        triggers.push_back(trigger);
    }
    bool restoring = false;
    std::string status;
    std::vector<RestoreTrigger> triggers;
};

const SimulatedDisplay kLaptop{
    .id = 1, .frame = {0, 0, 1440, 900}, .visibleFrame = {0, 0, 1440, 875}};
const SimulatedDisplay kMonitor{
    .id = 2, .frame = {1440, 0, 1920, 1080}, .visibleFrame = {1440, 0, 1920, 1080}};

// A desk of two displays, and "Work" saved on it and restored last, with auto-restore turned on.
struct Desk {
    Desk() {
        defaults.set(AutoRestoreOnWakeService::kEnabledKey, true);
        Workspace work{.id = Uuid::random(),
                       .name = "Work",
                       .displayArrangement =
                           captureDisplayArrangement(desktop.screenPort().screens(), clock.now())};
        defaults.set(WorkspaceRestorer::kLastRestoredWorkspaceIDKey, work.id->string());
        workspaces.add(work);
        service.start();
    }
    long logged(const std::string& prefix) const {
        const auto lines = log.messages("AutoRestoreOnWakeService");
        return std::count_if(lines.begin(), lines.end(),
                             [&](const auto& line) { return line.starts_with(prefix); });
    }
    std::string lastLine() const { return log.messages("AutoRestoreOnWakeService").back(); }

    testing::TemporaryFolder folder;
    ManualClock clock;
    ManualQueue queue{clock};
    NotificationCenter notifications;
    testing::TestLogging log{notifications, clock};
    InMemoryPreferences defaults;
    SimulatedDesktop desktop{{.displays = {kLaptop, kMonitor}}, queue};
    WorkspaceService workspaces{defaults, notifications, clock, log.logging, folder.path()};
    DisplayArrangementStabilityService stability{clock, log.logging};
    DisplayChangeMonitorService monitor{desktop.screenPort(), notifications, clock, log.logging};
    RecordingRestorer restorer;
    AutoRestoreOnWakeService service{{workspaces, restorer, monitor, stability,
                                      desktop.sleepWakePort(), desktop.accessibilityPort(),
                                      desktop.applicationsPort(), notifications, defaults, queue,
                                      log.logging}};
};

class AutoRestoreTest : public ::testing::Test, public Desk {};

TEST_F(AutoRestoreTest, TwoWakesSettleOnceAfterTheSecondGoesQuiet) {
    service.start();
    desktop.sleepAndWake();
    queue.advance(200ms);
    desktop.sleepAndWake();
    queue.advance(399ms);
    EXPECT_EQ(logged("🔌 Auto-restore quiescence settled"), 0);
    queue.advance(1ms);
    const std::vector<std::string> lines{
        "AutoRestoreOnWakeService started",
        "🔌 Auto-restore signal received (system did wake)",
        "🔌 Auto-restore signal received (system did wake)",
        "🔌 Auto-restore quiescence settled (quiet period), signal: system did wake",
        "⏱ AUTO-RESTORE trigger 'Work' (system woke from sleep)",
        "💤 Waiting for AX writes to be accepted before restoring 'Work'"};
    EXPECT_EQ(log.messages(service.serviceName()), lines);
    EXPECT_EQ(restorer.triggers, std::vector{RestoreTrigger::automatic});
}

TEST_F(AutoRestoreTest, EndlessSignalsSettleEightSecondsAfterTheFirst) {
    notifications.post(kDisplayArrangementDidChangeNotification);
    for (int i = 0; i < 26; ++i) {
        queue.advance(300ms);
        notifications.post(kDisplayArrangementDidChangeNotification);
    }
    queue.advance(199ms);
    EXPECT_EQ(logged("🔌 Auto-restore quiescence settled"), 0);
    queue.advance(1ms);
    EXPECT_EQ(logged("🔌 Auto-restore quiescence settled (max wait), signal: display "
                     "configuration changed"),
              1);
}

TEST_F(AutoRestoreTest, DisplayLeavesAndComesBackRestoringOnceEachWay) {
    const std::vector<SimulatedDisplay> one{kLaptop}, both{kLaptop, kMonitor};
    const struct {
        std::vector<SimulatedDisplay> displays;
        std::string line;
        std::size_t restores;
    } steps[] = {
        {one, "⏱ AUTO-RESTORE trigger 'Work' (display disconnected)", 1},
        {one, "Auto-restore skipped: within cooldown window", 1},
        // The cooldown left the missing flag as it was.
        {one, "Auto-restore skipped: a display 'Work' needs is still missing", 1},
        {both, "⏱ AUTO-RESTORE trigger 'Work' (display reconnected)", 2},
        {both, "Auto-restore skipped: within cooldown window", 2},
        // Coming back cleared the flag.
        {both, "Auto-restore skipped: displays already present, nothing to recover", 2},
    };
    for (const auto& step : steps) {
        const auto before = log.messages(service.serviceName()).size();
        desktop.setDisplays(step.displays);
        queue.advance(2s);
        const auto lines = log.messages(service.serviceName());
        EXPECT_NE(std::find(lines.begin() + before, lines.end(), step.line), lines.end())
            << step.line;
        EXPECT_EQ(restorer.triggers.size(), step.restores) << step.line;
    }
}

TEST(AutoRestoreOnWakeService, SkipsWhatTheStoresRuleOut) {
    const struct {
        std::function<void(Desk&)> setUp;
        std::string line;
    } cases[] = {
        {[](auto& t) { t.defaults.remove(AutoRestoreOnWakeService::kEnabledKey); },
         "Auto-restore skipped: feature disabled"},
        {[](auto& t) { t.restorer.restoring = true; },
         "Auto-restore skipped: a restoration is already in progress"},
        {[](auto& t) { t.defaults.remove(WorkspaceRestorer::kLastRestoredWorkspaceIDKey); },
         "Auto-restore skipped: no last-restored workspace on record"},
        {[](auto& t) {
             t.defaults.set(WorkspaceRestorer::kLastRestoredWorkspaceIDKey, "not an id");
         },
         "Auto-restore skipped: no last-restored workspace on record"},
        {[](auto& t) { t.workspaces.remove(t.workspaces.workspaces().front().id); },
         "Auto-restore skipped: no last-restored workspace on record"},
        {[](auto& t) { t.workspaces.setActiveSpaceId(Uuid::random()); },
         "Auto-restore skipped: 'Work' belongs to a different space than the active one"},
    };
    for (const auto& each : cases) {
        Desk desk;
        each.setUp(desk);
        desk.desktop.sleepAndWake();
        desk.queue.advance(1s);
        EXPECT_EQ(desk.lastLine(), each.line);
        EXPECT_TRUE(desk.restorer.triggers.empty()) << each.line;
    }
}

TEST_F(AutoRestoreTest, WaitsForAccessibilityWritesBeforeRestoring) {
    desktop.addApplication({.pid = 50,
                            .bundleIdentifier = "com.example.editor",
                            .name = "Editor",
                            .windows = {{.number = 7, .frame = {10, 40, 600, 400}}}});
    desktop.focusWindow(7);
    desktop.setApplicationUnresponsive(50, true);
    desktop.sleepAndWake();
    queue.advance(1400ms);
    desktop.setApplicationUnresponsive(50, false);
    // Polls at 0.3 s steps: the first after it answers again is 1.2 s after the trigger.
    queue.advance(199ms);
    EXPECT_TRUE(restorer.triggers.empty());
    queue.advance(1ms);
    EXPECT_EQ(restorer.triggers.size(), 1u);
    // The probe wrote the window's own position back: one write, the window unmoved.
    EXPECT_EQ(desktop.frameWriteCount(7), 1);
    EXPECT_EQ(desktop.windowFrame(7), (Rect{10, 40, 600, 400}));
}

TEST_F(AutoRestoreTest, RestoresAnywayWhenAccessibilityNeverAccepts) {
    desktop.setAccessibilityTrusted(false);
    desktop.sleepAndWake();
    queue.advance(400ms);
    desktop.sleepAndWake();
    queue.advance(9999ms);
    EXPECT_TRUE(restorer.triggers.empty());
    EXPECT_EQ(lastLine(), "Auto-restore skipped: a restoration is already in progress");
    queue.advance(1ms);
    EXPECT_EQ(lastLine(), "💤 AX readiness probe timed out after 10.0s — restoring anyway");
    EXPECT_EQ(restorer.triggers.size(), 1u);
}

}  // namespace
}  // namespace corvetta
