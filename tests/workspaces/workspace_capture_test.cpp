#include "workspaces/workspace_capture.h"

#include <gtest/gtest.h>

#include "foundation/manual_queue.h"
#include "platform/sim/simulated_desktop.h"
#include "workspace_store_fixture.h"

namespace corvetta::testing {
namespace {

constexpr const char* kUuidA = "A0000000-0000-0000-0000-00000000000A";
constexpr const char* kUuidB = "B0000000-0000-0000-0000-00000000000B";

// Two displays: A 1440x900 (menu bar 25) and B 1920x1080 to its right, tops aligned. The
// terminal is in front with a full-screen window on B and one straddling above A and B; the
// editor has a window on B, a minimized one and a floating palette; the Dock, an excluded game,
// an accessory helper and a hung application have windows too.
SimulatedDesktopSetup desk() {
    SimulatedDesktopSetup s;
    s.displays = {
        {1, "Built-in", {0, 0, 1440, 900}, {0, 0, 1440, 875}, 2, true, {kUuidA}},
        {2, "Dell", {1440, -180, 1920, 1080}, {1440, -180, 1920, 1080}, 1, false, {kUuidB}}};
    const auto app = [](ProcessId pid, const std::string& id, std::vector<SimulatedWindow> w) {
        return SimulatedApplication{
            .pid = pid, .bundleIdentifier = id, .name = id, .windows = std::move(w)};
    };
    s.applications = {
        app(100, "com.example.editor",
            {{.number = 11, .title = "main.cpp", .frame = {1600, 100, 800, 600}},
             {.number = 12, .title = "old.txt", .frame = {0, 25, 300, 200}, .minimized = true},
             {.number = 13, .frame = {0, 25, 100, 100}, .subrole = "AXFloatingWindow"}}),
        app(200, "com.example.terminal",
            {{.number = 21, .title = "zsh", .frame = {0, 25, 400, 300}},
             {.number = 22, .title = "top", .frame = {1440, 0, 1920, 1080}, .fullScreen = true},
             {.number = 23, .title = "log", .frame = {1200, -400, 400, 600}}}),
        app(300, "com.apple.dock", {{.number = 31, .frame = {0, 850, 1440, 50}}}),
        app(400, "org.example.Game", {{.number = 41, .frame = {0, 25, 640, 480}}}),
        app(500, "com.example.helper", {{.number = 51, .frame = {0, 25, 50, 50}}}),
        app(600, "com.example.hung", {{.number = 61, .frame = {0, 25, 50, 50}}}),
    };
    s.applications[0].menus = {{"File", {{.title = "New Window", .key = "N"}}}};
    s.applications[4].activationPolicy = ActivationPolicy::accessory;
    s.applications[5].unresponsive = true;
    s.frontmost = 200;
    return s;
}

class WorkspaceCaptureTest : public WorkspaceStoreTest {
protected:
    void SetUp() override {
        defaults.set(WorkspaceCapture::kUserExcludedBundleIDsKey,
                     std::vector<std::string>{"ORG.example.game"});
    }

    ManualQueue queue{clock};
    SimulatedDesktop sim{desk(), queue};
    WorkspaceCapture capture{sim.accessibilityPort(),
                             sim.windowListPort(),
                             sim.applicationsPort(),
                             sim.screenPort(),
                             defaults,
                             startWorkspaces(),
                             clock,
                             log.logging};
};

TEST_F(WorkspaceCaptureTest, HoldsTheStandardWindowsOfRegularApplicationsFrontToBack) {
    const auto window = [](const char* app, const char* title, Rect frame, const char* display,
                           int z, int index) {
        return WindowInfo{.frame = frame,
                          .monitorID = std::string(display),
                          .appBundleIdentifier = std::string("com.example.") + app,
                          .zOrder = z,
                          .windowTitle = std::string(title),
                          .windowIndex = index};
    };
    auto top = window("terminal", "top", {1440, 0, 1920, 1080}, kUuidB, 1, 1);
    top.isFullscreen = true;
    auto main = window("editor", "main.cpp", {1600, 100, 800, 600}, kUuidB, 3, 0);
    auto old = window("editor", "old.txt", {0, 25, 300, 200}, kUuidA, 4, 1);
    old.isMinimized = true;
    for (auto* editor : {&main, &old}) {
        editor->newWindowMenuName = "File";
        editor->newWindowItemTitle = "New Window";
    }
    // "log" straddles above both displays, its centre on neither: it overlaps A most.
    const std::vector<WindowInfo> expected{
        window("terminal", "zsh", {0, 25, 400, 300}, kUuidA, 0, 0), top,
        window("terminal", "log", {1200, -400, 400, 600}, kUuidA, 2, 2), main, old};
    EXPECT_EQ(capture.captureWindows(), expected);
    EXPECT_TRUE(
        log.contains("Skipping com.example.hung (com.example.hung, pid 600): cannot read "
                     "its windows: kAXErrorCannotComplete (-25204)"));
    EXPECT_TRUE(log.contains("Captured 5 window(s) of 3 application(s)"));

    // A filter keeps its applications, any case, and numbers the stacking anew.
    const auto filtered = capture.captureWindows({"COM.EXAMPLE.EDITOR", "com.example.nothing"});
    ASSERT_EQ(filtered.size(), 2u);
    EXPECT_EQ(filtered[0].windowTitle, "main.cpp");
    EXPECT_EQ(filtered[1].zOrder, 1);
}

TEST_F(WorkspaceCaptureTest, LeavesOutThisProgramTheSystemAndTheUsersExclusions) {
    const std::vector<std::pair<std::string, bool>> cases{
        {"com.corvetta.Corvetta", true},   {"com.apple.dock", true},
        {"com.apple.dock.helper", true},   {"com.apple.Spotlight", true},
        {"com.apple.WindowManager", true}, {"com.apple.notificationcenterui", true},
        {"com.apple.controlcenter", true}, {"org.example.game", true},
        {"com.apple.Safari", false},       {"org.example.game2", false},
    };
    for (const auto& [identifier, excluded] : cases) {
        EXPECT_EQ(capture.isExcluded(identifier), excluded) << identifier;
    }
}

}  // namespace
}  // namespace corvetta::testing
