#include "windowing/window_mover.h"

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "desktop_fixture.h"
#include "windowing/calculation_settings.h"

namespace corvetta {
namespace {

using namespace std::chrono_literals;
using ::testing::Contains;
using ::testing::Not;

// A 800x600 target on the primary display; the window starts elsewhere.
constexpr Rect kTarget{100, 100, 800, 600};
constexpr Rect kStart{300, 50, 500, 400};

// The primary display is 900 high.
Rect accessibilityFrameOf(const Rect& frame) {
    return {frame.minX(), 900 - frame.maxY(), frame.width(), frame.height()};
}

class WindowMoverTest : public testing_support::DesktopTest {
protected:
    WindowMoveRequest request(Rect target = kTarget, int maxAttempts = 3) {
        return {.window = element(1), .targetFrame = target, .maxAttempts = maxAttempts};
    }
    // Times of the attempts, from the first.
    std::vector<Duration> attemptTimes() const {
        LogFilter filter;
        filter.search = "Visible frame before";
        std::vector<Duration> times;
        for (const auto& entry : logbook.recentEntries(filter)) {
            times.push_back(entry.timestamp - logbook.recentEntries(filter).front().timestamp);
        }
        return times;
    }
    std::vector<std::string> moverLog() const { return loggedMessages("WindowMover"); }
};

TEST_F(WindowMoverTest, LateWindowsAreVerifiedOnALaterAttemptAfterGrowingWaits) {
    struct Row {
        Duration applyDelay;
        int attempt;
        std::vector<Duration> times;
    };
    for (const auto& row :
         std::vector<Row>{{0ms, 1, {0ms}}, {30ms, 2, {0ms, 50ms}}, {70ms, 3, {0ms, 50ms, 150ms}}}) {
        logbook.clear();
        startDesktop({{.number = 1, .frame = kStart, .applyDelay = row.applyDelay}});
        const auto moved = move(request());
        ASSERT_TRUE(moved) << description(moved.error());
        EXPECT_EQ(moved->attempts, row.attempt);
        EXPECT_EQ(moved->frame, kTarget);
        EXPECT_EQ(attemptTimes(), row.times);
        EXPECT_THAT(moverLog(), Contains("Window positioned successfully on attempt " +
                                         std::to_string(row.attempt)));
    }
    EXPECT_THAT(moverLog(), Contains("Window position verification failed on attempt 2, "
                                     "retrying..."));
    EXPECT_THAT(moverLog(), Contains("Moving window with isBottomAligned: false"));
    EXPECT_THAT(moverLog(), Contains("Target frame: (100, 100, 800, 600), bottomAligned: false"));
}

TEST_F(WindowMoverTest, WindowsThatDoNotFollowFailAfterTheLastAttempt) {
    struct Row {
        const char* name;
        SimulatedWindow window;
        std::optional<int> attempt;  // none: the move fails
        WindowMoveError error = WindowMoveError::verificationFailed;
    };
    const std::vector<Row> rows = {
        {"minimum size above the target", {.minSize = Size{900, 700}}, std::nullopt},
        // Only the width steps, since a height short of the target also moves the bottom edge.
        {"steps within 5 points", {.resizeIncrements = Size{15, 1}}, 1},              // 795 wide
        {"steps within 10 points", {.resizeIncrements = Size{12, 1}}, 2},             // 792 wide
        {"steps beyond 10 points", {.resizeIncrements = Size{30, 1}}, std::nullopt},  // 780 wide
        {"immovable", {.movable = false}, std::nullopt},
        {"full screen", {.fullScreen = true}, std::nullopt, WindowMoveError::windowIsFullscreen},
    };
    for (auto row : rows) {
        SCOPED_TRACE(row.name);
        logbook.clear();
        row.window.number = 1;
        row.window.frame = kStart;
        startDesktop({row.window});
        const auto moved = move(request());
        if (row.attempt) {
            ASSERT_TRUE(moved);
            EXPECT_EQ(moved->attempts, *row.attempt);
            continue;
        }
        ASSERT_FALSE(moved);
        EXPECT_EQ(moved.error(), row.error);
        if (row.error == WindowMoveError::windowIsFullscreen) {
            EXPECT_EQ(desktop->frameWriteCount(1), 0);
            continue;
        }
        EXPECT_THAT(moverLog(), Contains("Window position verification failed on attempt 2, "
                                         "retrying..."));
        EXPECT_THAT(moverLog(), Not(Contains("Window position verification failed on attempt 3, "
                                             "retrying...")));
        EXPECT_EQ(attemptTimes().size(), 3u);
    }
}

TEST_F(WindowMoverTest, ToleranceGrowsWithTheAttemptOffThePrimaryDisplayAndInYForBottomTargets) {
    // A window held smaller than the target keeps its top edge, so a height short by d also puts
    // its bottom (screen-space y) d points off.
    struct Row {
        bool secondary;
        bool bottomAligned;
        Size shortBy;
        std::optional<int> attempt;
    };
    const std::vector<Row> rows = {
        {false, false, {0, 1}, 1}, {false, false, {0, 2}, 2},   {false, true, {0, 3}, 1},
        {false, true, {0, 4}, 2},  {false, true, {0, 7}, {}},   {false, false, {5, 0}, 1},
        {false, false, {6, 0}, 2}, {false, false, {11, 0}, {}}, {true, false, {0, 2}, 1},
        {true, false, {0, 3}, 2},  {true, false, {0, 5}, {}},   {true, true, {0, 12}, 2},
        {true, false, {10, 0}, 1}, {true, false, {21, 0}, {}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(::testing::Message()
                     << row.secondary << row.bottomAligned << row.shortBy.description());
        const Rect target = row.secondary ? kTarget.offsetBy(1500, 0) : kTarget;
        // On the second display the window's display is also the main (key) one: the tighter
        // tolerance belongs to the primary display, not to the main one.
        startDesktop({{.number = 1,
                       .frame = accessibilityFrameOf(target.offsetBy(0, 50)),
                       .maxSize = Size{target.width() - row.shortBy.width,
                                       target.height() - row.shortBy.height}}});
        auto moveRequest = request(target);
        moveRequest.isBottomAligned = row.bottomAligned;
        const auto moved = move(moveRequest);
        EXPECT_EQ(moved ? std::optional(moved->attempts) : std::nullopt, row.attempt);
    }
}

TEST_F(WindowMoverTest, BottomTargetFollowsADockThatHidesDuringTheMove) {
    // The Dock hides while a window overlaps it; the window's minimum height makes it overlap.
    auto setup =
        desktopSetup({{.number = 1, .frame = {0, 25, 600, 400}, .minSize = Size{600, 420}}});
    setup.displays[0].visibleFrame = {0, 70, 1440, 805};
    setup.dock = SimulatedDock{.display = 1, .size = 70, .intellihide = true};
    // Recalculating is no new press: a repeated-press mode must not send the window elsewhere.
    preferences.set(calculation_settings::kSubsequentExecutionSpace, 1);
    startDesktop(setup);
    auto bottom = request({0, 70, 1440, 402});
    bottom.isBottomAligned = true;
    bottom.action = WindowDirection::Case::bottomHalf;
    bottom.layoutSpacing = 10;
    const auto moved = move(bottom);
    ASSERT_TRUE(moved);
    // The bottom half of the whole height, less half the gap at its inner (top) edge.
    EXPECT_EQ(moved->frame, Rect(0, 0, 1440, 432));
    EXPECT_TRUE(desktop->dockHidden());
    for (const char* line : {"Visible frame before: (0, 70, 1440, 805), after:(0, 0, 1440, 875)",
                             "Recalculating with direction: bottomHalf",
                             "New target frame after dock change: (0, 0, 1440, 432)",
                             "Final frame after dock change adjustment: (0, 0, 1440, 432)"}) {
        EXPECT_THAT(moverLog(), Contains(line));
    }

    // A target that is not bottom-aligned is only noted.
    logbook.clear();
    startDesktop(setup);
    const auto kept = move(request({0, 50, 700, 430}));
    ASSERT_TRUE(kept);
    EXPECT_EQ(kept->frame, Rect(0, 50, 700, 430));
    EXPECT_THAT(moverLog(),
                Contains("Visible frame changed; the target is not bottom-aligned, keeping it"));
    EXPECT_THAT(moverLog(), Not(Contains("Recalculating with direction: bottomHalf")));
}

TEST_F(WindowMoverTest, ANewerMoveOfTheWindowSupersedesTheRetriesOfTheOlder) {
    // Steps of 30 points keep the window 20 short of an 800-wide target, so every attempt of the
    // first move fails; a 600-wide one fits the steps.
    startDesktop({{.number = 1, .frame = kStart, .resizeIncrements = Size{30, 1}}});
    std::vector<WindowMoveResult> first, second;
    services->windowMover.moveWindow(request(), [&](const auto& r) { first.push_back(r); });
    // At once, while the first move's retry waits.
    const Rect later(1600, 100, 600, 400);
    services->windowMover.moveWindow(request(later), [&](const auto& r) { second.push_back(r); });
    queue.advance(2s);
    ASSERT_EQ(first.size(), 1u);
    ASSERT_FALSE(first[0]);
    EXPECT_EQ(first[0].error(), WindowMoveError::superseded);
    ASSERT_EQ(second.size(), 1u);
    ASSERT_TRUE(second[0]);
    EXPECT_EQ(desktop->windowFrame(1), accessibilityFrameOf(later));
    // The first move's retries never ran to pull the window back.
    EXPECT_EQ(attemptTimes(), (std::vector<Duration>{0ms, 0ms}));
    EXPECT_THAT(moverLog(), Not(Contains("Window move failed: Failed to verify window position "
                                         "after move")));

    // Moves of different windows leave each other alone.
    startDesktop({{.number = 1, .frame = kStart, .applyDelay = 30ms},
                  {.number = 2, .frame = kStart, .applyDelay = 30ms}});
    std::optional<WindowMoveResult> one, two;
    services->windowMover.moveWindow(request(), [&](const auto& r) { one = r; });
    auto other = request();
    other.window = element(2);
    services->windowMover.moveWindow(other, [&](const auto& r) { two = r; });
    queue.advance(1s);
    EXPECT_TRUE(one.value() && two.value());
}

TEST_F(WindowMoverTest, MovesEndEarlyWhenTheWindowOrTheDisplaysGoAway) {
    startDesktop({{.number = 1, .frame = kStart, .applyDelay = 70ms}});
    std::optional<WindowMoveResult> closed;
    services->windowMover.moveWindow(request(), [&](const auto& result) { closed = result; });
    desktop->closeWindow(1);
    queue.advance(1s);
    EXPECT_EQ(closed.value().error(), WindowMoveError::invalidWindow);

    startDesktop({{.number = 1, .frame = kStart}});
    desktop->setDisplays({});
    EXPECT_EQ(move(request()).error(), WindowMoveError::noTargetScreen);

    // A mover that goes away drops its pending attempts and completions.
    startDesktop({{.number = 1, .frame = kStart, .applyDelay = 70ms}});
    bool completed = false;
    services->windowMover.moveWindow(request(), [&](const auto&) { completed = true; });
    services.reset();
    queue.advance(1s);
    EXPECT_FALSE(completed);
}

}  // namespace
}  // namespace corvetta
