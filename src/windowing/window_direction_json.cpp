#include "windowing/window_direction_json.h"

#include "foundation/json.h"

namespace corvetta {

namespace {

constexpr const char* kTypeKey = "type";
constexpr const char* kRectKey = "rect";
constexpr const char* kRectCountMessage = "Expected 4 values for rect";

// Stores skip undecodable entries by catching JsonDecodeError, so the corruption error is one;
// only its text is replaced, because that text is shown as it is.
class DataCorruptedError final : public JsonDecodeError {
public:
    DataCorruptedError(std::string path, std::string key, std::string description)
        : JsonDecodeError(Kind::malformedValue, std::move(path), std::move(key), description),
          description_(std::move(description)) {}
    const char* what() const noexcept override { return description_.c_str(); }

private:
    std::string description_;
};

Json encode(std::string_view raw, bool isCustom, const Rect& rect) {
    Json object = Json::object();
    object[kTypeKey] = raw;
    if (isCustom) {
        object[kRectKey] =
            Json::array({rect.origin.x, rect.origin.y, rect.size.width, rect.size.height});
    }
    return object;
}

Rect decodeRect(const JsonObjectReader& reader) {
    const Json values = reader.get<Json>(kRectKey);
    const auto fail = [&] { throw DataCorruptedError(reader.path(), kRectKey, kRectCountMessage); };
    if (!values.is_array() || values.size() != 4) {
        fail();
    }
    double parts[4];
    for (std::size_t i = 0; i < 4; ++i) {
        if (!values[i].is_number()) {
            fail();
        }
        parts[i] = values[i].get<double>();
    }
    return Rect(parts[0], parts[1], parts[2], parts[3]);
}

template <class Type, class Lookup>
std::pair<Type, Rect> decode(const Json& value, const std::string& path, Lookup lookUp) {
    const JsonObjectReader reader(value, path);
    const auto raw = reader.get<std::string>(kTypeKey);
    const auto type = lookUp(raw);
    if (!type) {
        throw JsonDecodeError(JsonDecodeError::Kind::malformedValue, path, kTypeKey,
                              "unknown type \"" + raw + "\"");
    }
    if (*type != Type::custom) {
        return {*type, Rect::zero()};
    }
    return {*type, decodeRect(reader)};
}

}  // namespace

Json toJson(const WindowDirection& direction) {
    return encode(direction.name(), direction.isCustom(), direction.customRect());
}

Json toJson(const SnapPosition& position) {
    return encode(position.name(), position.isCustom(), position.customRect());
}

WindowDirection windowDirectionFromJson(const Json& value, const std::string& path) {
    const auto [type, rect] = decode<DirectionType>(value, path, directionTypeFromRawValue);
    return WindowDirection(type, rect);
}

SnapPosition snapPositionFromJson(const Json& value, const std::string& path) {
    const auto [type, rect] = decode<PositionType>(value, path, positionTypeFromRawValue);
    return SnapPosition(type, rect);
}

}  // namespace corvetta
