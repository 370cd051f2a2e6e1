#include "windowing/half_calculation.h"

#include <algorithm>
#include <cmath>
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
    // Two displays side by side; the second is odd-sized so its halves are told apart.
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
        Rect rect;  // null: the cycle computes none
        ScreenNumber screen;
        Case resulting;
        std::optional<Case> sub;
    };
    const std::vector<Screen> single = {pair[0]};
    const std::vector<Row> rows = {
        {std::nullopt, pair, 0, Case::leftHalf, {0, 0, 500, 775}, 1, Case::leftHalf, {}},
        {0, pair, 1, Case::rightHalf, {1600, 0, 601, 876}, 2, Case::rightHalf, {}},
        {4, pair, 0, Case::leftHalf, {0, 0, 500, 775}, 1, Case::leftHalf, {}},
        {7, pair, 0, Case::leftHalf, {0, 0, 500, 775}, 1, Case::leftHalf, {}},
        {-1, pair, 0, Case::topHalf, {0, 387, 1000, 388}, 1, Case::topHalf, {}},
        {1, pair, 0, Case::leftHalf, {1000, 0, 600, 876}, 2, Case::leftHalf, {}},
        {1, pair, 1, Case::rightHalf, {500, 0, 500, 775}, 1, Case::rightHalf, {}},
        {1, pair, 0, Case::bottomHalf, {1000, 0, 1201, 438}, 2, Case::bottomHalf, {}},
        {1, single, 0, Case::leftHalf, {0, 0, 500, 775}, 1, Case::leftHalf, {}},
        {2, pair, 0, Case::rightHalf, {1600, 0, 601, 876}, 2, Case::rightHalf, {}},
        {2, single, 0, Case::leftHalf, Rect::null(), 1, Case::leftTwoThirds, Case::leftHalf},
        {3, pair, 0, Case::leftHalf, Rect::null(), 1, Case::leftTwoThirds, Case::leftHalf},
        {3, pair, 1, Case::rightHalf, Rect::null(), 2, Case::rightTwoThirds, Case::rightHalf},
        {"3", pair, 0, Case::leftHalf, Rect::null(), 1, Case::leftTwoThirds, Case::leftHalf},
    };
    for (const auto& row : rows) {
        InMemoryPreferences defaults;
        if (row.mode) {
            defaults.set(keys::kSubsequentExecutionSpace, *row.mode);
        }
        const LeftRightHalfCalculation leftRight(defaults, logging);
        const TopBottomHalfCalculation topBottom(defaults, logging);
        const bool vertical = row.action == Case::topHalf || row.action == Case::bottomHalf;
        const HalfCalculation& calculation =
            vertical ? static_cast<const HalfCalculation&>(topBottom) : leftRight;
        const auto result =
            calculation.calculate({window, row.screens, row.screens[row.current], row.action});
        const auto label = ::testing::Message()
                           << WindowDirection(row.action).name() << " in mode "
                           << (row.mode ? row.mode->toInteger().value_or(-99) : -100);
        ASSERT_TRUE(result) << label;
        EXPECT_EQ(result->rect, row.rect) << label;
        EXPECT_EQ(result->screen->number, row.screen) << label;
        EXPECT_EQ(result->resultingAction, WindowDirection(row.resulting)) << label;
        EXPECT_EQ(result->resultingSubAction,
                  row.sub ? std::optional(WindowDirection(*row.sub)) : std::nullopt)
            << label;
    }
}

TEST_F(HalfCalculationTest, OnlyTheHorizontalHalvesCycleThroughSizes) {
    InMemoryPreferences defaults;
    const LeftRightHalfCalculation leftRight(defaults, logging);
    const TopBottomHalfCalculation topBottom(defaults, logging);
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
    InMemoryPreferences defaults;
    const LeftRightHalfCalculation leftRight(defaults, logging);
    const TopBottomHalfCalculation topBottom(defaults, logging);
    for (int mode : {0, 1, 3}) {
        defaults.set(keys::kSubsequentExecutionSpace, mode);
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

TEST_F(HalfCalculationTest, ServiceClampsTheCycleResultToTheFarCorner) {
    preferences.set(keys::kSubsequentExecutionSpace, 3);
    screens.setScreens(pair);
    ScreenDetectionService detection(screens, logging);
    WindowCalculationService service(detection, preferences, logging);
    EXPECT_EQ(service.calculate(Case::leftHalf, window, pair[0]), Rect(1000, 800, 0, 0));
    // Mode is read on every call.
    preferences.set(keys::kSubsequentExecutionSpace, 0);
    EXPECT_EQ(service.calculate(Case::leftHalf, window, pair[0]), Rect(0, 0, 500, 775));
}

TEST_F(HalfCalculationTest, NextDisplayFollowsTheReadingOrderOfEachArrangement) {
    struct Arrangement {
        const char* name;
        std::vector<Screen> platformOrder;
        ScreenNumber from;
        ScreenNumber expected;
    };
    const Screen primary = makeScreen(1, {0, 0, 1920, 1080});
    const std::vector<Arrangement> arrangements = {
        {"left of primary", {primary, makeScreen(2, {-1440, 0, 1440, 900})}, 1, 2},
        {"three in a row, wraps",
         {primary, makeScreen(2, {1920, 0, 1920, 1080}), makeScreen(3, {-1920, 0, 1920, 1080})},
         2,
         3},
        {"three in a row, middle",
         {primary, makeScreen(2, {1920, 0, 1920, 1080}), makeScreen(3, {-1920, 0, 1920, 1080})},
         3,
         1},
        {"stacked above", {primary, makeScreen(2, {0, 1080, 1920, 1080})}, 2, 1},
        {"stacked, wraps", {primary, makeScreen(2, {0, 1080, 1920, 1080})}, 1, 2},
        {"right, 40 higher", {primary, makeScreen(2, {1920, 40, 1920, 1080})}, 1, 2},
        {"right, 60 higher", {primary, makeScreen(2, {1920, 60, 1920, 1080})}, 2, 1},
    };
    preferences.set(keys::kSubsequentExecutionSpace, 1);
    for (const auto& arrangement : arrangements) {
        screens.setScreens(arrangement.platformOrder);
        ScreenDetectionService detection(screens, logging);
        WindowCalculationService service(detection, preferences, logging);
        const Screen& from =
            *std::find_if(arrangement.platformOrder.begin(), arrangement.platformOrder.end(),
                          [&](const Screen& s) { return s.number == arrangement.from; });
        const Screen& to =
            *std::find_if(arrangement.platformOrder.begin(), arrangement.platformOrder.end(),
                          [&](const Screen& s) { return s.number == arrangement.expected; });
        const Rect& v = to.visibleFrame;
        EXPECT_EQ(service.calculate(Case::leftHalf, window, from),
                  Rect(v.minX(), v.minY(), std::floor(v.width() / 2), v.height()))
            << arrangement.name;
    }
}

}  // namespace
}  // namespace corvetta
