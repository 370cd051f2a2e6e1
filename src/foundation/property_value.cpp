#include "foundation/property_value.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cmath>
#include <limits>
#include <string_view>

namespace corvetta {

namespace {
std::string lowered(std::string_view text) {
    std::string out(text);
    std::transform(out.begin(), out.end(), out.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return out;
}

std::optional<double> parseNumber(std::string_view text) {
    double value = 0;
    const auto* end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, value);
    if (result.ec != std::errc() || result.ptr != end || !std::isfinite(value)) {
        return std::nullopt;
    }
    return value;
}
}  // namespace

PropertyValue::PropertyValue(const std::vector<std::string>& strings) {
    Array array;
    array.reserve(strings.size());
    for (const auto& s : strings) {
        array.emplace_back(s);
    }
    storage_ = std::move(array);
}

std::optional<bool> PropertyValue::toBool() const {
    if (const auto* b = ifBool())
        return *b;
    if (const auto* i = ifInteger())
        return *i != 0;
    if (const auto* d = ifDouble())
        return *d != 0;
    if (const auto* s = ifString()) {
        const std::string text = lowered(*s);
        if (text == "true" || text == "yes")
            return true;
        if (text == "false" || text == "no")
            return false;
        if (auto number = parseNumber(text))
            return *number != 0;
    }
    return std::nullopt;
}

std::optional<std::int64_t> PropertyValue::toInteger() const {
    if (const auto* i = ifInteger())
        return *i;
    if (const auto* b = ifBool())
        return *b ? 1 : 0;
    std::optional<double> d;
    if (const auto* v = ifDouble()) {
        d = *v;
    } else if (const auto* s = ifString()) {
        d = parseNumber(*s);
    }
    // Fractions are cut toward zero, as an integer read of a stored double does on the platform.
    constexpr double kLimit = 9.2e18;
    if (d && std::isfinite(*d) && std::fabs(*d) < kLimit) {
        return static_cast<std::int64_t>(*d);
    }
    return std::nullopt;
}

std::optional<double> PropertyValue::toDouble() const {
    if (const auto* d = ifDouble())
        return *d;
    if (const auto* i = ifInteger())
        return static_cast<double>(*i);
    if (const auto* b = ifBool())
        return *b ? 1.0 : 0.0;
    if (const auto* s = ifString())
        return parseNumber(*s);
    return std::nullopt;
}

std::optional<std::vector<std::string>> PropertyValue::toStringList() const {
    const auto* array = ifArray();
    if (!array) {
        return std::nullopt;
    }
    std::vector<std::string> out;
    out.reserve(array->size());
    for (const auto& element : *array) {
        const auto* s = element.ifString();
        if (!s) {
            return std::nullopt;
        }
        out.push_back(*s);
    }
    return out;
}

}  // namespace corvetta
