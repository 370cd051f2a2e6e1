// calculation_settings.h: The user-defaults keys the window calculations read, with their ranges.
#pragma once

#include <optional>

#include "foundation/preferences.h"

namespace corvetta {

class Logger;

// Numbers are read as 32-bit floats and widened; the defaults go through the same narrowing (see
// docs/window-calculations.md), so storing a default changes nothing.
namespace calculation_settings {

inline constexpr const char* kAlmostMaximizeHeight = "almostMaximizeHeight";
inline constexpr const char* kAlmostMaximizeWidth = "almostMaximizeWidth";
inline constexpr const char* kGapSize = "gapSize";
inline constexpr const char* kSizeOffset = "sizeOffset";
inline constexpr const char* kCurtainChangeSize = "curtainChangeSize";
inline constexpr const char* kSpecifiedHeight = "specifiedHeight";
inline constexpr const char* kSpecifiedWidth = "specifiedWidth";
inline constexpr const char* kMinimumWindowWidth = "minimumWindowWidth";
inline constexpr const char* kMinimumWindowHeight = "minimumWindowHeight";
inline constexpr const char* kSubsequentExecutionSpace = "subsequentExecutionSpace";
inline constexpr const char* kLayoutSpacing = "layoutSpacing";

constexpr double widenedFloat(double value) {
    return static_cast<double>(static_cast<float>(value));
}

inline constexpr double kDefaultAlmostMaximizeFraction = widenedFloat(0.9);
inline constexpr double kDefaultGapSize = widenedFloat(5.0);
inline constexpr double kDefaultSizeOffset = widenedFloat(30.0);
inline constexpr double kDefaultMinimumWindowFraction = widenedFloat(0.25);

// Far beyond any arrangement of displays; a larger size is a typing slip, not a wish.
inline constexpr double kMaxPoints = 100'000;
// Past this a gap leaves little of a window on any display.
inline constexpr double kMaxLayoutSpacing = 1'000;

// Which values a numeric setting takes. Anything else (NaN, infinities, values past the bounds)
// is out of range: the default is used and a warning says so.
enum class Range {
    fraction,  // 0 < value <= 1
    positive,  // 0 < value <= max
    size,      // 0 <= value <= max
    spacing,   // value <= max; 0 or less means none
};

struct NumericSetting {
    const char* key;
    Range range;
    double fallback;
    double max;
    // Read through a 32-bit float, as the platform stores it; else as a double.
    bool narrowed;
};

// Every numeric tunable the calculations and the snapping service read.
inline constexpr NumericSetting kNumericSettings[] = {
    {kAlmostMaximizeHeight, Range::fraction, kDefaultAlmostMaximizeFraction, 1, true},
    {kAlmostMaximizeWidth, Range::fraction, kDefaultAlmostMaximizeFraction, 1, true},
    {kGapSize, Range::positive, kDefaultGapSize, kMaxPoints, true},
    {kSizeOffset, Range::positive, kDefaultSizeOffset, kMaxPoints, true},
    // Taken as read within the range, 0 when absent.
    {kSpecifiedHeight, Range::size, 0, kMaxPoints, true},
    {kSpecifiedWidth, Range::size, 0, kMaxPoints, true},
    {kMinimumWindowWidth, Range::fraction, kDefaultMinimumWindowFraction, 1, true},
    {kMinimumWindowHeight, Range::fraction, kDefaultMinimumWindowFraction, 1, true},
    {kLayoutSpacing, Range::spacing, 0, kMaxLayoutSpacing, false},
};

// The setting's value, or its default when absent or out of range; an out-of-range value is
// logged through `logger` when one is given. `key` must be one of kNumericSettings.
double read(const Preferences& defaults, const char* key, const Logger* logger = nullptr);
// Whether `value` is one the setting takes; false for a key that is not a numeric setting.
bool isInRange(const char* key, double value);

// How a repeated half action behaves; stored values outside 0...4 all mean plain placement.
enum class SubsequentExecutionMode {
    plain = 0,
    acrossDisplays = 1,
    acrossDisplaysOrCycleSize = 2,
    cycleSize = 3,
    plainAlternative = 4,
    plainOutOfRange = 5,
};
SubsequentExecutionMode subsequentExecutionMode(const Preferences& defaults);

}  // namespace calculation_settings
}  // namespace corvetta
