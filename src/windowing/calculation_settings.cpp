#include "windowing/calculation_settings.h"

#include <cmath>
#include <sstream>
#include <stdexcept>
#include <string>

#include "diagnostics/logger.h"

namespace corvetta::calculation_settings {

namespace {

const NumericSetting& settingFor(const char* key) {
    for (const auto& setting : kNumericSettings) {
        if (std::string_view(setting.key) == key) {
            return setting;
        }
    }
    throw std::logic_error(std::string("not a numeric calculation setting: ") + key);
}

bool inRange(const NumericSetting& setting, double value) {
    if (!std::isfinite(value) || value > setting.max) {
        return false;
    }
    switch (setting.range) {
        case Range::fraction:
        case Range::positive:
            return value > 0;
        case Range::size:
            return value >= 0;
        case Range::spacing:
            return true;
    }
    return false;
}

std::string numberText(double value) {
    std::ostringstream text;
    text << value;
    return text.str();
}

}  // namespace

double read(const Preferences& defaults, const char* key, const Logger* logger) {
    const NumericSetting& setting = settingFor(key);
    const auto value = setting.narrowed ? defaults.floatValue(key) : defaults.doubleValue(key);
    if (!value) {
        return setting.fallback;
    }
    if (inRange(setting, *value)) {
        return *value;
    }
    if (logger != nullptr) {
        logger->warning("Setting \"" + std::string(key) + "\" is out of range (" +
                        numberText(*value) + "); using " + numberText(setting.fallback));
    }
    return setting.fallback;
}

bool isInRange(const char* key, double value) {
    for (const auto& setting : kNumericSettings) {
        if (std::string_view(setting.key) == key) {
            return inRange(setting, value);
        }
    }
    return false;
}

SubsequentExecutionMode subsequentExecutionMode(const Preferences& defaults) {
    const auto stored = defaults.integer(kSubsequentExecutionSpace).value_or(0);
    if (stored < 0 || stored > 4) {
        return SubsequentExecutionMode::plainOutOfRange;
    }
    return static_cast<SubsequentExecutionMode>(stored);
}

}  // namespace corvetta::calculation_settings
