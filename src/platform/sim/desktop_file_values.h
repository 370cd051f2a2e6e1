// desktop_file_values.h: Reading the desktop file's values, each refusal naming its place; private
// to the file reader.
#pragma once

#include <cmath>
#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "foundation/geometry.h"
#include "foundation/json.h"
#include "platform/sim/simulated_desktop_setup.h"

namespace corvetta::desktop_file {

// Raised while reading and turned into the result at the top; never leaves the file reader.
struct FileProblem {
    std::string place;
    std::string problem;
};

[[noreturn]] inline void refuse(const std::string& place, std::string problem) {
    throw FileProblem{place, std::move(problem)};
}

inline std::string indexed(const std::string& place, std::size_t index) {
    return place + "[" + std::to_string(index) + "]";
}

inline double number(const Json& value, const std::string& place) {
    if (!value.is_number() || !std::isfinite(value.get<double>())) {
        refuse(place, "expected a number");
    }
    return value.get<double>();
}

// Whole numbers only: a fractional pid or window number is a typo, not a value to round.
// `most` is never negative.
inline std::int64_t integer(const Json& value, const std::string& place, std::int64_t least,
                            std::int64_t most) {
    if (value.is_number_unsigned()) {
        const auto whole = value.get<std::uint64_t>();
        if (whole <= static_cast<std::uint64_t>(most) &&
            static_cast<std::int64_t>(whole) >= least) {
            return static_cast<std::int64_t>(whole);
        }
    } else if (value.is_number_integer()) {
        const auto whole = value.get<std::int64_t>();
        if (whole >= least && whole <= most) {
            return whole;
        }
    }
    refuse(place, least == 1 ? "expected a positive integer" : "expected an integer");
}

// [x, y, width, height] with a positive width and height.
inline Rect rect(const Json& value, const std::string& place) {
    if (!value.is_array() || value.size() != 4 ||
        !std::all_of(value.begin(), value.end(), [](const Json& v) {
            return v.is_number() && std::isfinite(v.get<double>());
        })) {
        refuse(place, "expected [x, y, width, height]");
    }
    const Rect result(value[0].get<double>(), value[1].get<double>(), value[2].get<double>(),
                      value[3].get<double>());
    if (result.size.width <= 0 || result.size.height <= 0) {
        refuse(place, "width and height must be positive");
    }
    return result;
}

inline std::pair<double, double> pair(const Json& value, const std::string& place,
                                      const std::string& shape) {
    if (!value.is_array() || value.size() != 2 || !value[0].is_number() || !value[1].is_number() ||
        !std::isfinite(value[0].get<double>()) || !std::isfinite(value[1].get<double>())) {
        refuse(place, "expected " + shape);
    }
    return {value[0].get<double>(), value[1].get<double>()};
}

inline Size positiveSize(const Json& value, const std::string& place) {
    const auto [width, height] = pair(value, place, "[width, height]");
    if (width <= 0 || height <= 0) {
        refuse(place, "width and height must be positive");
    }
    return {width, height};
}

// One JSON object whose keys are all known, so a misspelt key is reported, not ignored.
class ObjectReader {
public:
    ObjectReader(const Json& value, std::string place, std::set<std::string_view> known)
        : value_(value), place_(std::move(place)) {
        if (!value_.is_object()) {
            refuse(place_, "expected an object");
        }
        for (const auto& [key, member] : value_.items()) {
            if (known.count(key) == 0) {
                std::string list;
                for (const auto name : known) {
                    list += (list.empty() ? "" : ", ") + std::string(name);
                }
                refuse(placeOf(key), "unknown key (known keys: " + list + ")");
            }
        }
    }

    std::string placeOf(std::string_view key) const {
        return place_.empty() ? std::string(key) : place_ + "." + std::string(key);
    }
    const Json* find(std::string_view key) const {
        const auto found = value_.find(key);
        return found == value_.end() ? nullptr : &*found;
    }
    const Json& required(std::string_view key) const {
        const auto* found = find(key);
        if (found == nullptr) {
            refuse(placeOf(key), "required");
        }
        return *found;
    }

    std::string text(std::string_view key, std::string fallback) const {
        const auto* found = find(key);
        if (found == nullptr) {
            return fallback;
        }
        if (!found->is_string()) {
            refuse(placeOf(key), "expected a string");
        }
        return found->get<std::string>();
    }
    bool flag(std::string_view key, bool fallback) const {
        const auto* found = find(key);
        if (found == nullptr) {
            return fallback;
        }
        if (!found->is_boolean()) {
            refuse(placeOf(key), "expected true or false");
        }
        return found->get<bool>();
    }
    std::optional<Size> size(std::string_view key) const {
        const auto* found = find(key);
        return found == nullptr ? std::nullopt : std::optional(positiveSize(*found, placeOf(key)));
    }
    // The members of an array under `key` with their places; none when absent.
    std::vector<std::pair<const Json*, std::string>> elements(std::string_view key) const {
        std::vector<std::pair<const Json*, std::string>> result;
        const auto* found = find(key);
        if (found == nullptr) {
            return result;
        }
        if (!found->is_array()) {
            refuse(placeOf(key), "expected an array");
        }
        for (std::size_t i = 0; i < found->size(); ++i) {
            result.emplace_back(&(*found)[i], indexed(placeOf(key), i));
        }
        return result;
    }

private:
    const Json& value_;
    std::string place_;
};

template <class Enum>
Enum oneOf(const ObjectReader& reader, std::string_view key, Enum fallback,
           const std::vector<std::pair<std::string_view, Enum>>& names) {
    const auto* found = reader.find(key);
    if (found == nullptr) {
        return fallback;
    }
    if (found->is_string()) {
        for (const auto& [name, value] : names) {
            if (found->get<std::string>() == name) {
                return value;
            }
        }
    }
    std::string list;
    for (const auto& [name, value] : names) {
        list += (list.empty() ? "\"" : ", \"") + std::string(name) + "\"";
    }
    refuse(reader.placeOf(key), "expected one of " + list);
}

inline std::optional<std::string> optionalText(const ObjectReader& reader, std::string_view key) {
    if (reader.find(key) == nullptr) {
        return std::nullopt;
    }
    return reader.text(key, "");
}

// One display of the file's "displays".
SimulatedDisplay readDisplay(const Json& value, const std::string& place);

}  // namespace corvetta::desktop_file
