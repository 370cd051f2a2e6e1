#include "windowing/window_calculation_service.h"

#include <random>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "windowing/calculation_settings.h"
#include "windowing_fixture.h"

namespace corvetta {
namespace {

using ::testing::Contains;
using ::testing::ElementsAreArray;
using testing_support::makeScreen;
using Case = WindowDirection::Case;

struct Placed {
    Case action;
    Rect expected;
};

// The corners and the quarters are separate actions with the same geometry.
Case quarterFor(Case corner) {
    switch (corner) {
        case Case::topLeft:
            return Case::topLeftQuarter;
        case Case::topRight:
            return Case::topRightQuarter;
        case Case::bottomLeft:
            return Case::bottomLeftQuarter;
        case Case::bottomRight:
            return Case::bottomRightQuarter;
        default:
            return corner;
    }
}

class WindowCalculationServiceTest : public testing_support::WindowingTest {
protected:
    WindowCalculationService& service() {
        if (!service_) {
            detection_.emplace(screens, logging);
            service_.emplace(*detection_, preferences, logging);
        }
        return *service_;
    }

    // Checks a table of placements on one screen, each corner also as its quarter.
    void expectPlacements(const Screen& screen, const std::vector<Placed>& table) {
        const TargetWindow window{
            {screen.visibleFrame.minX() + 10, screen.visibleFrame.minY() + 10, 300, 200}};
        for (const auto& row : table) {
            for (Case action : {row.action, quarterFor(row.action)}) {
                EXPECT_EQ(service().calculate(action, window, screen), row.expected)
                    << WindowDirection(action).name() << " on " << screen.visibleFrame;
            }
        }
    }

    std::optional<ScreenDetectionService> detection_;
    std::optional<WindowCalculationService> service_;
};

TEST_F(WindowCalculationServiceTest, FractionsOfAnEvenVisibleFrame) {
    const Screen screen = makeScreen(1, {0, 0, 1000, 625});
    screens.setScreens({screen});
    expectPlacements(screen, {
                                 {Case::leftHalf, {0, 0, 500, 600}},
                                 {Case::rightHalf, {500, 0, 500, 600}},
                                 {Case::topHalf, {0, 300, 1000, 300}},
                                 {Case::bottomHalf, {0, 0, 1000, 300}},
                                 {Case::topLeft, {0, 300, 500, 300}},
                                 {Case::topRight, {500, 300, 500, 300}},
                                 {Case::bottomLeft, {0, 0, 500, 300}},
                                 {Case::bottomRight, {500, 0, 500, 300}},
                                 {Case::maximize, {0, 0, 1000, 600}},
                                 {Case::leftThird, {0, 0, 333, 600}},
                                 {Case::centerThird, {333, 0, 333, 600}},
                                 {Case::rightThird, {666, 0, 334, 600}},
                                 {Case::leftTwoThirds, {0, 0, 666, 600}},
                                 {Case::centerTwoThirds, {166, 0, 666, 600}},
                                 {Case::rightTwoThirds, {333, 0, 667, 600}},
                                 {Case::topThird, {0, 400, 1000, 200}},
                                 {Case::centerVerticalThird, {0, 200, 1000, 200}},
                                 {Case::bottomThird, {0, 0, 1000, 200}},
                             });
}

TEST_F(WindowCalculationServiceTest, FractionsOfAnOddVisibleFrameAwayFromTheOrigin) {
    const Screen screen = makeScreen(1, {100, -50, 1001, 626});
    screens.setScreens({makeScreen(2, {-2000, 0, 1920, 1080}), screen});
    // The right and top pieces absorb the odd point.
    expectPlacements(screen, {
                                 {Case::leftHalf, {100, -50, 500, 601}},
                                 {Case::rightHalf, {600, -50, 501, 601}},
                                 {Case::topHalf, {100, 250, 1001, 301}},
                                 {Case::bottomHalf, {100, -50, 1001, 300}},
                                 {Case::topLeft, {100, 250, 500, 301}},
                                 {Case::topRight, {600, 250, 501, 301}},
                                 {Case::bottomLeft, {100, -50, 500, 300}},
                                 {Case::bottomRight, {600, -50, 501, 300}},
                                 {Case::maximize, {100, -50, 1001, 601}},
                                 {Case::leftThird, {100, -50, 333, 601}},
                                 {Case::centerThird, {433, -50, 333, 601}},
                                 {Case::rightThird, {767, -50, 334, 601}},
                                 {Case::leftTwoThirds, {100, -50, 667, 601}},
                                 {Case::centerTwoThirds, {266, -50, 667, 601}},
                                 {Case::rightTwoThirds, {433, -50, 668, 601}},
                                 {Case::topThird, {100, 350, 1001, 201}},
                                 {Case::centerVerticalThird, {100, 150, 1001, 200}},
                                 {Case::bottomThird, {100, -50, 1001, 200}},
                             });
}

TEST_F(WindowCalculationServiceTest, HalvesAndQuartersTileAnyVisibleFrame) {
    std::mt19937 random(7);
    std::uniform_int_distribution<int> origin(-3000, 3000);
    std::uniform_int_distribution<int> extent(200, 3000);
    for (int i = 0; i < 200; ++i) {
        const Rect frame(origin(random), origin(random), extent(random), extent(random) + 30);
        const Rect visible(frame.minX(), frame.minY(), frame.width(), frame.height() - 30);
        const Screen screen = makeScreen(1, frame, visible);
        screens.setScreens({screen});
        const TargetWindow window{visible};
        const auto at = [&](Case c) { return service().calculate(c, window, screen); };

        EXPECT_EQ(at(Case::leftHalf).unionWith(at(Case::rightHalf)), visible);
        EXPECT_EQ(at(Case::leftHalf).maxX(), at(Case::rightHalf).minX());
        EXPECT_EQ(at(Case::bottomHalf).unionWith(at(Case::topHalf)), visible);
        EXPECT_EQ(at(Case::bottomHalf).maxY(), at(Case::topHalf).minY());
        const double quarters = at(Case::topLeftQuarter).area() + at(Case::topRightQuarter).area() +
                                at(Case::bottomLeftQuarter).area() +
                                at(Case::bottomRightQuarter).area();
        EXPECT_EQ(quarters, visible.area()) << visible;
        EXPECT_EQ(at(Case::rightThird).maxX(), visible.maxX());
        EXPECT_EQ(at(Case::topThird).maxY(), visible.maxY());
    }
}

TEST_F(WindowCalculationServiceTest, CenterKeepsTheSizeAndTheClampHasTheLastWord) {
    const Screen screen = makeScreen(1, {0, 0, 1440, 925});
    screens.setScreens({screen});
    struct Row {
        Rect window;
        Rect expected;
    };
    const std::vector<Row> rows = {
        {{10, 10, 401, 301}, {519, 299, 401, 301}},
        // Wider than the visible frame: the origin falls before x0, and the clamp moves it back.
        {{0, 0, 1600, 400}, {0, 250, 1440, 400}},
        {{-500, 0, 100, 950}, {670, 0, 100, 925}},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(service().calculate(Case::center, {row.window}, screen), row.expected)
            << row.window;
    }
    const StandardPositionCalculation standard;
    const auto unclamped = standard.calculateRect(
        {{{0, 0, 1600, 400}}, screen.visibleFrame, Case::center, screen.frame});
    EXPECT_EQ(unclamped.rect, Rect(-80, 250, 1600, 400));
}

TEST_F(WindowCalculationServiceTest, CustomRectangleIsUsedAsCarriedThenClamped) {
    const Screen screen = makeScreen(1, {0, 0, 1440, 900});
    screens.setScreens({screen});
    const TargetWindow window{{0, 0, 100, 100}};
    EXPECT_EQ(service().calculate(WindowDirection::custom({20.7, 30.2, 400, 300}), window, screen),
              Rect(20, 30, 400, 300));
    EXPECT_EQ(service().calculate(WindowDirection::custom({1300, 0, 400, 300}), window, screen),
              Rect(1040, 0, 400, 300));
    // Nothing to compute: callers take the null rectangle as nothing to do.
    EXPECT_TRUE(
        service().calculate(WindowDirection::custom(Rect::null()), window, screen).isNull());
}

TEST_F(WindowCalculationServiceTest, EachActionGoesToItsCalculator) {
    screens.setScreens({makeScreen(1, {0, 0, 1440, 900})});
    auto& calculations = service();
    for (Case c : allWindowDirectionCases()) {
        const WindowCalculation& chosen = calculations.calculationFor(c);
        const bool leftRight = c == Case::leftHalf || c == Case::rightHalf;
        const bool topBottom = c == Case::topHalf || c == Case::bottomHalf;
        const bool changeSize = c == Case::larger || c == Case::smaller || c == Case::largerWidth ||
                                c == Case::smallerWidth;
        EXPECT_EQ(dynamic_cast<const LeftRightHalfCalculation*>(&chosen) != nullptr, leftRight);
        EXPECT_EQ(dynamic_cast<const TopBottomHalfCalculation*>(&chosen) != nullptr, topBottom);
        EXPECT_EQ(dynamic_cast<const ChangeSizeCalculation*>(&chosen) != nullptr, changeSize);
        EXPECT_EQ(dynamic_cast<const AlmostMaximizeCalculation*>(&chosen) != nullptr,
                  c == Case::almostMaximize);
        EXPECT_EQ(dynamic_cast<const SpecifiedCalculation*>(&chosen) != nullptr,
                  c == Case::specified);
        EXPECT_EQ(dynamic_cast<const StandardPositionCalculation*>(&chosen) != nullptr,
                  !leftRight && !topBottom && !changeSize && c != Case::almostMaximize &&
                      c != Case::specified)
            << WindowDirection(c).name();
    }
}

TEST_F(WindowCalculationServiceTest, StandardCalculationLeavesOtherActionsAlone) {
    const StandardPositionCalculation standard;
    for (Case c : {Case::larger, Case::smallerWidth, Case::almostMaximize, Case::specified}) {
        EXPECT_TRUE(
            standard.calculateRect({{{0, 0, 10, 10}}, {0, 0, 100, 100}, c, {0, 0, 100, 100}})
                .rect.isNull());
    }
}

TEST_F(WindowCalculationServiceTest, EveryResultIsLogged) {
    const Screen screen = makeScreen(1, {0, 0, 1001, 800});
    screens.setScreens({screen});
    service().calculate(Case::rightHalf, {{0, 0, 10, 10}}, screen);
    service().calculate(WindowDirection::custom({5, 5, 50, 50}), {{0, 0, 10, 10}}, screen);
    service().calculate(WindowDirection::custom(Rect::null()), {{0, 0, 10, 10}}, screen);
    EXPECT_THAT(loggedMessages("WindowCalculationService"),
                ElementsAreArray({"Calculated rightHalf → (500, 0, 501, 775)",
                                  "Calculated custom(5, 5, 50, 50) → (5, 5, 50, 50)"}));
    EXPECT_THAT(loggedMessages("DisplayScaleManager"),
                Contains("Adjusted frame (500, 0, 501, 775) to (500, 0, 501, 775) on Display 1 "
                         "(NSScreenNumber 1, frame (0, 0, 1001, 800))"));
}

TEST_F(WindowCalculationServiceTest, WarningsOnlyLoggingKeepsCalculationsQuiet) {
    loggingPreferences.set(LoggingService::kMinimumLogLevelKey, 2);
    logging.reloadSettings();
    const Screen screen = makeScreen(1, {0, 0, 1440, 900});
    screens.setScreens({screen});
    EXPECT_EQ(service().calculate(Case::maximize, {{0, 0, 10, 10}}, screen), Rect(0, 0, 1440, 875));
    EXPECT_EQ(logbook.entryCount(), 0u);
}

// Almost maximize and specified: settings read when the service is built.
struct SizedRow {
    std::vector<std::pair<const char*, PropertyValue>> stored;
    Case action;
    Rect visible;
    Rect expected;
};

TEST_F(WindowCalculationServiceTest, AlmostMaximizeAndSpecifiedSizes) {
    namespace keys = calculation_settings;
    const std::vector<SizedRow> rows = {
        // 0.9 is applied as the stored float reads back, so a stored default changes nothing.
        {{}, Case::almostMaximize, {0, 0, 1000, 800}, {50, 40, 899, 719}},
        {{{keys::kAlmostMaximizeHeight, 0.9}, {keys::kAlmostMaximizeWidth, 0.9}},
         Case::almostMaximize,
         {0, 0, 1000, 800},
         {50, 40, 899, 719}},
        {{{keys::kAlmostMaximizeHeight, 0.5}, {keys::kAlmostMaximizeWidth, 1}},
         Case::almostMaximize,
         {-1441, 100, 1441, 901},
         {-1441, 325, 1441, 450}},
        {{{keys::kAlmostMaximizeHeight, 1.5}, {keys::kAlmostMaximizeWidth, 0}},
         Case::almostMaximize,
         {0, 0, 1000, 800},
         {50, 40, 899, 719}},
        // Unset: a zero-sized rectangle at the centre.
        {{}, Case::specified, {0, 0, 1440, 875}, {720, 438, 0, 0}},
        // Fractions floor, centring rounds halves away from zero.
        {{{keys::kSpecifiedWidth, 0.5}, {keys::kSpecifiedHeight, 0.5}},
         Case::specified,
         {0, 0, 1441, 875},
         {361, 219, 720, 437}},
        {{{keys::kSpecifiedWidth, 800.5}, {keys::kSpecifiedHeight, 600.5}},
         Case::specified,
         {100, 50, 1000, 700},
         {200, 100, 801, 601}},
        {{{keys::kSpecifiedWidth, 1.0}, {keys::kSpecifiedHeight, 1.0}},
         Case::specified,
         {0, 0, 1440, 875},
         {0, 0, 1440, 875}},
    };
    for (const auto& row : rows) {
        InMemoryPreferences stored;
        for (const auto& [key, value] : row.stored) {
            stored.set(key, value);
        }
        const Screen screen = makeScreen(1, {row.visible.minX(), row.visible.minY(),
                                             row.visible.width(), row.visible.height() + 25});
        screens.setScreens({screen});
        ScreenDetectionService detection(screens, logging);
        WindowCalculationService calculations(detection, stored, logging);
        EXPECT_EQ(calculations.calculate(row.action, {{0, 0, 10, 10}}, screen), row.expected)
            << WindowDirection(row.action).name() << " on " << row.visible;
    }
}

TEST_F(WindowCalculationServiceTest, SpecifiedHeightInPointsIsLimitedOnlyByTheClamp) {
    preferences.set(calculation_settings::kSpecifiedWidth, 5000);
    preferences.set(calculation_settings::kSpecifiedHeight, 5000);
    const SpecifiedCalculation specified(preferences);
    const Rect visible(0, 0, 1440, 875);
    EXPECT_EQ(specified.calculateRect({{}, visible, Case::specified, {0, 0, 1440, 900}}).rect,
              Rect(0, -2063, 1440, 5000));

    preferences.set(calculation_settings::kSpecifiedWidth, 1001);
    preferences.set(calculation_settings::kSpecifiedHeight, 1176);
    const SpecifiedCalculation odd(preferences);
    // (875 - 1176) / 2 = -150.5 rounds away from zero.
    EXPECT_EQ(odd.calculateRect({{}, visible, Case::specified, {0, 0, 1440, 900}}).rect,
              Rect(220, -151, 1001, 1176));

    const Screen screen = makeScreen(1, {0, 0, 1440, 900});
    screens.setScreens({screen});
    EXPECT_EQ(service().calculate(Case::specified, {}, screen), Rect(220, 0, 1001, 900));
}

TEST_F(WindowCalculationServiceTest, TunablesFollowTheirRangeRules) {
    namespace keys = calculation_settings;
    const double defaultFraction = keys::widenedFloat(0.9);
    struct Row {
        const char* key;
        PropertyValue stored;
        double expected;
    };
    const std::vector<Row> rows = {
        {keys::kAlmostMaximizeHeight, 0.5, 0.5},
        {keys::kAlmostMaximizeHeight, 1, 1},
        {keys::kAlmostMaximizeHeight, 1.5, defaultFraction},
        {keys::kAlmostMaximizeHeight, 0, defaultFraction},
        {keys::kAlmostMaximizeHeight, -0.5, defaultFraction},
        {keys::kAlmostMaximizeHeight, "0.75", 0.75},
        {keys::kAlmostMaximizeHeight, "tall", defaultFraction},
        {keys::kAlmostMaximizeWidth, 0.3, keys::widenedFloat(0.3)},
        {keys::kAlmostMaximizeWidth, 1.0000000001, 1},  // narrows to 1, so it is in range
        {keys::kGapSize, 12.5, 12.5},
        {keys::kGapSize, 0, 5},
        {keys::kGapSize, -2, 5},
        {keys::kSizeOffset, 25, 25},
        {keys::kSizeOffset, 0, 30},
        {keys::kSizeOffset, -10, 30},
        {keys::kSpecifiedWidth, -20, -20},
        {keys::kSpecifiedWidth, 0.1, keys::widenedFloat(0.1)},
        {keys::kSpecifiedHeight, 4000, 4000},
    };
    for (const auto& row : rows) {
        InMemoryPreferences stored({{row.key, row.stored}});
        const AlmostMaximizeCalculation almost(stored);
        const ChangeSizeCalculation change(stored);
        const SpecifiedCalculation specified(stored);
        const std::string key = row.key;
        const double read = key == keys::kAlmostMaximizeHeight  ? almost.almostMaximizeHeight()
                            : key == keys::kAlmostMaximizeWidth ? almost.almostMaximizeWidth()
                            : key == keys::kGapSize             ? change.screenEdgeGapSize()
                            : key == keys::kSizeOffset          ? change.sizeOffsetAbs()
                            : key == keys::kSpecifiedWidth      ? specified.specifiedWidth()
                                                                : specified.specifiedHeight();
        EXPECT_EQ(read, row.expected) << key << " = " << row.stored.toDouble().value_or(-1);
    }

    const InMemoryPreferences empty;
    EXPECT_EQ(AlmostMaximizeCalculation(empty).almostMaximizeWidth(), defaultFraction);
    EXPECT_EQ(ChangeSizeCalculation(empty).screenEdgeGapSize(), 5);
    EXPECT_EQ(ChangeSizeCalculation(empty).sizeOffsetAbs(), 30);
    EXPECT_FALSE(ChangeSizeCalculation(empty).curtainChangeSize());
    EXPECT_EQ(SpecifiedCalculation(empty).specifiedHeight(), 0);
    EXPECT_TRUE(ChangeSizeCalculation(InMemoryPreferences({{keys::kCurtainChangeSize, true}}))
                    .curtainChangeSize());
}

TEST_F(WindowCalculationServiceTest, SettingsTakeEffectWhenTheServiceIsNextBuilt) {
    const Screen screen = makeScreen(1, {0, 0, 1000, 825});
    screens.setScreens({screen});
    EXPECT_EQ(service().calculate(Case::almostMaximize, {}, screen), Rect(50, 40, 899, 719));
    preferences.set(calculation_settings::kAlmostMaximizeWidth, 0.5);
    EXPECT_EQ(service().calculate(Case::almostMaximize, {}, screen), Rect(50, 40, 899, 719));
    ScreenDetectionService detection(screens, logging);
    WindowCalculationService rebuilt(detection, preferences, logging);
    EXPECT_EQ(rebuilt.calculate(Case::almostMaximize, {}, screen), Rect(250, 40, 500, 719));
}

}  // namespace
}  // namespace corvetta
