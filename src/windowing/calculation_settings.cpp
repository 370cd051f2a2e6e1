#include "windowing/calculation_settings.h"

namespace corvetta::calculation_settings {

double fraction(const Preferences& defaults, const char* key, double fallback) {
    const auto value = defaults.floatValue(key);
    return value && *value > 0 && *value <= 1 ? *value : fallback;
}

double positive(const Preferences& defaults, const char* key, double fallback) {
    const auto value = defaults.floatValue(key);
    return value && *value > 0 ? *value : fallback;
}

double unchecked(const Preferences& defaults, const char* key) {
    return defaults.floatValue(key).value_or(0);
}

SubsequentExecutionMode subsequentExecutionMode(const Preferences& defaults) {
    const auto stored = defaults.integer(kSubsequentExecutionSpace).value_or(0);
    if (stored < 0 || stored > 4) {
        return SubsequentExecutionMode::plainOutOfRange;
    }
    return static_cast<SubsequentExecutionMode>(stored);
}

}  // namespace corvetta::calculation_settings
