#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "windowing/display_scale_manager.h"
#include "windowing/screen_detection_service.h"
#include "windowing/usable_screens.h"
#include "windowing_fixture.h"

namespace corvetta {
namespace {

using ::testing::ElementsAreArray;
using testing_support::makeScreen;

std::vector<ScreenNumber> numbersOf(const std::vector<Screen>& screens) {
    std::vector<ScreenNumber> numbers;
    for (const auto& screen : screens) {
        numbers.push_back(screen.number);
    }
    return numbers;
}

// A port whose displays can change without telling anyone, to see what the cache holds.
class SilentScreens final : public ScreenPort {
public:
    std::vector<Screen> screens() const override { return list; }
    std::optional<Screen> mainScreen() const override {
        return list.empty() ? std::nullopt : std::optional(list.front());
    }
    Registration observeScreenParameters(std::function<void()> handler) override {
        handlers.push_back(std::move(handler));
        const auto index = handlers.size() - 1;
        return Registration([this, index] { handlers[index] = nullptr; });
    }
    void notify() {
        for (const auto& handler : handlers) {
            if (handler) {
                handler();
            }
        }
    }

    std::vector<Screen> list;
    std::vector<std::function<void()>> handlers;
};

class ScreenDetectionTest : public testing_support::WindowingTest {};

TEST_F(ScreenDetectionTest, DisplaysReadTopToBottomThenLeftToRight) {
    const Rect primary(0, 0, 1920, 1080);
    struct Arrangement {
        const char* name;
        std::vector<Rect> others;  // screens 2, 3, ... after the primary (1)
        std::vector<ScreenNumber> expected;
    };
    const std::vector<Arrangement> arrangements = {
        {"side by side, left of primary", {{-1920, 0, 1920, 1080}}, {2, 1}},
        {"right, 40 higher", {{1920, 40, 1920, 1080}}, {1, 2}},
        {"right, 60 higher", {{1920, 60, 1920, 1080}}, {2, 1}},
        {"left, 60 lower", {{-1920, -60, 1920, 1080}}, {1, 2}},
        {"wholly above", {{0, 1080, 1920, 1080}}, {2, 1}},
        {"wholly below", {{300, -900, 1440, 900}}, {1, 2}},
        {"three in a row", {{1920, 0, 1920, 1080}, {-1920, 0, 1920, 1080}}, {3, 1, 2}},
        {"three, right 40 higher", {{-1920, 0, 1920, 1080}, {1920, 40, 1920, 1080}}, {2, 1, 3}},
        {"three, right 60 higher", {{-1920, 0, 1920, 1080}, {1920, 60, 1920, 1080}}, {3, 2, 1}},
        {"three stacked", {{0, -1080, 1920, 1080}, {0, 1080, 1920, 1080}}, {3, 1, 2}},
    };
    for (const auto& arrangement : arrangements) {
        std::vector<Screen> list = {makeScreen(1, primary)};
        for (std::size_t i = 0; i < arrangement.others.size(); ++i) {
            list.push_back(makeScreen(static_cast<ScreenNumber>(i + 2), arrangement.others[i]));
        }
        InMemoryScreens port(list);
        ScreenDetectionService detection(port, logging);
        EXPECT_THAT(numbersOf(detection.orderedScreens()), ElementsAreArray(arrangement.expected))
            << arrangement.name;
    }
}

TEST_F(ScreenDetectionTest, OrderIsCachedUntilTheScreenParametersChange) {
    SilentScreens port;
    port.list = {makeScreen(1, {0, 0, 1920, 1080}), makeScreen(2, {1920, 0, 1920, 1080})};
    {
        ScreenDetectionService detection(port, logging);
        EXPECT_THAT(numbersOf(detection.orderedScreens()), ElementsAreArray({1u, 2u}));

        port.list[1].frame = {-1920, 0, 1920, 1080};
        EXPECT_THAT(numbersOf(detection.orderedScreens()), ElementsAreArray({1u, 2u}));

        port.notify();
        EXPECT_THAT(numbersOf(detection.orderedScreens()), ElementsAreArray({2u, 1u}));
    }
    // The observer goes with the service.
    EXPECT_EQ(port.handlers.back(), nullptr);
}

TEST_F(ScreenDetectionTest, InMemoryScreensAnnounceEveryChange) {
    screens.setScreens({makeScreen(1, {0, 0, 1440, 900})});
    ScreenDetectionService detection(screens, logging);
    EXPECT_EQ(detection.orderedScreens().size(), 1u);
    screens.setScreens({makeScreen(1, {0, 0, 1440, 900}), makeScreen(7, {0, 900, 1440, 900})});
    EXPECT_THAT(numbersOf(detection.orderedScreens()), ElementsAreArray({7u, 1u}));
}

TEST_F(ScreenDetectionTest, FrameGoesToTheDisplayHoldingMostOfIt) {
    // The primary, a display to its right, and one stacked above; the main screen is the right
    // one, so falling back to it is visible.
    screens.setScreens({makeScreen(1, {0, 0, 1920, 1080}), makeScreen(2, {1920, 0, 1920, 1080}),
                        makeScreen(3, {0, 1080, 1920, 1080})});
    ASSERT_TRUE(screens.setMainScreen(2));
    ScreenDetectionService detection(screens, logging);

    struct Case {
        Rect frame;
        ScreenNumber expected;
    };
    const std::vector<Case> cases = {
        {{100, 100, 800, 600}, 1},    // wholly inside
        {{0, 0, 1920, 1080}, 1},      // exactly the frame: edges count as inside
        {{2000, 100, 800, 600}, 2},   // wholly inside the second
        {{100, 1200, 200, 100}, 3},   // above the primary, in screen space as given
        {{1520, 100, 800, 600}, 1},   // 50/50: the earlier in reading order
        {{1620, 100, 800, 600}, 2},   // most of it on the second
        {{100, 900, 400, 400}, 3},    // 220 of 400 above, 180 below
        {{-500, 100, 700, 600}, 1},   // partly off every display
        {{5000, 5000, 100, 100}, 2},  // off every display: the main screen
        {{5000, 5000, 0, 0}, 2},      // no area
        {Rect::null(), 2},
    };
    for (const auto& c : cases) {
        const auto screen = detection.screenContaining(c.frame);
        ASSERT_TRUE(screen) << c.frame;
        EXPECT_EQ(screen->number, c.expected) << c.frame;
    }
}

TEST_F(ScreenDetectionTest, AccessibilityFramesAreFlippedAtThePrimaryTop) {
    screens.setScreens({makeScreen(1, {0, 0, 1920, 1080}), makeScreen(3, {0, 1080, 1920, 1080})});
    ScreenDetectionService detection(screens, logging);
    // 100 points tall, 200 from the top of the upper display: y = 1080 - (-880 + 100) in screen
    // space lands on display 3; the same numbers as a screen-space frame lie on the primary.
    EXPECT_EQ(detection.screenContainingAccessibilityFrame({100, -880, 200, 100})->number, 3u);
    EXPECT_EQ(detection.screenContaining({100, 880, 200, 100})->number, 1u);
}

TEST_F(ScreenDetectionTest, SelectionIsLoggedWithTheScreenDescription) {
    screens.setScreens({makeScreen(4, {0, 0, 1440, 900})});
    ScreenDetectionService detection(screens, logging);
    detection.screenContaining({10, 10, 100, 100});
    EXPECT_THAT(loggedMessages("ScreenDetectionService"),
                ElementsAreArray({"Selected screen: Display 4 (NSScreenNumber 4, frame (0, 0, "
                                  "1440, 900))"}));
}

TEST_F(ScreenDetectionTest, NoDisplaysMeansNoScreen) {
    ScreenDetectionService detection(screens, logging);
    EXPECT_TRUE(detection.orderedScreens().empty());
    EXPECT_EQ(detection.screenContaining({0, 0, 10, 10}), std::nullopt);
}

TEST_F(ScreenDetectionTest, NextDisplayWrapsAndStaysPutWhenAlone) {
    const std::vector<Screen> three = {makeScreen(1, {0, 0, 100, 100}),
                                       makeScreen(2, {100, 0, 100, 100}),
                                       makeScreen(3, {200, 0, 100, 100})};
    struct Case {
        std::vector<Screen> list;
        Screen current;
        ScreenNumber expected;
    };
    // Found by number: a stale copy with another frame still counts as the same display.
    Screen movedTwo = three[1];
    movedTwo.frame = {500, 500, 100, 100};
    const std::vector<Case> cases = {
        {three, three[0], 2},
        {three, movedTwo, 3},
        {three, three[2], 1},
        {{three[0]}, three[0], 1},
        {{three[0], three[2]}, three[1], 2},  // not listed: stays
        {{}, three[1], 2},
    };
    for (const auto& c : cases) {
        const UsableScreens usable(c.list, c.current, logging);
        EXPECT_EQ(usable.nextScreen().number, c.expected)
            << "current " << c.current.number << " of " << c.list.size();
    }
}

TEST_F(ScreenDetectionTest, ClampKeepsFramesInsideTheFullDisplayFrame) {
    const Screen primary = makeScreen(1, {0, 0, 1920, 1080});
    const Screen left = makeScreen(2, {-1440, 200, 1440, 900});
    struct Case {
        Rect rect;
        const Screen& screen;
        Rect expected;
    };
    const std::vector<Case> cases = {
        {{-100, 0, 3000, 500}, primary, {0, 0, 1920, 500}},
        {{1800, 1000, 400, 300}, primary, {1520, 780, 400, 300}},
        {{10.7, 20.2, 100.9, 50.5}, primary, {10, 20, 100, 50}},
        {{0, 1000, 1920, 80}, primary, {0, 1000, 1920, 80}},  // over the menu bar: allowed
        {Rect::null(), primary, {1920, 1080, 0, 0}},
        {{-2000, 0, 500, 2000}, left, {-1440, 200, 500, 900}},
        {{-100.5, 1000.5, 300, 300}, left, {-300, 800, 300, 300}},
    };
    const DisplayScaleManager manager(logging);
    for (const auto& c : cases) {
        EXPECT_EQ(manager.adjust(c.rect, c.screen), c.expected) << c.rect;
    }
}

}  // namespace
}  // namespace corvetta
