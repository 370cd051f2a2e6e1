#include <algorithm>
#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "app/service_root.h"
#include "foundation/manual_queue.h"
#include "platform/sim/simulated_desktop.h"
#include "windowing/windowing_fixture.h"

namespace corvetta {
namespace {

using namespace std::chrono_literals;
using testing_support::WindowingTest;

constexpr Rect kLeft{0, 0, 495, 800}, kRight{505, 0, 495, 800};  // halves, spacing 10
constexpr Rect kUL{0, 0, 500, 400}, kUR{500, 0, 500, 400}, kLL{0, 400, 500, 400},
    kLR{500, 400, 500, 400};
const char* const kViewer = "com.example.viewer";

// One 1000x800 display whose visible frame is the whole display, so both coordinate spaces
// agree. Window n belongs to the editor when odd, to the viewer when even.
class LayoutLockTest : public WindowingTest {
protected:
    void start(const std::vector<Rect>& frames,
               const std::function<void(SimulatedWindow&)>& viewerRules = {}) {
        SimulatedDesktopSetup setup;
        setup.displays = {{1, "Main", {0, 0, 1000, 800}, {0, 0, 1000, 800}, 1, true}};
        setup.applications = {{.pid = 1, .bundleIdentifier = "com.example.editor", .name = "Ed"},
                              {.pid = 2, .bundleIdentifier = kViewer, .name = "Viewer"}};
        for (std::size_t i = 0; i < frames.size(); ++i) {
            SimulatedWindow window{.number = static_cast<WindowNumber>(i + 1), .frame = frames[i]};
            if (i % 2 == 1 && viewerRules) {
                viewerRules(window);
            }
            setup.applications[i % 2].windows.push_back(window);
        }
        services.reset();
        desktop = std::make_unique<SimulatedDesktop>(std::move(setup), queue);
        services = std::make_unique<ServiceRoot>(
            ProcessPlumbing{*desktop, queue, preferences, notifications, logbook, logging});
        refs.clear();
        for (std::size_t i = 0; i < frames.size(); ++i) {
            refs.push_back({*desktop->windowElement(static_cast<WindowNumber>(i + 1))});
        }
    }
    void lockAndSettle() {
        lock().lock(refs);
        queue.advance(800ms);
    }
    void userResize(WindowNumber number, const Rect& frame) {
        desktop->dragWindow(number, frame);
        mouseUp();
    }
    void mouseUp(Duration wait = 1s) {
        desktop->postEvent({.type = EventType::leftMouseUp, .location = {500, 400}});
        queue.advance(wait);
    }
    std::vector<Rect> frames() const {
        std::vector<Rect> all;
        for (WindowNumber n = 1; n <= refs.size(); ++n) {
            all.push_back(*desktop->windowFrame(n));
        }
        return all;
    }
    int tiledCount() const {
        int count = 0;
        for (const auto& window : lock().map()->windows) {
            count += window.isTiled ? 1 : 0;
        }
        return count;
    }
    LayoutLockManager& lock() const { return services->layoutLock; }
    std::vector<std::string> lockLog() const { return loggedMessages("LayoutLockManager"); }

    ManualQueue queue{clock};
    std::unique_ptr<SimulatedDesktop> desktop;
    std::unique_ptr<ServiceRoot> services;
    std::vector<AXWindowRef> refs;
};

TEST_F(LayoutLockTest, ResizeMovesEveryEdgeOnTheDraggedLine) {
    struct Row {
        const char* name;
        std::vector<Rect> frames;
        WindowNumber dragged;
        Rect resized;
        std::vector<Rect> expected;
    };
    const std::vector<Row> rows = {
        {"left half widened by 50: the right one's left edge follows, its right edge stays",
         {kLeft, kRight},
         1,
         {0, 0, 545, 800},
         {{0, 0, 545, 800}, {555, 0, 445, 800}}},
        {"right half grown leftwards: the left one's right edge follows",
         {kLeft, kRight},
         2,
         {455, 0, 545, 800},
         {{0, 0, 445, 800}, {455, 0, 545, 800}}},
        {"grid divider moved right: all four windows on the line follow",
         {kUL, kUR, kLL, kLR},
         1,
         {0, 0, 550, 400},
         {{0, 0, 550, 400}, {550, 0, 450, 400}, {0, 400, 550, 400}, {550, 400, 450, 400}}},
        {"grid divider moved down",
         {kUL, kUR, kLL, kLR},
         1,
         {0, 0, 500, 500},
         {{0, 0, 500, 500}, {500, 0, 500, 500}, {0, 500, 500, 300}, {500, 500, 500, 300}}},
        {"thirds: only the window across the moved edge follows",
         {{0, 0, 333, 800}, {333, 0, 334, 800}, {667, 0, 333, 800}},
         1,
         {0, 0, 383, 800},
         {{0, 0, 383, 800}, {383, 0, 284, 800}, {667, 0, 333, 800}}},
        {"a neighbour of unknown minimum stops at 100 and the dragged window is held back",
         {kLeft, kRight},
         1,
         {0, 0, 950, 800},
         {{0, 0, 890, 800}, {900, 0, 100, 800}}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        start(row.frames);
        lockAndSettle();
        userResize(row.dragged, row.resized);
        EXPECT_EQ(frames(), row.expected);
        EXPECT_FALSE(lock().isAdjusting());
        EXPECT_TRUE(lock().pill().visible);
    }
}

TEST_F(LayoutLockTest, WindowsLeaveTheGroupAndTheLastOneEndsTheLock) {
    struct Row {
        const char* message;
        std::function<void()> act;
    };
    const std::vector<Row> rows = {
        {"Window minimized out of Layout Lock tiling group",
         [this] {
             desktop->accessibilityPort().setAttributeValue(refs[0].element,
                                                            AXAttribute::kMinimized, true);
         }},
        {"Window moved out of Layout Lock tiling group",
         [this] {
             desktop->dragWindow(1, {200, 100, 495, 800});
         }},
        {"Window maximized out of Layout Lock tiling group",
         [this] {
             desktop->dragWindow(1, {0, 0, 998, 797});
         }},
        // A snap by shortcut is no resize for the neighbour to follow.
        {"Window snapped out of Layout Lock tiling group",
         [this] {
             bool snapped = false;
             services->windowSnappingService.snapWindow(
                 *desktop->applicationsPort().runningApplication(1),
                 WindowDirection::Case::bottomHalf,
                 [&](const SnapResult& result) { snapped = result.has_value(); });
             queue.advance(1s);
             ASSERT_TRUE(snapped);
         }},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.message);
        start({kLeft, kRight});
        lockAndSettle();
        row.act();
        mouseUp();
        EXPECT_EQ(lockLog().back(), row.message);
        EXPECT_EQ(tiledCount(), 1);
        EXPECT_EQ(*desktop->windowFrame(2), kRight);
        // The window that left is no one's neighbour any more.
        const Rect leftAt = *desktop->windowFrame(1);
        userResize(2, {555, 0, 445, 800});
        EXPECT_EQ(*desktop->windowFrame(1), leftAt);
    }
    desktop->dragWindow(2, {100, 0, 445, 800});
    mouseUp();
    EXPECT_EQ(lockLog().back(), "All windows left the tiling group — ending Layout Lock session");
    EXPECT_EQ(lock().map(), nullptr);
}

TEST_F(LayoutLockTest, NeighbourThatRefusesToShrinkIsLearnedAndStopsLaterDrags) {
    start({kLeft, kRight}, [](SimulatedWindow& w) {
        w.minSize = Size{400, 100};
        w.reportsMinSize = false;
    });
    lockAndSettle();
    userResize(1, {0, 0, 695, 800});
    // Asked for 295, it stayed 400 wide: an overshoot, learned for its application.
    EXPECT_EQ(frames(), (std::vector<Rect>{{0, 0, 695, 800}, {705, 0, 400, 800}}));
    EXPECT_EQ(services->learnedMinSizes.minSize(kViewer), (Size{400, 0}));

    lock().reset();
    queue.advance(1s);
    EXPECT_EQ(frames(), (std::vector<Rect>{kLeft, kRight}));
    EXPECT_FALSE(lock().pill().visible);
    userResize(1, {0, 0, 695, 800});
    EXPECT_EQ(frames(), (std::vector<Rect>{{0, 0, 590, 800}, {600, 0, 400, 800}}));
    // Nothing new learned since the reset: the drag stopped where the learned size said.
    const auto log = lockLog();
    const auto reset = std::find(log.rbegin(), log.rend(), "Layout Lock reset to original frames");
    ASSERT_NE(reset, log.rend());
    EXPECT_TRUE(std::none_of(log.rbegin(), reset, [](const std::string& line) {
        return line.starts_with("Learned minimum size");
    }));
}

TEST_F(LayoutLockTest, LockStartsAfterSettlingOnlyForTwoWindowsWithTheSettingOn) {
    struct Row {
        const char* name;
        std::size_t windows;
        bool enabled;
        bool starts;
    };
    const std::vector<Row> rows = {{"one window", 1, true, false},
                                   {"setting off", 2, false, false},
                                   {"two windows", 2, true, true}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        start({kLeft, kRight});
        preferences.set(LayoutLockManager::kEnabledKey, row.enabled);
        lock().lock(std::vector<AXWindowRef>(refs.begin(), refs.begin() + row.windows));
        queue.advance(299ms);
        EXPECT_EQ(lock().map(), nullptr);
        queue.advance(1ms);
        EXPECT_EQ(lock().map() != nullptr, row.starts);
    }
    EXPECT_EQ(lockLog().front(), "Layout Lock active: 2 tiled windows");

    // A window still settling 0.3 s in is re-read 0.5 s later; that is the layout, not a resize.
    desktop->dragWindow(2, {505, 0, 495, 700});
    queue.advance(499ms);
    EXPECT_EQ(lock().map()->windows[1].originalFrame, kRight);
    queue.advance(1ms);
    EXPECT_EQ(lockLog().back(), "Layout Lock re-read window frames after settling");
    EXPECT_EQ(lock().map()->windows[1].originalFrame, Rect(505, 0, 495, 700));
}

TEST_F(LayoutLockTest, MouseUpScansAfterTheirDelay) {
    for (const bool trackedDrag : {false, true}) {
        SCOPED_TRACE(trackedDrag);
        start({kLeft, kRight});
        lockAndSettle();
        lock().setTiledDragTracker([trackedDrag] { return trackedDrag; });
        desktop->dragWindow(1, {0, 0, 545, 800});
        const auto delay = trackedDrag ? 10ms : 120ms;
        mouseUp(delay - 1ms);
        EXPECT_EQ(*desktop->windowFrame(2), kRight);
        queue.advance(1ms);
        EXPECT_EQ(*desktop->windowFrame(2), Rect(555, 0, 445, 800));
        EXPECT_TRUE(lock().isAdjusting());
        queue.advance(LayoutLockManager::kVerificationDelay);
        EXPECT_FALSE(lock().isAdjusting());
    }
}

TEST_F(LayoutLockTest, UntileEndsTheLockLeavingTheWindows) {
    start({kLeft, kRight});
    std::vector<bool> shown;
    const auto token = notifications.addObserver(
        LayoutLockManager::kPillDidChange,
        [&](const Notification&) { shown.push_back(lock().pill().visible); });
    lockAndSettle();
    userResize(1, {0, 0, 545, 800});
    EXPECT_EQ(lock().pill().groupFrame, Rect(0, 0, 1000, 800));
    lock().perform(DriftPillCommand::untile);
    EXPECT_EQ(lock().map(), nullptr);
    EXPECT_FALSE(lock().pill().visible);
    // Told when the pill came and when it went: its window follows without polling.
    EXPECT_EQ(std::count(shown.begin(), shown.end(), true), 1);
    ASSERT_FALSE(shown.empty());
    EXPECT_FALSE(shown.back());
    userResize(1, {0, 0, 400, 800});
    EXPECT_EQ(*desktop->windowFrame(2), Rect(555, 0, 445, 800));
}

TEST(LearnedMinSizeStoreTest, KeepsTheLargerPerDimensionAndLowersOnEvidence) {
    InMemoryPreferences defaults;
    NotificationCenter notifications;
    ManualClock clock;
    testing::TestLogging log{notifications, clock};
    defaults.set(
        LearnedMinSizeStore::kKey,
        PropertyValue::Dictionary{{"damaged", "text"}, {"short", PropertyValue::Array{1}}});
    LearnedMinSizeStore store(defaults, log.logging);
    store.record("app", 600, 0);
    store.record("app", 500, 300);
    store.record("app", 0, 0);
    EXPECT_EQ(store.minSize("app"), (Size{600, 300}));
    store.lower("app", 700, 250);
    EXPECT_EQ(store.minSize("app"), (Size{600, 250}));
    EXPECT_TRUE(log.contains("Lowered learned minimum size for app"));
    EXPECT_EQ(store.minSize("damaged"), std::nullopt);
    EXPECT_EQ(defaults.dictionary(LearnedMinSizeStore::kKey)->count("damaged"), 1u);
    store.resetAll();
    EXPECT_EQ(store.minSize("app"), std::nullopt);
}

}  // namespace
}  // namespace corvetta
