#include "foundation/json.h"

#include <cmath>
#include <limits>

namespace corvetta {

namespace {

using Kind = JsonDecodeError::Kind;

std::string describeKind(const Json& value) {
    if (value.is_null())
        return "null";
    if (value.is_boolean())
        return "a boolean";
    if (value.is_number_integer() || value.is_number_unsigned())
        return "an integer";
    if (value.is_number_float())
        return "a number";
    if (value.is_string())
        return "a string";
    if (value.is_array())
        return "an array";
    if (value.is_object())
        return "an object";
    return "an unknown value";
}

[[noreturn]] void malformed(const std::string& path, std::string_view key, const Json& value,
                            const std::string& expected) {
    throw JsonDecodeError(Kind::malformedValue, path, std::string(key),
                          "expected " + expected + ", found " + describeKind(value));
}

nlohmann::json sortedCopy(const Json& value) {
    // nlohmann::json keeps objects in a std::map, which sorts the keys at every level.
    if (value.is_object()) {
        nlohmann::json out = nlohmann::json::object();
        for (const auto& [key, member] : value.items()) {
            out[key] = sortedCopy(member);
        }
        return out;
    }
    if (value.is_array()) {
        nlohmann::json out = nlohmann::json::array();
        for (const auto& element : value) {
            out.push_back(sortedCopy(element));
        }
        return out;
    }
    return nlohmann::json::parse(value.dump());
}

double finiteNumber(const Json& value, const std::string& path, std::string_view key) {
    if (!value.is_number()) {
        malformed(path, key, value, "a number");
    }
    const double number = value.get<double>();
    if (!std::isfinite(number)) {
        malformed(path, key, value, "a finite number");
    }
    return number;
}

std::int64_t wholeNumber(const Json& value, const std::string& path, std::string_view key) {
    if (value.is_number_integer()) {
        return value.get<std::int64_t>();
    }
    if (value.is_number_unsigned()) {
        const auto u = value.get<std::uint64_t>();
        if (u > static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max())) {
            malformed(path, key, value, "an integer in range");
        }
        return static_cast<std::int64_t>(u);
    }
    // Writers that keep every number as a double (2.0) still mean an integer.
    if (value.is_number_float()) {
        const double d = value.get<double>();
        if (std::isfinite(d) && d == std::floor(d) && std::fabs(d) < 9.0e15) {
            return static_cast<std::int64_t>(d);
        }
    }
    malformed(path, key, value, "an integer");
}

}  // namespace

JsonDecodeError::JsonDecodeError(Kind kind, std::string path, std::string key, std::string detail)
    : std::runtime_error([&] {
          const std::string where = path.empty() ? "" : " at " + path;
          switch (kind) {
              case Kind::missingKey:
                  return "Missing key \"" + key + "\"" + where;
              case Kind::notAnObject:
                  return "Expected an object" + where + ": " + detail;
              case Kind::malformedValue:
                  break;
          }
          return "Malformed value for key \"" + key + "\"" + where + ": " + detail;
      }()),
      kind_(kind),
      path_(std::move(path)),
      key_(std::move(key)) {}

std::string writeJson(const Json& value, JsonStyle style) {
    switch (style) {
        case JsonStyle::compact:
            return value.dump();
        case JsonStyle::pretty:
            return value.dump(2);
        case JsonStyle::prettySortedKeys:
            return sortedCopy(value).dump(2);
    }
    return value.dump();
}

Expected<Json, JsonParseError> parseJson(std::string_view text) {
    // JSON never holds a raw NUL, and the parser would take one for the end of the text, quietly
    // dropping everything after it.
    if (const auto nul = text.find('\0'); nul != std::string_view::npos) {
        return unexpected(
            JsonParseError{"Invalid JSON at byte " + std::to_string(nul + 1) + ": a NUL byte"});
    }
    try {
        return Json::parse(text);
    } catch (const nlohmann::json::parse_error& e) {
        return unexpected(JsonParseError{"Invalid JSON at byte " + std::to_string(e.byte)});
    } catch (const nlohmann::json::exception& e) {
        // Numbers too large for a double are refused with a different exception type.
        return unexpected(JsonParseError{std::string("Invalid JSON: ") + e.what()});
    }
}

namespace {

// Built element by element: an initialiser list copies every element once more, and a saved
// workspace list holds thousands of frames.
Json pairOf(Json first, Json second) {
    Json pair = Json::array();
    auto& elements = pair.get_ref<Json::array_t&>();
    elements.reserve(2);
    elements.push_back(std::move(first));
    elements.push_back(std::move(second));
    return pair;
}

}  // namespace

Json rectToJson(const Rect& rect) {
    return pairOf(pairOf(rect.origin.x, rect.origin.y), pairOf(rect.size.width, rect.size.height));
}

Rect rectFromJson(const Json& value, const std::string& path) {
    return decodeJsonValue<Rect>(value, path, "rect");
}

Json pointToJson(const Point& point) {
    return Json::array({point.x, point.y});
}

Json sizeToJson(const Size& size) {
    return Json::array({size.width, size.height});
}

JsonObjectReader::JsonObjectReader(const Json& object, std::string path)
    : object_(object), path_(std::move(path)) {
    if (!object_.is_object()) {
        throw JsonDecodeError(Kind::notAnObject, path_, "", "found " + describeKind(object_));
    }
}

bool JsonObjectReader::has(std::string_view key) const {
    const auto found = object_.find(key);
    return found != object_.end() && !found->is_null();
}

JsonObjectReader JsonObjectReader::child(std::string_view key) const {
    if (!has(key)) {
        throw JsonDecodeError(Kind::missingKey, path_, std::string(key), "value is required");
    }
    const Json& value = object_.find(key).value();
    if (!value.is_object()) {
        malformed(pathOf(key), key, value, "an object");
    }
    return JsonObjectReader(value, pathOf(key));
}

std::string JsonObjectReader::pathOf(std::string_view key) const {
    return path_.empty() ? std::string(key) : path_ + "." + std::string(key);
}

template <>
bool decodeJsonValue<bool>(const Json& value, const std::string& path, std::string_view key) {
    if (!value.is_boolean()) {
        malformed(path, key, value, "a boolean");
    }
    return value.get<bool>();
}

template <>
std::int64_t decodeJsonValue<std::int64_t>(const Json& value, const std::string& path,
                                           std::string_view key) {
    return wholeNumber(value, path, key);
}

template <>
int decodeJsonValue<int>(const Json& value, const std::string& path, std::string_view key) {
    const auto n = wholeNumber(value, path, key);
    if (n < std::numeric_limits<int>::min() || n > std::numeric_limits<int>::max()) {
        malformed(path, key, value, "a 32-bit integer");
    }
    return static_cast<int>(n);
}

template <>
std::uint32_t decodeJsonValue<std::uint32_t>(const Json& value, const std::string& path,
                                             std::string_view key) {
    const auto n = wholeNumber(value, path, key);
    if (n < 0 || n > std::numeric_limits<std::uint32_t>::max()) {
        malformed(path, key, value, "an unsigned 32-bit integer");
    }
    return static_cast<std::uint32_t>(n);
}

template <>
double decodeJsonValue<double>(const Json& value, const std::string& path, std::string_view key) {
    return finiteNumber(value, path, key);
}

template <>
std::string decodeJsonValue<std::string>(const Json& value, const std::string& path,
                                         std::string_view key) {
    if (!value.is_string()) {
        malformed(path, key, value, "a string");
    }
    return value.get<std::string>();
}

template <>
Uuid decodeJsonValue<Uuid>(const Json& value, const std::string& path, std::string_view key) {
    if (!value.is_string()) {
        malformed(path, key, value, "a UUID string");
    }
    const auto parsed = Uuid::parse(value.get<std::string>());
    if (!parsed) {
        throw JsonDecodeError(Kind::malformedValue, path, std::string(key),
                              "expected a UUID string, found \"" + value.get<std::string>() + "\"");
    }
    return *parsed;
}

template <>
Rect decodeJsonValue<Rect>(const Json& value, const std::string& path, std::string_view key) {
    if (!value.is_array() || value.size() != 2 || !value[0].is_array() || !value[1].is_array() ||
        value[0].size() != 2 || value[1].size() != 2) {
        malformed(path, key, value, "[[x, y], [width, height]]");
    }
    return Rect(finiteNumber(value[0][0], path, key), finiteNumber(value[0][1], path, key),
                finiteNumber(value[1][0], path, key), finiteNumber(value[1][1], path, key));
}

template <>
Point decodeJsonValue<Point>(const Json& value, const std::string& path, std::string_view key) {
    if (!value.is_array() || value.size() != 2) {
        malformed(path, key, value, "[x, y]");
    }
    return {finiteNumber(value[0], path, key), finiteNumber(value[1], path, key)};
}

template <>
Size decodeJsonValue<Size>(const Json& value, const std::string& path, std::string_view key) {
    if (!value.is_array() || value.size() != 2) {
        malformed(path, key, value, "[width, height]");
    }
    return {finiteNumber(value[0], path, key), finiteNumber(value[1], path, key)};
}

template <>
Date decodeJsonValue<Date>(const Json& value, const std::string& path, std::string_view key) {
    if (value.is_number()) {
        // Seconds since the platform's reference date, 2001-01-01T00:00:00Z.
        constexpr double kReferenceDateUnixSeconds = 978307200;
        const double seconds = finiteNumber(value, path, key);
        if (std::abs(seconds) > 1e11) {
            malformed(path, key, value, "a date within a few thousand years");
        }
        return Date(std::chrono::duration_cast<Date::duration>(
            std::chrono::duration<double>(seconds + kReferenceDateUnixSeconds)));
    }
    if (!value.is_string()) {
        malformed(path, key, value, "an ISO 8601 date string");
    }
    const auto parsed = parseIso8601(value.get<std::string>());
    if (!parsed) {
        throw JsonDecodeError(
            Kind::malformedValue, path, std::string(key),
            "expected an ISO 8601 date, found \"" + value.get<std::string>() + "\"");
    }
    return *parsed;
}

template <>
std::vector<std::string> decodeJsonValue<std::vector<std::string>>(const Json& value,
                                                                   const std::string& path,
                                                                   std::string_view key) {
    if (!value.is_array()) {
        malformed(path, key, value, "an array of strings");
    }
    std::vector<std::string> out;
    for (const auto& element : value) {
        if (!element.is_string()) {
            malformed(path, key, element, "an array of strings");
        }
        out.push_back(element.get<std::string>());
    }
    return out;
}

template <>
Json decodeJsonValue<Json>(const Json& value, const std::string&, std::string_view) {
    return value;
}

}  // namespace corvetta
