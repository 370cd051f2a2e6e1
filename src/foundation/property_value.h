// property_value.h: The values user defaults and notifications hold, with lenient reads.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "foundation/base64.h"

namespace corvetta {

// One stored value of the kinds the user defaults hold: boolean, integer, double, text, raw data,
// list and dictionary. Notifications carry their user info in the same form.
class PropertyValue {
public:
    using Array = std::vector<PropertyValue>;
    using Dictionary = std::map<std::string, PropertyValue>;
    using Storage = std::variant<bool, std::int64_t, double, std::string, Bytes, Array, Dictionary>;

    PropertyValue() : storage_(false) {}
    PropertyValue(bool v) : storage_(v) {}
    PropertyValue(int v) : storage_(std::int64_t{v}) {}
    PropertyValue(std::int64_t v) : storage_(v) {}
    PropertyValue(std::uint32_t v) : storage_(std::int64_t{v}) {}
    PropertyValue(double v) : storage_(v) {}
    PropertyValue(const char* v) : storage_(std::string(v)) {}
    PropertyValue(std::string v) : storage_(std::move(v)) {}
    PropertyValue(Bytes v) : storage_(std::move(v)) {}
    PropertyValue(Array v) : storage_(std::move(v)) {}
    PropertyValue(Dictionary v) : storage_(std::move(v)) {}
    PropertyValue(const std::vector<std::string>& strings);

    bool isBool() const { return std::holds_alternative<bool>(storage_); }
    bool isInteger() const { return std::holds_alternative<std::int64_t>(storage_); }
    bool isDouble() const { return std::holds_alternative<double>(storage_); }
    bool isNumber() const { return isInteger() || isDouble(); }
    bool isString() const { return std::holds_alternative<std::string>(storage_); }
    bool isData() const { return std::holds_alternative<Bytes>(storage_); }
    bool isArray() const { return std::holds_alternative<Array>(storage_); }
    bool isDictionary() const { return std::holds_alternative<Dictionary>(storage_); }

    // Exact-kind access; nullptr when the value is of another kind.
    const bool* ifBool() const { return std::get_if<bool>(&storage_); }
    const std::int64_t* ifInteger() const { return std::get_if<std::int64_t>(&storage_); }
    const double* ifDouble() const { return std::get_if<double>(&storage_); }
    const std::string* ifString() const { return std::get_if<std::string>(&storage_); }
    const Bytes* ifData() const { return std::get_if<Bytes>(&storage_); }
    const Array* ifArray() const { return std::get_if<Array>(&storage_); }
    const Dictionary* ifDictionary() const { return std::get_if<Dictionary>(&storage_); }

    // Lenient reads with the conversions the user defaults make: numbers and booleans convert
    // into each other, and text that spells a number or a boolean reads as one. A value that
    // cannot be read as the kind asked for has none.
    std::optional<bool> toBool() const;
    std::optional<std::int64_t> toInteger() const;
    std::optional<double> toDouble() const;
    // A list whose every element is text.
    std::optional<std::vector<std::string>> toStringList() const;

    const Storage& storage() const { return storage_; }
    bool operator==(const PropertyValue& other) const = default;

private:
    Storage storage_;
};

using UserInfo = PropertyValue::Dictionary;

}  // namespace corvetta
