#include "windowing/half_calculation.h"

#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "windowing/calculation_settings.h"
#include "windowing/window_calculation_service.h"
#include "windowing_fixture.h"

namespace corvetta {
namespace {

using ::testing::Contains;
using ::testing::HasSubstr;
using testing_support::makeScreen;
using Case = WindowDirection::Case;
namespace keys = calculation_settings;

class HalfCalculationTest : public testing_support::WindowingTest {
protected:
    // The second display is odd-sized so that its halves are told apart.
    const std::vector<Screen> pair = {makeScreen(1, {0, 0, 1000, 800}),
                                      makeScreen(2, {1000, 0, 1201, 901})};
    const TargetWindow window{{10, 10, 300, 200}};
};

TEST_F(HalfCalculationTest, EachModeOfARepeatedPress) {
    struct Row {
        std::optional<PropertyValue> mode;
        std::vector<Screen> screens;
        std::size_t current;
        Case action;
        Rect rect;
        ScreenNumber screen;
        Case resulting;
        std::optional<Case> sub;
    };
    const std::vector<Screen> one = {pair[0]};
    const Rect none = Rect::null();
    const std::vector<Row> rows = {
        {std::nullopt, pair, 0, Case::leftHalf, {0, 0, 500, 775}, 1, Case::leftHalf, {}},
        {0, pair, 1, Case::rightHalf, {1600, 0, 601, 876}, 2, Case::rightHalf, {}},
        {4, pair, 0, Case::leftHalf, {0, 0, 500, 775}, 1, Case::leftHalf, {}},
        {7, pair, 0, Case::leftHalf, {0, 0, 500, 775}, 1, Case::leftHalf, {}},
        {-1, pair, 0, Case::topHalf, {0, 387, 1000, 388}, 1, Case::topHalf, {}},
        {1, pair, 0, Case::leftHalf, {1000, 0, 600, 876}, 2, Case::leftHalf, {}},
        {1, pair, 1, Case::rightHalf, {500, 0, 500, 775}, 1, Case::rightHalf, {}},
        {1, pair, 0, Case::bottomHalf, {1000, 0, 1201, 438}, 2, Case::bottomHalf, {}},
        {1, one, 0, Case::leftHalf, {0, 0, 500, 775}, 1, Case::leftHalf, {}},
        {2, pair, 0, Case::rightHalf, {1600, 0, 601, 876}, 2, Case::rightHalf, {}},
        {2, one, 0, Case::leftHalf, none, 1, Case::leftTwoThirds, Case::leftHalf},
        {3, pair, 0, Case::leftHalf, none, 1, Case::leftTwoThirds, Case::leftHalf},
        {3, pair, 1, Case::rightHalf, none, 2, Case::rightTwoThirds, Case::rightHalf},
        {"3", pair, 0, Case::leftHalf, none, 1, Case::leftTwoThirds, Case::leftHalf},
    };
    for (std::size_t i = 0; i < rows.size(); ++i) {
        const Row& row = rows[i];
        SCOPED_TRACE("row " + std::to_string(i));
        InMemoryPreferences defaults;
        if (row.mode) {
            defaults.set(keys::kSubsequentExecutionSpace, *row.mode);
        }
        const LeftRightHalfCalculation leftRight(defaults, logging);
        const TopBottomHalfCalculation topBottom(defaults, logging);
        const bool vertical = row.action == Case::topHalf || row.action == Case::bottomHalf;
        const auto result =
            (vertical ? static_cast<const HalfCalculation&>(topBottom) : leftRight)
                .calculate({window, row.screens, row.screens[row.current], row.action});
        ASSERT_TRUE(result);
        EXPECT_EQ(result->rect, row.rect);
        EXPECT_EQ(result->screen->number, row.screen);
        EXPECT_EQ(result->resultingAction, WindowDirection(row.resulting));
        EXPECT_EQ(result->resultingSubAction,
                  row.sub ? std::optional(WindowDirection(*row.sub)) : std::nullopt);
    }
}

TEST_F(HalfCalculationTest, OnlyTheHorizontalHalvesCycleThroughSizes) {
    const LeftRightHalfCalculation leftRight(preferences, logging);
    const TopBottomHalfCalculation topBottom(preferences, logging);
    const std::vector<std::pair<Case, Case>> cycle = {
        {Case::leftHalf, Case::leftTwoThirds},    {Case::leftTwoThirds, Case::leftThird},
        {Case::leftThird, Case::leftHalf},        {Case::rightHalf, Case::rightTwoThirds},
        {Case::rightTwoThirds, Case::rightThird}, {Case::rightThird, Case::rightHalf},
        {Case::centerThird, Case::centerThird},   {Case::topHalf, Case::topHalf},
    };
    for (const auto& [from, to] : cycle) {
        EXPECT_EQ(leftRight.nextAction(from), WindowDirection(to)) << WindowDirection(from).name();
    }
    for (Case c : allWindowDirectionCases()) {
        EXPECT_EQ(topBottom.nextAction(c), WindowDirection(c));
    }
    EXPECT_EQ(leftRight.nextAction(WindowDirection::custom({1, 2, 3, 4})),
              WindowDirection::custom({1, 2, 3, 4}));
}

TEST_F(HalfCalculationTest, EachPathNamesItsCalculationInTheLog) {
    const LeftRightHalfCalculation leftRight(preferences, logging);
    const TopBottomHalfCalculation topBottom(preferences, logging);
    for (int mode : {0, 1, 3}) {
        preferences.set(keys::kSubsequentExecutionSpace, mode);
        leftRight.calculate({window, pair, pair[0], Case::leftHalf});
        topBottom.calculate({window, pair, pair[0], Case::topHalf});
    }
    const auto messages = loggedMessages("HalfCalculation");
    ASSERT_EQ(messages.size(), 6u);
    for (std::size_t i = 0; i < messages.size(); ++i) {
        EXPECT_THAT(messages[i], HasSubstr(i % 2 == 0 ? "LeftRightHalfCalculation: "
                                                      : "TopBottomHalfCalculation: "));
    }
    EXPECT_THAT(messages, Contains("LeftRightHalfCalculation: cycling leftHalf to leftTwoThirds"));
    EXPECT_THAT(loggedMessages("UsableScreens"),
                Contains(HasSubstr("Next screen after Display 1")));
}

TEST_F(HalfCalculationTest, ServiceClampsTheCycleResultToTheFarCornerAndRereadsTheMode) {
    preferences.set(keys::kSubsequentExecutionSpace, 3);
    screens.setScreens(pair);
    ScreenDetectionService detection(screens, logging);
    WindowCalculationService service(detection, preferences, logging);
    EXPECT_EQ(service.calculate(Case::leftHalf, window, pair[0]), Rect(1000, 800, 0, 0));
    preferences.set(keys::kSubsequentExecutionSpace, 0);
    EXPECT_EQ(service.calculate(Case::leftHalf, window, pair[0]), Rect(0, 0, 500, 775));
}

// Three displays are needed to tell the reading order from the platform's: with two, the next
// display is always the other one. The order itself is the screen detection's business.
TEST_F(HalfCalculationTest, NextDisplayFollowsTheReadingOrder) {
    preferences.set(keys::kSubsequentExecutionSpace, 1);
    // Side by side within 40 points, they read 2, 1, 3; the platform lists 1, 2, 3.
    const std::vector<Screen> list = {makeScreen(1, {0, 0, 1920, 1080}),
                                      makeScreen(2, {-1920, -40, 1920, 1080}),
                                      makeScreen(3, {1920, -40, 1920, 1080})};
    screens.setScreens(list);
    ScreenDetectionService detection(screens, logging);
    WindowCalculationService service(detection, preferences, logging);
    EXPECT_EQ(service.calculate(Case::leftHalf, window, list[0]), Rect(1920, -40, 960, 1055));
}

}  // namespace
}  // namespace corvetta
