#include <tuple>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "windowing/display_scale_manager.h"
#include "windowing/screen_detection_service.h"
#include "windowing/usable_screens.h"
#include "windowing_fixture.h"

namespace corvetta {
namespace {

using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using testing_support::makeScreen;

std::vector<ScreenNumber> numbersOf(const std::vector<Screen>& screens) {
    std::vector<ScreenNumber> numbers;
    for (const auto& screen : screens) {
        numbers.push_back(screen.number);
    }
    return numbers;
}

// Changes its displays without telling anyone, so that what the cache holds shows.
class SilentScreens final : public ScreenPort {
public:
    std::vector<Screen> screens() const override { return list; }
    std::optional<Screen> mainScreen() const override { return list.front(); }
    Registration observeScreenParameters(std::function<void()> handler) override {
        handlers.push_back(std::move(handler));
        return Registration([this, index = handlers.size() - 1] { handlers[index] = nullptr; });
    }

    std::vector<Screen> list;
    std::vector<std::function<void()>> handlers;
};

class ScreenDetectionTest : public testing_support::WindowingTest {};

TEST_F(ScreenDetectionTest, DisplaysReadTopToBottomThenLeftToRight) {
    struct Arrangement {
        std::vector<Rect> others;  // screens 2, 3 after the primary 1 at (0, 0, 1920, 1080)
        std::vector<ScreenNumber> expected;
    };
    const std::vector<Arrangement> arrangements = {
        {{{-1920, 0, 1920, 1080}}, {2, 1}},
        {{{1920, 40, 1920, 1080}}, {1, 2}},
        {{{1920, 60, 1920, 1080}}, {2, 1}},
        {{{-1920, -60, 1920, 1080}}, {1, 2}},
        {{{0, 1080, 1920, 1080}}, {2, 1}},
        {{{300, -900, 1440, 900}}, {1, 2}},
        {{{1920, 0, 1920, 1080}, {-1920, 0, 1920, 1080}}, {3, 1, 2}},
        {{{-1920, 0, 1920, 1080}, {1920, 40, 1920, 1080}}, {2, 1, 3}},
        {{{-1920, 0, 1920, 1080}, {1920, 60, 1920, 1080}}, {3, 2, 1}},
        {{{0, -1080, 1920, 1080}, {0, 1080, 1920, 1080}}, {3, 1, 2}},
    };
    for (const auto& arrangement : arrangements) {
        std::vector<Screen> list = {makeScreen(1, {0, 0, 1920, 1080})};
        for (const Rect& frame : arrangement.others) {
            list.push_back(makeScreen(static_cast<ScreenNumber>(list.size() + 1), frame));
        }
        InMemoryScreens port(list);
        ScreenDetectionService detection(port, logging);
        EXPECT_THAT(numbersOf(detection.orderedScreens()), ElementsAreArray(arrangement.expected))
            << arrangement.others.back();
    }
}

TEST_F(ScreenDetectionTest, OrderIsCachedUntilTheScreenParametersChange) {
    SilentScreens port;
    port.list = {makeScreen(1, {0, 0, 1920, 1080}), makeScreen(2, {1920, 0, 1920, 1080})};
    {
        ScreenDetectionService detection(port, logging);
        EXPECT_THAT(numbersOf(detection.orderedScreens()), ElementsAre(1u, 2u));
        port.list[1].frame = {-1920, 0, 1920, 1080};
        EXPECT_THAT(numbersOf(detection.orderedScreens()), ElementsAre(1u, 2u));
        port.handlers.back()();
        EXPECT_THAT(numbersOf(detection.orderedScreens()), ElementsAre(2u, 1u));
    }
    EXPECT_EQ(port.handlers.back(), nullptr);

    screens.setScreens({makeScreen(1, {0, 0, 1440, 900})});
    ScreenDetectionService detection(screens, logging);
    EXPECT_EQ(detection.orderedScreens().size(), 1u);
    screens.setScreens({makeScreen(1, {0, 0, 1440, 900}), makeScreen(7, {0, 900, 1440, 900})});
    EXPECT_THAT(numbersOf(detection.orderedScreens()), ElementsAre(7u, 1u));
}

TEST_F(ScreenDetectionTest, FrameGoesToTheDisplayHoldingMostOfIt) {
    // The main screen is not the primary, so that falling back to it shows.
    screens.setScreens({makeScreen(1, {0, 0, 1920, 1080}), makeScreen(2, {1920, 0, 1920, 1080}),
                        makeScreen(3, {0, 1080, 1920, 1080})});
    ASSERT_TRUE(screens.setMainScreen(2));
    ScreenDetectionService detection(screens, logging);
    // Half and half goes to the earlier in reading order; 220 of 400 points above the primary
    // is mostly above; off every display, or without area, is the main screen's.
    const std::vector<std::pair<Rect, ScreenNumber>> cases = {
        {{100, 100, 800, 600}, 1},  {{0, 0, 1920, 1080}, 1},    {{2000, 100, 800, 600}, 2},
        {{100, 1200, 200, 100}, 3}, {{1620, 100, 800, 600}, 2}, {{1520, 100, 800, 600}, 1},
        {{100, 900, 400, 400}, 3},  {{-500, 100, 700, 600}, 1}, {{5000, 5000, 100, 100}, 2},
        {{5000, 5000, 0, 0}, 2},    {Rect::null(), 2},
    };
    for (const auto& [frame, expected] : cases) {
        const auto screen = detection.screenContaining(frame);
        ASSERT_TRUE(screen) << frame;
        EXPECT_EQ(screen->number, expected) << frame;
    }
}

TEST_F(ScreenDetectionTest, AccessibilityFramesAreFlippedAtThePrimaryTop) {
    screens.setScreens({makeScreen(1, {0, 0, 1920, 1080}), makeScreen(3, {0, 1080, 1920, 1080})});
    ScreenDetectionService detection(screens, logging);
    // 200 points below the top of the upper display; unflipped, the same numbers are on the
    // primary.
    EXPECT_EQ(detection.screenContainingAccessibilityFrame({100, -880, 200, 100})->number, 3u);
    EXPECT_EQ(detection.screenContaining({100, 880, 200, 100})->number, 1u);
}

TEST_F(ScreenDetectionTest, SelectionIsLoggedAndNoDisplaysMeansNoScreen) {
    screens.setScreens({makeScreen(4, {0, 0, 1440, 900})});
    ScreenDetectionService detection(screens, logging);
    detection.screenContaining({10, 10, 100, 100});
    EXPECT_THAT(
        loggedMessages("ScreenDetectionService"),
        ElementsAre("Selected screen: Display 4 (NSScreenNumber 4, frame (0, 0, 1440, 900))"));

    InMemoryScreens empty;
    ScreenDetectionService none(empty, logging);
    EXPECT_TRUE(none.orderedScreens().empty());
    EXPECT_EQ(none.screenContaining({0, 0, 10, 10}), std::nullopt);
}

TEST_F(ScreenDetectionTest, NextAndPreviousDisplaysWrapAndStayPutWhenAlone) {
    const std::vector<Screen> three = {makeScreen(1, {0, 0, 100, 100}),
                                       makeScreen(2, {100, 0, 100, 100}),
                                       makeScreen(3, {200, 0, 100, 100})};
    // Found by number: a stale copy with another frame is still the same display.
    Screen movedTwo = three[1];
    movedTwo.frame = {500, 500, 100, 100};
    // list, current, next, previous
    const std::vector<std::tuple<std::vector<Screen>, Screen, ScreenNumber, ScreenNumber>> cases = {
        {three, three[0], 2, 3},
        {three, movedTwo, 3, 1},
        {three, three[2], 1, 2},
        {{three[0]}, three[0], 1, 1},
        {{three[0], three[2]}, three[1], 2, 2},  // not listed: stays
        {{}, three[1], 2, 2},
    };
    for (const auto& [list, current, next, previous] : cases) {
        const UsableScreens usable(list, current, logging);
        EXPECT_EQ(usable.nextScreen().number, next)
            << "current " << current.number << " of " << list.size();
        EXPECT_EQ(usable.previousScreen().number, previous)
            << "current " << current.number << " of " << list.size();
    }
}

TEST_F(ScreenDetectionTest, ClampKeepsFramesInsideTheFullDisplayFrame) {
    const Screen primary = makeScreen(1, {0, 0, 1920, 1080});
    const Screen left = makeScreen(2, {-1440, 200, 1440, 900});
    const std::vector<std::tuple<Rect, Screen, Rect>> cases = {
        {{-100, 0, 3000, 500}, primary, {0, 0, 1920, 500}},
        {{1800, 1000, 400, 300}, primary, {1520, 780, 400, 300}},
        {{10.7, 20.2, 100.9, 50.5}, primary, {10, 20, 100, 50}},
        {{0, 1000, 1920, 80}, primary, {0, 1000, 1920, 80}},  // over the menu bar: allowed
        {Rect::null(), primary, {1920, 1080, 0, 0}},
        {{-2000, 0, 500, 2000}, left, {-1440, 200, 500, 900}},
        {{-100.5, 1000.5, 300, 300}, left, {-300, 800, 300, 300}},
    };
    const DisplayScaleManager manager(logging);
    for (const auto& [rect, screen, expected] : cases) {
        EXPECT_EQ(manager.adjust(rect, screen), expected) << rect;
    }
}

}  // namespace
}  // namespace corvetta
