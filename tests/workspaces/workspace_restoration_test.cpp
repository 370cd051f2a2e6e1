#include "workspaces/workspace_restoration.h"

#include <algorithm>

#include <gtest/gtest.h>

#include "platform/sim/simulated_desktop.h"
#include "support/log_messages.h"
#include "support/manual_plumbing.h"
#include "support/temporary_folder.h"
#include "workspaces/live_windows.h"
#include "workspaces/window_matching.h"

namespace corvetta::testing {
namespace {

using namespace std::chrono_literals;

constexpr const char* kUuidA = "A0000000-0000-0000-0000-00000000000A";
constexpr const char* kUuidB = "B0000000-0000-0000-0000-00000000000B";

SimulatedApplication app(ProcessId pid, const std::string& id, std::vector<SimulatedWindow> w) {
    return SimulatedApplication{
        .pid = pid, .bundleIdentifier = id, .name = id, .windows = std::move(w)};
}

// Starts 2 s after it is launched and shows a window then, 1 s, 2 s and 4 s later.
SimulatedApplication slowApplication() {
    auto slow = app(600, "com.example.slow", {});
    for (const int second : {0, 1, 2, 4}) {
        slow.windows.push_back({.number = static_cast<WindowNumber>(61 + second),
                                .title = "slow " + std::to_string(second),
                                .frame = {0, 25, 200, 200},
                                .appearsAfter = std::chrono::seconds(second)});
    }
    slow.launchDelay = std::chrono::seconds(2);
    return slow;
}

// A (1440x900, menu bar 25) and B (1920x1080) to its right. The editor opens "Untitled" windows
// from its menu; the terminal sizes itself in 10x20 cells; chat is never part of the workspace;
// the browser and an application that never shows a window are installed and not running.
SimulatedDesktopSetup desk() {
    SimulatedDesktopSetup s;
    s.displays = {{1, "Built-in", {0, 0, 1440, 900}, {0, 0, 1440, 875}, 2, true, {kUuidA}},
                  {2, "Dell", {1440, 0, 1920, 1080}, {1440, 0, 1920, 1080}, 1, false, {kUuidB}}};
    s.applications = {
        app(100, "com.example.editor",
            {{.number = 11, .title = "main.cpp", .frame = {1600, 100, 800, 600}},
             {.number = 12, .title = "notes", .frame = {100, 100, 500, 400}},
             {.number = 13, .title = "scratch", .frame = {50, 50, 300, 200}, .minimized = true}}),
        app(200, "com.example.terminal",
            {{.number = 21,
              .title = "zsh",
              .frame = {0, 25, 400, 300},
              .resizeIncrements = Size{10, 20}},
             {.number = 22, .title = "top", .frame = {1440, 0, 1920, 1080}, .fullScreen = true}}),
        app(300, "com.example.chat",
            {{.number = 31, .title = "general", .frame = {0, 25, 600, 500}}}),
    };
    s.applications[0].menus = {
        {"File",
         {{.title = "New Window",
           .key = "N",
           .opensWindow = SimulatedWindow{.title = "Untitled", .frame = {40, 60, 700, 500}}}}}};
    s.installed = {app(400, "com.example.browser",
                       {{.number = 41, .title = "Start", .frame = {0, 25, 900, 700}}}),
                   app(500, "com.example.silent", {}), slowApplication()};
    s.frontmost = 200;
    return s;
}

class WorkspaceRestorationTest : public ::testing::Test {
protected:
    ProcessPlumbing plumbingWithFolder() {
        auto p = plumbing.on(sim);
        p.configFolder = folder.path();
        return p;
    }

    // Saves what stands now, as the user does before rearranging.
    Workspace capture(std::vector<std::string> bundles = {"com.example.editor",
                                                          "com.example.terminal"}) {
        return root.workspaceCapture.captureWorkspace("Work", bundles).value();
    }

    RestoreReport restore(const Workspace& workspace,
                          RestoreTrigger trigger = RestoreTrigger::user) {
        std::optional<RestoreReport> report;
        root.workspaceRestoration.restore(workspace, trigger,
                                          [&](const RestoreReport& r) { report = r; });
        for (int i = 0; i < 400 && !report; ++i) {
            plumbing.queue.advance(50ms);
        }
        EXPECT_TRUE(report) << "the restoration never finished";
        return report.value_or(RestoreReport{});
    }

    std::vector<WindowNumber> frontToBack() {
        return sim.windowListPort().windowNumbersFrontToBack();
    }
    bool logged(const std::string& text) const {
        const auto messages = loggedMessages(plumbing.logbook);
        return std::ranges::any_of(
            messages, [&](const std::string& m) { return m.find(text) != std::string::npos; });
    }

    ManualPlumbing plumbing{0};
    TemporaryFolder folder;
    SimulatedDesktop sim{desk(), plumbing.queue};
    ServiceRoot root{plumbingWithFolder()};
};

TEST_F(WorkspaceRestorationTest, PutsEveryWindowBackWithItsStackingAndStateWithoutDuplicates) {
    const Workspace saved = capture();
    const auto savedOrder = frontToBack();

    // The user rearranges: windows dragged, one closed, full screen left, the minimized one
    // brought back, another window focused.
    sim.dragWindow(11, {0, 25, 300, 300});
    sim.closeWindow(12);
    ASSERT_EQ(root.plumbing.desktop.accessibilityPort().setAttributeValue(
                  *sim.windowElement(22), AXAttribute::kFullScreen, false),
              AXErrorCode::success);
    ASSERT_EQ(root.plumbing.desktop.accessibilityPort().setAttributeValue(
                  *sim.windowElement(13), AXAttribute::kMinimized, false),
              AXErrorCode::success);
    sim.dragWindow(21, {700, 400, 600, 400});
    sim.focusWindow(31);

    const auto report = restore(saved);

    EXPECT_EQ(report.windowsSaved, 5);
    EXPECT_EQ(report.windowsPlaced, 5);
    EXPECT_EQ(report.windowsOpened, 1);
    EXPECT_TRUE(report.failedApplications.empty());
    EXPECT_EQ(report.summary, "Restored 'Work': 5 of 5 windows placed, 1 opened");
    EXPECT_EQ(sim.windowFrame(11), Rect(1600, 100, 800, 600));
    EXPECT_EQ(sim.windowFrame(21), Rect(0, 25, 400, 300));
    EXPECT_TRUE(sim.window(22)->fullScreen);
    EXPECT_TRUE(sim.window(13)->minimized);
    // The closed window came back through the menu, once, where "notes" stood.
    const auto editorWindows = root.plumbing.desktop.accessibilityPort().copyAttributeValue(
        root.plumbing.desktop.accessibilityPort().applicationElement(100), AXAttribute::kWindows);
    ASSERT_TRUE(editorWindows);
    EXPECT_EQ(std::get<std::vector<AXElement>>(*editorWindows).size(), 3U);
    const auto reopened = frontToBack();
    const auto untitled = std::ranges::find_if(
        reopened, [&](WindowNumber n) { return sim.window(n)->title == "Untitled"; });
    ASSERT_NE(untitled, reopened.end());
    EXPECT_EQ(sim.windowFrame(*untitled), Rect(100, 100, 500, 400));
    // The saved stacking among the workspace's windows, chat left alone behind or between them.
    std::vector<WindowNumber> restoredOrder;
    for (const auto n : reopened) {
        if (n != 31) {
            restoredOrder.push_back(n == *untitled ? 12 : n);
        }
    }
    std::vector<WindowNumber> expectedOrder;
    for (const auto n : savedOrder) {
        if (n != 31 && n != 13) {
            expectedOrder.push_back(n);
        }
    }
    EXPECT_EQ(restoredOrder, expectedOrder);
    EXPECT_TRUE(sim.window(31).has_value());
    EXPECT_EQ(plumbing.defaults.string(WorkspaceRestorer::kLastRestoredWorkspaceIDKey),
              saved.id->string());
    EXPECT_FALSE(root.workspaceRestoration.isRestoring());
    EXPECT_EQ(root.workspaceRestoration.restorationStatusMessage(), "");
}

TEST_F(WorkspaceRestorationTest, WindowsOfAGoneDisplayLandOnTheOneLeft) {
    const Workspace saved = capture({"com.example.editor"});
    sim.setDisplays({desk().displays[0]});
    plumbing.queue.runUntilIdle();

    const auto report = restore(saved);

    EXPECT_EQ(report.windowsPlaced, 3);
    const auto onA = sim.windowFrame(11);
    ASSERT_TRUE(onA);
    EXPECT_TRUE(Rect(0, 25, 1440, 875).contains(*onA)) << onA->description();
    EXPECT_TRUE(logged("(replacement)"));
}

TEST_F(WorkspaceRestorationTest, AllMovesAreInFlightTogether) {
    // Three windows that take each frame 100 ms late: one after another the moves would take
    // three times one move's 150 ms of retries.
    for (const WindowNumber n : {11, 12, 21}) {
        sim.setWindowBehaviour(n, [](SimulatedWindow& w) {
            w.applyDelay = 100ms;
            w.resizeIncrements.reset();
        });
    }
    const Workspace saved = capture();
    sim.dragWindow(11, {0, 25, 300, 300});
    sim.dragWindow(12, {500, 25, 300, 300});
    sim.dragWindow(21, {800, 25, 300, 300});

    std::optional<RestoreReport> report;
    root.workspaceRestoration.restore(saved, RestoreTrigger::user,
                                      [&](const RestoreReport& r) { report = r; });
    plumbing.queue.runUntilIdle();
    plumbing.queue.advance(150ms);
    ASSERT_TRUE(report);
    EXPECT_EQ(report->windowsPlaced, 5);
}

TEST_F(WorkspaceRestorationTest, LaunchesMissingAppsUnlessToldNotAndReportsThoseThatFail) {
    Workspace saved = capture();
    saved.windowInfos.push_back(
        WindowInfo{.frame = {300, 200, 800, 600},
                   .monitorID = std::string(kUuidA),
                   .appBundleIdentifier = std::string("com.example.browser"),
                   .windowTitle = std::string("Start"),
                   .windowIndex = 0});
    saved.windowInfos.push_back(WindowInfo{.frame = {0, 25, 100, 100},
                                           .appBundleIdentifier = std::string("com.example.gone"),
                                           .windowIndex = 0});

    saved.skipLaunchMissingApps = true;
    auto report = restore(saved);
    EXPECT_EQ(report.windowsPlaced, 5);
    EXPECT_TRUE(report.failedApplications.empty());
    EXPECT_TRUE(
        runningCopiesOf(root.plumbing.desktop.applicationsPort(), "com.example.browser").empty());

    saved.skipLaunchMissingApps.reset();
    report = restore(saved);
    EXPECT_EQ(report.windowsPlaced, 6);
    EXPECT_EQ(sim.windowFrame(41), Rect(300, 200, 800, 600));
    EXPECT_EQ(report.failedApplications, std::vector<std::string>{"com.example.gone"});
    EXPECT_EQ(report.summary, "Restored 'Work': 6 of 7 windows placed; failed: com.example.gone");
    // The browser runs once: a second restore moves its window, never launches another copy.
    report = restore(saved);
    EXPECT_EQ(
        runningCopiesOf(root.plumbing.desktop.applicationsPort(), "com.example.browser").size(),
        1U);
}

TEST_F(WorkspaceRestorationTest, ASlowAppIsWaitedForWhileItKeepsShowingWindows) {
    Workspace saved;
    saved.id = Uuid::random();
    saved.name = "Slow";
    for (int i = 0; i < 4; ++i) {
        saved.windowInfos.push_back(
            WindowInfo{.frame = {300.0 + 100 * i, 200, 400, 300},
                       .monitorID = std::string(kUuidA),
                       .appBundleIdentifier = std::string("com.example.slow"),
                       .windowTitle = "slow " + std::to_string(i == 3 ? 4 : i),
                       .windowIndex = i});
    }
    std::optional<RestoreReport> report;
    root.workspaceRestoration.restore(saved, RestoreTrigger::user,
                                      [&](const RestoreReport& r) { report = r; });
    // Launched at 0, running at 2 s, windows at 2, 3 and 4 s; each restarts the 1.5 s wait, so
    // the wait ends at 5.5 s, before the window of 6 s.
    plumbing.queue.advance(5400ms);
    EXPECT_FALSE(report);
    EXPECT_EQ(root.workspaceRestoration.restorationStatusMessage(),
              "Waiting for com.example.slow…");
    plumbing.queue.advance(200ms);
    ASSERT_TRUE(report);
    EXPECT_EQ(report->windowsPlaced, 3);
    EXPECT_EQ(sim.windowFrame(61), Rect(300, 200, 400, 300));
    EXPECT_EQ(sim.windowFrame(63), Rect(500, 200, 400, 300));
    EXPECT_TRUE(report->failedApplications.empty());
}

TEST_F(WorkspaceRestorationTest, DeeplinksAreOpenedLastAndCounted) {
    Workspace saved = capture({"com.example.editor"});
    saved.appDeeplinks =
        std::map<std::string, std::string>{{"com.example.editor#0", "https://example.com/docs"}};
    const auto report = restore(saved);
    EXPECT_EQ(report.deeplinksOpened + report.deeplinksRaised, 1);
    EXPECT_TRUE(logged("🔗 All deeplinks scheduled (staggered per-app)"));
}

TEST_F(WorkspaceRestorationTest, OtherAppsAreClosedOnRequestAndHiddenByAnAutomaticRestore) {
    Workspace saved = capture();
    saved.closeNonWorkspaceWindows = true;

    restore(saved, RestoreTrigger::automatic);
    EXPECT_TRUE(
        logged("Automatic restore of 'Work': not closing other apps (hiding them instead)"));
    EXPECT_TRUE(sim.window(31).has_value());
    EXPECT_TRUE(std::ranges::none_of(frontToBack(), [](WindowNumber n) { return n == 31; }));

    restore(saved, RestoreTrigger::user);
    EXPECT_FALSE(sim.window(31).has_value());
    EXPECT_TRUE(sim.window(11).has_value());
}

TEST_F(WorkspaceRestorationTest, OneRestorationAtATimeWithItsStepInTheStatus) {
    Workspace saved = capture();
    // An application that starts and never shows a window keeps the first restoration waiting.
    saved.windowInfos.push_back(WindowInfo{.frame = {0, 25, 100, 100},
                                           .appBundleIdentifier = std::string("com.example.silent"),
                                           .windowIndex = 0});
    std::optional<RestoreReport> first;
    root.workspaceRestoration.restore(saved, RestoreTrigger::user,
                                      [&](const RestoreReport& r) { first = r; });
    plumbing.queue.advance(1s);
    EXPECT_TRUE(root.workspaceRestoration.isRestoring());
    EXPECT_FALSE(root.workspaceRestoration.restorationStatusMessage().empty());

    const auto refused = restore(saved);
    EXPECT_FALSE(refused.began);
    EXPECT_EQ(refused.summary, WorkspaceRestoration::kBusy);
    EXPECT_FALSE(first);
}

// The whole way from the system's signal to the windows: the last restored workspace comes back
// after a wake, and after a display left it is laid out on the one that remains.
TEST_F(WorkspaceRestorationTest, WakeAndDisplayChangesBringTheLastRestoredWorkspaceBack) {
    plumbing.defaults.set(AutoRestoreOnWakeService::kEnabledKey, true);
    root.autoRestoreOnWake.start();
    const Workspace saved = capture({"com.example.editor"});
    restore(saved);

    sim.dragWindow(11, {0, 25, 300, 300});
    sim.sleepAndWake();
    plumbing.queue.advance(3s);
    EXPECT_EQ(sim.windowFrame(11), Rect(1600, 100, 800, 600));
    EXPECT_TRUE(logged("⏱ AUTO-RESTORE trigger 'Work'"));

    sim.setDisplays({desk().displays[0]});
    plumbing.queue.advance(3s);
    const auto onA = sim.windowFrame(11);
    ASSERT_TRUE(onA);
    EXPECT_TRUE(Rect(0, 25, 1440, 875).contains(*onA)) << onA->description();
    // Not where the system left the stranded window (the top-left corner), but in proportion to
    // where it stood on B (160 of 1920 across, 280 of 1080 down) within A's visible frame.
    EXPECT_EQ(onA->origin, (Point{120, 251}));
    EXPECT_TRUE(logged("display disconnected"));
}

// Saved windows (title, index) against live titles, front to back.
TEST(WindowMatching, TitleThenIndexThenOrderEachLiveWindowTakenOnce) {
    using R = WindowMatchRule;
    struct Case {
        const char* what;
        std::vector<SavedWindowIdentity> saved;
        std::vector<std::string> live;
        std::vector<WindowMatch> matches;
        std::vector<std::size_t> unmatchedSaved;
        std::vector<std::size_t> unmatchedLive;
    };
    const std::vector<Case> cases = {
        {"titles win over positions",
         {{"b", 0}, {"a", 1}},
         {"a", "b"},
         {{0, 1, R::title}, {1, 0, R::title}},
         {},
         {}},
        {"a renamed window keeps its index",
         {{"a", 0}, {"old", 1}, {"c", 2}},
         {"c", "new", "a"},
         {{0, 2, R::title}, {1, 1, R::index}, {2, 0, R::title}},
         {},
         {}},
        {"index taken by a title match: next free in order",
         {{"x", 0}, {"a", 1}},
         {"a", "y"},
         {{0, 1, R::order}, {1, 0, R::title}},
         {},
         {}},
        {"equal titles pair in order",
         {{"zsh", 0}, {"zsh", 1}},
         {"zsh", "zsh", "zsh"},
         {{0, 0, R::title}, {1, 1, R::title}},
         {},
         {2}},
        {"more saved than live: the rest must be opened",
         {{"a", 0}, {"b", 1}, {std::nullopt, std::nullopt}},
         {"b"},
         {{1, 0, R::title}},
         {0, 2},
         {}},
        {"no titles, no indices: order",
         {{"", std::nullopt}, {}},
         {"p", "q"},
         {{0, 0, R::order}, {1, 1, R::order}},
         {},
         {}},
        {"an index out of range falls back to order",
         {{"gone", 7}},
         {"p"},
         {{0, 0, R::order}},
         {},
         {}},
    };
    for (const auto& c : cases) {
        const auto result = matchWindows(c.saved, c.live);
        EXPECT_EQ(result.matches, c.matches) << c.what;
        EXPECT_EQ(result.unmatchedSaved, c.unmatchedSaved) << c.what;
        EXPECT_EQ(result.unmatchedLive, c.unmatchedLive) << c.what;
    }
}

}  // namespace
}  // namespace corvetta::testing
