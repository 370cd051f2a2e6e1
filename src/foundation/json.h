// json.h: JSON reading and writing for records, with decode errors that name the damaged key.
#pragma once

// JSON reading and writing over nlohmann-json. This header is heavy: include it only from the
// .cpp files that encode or decode records, never from a widely used header.

#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include <nlohmann/json.hpp>

#include "foundation/date.h"
#include "foundation/expected.h"
#include "foundation/geometry.h"
#include "foundation/uuid.h"

namespace corvetta {

// Objects keep their keys in insertion order, so a record written field by field comes out in
// declaration order.
using Json = nlohmann::ordered_json;

enum class JsonStyle {
    compact,           // one line, as socket replies go out
    pretty,            // indented, keys in record order
    prettySortedKeys,  // indented, keys sorted at every level, as exports are written
};

std::string writeJson(const Json& value, JsonStyle style);

// Parses a whole document. The error names the byte where reading stopped.
struct JsonParseError {
    std::string message;
};
Expected<Json, JsonParseError> parseJson(std::string_view text);

// A value that does not have the shape a record needs. `path` locates it in the document
// ("workspaces[1].frame"), `key` is the key at fault.
class JsonDecodeError : public std::runtime_error {
public:
    enum class Kind { missingKey, malformedValue, notAnObject };
    JsonDecodeError(Kind kind, std::string path, std::string key, std::string detail);

    Kind kind() const { return kind_; }
    const std::string& path() const { return path_; }
    const std::string& key() const { return key_; }

private:
    Kind kind_;
    std::string path_;
    std::string key_;
};

// Rectangles as the platform's standard form, [[x, y], [width, height]].
Json rectToJson(const Rect& rect);
// Throws JsonDecodeError on anything but two pairs of finite numbers.
Rect rectFromJson(const Json& value, const std::string& path = "");
// Points and sizes as the platform's standard form, a pair of numbers.
Json pointToJson(const Point& point);
Json sizeToJson(const Size& size);

// Reads the fields of one JSON object, reporting precisely which key is missing or malformed.
// Supported field types: bool, int, std::int64_t, std::uint32_t, double, std::string, Uuid, Rect,
// Point ([x, y]), Size ([width, height]), Date, std::vector<std::string> and Json (any value,
// unchecked). Dates are written as ISO 8601 text; reading also takes a number of seconds since
// 2001-01-01T00:00:00Z, the form the platform's standard encoder gives records stored on a Mac.
class JsonObjectReader {
public:
    // Throws JsonDecodeError (notAnObject) when `object` is not an object.
    explicit JsonObjectReader(const Json& object, std::string path = "");

    // Present and not null.
    bool has(std::string_view key) const;
    // Required: absent, null and wrongly typed values all throw.
    template <class T>
    T get(std::string_view key) const;
    // Optional: absent or null gives no value; a present value of the wrong type still throws,
    // since it is damage rather than absence.
    template <class T>
    std::optional<T> getOptional(std::string_view key) const;
    // The object under `key`, for nested records.
    JsonObjectReader child(std::string_view key) const;
    // The path of a member, for errors raised while decoding nested values.
    std::string pathOf(std::string_view key) const;

    const Json& raw() const { return object_; }
    const std::string& path() const { return path_; }

private:
    const Json& object_;
    std::string path_;
};

// Decodes one value as T; `path` only feeds the error text.
template <class T>
T decodeJsonValue(const Json& value, const std::string& path, std::string_view key);

template <>
bool decodeJsonValue<bool>(const Json&, const std::string&, std::string_view);
template <>
int decodeJsonValue<int>(const Json&, const std::string&, std::string_view);
template <>
std::int64_t decodeJsonValue<std::int64_t>(const Json&, const std::string&, std::string_view);
template <>
std::uint32_t decodeJsonValue<std::uint32_t>(const Json&, const std::string&, std::string_view);
template <>
double decodeJsonValue<double>(const Json&, const std::string&, std::string_view);
template <>
std::string decodeJsonValue<std::string>(const Json&, const std::string&, std::string_view);
template <>
Uuid decodeJsonValue<Uuid>(const Json&, const std::string&, std::string_view);
template <>
Rect decodeJsonValue<Rect>(const Json&, const std::string&, std::string_view);
template <>
Point decodeJsonValue<Point>(const Json&, const std::string&, std::string_view);
template <>
Size decodeJsonValue<Size>(const Json&, const std::string&, std::string_view);
template <>
Date decodeJsonValue<Date>(const Json&, const std::string&, std::string_view);
template <>
std::vector<std::string> decodeJsonValue<std::vector<std::string>>(const Json&, const std::string&,
                                                                   std::string_view);
template <>
Json decodeJsonValue<Json>(const Json&, const std::string&, std::string_view);

template <class T>
T JsonObjectReader::get(std::string_view key) const {
    if (!has(key)) {
        throw JsonDecodeError(JsonDecodeError::Kind::missingKey, path_, std::string(key),
                              "value is required");
    }
    return decodeJsonValue<T>(object_.find(key).value(), pathOf(key), key);
}

template <class T>
std::optional<T> JsonObjectReader::getOptional(std::string_view key) const {
    if (!has(key)) {
        return std::nullopt;
    }
    return decodeJsonValue<T>(object_.find(key).value(), pathOf(key), key);
}

}  // namespace corvetta
