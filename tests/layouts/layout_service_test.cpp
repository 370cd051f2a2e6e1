#include "layouts/layout_service.h"

#include <algorithm>

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

    std::vector<WindowNumber> handedLast() const {
        std::vector<WindowNumber> numbers;
        for (const auto& ref : lock.handed.back()) {
            numbers.push_back(static_cast<WindowNumber>(ref.element.token()));
        }
        return numbers;
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

const std::vector<Rect> kHalves{{0, 0, 0.5, 1}, {0.5, 0, 0.5, 1}};
const std::vector<Rect> kFourths{
    {0, 0.5, 0.5, 0.5}, {0.5, 0.5, 0.5, 0.5}, {0, 0, 0.5, 0.5}, {0.5, 0, 0.5, 0.5}};

TEST_F(LayoutServiceTest, FillsPanesFrontToBackAndHandsThePlacedWindowsToTheLock) {
    // Frames in accessibility space: Left's visible frame starts 25 points down.
    const struct {
        const char* name;
        std::vector<Rect> panes;
        bool allDisplays = false;
        double spacing = 0;
        std::vector<std::string> userExcluded{};
        Point pointer{500, 400};
        std::vector<std::pair<WindowNumber, Rect>> placed;
    } cases[] = {
        {"halves, the third window stays",
         kHalves,
         false,
         0,
         {},
         {500, 400},
         {{11, {0, 25, 500, 775}}, {12, {500, 25, 500, 775}}}},
        {"spacing 10 on halves",
         kHalves,
         false,
         10,
         {},
         {500, 400},
         {{11, {0, 25, 495, 775}}, {12, {505, 25, 495, 775}}}},
        {"fourths with one window, excluded by the user in any case",
         kFourths,
         false,
         0,
         {"COM.EXAMPLE.EDITOR"},
         {500, 400},
         {{21, {0, 25, 500, 387.5}}}},
        {"the pointer's display only",
         kHalves,
         false,
         0,
         {},
         {1500, 400},
         {{31, {1000, 0, 500, 800}}}},
        {"every display on its own",
         kHalves,
         true,
         0,
         {},
         {1500, 400},
         {{11, {0, 25, 500, 775}}, {12, {500, 25, 500, 775}}, {31, {1000, 0, 500, 800}}}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        plumbing.defaults.set(calculation_settings::kLayoutSpacing, c.spacing);
        plumbing.defaults.set(kUserExcludedBundleIDsKey, c.userExcluded);
        sim.setMouseLocation(c.pointer);
        std::map<WindowNumber, Rect> before;
        for (const WindowNumber n : {1, 5, 11, 12, 21, 31, 61}) {
            before[n] = sim.windowFrame(n).value();
        }

        const auto result = apply(c.panes, c.allDisplays);

        ASSERT_TRUE(result);
        EXPECT_EQ(result->windowsPlaced, static_cast<int>(c.placed.size()));
        EXPECT_EQ(result->windowsVerified, result->windowsPlaced);
        std::vector<WindowNumber> expectedOrder;
        for (const auto& [number, frame] : c.placed) {
            EXPECT_EQ(sim.windowFrame(number), frame) << number;
            expectedOrder.push_back(number);
            before.erase(number);
        }
        for (const auto& [number, frame] : before) {
            EXPECT_EQ(sim.windowFrame(number), frame) << number << " moved";
        }
        EXPECT_EQ(handedLast(), expectedOrder);
        // Back where they stood, in their order, for the next case.
        for (const auto& application : desk().applications) {
            for (const auto& window : application.windows) {
                sim.dragWindow(window.number, window.frame);
            }
        }
        SetUp();
    }
}

TEST_F(LayoutServiceTest, FailsWithoutMovingAnythingAndLogsWhy) {
    const struct {
        const char* name;
        std::vector<Rect> panes;
        std::vector<std::string> userExcluded;
        LayoutError error;
        const char* text;
    } cases[] = {
        {"no panes",
         {},
         {},
         LayoutError::noWindowsOrPanes,
         "No eligible windows or panes for custom layout"},
        {"every window excluded",
         kHalves,
         {"com.example.editor", "com.example.terminal"},
         LayoutError::noEligibleWindows,
         "No eligible windows on screen for layout"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        plumbing.defaults.set(kUserExcludedBundleIDsKey, c.userExcluded);
        const int writes = sim.frameWriteCount(11);
        const auto result = apply(c.panes);
        ASSERT_FALSE(result);
        EXPECT_EQ(result.error(), c.error);
        EXPECT_EQ(description(result.error()), c.text);
        EXPECT_EQ(sim.frameWriteCount(11), writes);
        EXPECT_EQ(loggedMessages(plumbing.logbook).back(), c.text);
    }
    EXPECT_TRUE(lock.handed.empty());
}

TEST_F(LayoutServiceTest, LogsEachListedWindowAndTheDisplayItFilled) {
    apply(kHalves);
    const auto messages = loggedMessages(plumbing.logbook);
    for (const char* line :
         {"kAXWindowsAttribute failed for pid 600", "[Layout] ✓ cgWin=11", "[Layout] ✓ cgWin=12",
          "[Layout] ✓ cgWin=21", "[Layout] ✗ cgWin=61", "3 eligible window(s) for layout",
          "Applying custom layout 'Test' to 2 window(s) on Left"}) {
        EXPECT_TRUE(std::ranges::any_of(messages, [&](const std::string& m) {
            return m.starts_with(line);
        })) << line;
    }
    // Never even considered: excluded before their application is asked for windows.
    for (const char* line : {"cgWin=5", "cgWin=1 ", "cgWin=31"}) {
        EXPECT_FALSE(std::ranges::any_of(messages, [&](const std::string& m) {
            return m.find(line) != std::string::npos;
        })) << line;
    }
}

TEST_F(LayoutServiceTest, WindowsWithoutANumberMatchTheListedFrameWithinFivePoints) {
    const auto twelve = *sim.windowElement(12);
    const struct {
        double offset;
        bool matched;
    } cases[] = {{0, true}, {4.9, true}, {-4.9, true}, {5, false}, {-5, false}};
    for (const auto& c : cases) {
        for (int side = 0; side < 4; ++side) {
            Rect bounds{150, 150, 400, 300};
            (side == 0   ? bounds.origin.x
             : side == 1 ? bounds.origin.y
             : side == 2 ? bounds.size.width
                         : bounds.size.height) += c.offset;
            // A numbered window of the same process is listed first and is not a candidate.
            const auto map = service.windowMap(
                100, {{.number = 11, .ownerPid = 100, .bounds = {100, 100, 400, 300}},
                      {.number = 77, .ownerPid = 100, .bounds = bounds}});
            EXPECT_EQ(map.contains(77), c.matched) << c.offset << " on side " << side;
            EXPECT_EQ(map.at(11), *sim.windowElement(11));
            if (c.matched) {
                EXPECT_EQ(map.at(77), twelve);
            }
        }
    }
}

}  // namespace
}  // namespace corvetta::testing
