#include "foundation/preferences.h"

namespace corvetta {

std::optional<PropertyValue> Preferences::object(const std::string& key) const {
    std::lock_guard lock(mutex_);
    const auto found = values_.find(key);
    if (found == values_.end()) {
        return std::nullopt;
    }
    return found->second;
}

std::optional<bool> Preferences::boolValue(const std::string& key) const {
    const auto value = object(key);
    return value ? value->toBool() : std::nullopt;
}

std::optional<std::int64_t> Preferences::integer(const std::string& key) const {
    const auto value = object(key);
    return value ? value->toInteger() : std::nullopt;
}

std::optional<double> Preferences::doubleValue(const std::string& key) const {
    const auto value = object(key);
    return value ? value->toDouble() : std::nullopt;
}

std::optional<double> Preferences::floatValue(const std::string& key) const {
    const auto value = doubleValue(key);
    if (!value) {
        return std::nullopt;
    }
    return static_cast<double>(static_cast<float>(*value));
}

std::optional<std::string> Preferences::string(const std::string& key) const {
    const auto value = object(key);
    if (!value || !value->isString()) {
        return std::nullopt;
    }
    return *value->ifString();
}

std::optional<std::vector<std::string>> Preferences::stringList(const std::string& key) const {
    const auto value = object(key);
    return value ? value->toStringList() : std::nullopt;
}

std::optional<PropertyValue::Dictionary> Preferences::dictionary(const std::string& key) const {
    const auto value = object(key);
    if (!value || !value->isDictionary()) {
        return std::nullopt;
    }
    return *value->ifDictionary();
}

std::optional<Bytes> Preferences::data(const std::string& key) const {
    const auto value = object(key);
    if (!value || !value->isData()) {
        return std::nullopt;
    }
    return *value->ifData();
}

void Preferences::set(const std::string& key, PropertyValue value) {
    std::lock_guard lock(mutex_);
    values_[key] = std::move(value);
    changed(values_);
}

void Preferences::remove(const std::string& key) {
    std::lock_guard lock(mutex_);
    const bool held = values_.erase(key) > 0;
    if (forget(key) || held) {
        changed(values_);
    }
}

PropertyValue::Dictionary Preferences::snapshot() const {
    std::lock_guard lock(mutex_);
    return values_;
}

}  // namespace corvetta
