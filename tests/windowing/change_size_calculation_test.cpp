#include "windowing/change_size_calculation.h"

#include <vector>

#include <gtest/gtest.h>

#include "windowing/calculation_settings.h"

namespace corvetta {
namespace {

using Case = WindowDirection::Case;
namespace keys = calculation_settings;

// Visible frame 1440 x 900: the default minimum size is 360 x 225.
const Rect kVisible(0, 0, 1440, 900);

struct Row {
    const char* what;
    PropertyValue::Dictionary stored;
    Case action;
    Rect window;
    Rect expected;
};

Rect resize(const PropertyValue::Dictionary& stored, Case action, const Rect& window) {
    const InMemoryPreferences defaults(stored);
    const ChangeSizeCalculation calculation(defaults);
    return calculation.calculateRect({{window}, kVisible, action, {0, 0, 1440, 925}}).rect;
}

void expectRows(const std::vector<Row>& rows) {
    for (const auto& row : rows) {
        EXPECT_EQ(resize(row.stored, row.action, row.window), row.expected)
            << row.what << ": " << WindowDirection(row.action).name();
    }
}

TEST(ChangeSizeCalculationTest, GrowsAndShrinksAroundTheCentre) {
    const Rect window(100, 100, 800, 600);
    expectRows({
        {"default offset", {}, Case::larger, window, {85, 85, 830, 630}},
        {"default offset", {}, Case::smaller, window, {115, 115, 770, 570}},
        {"width only", {}, Case::largerWidth, window, {85, 100, 830, 600}},
        {"width only", {}, Case::smallerWidth, window, {115, 100, 770, 600}},
        // An odd offset moves the origin 12 when growing and 13 when shrinking.
        {"odd offset", {{keys::kSizeOffset, 25}}, Case::larger, window, {88, 88, 825, 625}},
        {"odd offset", {{keys::kSizeOffset, 25}}, Case::smaller, window, {113, 113, 775, 575}},
        {"odd offset", {{keys::kSizeOffset, 25}}, Case::smallerWidth, window, {113, 100, 775, 600}},
        {"not a size change", {}, Case::maximize, window, window},
        // No upper limit here: the display clamp keeps the frame on the screen.
        {"beyond the screen", {}, Case::larger, {-10, -10, 1440, 900}, {-25, -25, 1470, 930}},
    });
}

TEST(ChangeSizeCalculationTest, CurtainKeepsASideEdgeInPlace) {
    const PropertyValue::Dictionary curtain = {{keys::kCurtainChangeSize, true}};
    const PropertyValue::Dictionary wideGap = {{keys::kCurtainChangeSize, true},
                                               {keys::kGapSize, 20}};
    const Rect nearLeft(3, 100, 800, 600);
    const Rect nearRight(637, 100, 800, 600);  // 3 points from the right edge
    const Rect middle(300, 100, 800, 600);
    expectRows({
        {"left edge", curtain, Case::larger, nearLeft, {0, 85, 830, 630}},
        {"left edge", curtain, Case::smallerWidth, nearLeft, {0, 100, 770, 600}},
        {"right edge", curtain, Case::larger, nearRight, {610, 85, 830, 630}},
        {"right edge", curtain, Case::smaller, nearRight, {670, 115, 770, 570}},
        {"middle", curtain, Case::larger, middle, {285, 85, 830, 630}},
        {"curtain off", {}, Case::larger, nearLeft, {-12, 85, 830, 630}},
        {"beyond the gap", curtain, Case::larger, {18, 100, 800, 600}, {3, 85, 830, 630}},
        {"within a wider gap", wideGap, Case::larger, {18, 100, 800, 600}, {0, 85, 830, 630}},
        // Both edges near: the left one wins.
        {"both edges", curtain, Case::smaller, {2, 100, 1436, 600}, {0, 115, 1406, 570}},
    });
}

TEST(ChangeSizeCalculationTest, NothingShrinksToOrBelowTheMinimum) {
    expectRows({
        {"width lands above", {}, Case::smaller, {100, 100, 391, 600}, {115, 115, 361, 570}},
        {"width lands on", {}, Case::smaller, {100, 100, 390, 600}, {100, 100, 390, 600}},
        {"height lands on", {}, Case::smaller, {100, 100, 800, 255}, {100, 100, 800, 255}},
        // The height is checked for width-only actions too.
        {"short window", {}, Case::smallerWidth, {100, 100, 800, 200}, {100, 100, 800, 200}},
        {"short window", {}, Case::largerWidth, {100, 100, 800, 225}, {100, 100, 800, 225}},
        {"just tall enough", {}, Case::largerWidth, {100, 100, 800, 226}, {85, 100, 830, 226}},
        {"stored minimum",
         {{keys::kMinimumWindowWidth, 0.5}},
         Case::smallerWidth,
         {0, 0, 750, 600},
         {0, 0, 750, 600}},
        {"stored minimum",
         {{keys::kMinimumWindowWidth, 0.5}},
         Case::smallerWidth,
         {0, 0, 760, 600},
         {15, 0, 730, 600}},
        {"minimum out of range",
         {{keys::kMinimumWindowHeight, 1.5}},
         Case::smaller,
         {100, 100, 800, 256},
         {115, 115, 770, 226}},
        {"minimum height stored",
         {{keys::kMinimumWindowHeight, 0.1}},
         Case::smaller,
         {100, 100, 800, 200},
         {115, 115, 770, 170}},
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
