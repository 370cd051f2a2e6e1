#include "foundation/property_value_json.h"

namespace corvetta {

namespace {
constexpr const char* kDataKey = "$data";
}

Json propertyValueToJson(const PropertyValue& value) {
    return std::visit(
        [](const auto& v) -> Json {
            using T = std::decay_t<decltype(v)>;
            if constexpr (std::is_same_v<T, Bytes>) {
                return Json{{kDataKey, base64Encode(v)}};
            } else if constexpr (std::is_same_v<T, PropertyValue::Array>) {
                Json array = Json::array();
                for (const auto& element : v) {
                    array.push_back(propertyValueToJson(element));
                }
                return array;
            } else if constexpr (std::is_same_v<T, PropertyValue::Dictionary>) {
                Json object = Json::object();
                for (const auto& [key, member] : v) {
                    object[key] = propertyValueToJson(member);
                }
                return object;
            } else {
                return Json(v);
            }
        },
        value.storage());
}

std::optional<PropertyValue> propertyValueFromJson(const Json& json) {
    switch (json.type()) {
        case Json::value_t::boolean:
            return PropertyValue(json.get<bool>());
        case Json::value_t::number_integer:
            return PropertyValue(json.get<std::int64_t>());
        case Json::value_t::number_unsigned: {
            const auto u = json.get<std::uint64_t>();
            if (u > static_cast<std::uint64_t>(INT64_MAX)) {
                return PropertyValue(static_cast<double>(u));
            }
            return PropertyValue(static_cast<std::int64_t>(u));
        }
        case Json::value_t::number_float:
            return PropertyValue(json.get<double>());
        case Json::value_t::string:
            return PropertyValue(json.get<std::string>());
        case Json::value_t::array: {
            PropertyValue::Array array;
            for (const auto& element : json) {
                // A null inside a list has no stored form; the element is left out.
                if (auto converted = propertyValueFromJson(element)) {
                    array.push_back(std::move(*converted));
                }
            }
            return PropertyValue(std::move(array));
        }
        case Json::value_t::object: {
            if (json.size() == 1 && json.contains(kDataKey) && json[kDataKey].is_string()) {
                auto bytes = base64Decode(json[kDataKey].get<std::string>());
                if (!bytes) {
                    return std::nullopt;
                }
                return PropertyValue(std::move(*bytes));
            }
            PropertyValue::Dictionary dictionary;
            for (const auto& [key, member] : json.items()) {
                if (auto converted = propertyValueFromJson(member)) {
                    dictionary.emplace(key, std::move(*converted));
                }
            }
            return PropertyValue(std::move(dictionary));
        }
        default:
            return std::nullopt;
    }
}

}  // namespace corvetta
