#include "windowing/change_size_calculation.h"

#include <vector>

#include <gtest/gtest.h>

#include "windowing/calculation_settings.h"

namespace corvetta {
namespace {

using Case = WindowDirection::Case;
using Stored = PropertyValue::Dictionary;
namespace keys = calculation_settings;

// 1440 x 900 visible: the default minimum size is 360 x 225.
const Rect kVisible(0, 0, 1440, 900);
const Stored kOdd = {{keys::kSizeOffset, 25}};
const Stored kCurtain = {{keys::kCurtainChangeSize, true}};
const Stored kWideGap = {{keys::kCurtainChangeSize, true}, {keys::kGapSize, 20}};
const Stored kHalfWide = {{keys::kMinimumWindowWidth, 0.5}};

struct Row {
    Stored stored;
    Case action;
    Rect window;
    Rect expected;
};

void expectRows(const std::vector<Row>& rows) {
    for (const auto& row : rows) {
        const InMemoryPreferences defaults(row.stored);
        const RectCalculationParameters parameters{
            {row.window}, kVisible, row.action, {0, 0, 1440, 925}};
        EXPECT_EQ(ChangeSizeCalculation(defaults).calculateRect(parameters).rect, row.expected)
            << WindowDirection(row.action).name() << " on " << row.window;
    }
}

TEST(ChangeSizeCalculationTest, GrowsAndShrinksAroundTheCentre) {
    const Rect w(100, 100, 800, 600);
    expectRows({
        {{}, Case::larger, w, {85, 85, 830, 630}},
        {{}, Case::smaller, w, {115, 115, 770, 570}},
        {{}, Case::largerWidth, w, {85, 100, 830, 600}},
        {{}, Case::smallerWidth, w, {115, 100, 770, 600}},
        // An odd offset moves the origin 12 when growing and 13 when shrinking.
        {kOdd, Case::larger, w, {88, 88, 825, 625}},
        {kOdd, Case::smaller, w, {113, 113, 775, 575}},
        {kOdd, Case::smallerWidth, w, {113, 100, 775, 600}},
        {{}, Case::maximize, w, w},
        // No upper limit here: the display clamp keeps the frame on the screen.
        {{}, Case::larger, {-10, -10, 1440, 900}, {-25, -25, 1470, 930}},
    });
}

TEST(ChangeSizeCalculationTest, CurtainKeepsASideEdgeInPlace) {
    const Rect nearLeft(3, 100, 800, 600);
    const Rect nearRight(635, 100, 800, 600);  // exactly the 5-point gap
    expectRows({
        {kCurtain, Case::larger, nearLeft, {0, 85, 830, 630}},
        {kCurtain, Case::smallerWidth, nearLeft, {0, 100, 770, 600}},
        {kCurtain, Case::larger, nearRight, {610, 85, 830, 630}},
        {kCurtain, Case::smaller, nearRight, {670, 115, 770, 570}},
        {kCurtain, Case::larger, {300, 100, 800, 600}, {285, 85, 830, 630}},
        {{}, Case::larger, nearLeft, {-12, 85, 830, 630}},
        {kCurtain, Case::larger, {18, 100, 800, 600}, {3, 85, 830, 630}},
        {kWideGap, Case::larger, {18, 100, 800, 600}, {0, 85, 830, 630}},
        // Both edges near: the left one wins.
        {kCurtain, Case::smaller, {2, 100, 1436, 600}, {0, 115, 1406, 570}},
    });
}

TEST(ChangeSizeCalculationTest, NothingShrinksToOrBelowTheMinimum) {
    expectRows({
        {{}, Case::smaller, {100, 100, 391, 600}, {115, 115, 361, 570}},
        {{}, Case::smaller, {100, 100, 390, 600}, {100, 100, 390, 600}},
        {{}, Case::smaller, {100, 100, 800, 255}, {100, 100, 800, 255}},
        // A window at or below the minimum height cannot be widened or narrowed either.
        {{}, Case::smallerWidth, {100, 100, 800, 200}, {100, 100, 800, 200}},
        {{}, Case::largerWidth, {100, 100, 800, 225}, {100, 100, 800, 225}},
        {{}, Case::largerWidth, {100, 100, 800, 226}, {85, 100, 830, 226}},
        {kHalfWide, Case::smallerWidth, {0, 0, 750, 600}, {0, 0, 750, 600}},
        {kHalfWide, Case::smallerWidth, {0, 0, 760, 600}, {15, 0, 730, 600}},
        {{{keys::kMinimumWindowHeight, 1.5}}, Case::smaller, {0, 0, 800, 256}, {15, 15, 770, 226}},
        {{{keys::kMinimumWindowHeight, 0.1}}, Case::smaller, {0, 0, 800, 200}, {15, 15, 770, 170}},
    });
}

TEST(ChangeSizeCalculationTest, MinimumIsReadOnEveryCall) {
    InMemoryPreferences defaults;
    const ChangeSizeCalculation calculation(defaults);
    const RectCalculationParameters shrink{{{0, 0, 500, 600}}, kVisible, Case::smallerWidth, {}};
    EXPECT_EQ(calculation.calculateRect(shrink).rect, Rect(15, 0, 470, 600));
    defaults.set(keys::kMinimumWindowWidth, 0.4);
    EXPECT_EQ(calculation.calculateRect(shrink).rect, Rect(0, 0, 500, 600));
}

}  // namespace
}  // namespace corvetta
