// calculation_settings.h: The settings window calculations read, with defaults and ranges.
#pragma once

#include "foundation/preferences.h"

namespace corvetta {

// The user-defaults keys the calculations read, with their range rules. Numbers are read as
// 32-bit floats and widened; the defaults go through the same narrowing (see
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

constexpr double widenedFloat(double value) {
    return static_cast<double>(static_cast<float>(value));
}

inline constexpr double kDefaultAlmostMaximizeFraction = widenedFloat(0.9);
inline constexpr double kDefaultGapSize = widenedFloat(5.0);
inline constexpr double kDefaultSizeOffset = widenedFloat(30.0);
inline constexpr double kDefaultMinimumWindowFraction = widenedFloat(0.25);

// Used when 0 < value <= 1, else the default.
double fraction(const Preferences& defaults, const char* key, double fallback);
// Used when value > 0, else the default.
double positive(const Preferences& defaults, const char* key, double fallback);
// Taken as read, 0 when absent.
double unchecked(const Preferences& defaults, const char* key);

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
