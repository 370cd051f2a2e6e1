#include "windowing/window_calculation_service.h"

#include <cmath>
#include <map>
#include <string>
#include <tuple>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "windowing/calculation_settings.h"
#include "windowing_fixture.h"

namespace corvetta {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using testing_support::makeScreen;
using Case = WindowDirection::Case;
using Stored = PropertyValue::Dictionary;
namespace keys = calculation_settings;

// Stored numbers are read as 32-bit floats, and so are the defaults.
const double kDefaultFraction = static_cast<float>(0.9);

class WindowCalculationServiceTest : public testing_support::WindowingTest {
protected:
    ScreenDetectionService detection{screens, logging};
    WindowCalculationService service{detection, preferences, logging};
};

TEST_F(WindowCalculationServiceTest, FractionsOfEvenAndOddVisibleFrames) {
    const Screen even = makeScreen(1, {0, 0, 1000, 625});
    // Odd both ways and away from the origin: the right and top pieces absorb the odd point.
    const Screen odd = makeScreen(2, {100, -50, 1001, 626});
    // The corners and the quarters are separate actions with the same geometry.
    const std::map<Case, Case> quarterOf = {{Case::topLeft, Case::topLeftQuarter},
                                            {Case::topRight, Case::topRightQuarter},
                                            {Case::bottomLeft, Case::bottomLeftQuarter},
                                            {Case::bottomRight, Case::bottomRightQuarter}};
    const std::vector<std::tuple<Case, Rect, Rect>> rows = {
        {Case::leftHalf, {0, 0, 500, 600}, {100, -50, 500, 601}},
        {Case::rightHalf, {500, 0, 500, 600}, {600, -50, 501, 601}},
        {Case::topHalf, {0, 300, 1000, 300}, {100, 250, 1001, 301}},
        {Case::bottomHalf, {0, 0, 1000, 300}, {100, -50, 1001, 300}},
        {Case::topLeft, {0, 300, 500, 300}, {100, 250, 500, 301}},
        {Case::topRight, {500, 300, 500, 300}, {600, 250, 501, 301}},
        {Case::bottomLeft, {0, 0, 500, 300}, {100, -50, 500, 300}},
        {Case::bottomRight, {500, 0, 500, 300}, {600, -50, 501, 300}},
        {Case::maximize, {0, 0, 1000, 600}, {100, -50, 1001, 601}},
        {Case::leftThird, {0, 0, 333, 600}, {100, -50, 333, 601}},
        {Case::centerThird, {333, 0, 333, 600}, {433, -50, 333, 601}},
        {Case::rightThird, {666, 0, 334, 600}, {767, -50, 334, 601}},
        {Case::leftTwoThirds, {0, 0, 666, 600}, {100, -50, 667, 601}},
        {Case::centerTwoThirds, {166, 0, 666, 600}, {266, -50, 667, 601}},
        {Case::rightTwoThirds, {333, 0, 667, 600}, {433, -50, 668, 601}},
        {Case::topThird, {0, 400, 1000, 200}, {100, 350, 1001, 201}},
        {Case::centerVerticalThird, {0, 200, 1000, 200}, {100, 150, 1001, 200}},
        {Case::bottomThird, {0, 0, 1000, 200}, {100, -50, 1001, 200}},
    };
    for (const auto& [action, onEven, onOdd] : rows) {
        const auto quarter = quarterOf.find(action);
        for (Case c : {action, quarter == quarterOf.end() ? action : quarter->second}) {
            EXPECT_EQ(service.calculate(c, {{10, 10, 300, 200}}, even), onEven)
                << WindowDirection(c).name();
            EXPECT_EQ(service.calculate(c, {{110, -40, 300, 200}}, odd), onOdd)
                << WindowDirection(c).name();
        }
    }
}

// A hand-edited preferences file may hold anything: every numeric setting takes its default
// instead of nonsense, says so, and the actions that read them still give real frames.
TEST_F(WindowCalculationServiceTest, NonsenseInAnyNumericSettingFallsBackToItsDefault) {
    const double nonsense[] = {std::nan(""), HUGE_VAL, -HUGE_VAL, -500, 1e12};
    const Screen screen = makeScreen(1, {0, 0, 1440, 900});
    screens.setScreens({screen});
    const Logger logger(logging, "Test");
    for (const auto& setting : keys::kNumericSettings) {
        for (const double value : nonsense) {
            if (setting.range == keys::Range::spacing && value == -500) {
                continue;  // 0 or less is no gap, as it always was
            }
            SCOPED_TRACE(std::string(setting.key) + " = " + std::to_string(value));
            const InMemoryPreferences stored({{setting.key, value}});
            EXPECT_EQ(keys::read(stored, setting.key, &logger), setting.fallback);
            EXPECT_EQ(loggedMessages("Test").back().rfind(
                          "Setting \"" + std::string(setting.key) + "\" is out of range (", 0),
                      0u);
            WindowCalculationService calculation{detection, stored, logging};
            for (const Case action : {Case::larger, Case::smaller, Case::largerWidth,
                                      Case::smallerWidth, Case::almostMaximize, Case::specified}) {
                const Rect frame = calculation.calculate(action, {{100, 100, 800, 600}}, screen);
                EXPECT_TRUE(std::isfinite(frame.minX()) && std::isfinite(frame.minY()) &&
                            frame.width() >= 0 && frame.height() >= 0 && frame.width() <= 1440 &&
                            frame.height() <= 900)
                    << WindowDirection(action).name() << " " << frame;
            }
        }
    }
}

TEST_F(WindowCalculationServiceTest, CenterAndCustomAreClampedToTheDisplay) {
    const Screen screen = makeScreen(1, {0, 0, 1440, 925});
    const std::vector<std::tuple<WindowDirection, Rect, Rect>> rows = {
        {Case::center, {10, 10, 401, 301}, {519, 299, 401, 301}},
        {Case::center, {-500, 0, 100, 950}, {670, 0, 100, 925}},
        {Case::center, {0, 0, 1600, 400}, {0, 250, 1440, 400}},
        {WindowDirection::custom({20.7, 30.2, 400, 300}), {}, {20, 30, 400, 300}},
        {WindowDirection::custom({1300, 0, 400, 300}), {}, {1040, 0, 400, 300}},
        // Callers take the null rectangle as nothing to do.
        {WindowDirection::custom(Rect::null()), {}, Rect::null()},
    };
    for (const auto& [action, window, expected] : rows) {
        EXPECT_EQ(service.calculate(action, {window}, screen), expected) << action.description();
    }
    // Wider than the visible frame, centring starts before its edge; the clamp moves it back.
    EXPECT_EQ(StandardPositionCalculation()
                  .calculateRect({{{0, 0, 1600, 400}}, screen.visibleFrame, Case::center, {}})
                  .rect,
              Rect(-80, 250, 1600, 400));
    // The actions of the other calculations are no fraction of the display.
    for (Case c : {Case::larger, Case::smallerWidth, Case::almostMaximize, Case::specified}) {
        EXPECT_TRUE(StandardPositionCalculation()
                        .calculateRect({{}, {0, 0, 100, 100}, c, {}})
                        .rect.isNull());
    }
}

TEST_F(WindowCalculationServiceTest, EveryResultIsLoggedUnlessOnlyWarningsAreKept) {
    const Screen screen = makeScreen(1, {0, 0, 1001, 800});
    service.calculate(Case::rightHalf, {}, screen);
    service.calculate(WindowDirection::custom({5, 5, 50, 50}), {}, screen);
    service.calculate(WindowDirection::custom(Rect::null()), {}, screen);
    EXPECT_THAT(loggedMessages("WindowCalculationService"),
                ElementsAre("Calculated rightHalf → (500, 0, 501, 775)",
                            "Calculated custom(5, 5, 50, 50) → (5, 5, 50, 50)"));
    EXPECT_THAT(loggedMessages("DisplayScaleManager"),
                Contains("Adjusted frame (500, 0, 501, 775) to (500, 0, 501, 775) on Display 1 "
                         "(NSScreenNumber 1, frame (0, 0, 1001, 800))"));

    const auto before = logbook.entryCount();
    loggingPreferences.set(LoggingService::kMinimumLogLevelKey, 2);
    logging.reloadSettings();
    EXPECT_EQ(service.calculate(Case::maximize, {}, screen), Rect(0, 0, 1001, 775));
    EXPECT_EQ(logbook.entryCount(), before);
}

TEST_F(WindowCalculationServiceTest, AlmostMaximizeAndSpecifiedSizes) {
    const Stored nines = {{keys::kAlmostMaximizeHeight, 0.9}, {keys::kAlmostMaximizeWidth, 0.9}};
    const Stored flat = {{keys::kAlmostMaximizeHeight, 0.5}, {keys::kAlmostMaximizeWidth, 1}};
    const Stored halves = {{keys::kSpecifiedWidth, 0.5}, {keys::kSpecifiedHeight, 0.5}};
    const Stored points = {{keys::kSpecifiedWidth, 800.5}, {keys::kSpecifiedHeight, 600.5}};
    const Stored whole = {{keys::kSpecifiedWidth, 1.0}, {keys::kSpecifiedHeight, 1.0}};
    const Stored tall = {{keys::kSpecifiedWidth, 1001}, {keys::kSpecifiedHeight, 1176}};
    const std::vector<std::tuple<Stored, Case, Rect, Rect>> rows = {
        // A stored 0.9 reads back as the default does, so storing it changes nothing.
        {{}, Case::almostMaximize, {0, 0, 1000, 800}, {50, 40, 899, 719}},
        {nines, Case::almostMaximize, {0, 0, 1000, 800}, {50, 40, 899, 719}},
        {flat, Case::almostMaximize, {-1441, 100, 1441, 901}, {-1441, 325, 1441, 450}},
        {{}, Case::specified, {0, 0, 1440, 875}, {720, 438, 0, 0}},
        // Fractions floor, centring rounds halves away from zero.
        {halves, Case::specified, {0, 0, 1441, 875}, {361, 219, 720, 437}},
        {points, Case::specified, {100, 50, 1000, 700}, {200, 100, 801, 601}},
        {whole, Case::specified, {0, 0, 1440, 875}, {0, 0, 1440, 875}},
        {tall, Case::specified, {0, 0, 1440, 875}, {220, 0, 1001, 900}},
    };
    for (const auto& [stored, action, visible, expected] : rows) {
        const InMemoryPreferences defaults(stored);
        const Screen screen =
            makeScreen(1, {visible.minX(), visible.minY(), visible.width(), visible.height() + 25});
        WindowCalculationService calculations(detection, defaults, logging);
        EXPECT_EQ(calculations.calculate(action, {}, screen), expected)
            << WindowDirection(action).name() << " on " << visible;
    }

    // Only a width in points is limited to the visible frame; the height is left to the clamp.
    const Rect visible(0, 0, 1440, 875);
    const InMemoryPreferences huge({{keys::kSpecifiedWidth, 5000}, {keys::kSpecifiedHeight, 5000}});
    EXPECT_EQ(SpecifiedCalculation(huge).calculateRect({{}, visible, Case::specified, {}}).rect,
              Rect(0, -2063, 1440, 5000));
    // (875 - 1176) / 2 = -150.5 rounds away from zero.
    EXPECT_EQ(SpecifiedCalculation(InMemoryPreferences(tall))
                  .calculateRect({{}, visible, Case::specified, {}})
                  .rect,
              Rect(220, -151, 1001, 1176));
}

TEST_F(WindowCalculationServiceTest, TunablesFollowTheirRangeRules) {
    // The defaults show in the calculation tables' rows without stored settings, and values far
    // out of range in the test above; here each reader takes its own key and its edge cases.
    const std::vector<std::tuple<const char*, PropertyValue, double>> rows = {
        {keys::kAlmostMaximizeHeight, 1, 1},
        {keys::kAlmostMaximizeHeight, 1.5, kDefaultFraction},
        {keys::kAlmostMaximizeHeight, 0, kDefaultFraction},
        {keys::kAlmostMaximizeHeight, "0.75", 0.75},
        {keys::kAlmostMaximizeHeight, "tall", kDefaultFraction},
        {keys::kAlmostMaximizeWidth, 0.3, static_cast<float>(0.3)},
        {keys::kAlmostMaximizeWidth, 1.0000000001, 1},  // narrows to 1, so it is in range
        {keys::kGapSize, 12.5, 12.5},
        {keys::kGapSize, 0, 5},
        {keys::kSizeOffset, 0, 30},
        {keys::kCurtainChangeSize, true, true},
        {keys::kSpecifiedWidth, -20, 0},  // no size is negative
        {keys::kSpecifiedHeight, 4000, 4000},
    };
    for (const auto& [key, value, expected] : rows) {
        const InMemoryPreferences stored({{key, value}});
        const AlmostMaximizeCalculation almost(stored);
        const ChangeSizeCalculation change(stored);
        const SpecifiedCalculation specified(stored);
        const std::string k = key;
        const double read = k == keys::kAlmostMaximizeHeight  ? almost.almostMaximizeHeight()
                            : k == keys::kAlmostMaximizeWidth ? almost.almostMaximizeWidth()
                            : k == keys::kGapSize             ? change.screenEdgeGapSize()
                            : k == keys::kSizeOffset          ? change.sizeOffsetAbs()
                            : k == keys::kCurtainChangeSize   ? change.curtainChangeSize()
                            : k == keys::kSpecifiedWidth      ? specified.specifiedWidth()
                                                              : specified.specifiedHeight();
        EXPECT_EQ(read, expected) << key << " = " << value.toDouble().value_or(-1);
    }
}

TEST_F(WindowCalculationServiceTest, SettingsTakeEffectWhenTheServiceIsNextBuilt) {
    const Screen screen = makeScreen(1, {0, 0, 1000, 825});
    EXPECT_EQ(service.calculate(Case::almostMaximize, {}, screen), Rect(50, 40, 899, 719));
    preferences.set(keys::kAlmostMaximizeWidth, 0.5);
    EXPECT_EQ(service.calculate(Case::almostMaximize, {}, screen), Rect(50, 40, 899, 719));
    WindowCalculationService rebuilt(detection, preferences, logging);
    EXPECT_EQ(rebuilt.calculate(Case::almostMaximize, {}, screen), Rect(250, 40, 500, 719));
}

}  // namespace
}  // namespace corvetta
