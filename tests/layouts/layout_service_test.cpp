#include "layouts/layout_service.h"

#include <algorithm>
#include <cmath>

#include <gtest/gtest.h>

#include "platform/sim/simulated_desktop.h"
#include "support/log_messages.h"
#include "support/manual_plumbing.h"
#include "windowing/calculation_settings.h"
#include "windowing/excluded_applications.h"

namespace corvetta::testing {
namespace {

using namespace std::chrono_literals;

struct RecordingLock : LayoutLockTarget {
    void lock(std::vector<AXWindowRef> windows) override { handed.push_back(std::move(windows)); }
    std::vector<std::vector<AXWindowRef>> handed;
};

SimulatedApplication app(ProcessId pid, const std::string& id, std::vector<SimulatedWindow> w) {
    return SimulatedApplication{
        .pid = pid, .bundleIdentifier = id, .name = id, .windows = std::move(w)};
}

// "Left" (1000x800, visible 1000x775 under a menu bar) and "Right" beside it. Front to back on
// Left: the Dock, this program, editor 11, editor 12 (which does not tell its number), terminal
// 21, a hung application's 61; chat 31 is alone on Right. The pointer is on Left.
SimulatedDesktopSetup desk() {
    SimulatedDesktopSetup s;
    s.displays = {{1, "Left", {0, 0, 1000, 800}, {0, 0, 1000, 775}},
                  {2, "Right", {1000, 0, 1000, 800}, {1000, 0, 1000, 800}}};
    s.applications = {
        app(600, "com.example.hung", {{.number = 61, .frame = {300, 300, 300, 200}}}),
        app(300, "com.example.chat", {{.number = 31, .frame = {1200, 100, 400, 300}}}),
        app(200, "com.example.terminal", {{.number = 21, .frame = {200, 200, 400, 300}}}),
        app(100, "com.example.editor",
            {{.number = 11, .frame = {100, 100, 400, 300}},
             {.number = 12, .frame = {150, 150, 400, 300}, .reportsWindowNumber = false}}),
        app(50, "com.apple.dock", {{.number = 5, .frame = {0, 700, 1000, 75}}}),
    };
    s.applications[0].unresponsive = true;
    s.self.windows = {{.number = 1, .frame = {50, 50, 200, 200}}};
    s.mouseLocation = {500, 400};
    return s;
}

class LayoutServiceTest : public ::testing::Test {
protected:
    void SetUp() override {
        for (const WindowNumber number : {61, 31, 21, 12, 11, 1, 5}) {
            sim.focusWindow(number);
        }
    }

    LayoutResult apply(std::vector<Rect> panes, bool allDisplays = false) {
        CustomLayoutTemplate layout;
        layout.name = "Test";
        layout.panes = std::move(panes);
        layout.applyToAllDisplays = allDisplays;
        std::optional<LayoutResult> result;
        service.applyCustomLayout(layout, [&](const LayoutResult& r) { result = r; });
        EXPECT_FALSE(result) << "answered before the moves ended";
        plumbing.queue.advance(2s);
        EXPECT_TRUE(result) << "never answered";
        return result.value_or(unexpected(LayoutError::noDisplays));
    }

    ManualPlumbing plumbing{0};
    SimulatedDesktop sim{desk(), plumbing.queue};
    ServiceRoot root{plumbing.on(sim)};
    RecordingLock lock;
    LayoutService service{{sim.accessibilityPort(), sim.windowListPort(), sim.applicationsPort(),
                           sim.screenPort(), sim.pointerPort()},
                          root.accessibilityElement,
                          root.windowMover,
                          lock,
                          plumbing.defaults,
                          plumbing.queue,
                          plumbing.logging};
};

const auto kHalves = CustomLayoutTemplate::builtIn(LayoutTemplate::halves).panes;
const auto kFourths = CustomLayoutTemplate::builtIn(LayoutTemplate::fourths).panes;

using Placed = std::vector<std::pair<WindowNumber, Rect>>;

TEST_F(LayoutServiceTest, FillsPanesFrontToBackAndHandsThePlacedWindowsToTheLock) {
    // Frames in accessibility space: Left's visible frame starts 25 points down.
    const Placed halves{{11, {0, 25, 500, 775}}, {12, {500, 25, 500, 775}}};
    const Placed spaced{{11, {0, 25, 495, 775}}, {12, {505, 25, 495, 775}}};
    const Placed right{{31, {1000, 0, 500, 800}}}, upperLeft{{21, {0, 25, 500, 387.5}}};
    const std::vector<std::string> editor{"COM.EXAMPLE.EDITOR"};
    const struct {
        const char* name;
        std::vector<Rect> panes;
        double spacing, pointerX;
        bool allDisplays;
        std::vector<std::string> userExcluded;
        Placed placed;
    } cases[] = {
        {"halves, the third window stays", kHalves, 0, 500, false, {}, halves},
        {"spacing 10", kHalves, 10, 500, false, {}, spaced},
        {"fourths, one window, excluded in any case", kFourths, 0, 500, false, editor, upperLeft},
        {"the pointer's display only", kHalves, 0, 1500, false, {}, right},
        {"every display on its own", kHalves, 0, 1500, true, {}, {halves[0], halves[1], right[0]}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        plumbing.defaults.set(calculation_settings::kLayoutSpacing, c.spacing);
        plumbing.defaults.set(kUserExcludedBundleIDsKey, c.userExcluded);
        sim.setMouseLocation({c.pointerX, 400});

        const auto result = apply(c.panes, c.allDisplays);

        ASSERT_TRUE(result);
        EXPECT_EQ(result->windowsPlaced, static_cast<int>(c.placed.size()));
        EXPECT_EQ(result->windowsVerified, result->windowsPlaced);
        for (const auto& application : desk().applications) {
            for (const auto& window : application.windows) {
                const auto placed =
                    std::ranges::find(c.placed, window.number, &Placed::value_type::first);
                EXPECT_EQ(sim.windowFrame(window.number),
                          placed == c.placed.end() ? window.frame : placed->second)
                    << window.number;
                // Back where it stood, for the next case.
                sim.dragWindow(window.number, window.frame);
            }
        }
        std::vector<AXWindowRef> placementOrder;
        for (const auto& [number, frame] : c.placed) {
            placementOrder.push_back({*sim.windowElement(number)});
        }
        EXPECT_EQ(lock.handed.back(), placementOrder);
        SetUp();
    }
    // Every listed window of the first case's display, logged; the excluded never even asked.
    const auto messages = loggedMessages(plumbing.logbook);
    const auto logged = [&](const std::string& text) {
        return std::ranges::any_of(messages,
                                   [&](const std::string& m) { return m.starts_with(text); });
    };
    for (const char* line :
         {"kAXWindowsAttribute failed for pid 600", "[Layout] ✓ cgWin=11", "[Layout] ✓ cgWin=12",
          "[Layout] ✓ cgWin=21", "[Layout] ✗ cgWin=61", "3 eligible window(s) for layout",
          "Applying custom layout 'Test' to 2 window(s) on Left"}) {
        EXPECT_TRUE(logged(line)) << line;
    }
    for (const char* line :
         {"[Layout] ✓ cgWin=5", "[Layout] ✗ cgWin=5", "[Layout] ✓ cgWin=1", "[Layout] ✗ cgWin=1"}) {
        EXPECT_EQ(std::ranges::count(messages, line), 0) << line;
    }
}

TEST_F(LayoutServiceTest, FailsWithoutMovingAnythingAndLogsWhy) {
    const std::vector<std::string> everyone{"com.example.editor", "com.example.terminal"};
    const struct {
        std::vector<Rect> panes;
        std::vector<std::string> userExcluded;
        std::string text;
    } cases[] = {
        {{}, {}, "No eligible windows or panes for custom layout"},
        {kHalves, everyone, "No eligible windows on screen for layout"},
    };
    for (const auto& c : cases) {
        plumbing.defaults.set(kUserExcludedBundleIDsKey, c.userExcluded);
        const int writes = sim.frameWriteCount(11);
        const auto result = apply(c.panes);
        ASSERT_FALSE(result) << c.text;
        EXPECT_EQ(description(result.error()), c.text);
        EXPECT_EQ(loggedMessages(plumbing.logbook).back(), c.text);
        EXPECT_EQ(sim.frameWriteCount(11), writes) << c.text;
    }
    EXPECT_TRUE(lock.handed.empty());
}

TEST_F(LayoutServiceTest, WindowsWithoutANumberMatchTheListedFrameWithinFivePoints) {
    for (const double offset : {0.0, 4.9, -4.9, 5.0, -5.0}) {
        for (int side = 0; side < 4; ++side) {
            Rect bounds{150, 150, 400, 300};  // window 12's frame
            double* edges[] = {&bounds.origin.x, &bounds.origin.y, &bounds.size.width,
                               &bounds.size.height};
            *edges[side] += offset;
            // Window 11 tells its number and is no candidate, though listed first.
            const auto map = service.windowMap(
                100, {{.number = 11, .ownerPid = 100, .bounds = {150, 150, 400, 300}},
                      {.number = 77, .ownerPid = 100, .bounds = bounds}});
            EXPECT_EQ(map.at(11), *sim.windowElement(11));
            const bool matched = std::fabs(offset) < 5;
            EXPECT_EQ(map.contains(77) ? map.at(77) : AXElement(),
                      matched ? *sim.windowElement(12) : AXElement())
                << offset << " on side " << side;
        }
    }
}

}  // namespace
}  // namespace corvetta::testing
