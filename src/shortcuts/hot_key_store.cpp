#include "shortcuts/hot_key_store.h"

#include <limits>

namespace corvetta {

namespace {

std::optional<std::uint32_t> unsigned32(const PropertyValue::Dictionary& dictionary,
                                        const char* key) {
    const auto found = dictionary.find(key);
    if (found == dictionary.end() || found->second.ifInteger() == nullptr) {
        return std::nullopt;
    }
    const auto value = *found->second.ifInteger();
    if (value < 0 || value > std::numeric_limits<std::uint32_t>::max()) {
        return std::nullopt;
    }
    return static_cast<std::uint32_t>(value);
}

}  // namespace

HotKeyStore::HotKeyStore(Preferences& defaults, NotificationCenter& notifications,
                         LoggingService& logging)
    : defaults_(defaults),
      notifications_(notifications),
      logger_(logging, "HotKeyStore", LogCategory::shortcut()) {}

std::string HotKeyStore::key(std::string_view name) {
    std::string result(kKeyPrefix);
    result += name;
    return result;
}

HotKeyStore::Entry HotKeyStore::entry(std::string_view name) const {
    const auto value = defaults_.object(key(name));
    if (!value) {
        return {};
    }
    if (const auto* flag = value->ifBool(); flag != nullptr && !*flag) {
        return {EntryKind::cleared, std::nullopt};
    }
    if (const auto* dictionary = value->ifDictionary()) {
        const auto keyCode = unsigned32(*dictionary, kKeyCodeKey);
        const auto modifiers = unsigned32(*dictionary, kModifiersKey);
        if (keyCode && modifiers && *keyCode <= kMaxVirtualKeyCode) {
            return {EntryKind::combination, HotKeyShortcut{*keyCode, *modifiers}};
        }
    }
    return {EntryKind::unreadable, std::nullopt};
}

std::optional<HotKeyShortcut> HotKeyStore::shortcut(const ShortcutName& name) const {
    const auto stored = entry(name.rawValue);
    switch (stored.kind) {
        case EntryKind::absent:
            return name.defaultShortcut;
        case EntryKind::cleared:
            return std::nullopt;
        case EntryKind::combination:
            return stored.shortcut;
        case EntryKind::unreadable:
            logger_.warning("Ignoring unreadable shortcut stored under '" + key(name.rawValue) +
                            "'");
            return std::nullopt;
    }
    return std::nullopt;
}

void HotKeyStore::setShortcut(const ShortcutName& name, std::optional<HotKeyShortcut> shortcut) {
    if (shortcut) {
        write(name.rawValue,
              PropertyValue::Dictionary{{kKeyCodeKey, PropertyValue(shortcut->carbonKeyCode)},
                                        {kModifiersKey, PropertyValue(shortcut->carbonModifiers)}});
    } else if (name.defaultShortcut) {
        write(name.rawValue, PropertyValue(false));
    } else {
        write(name.rawValue, std::nullopt);
    }
}

void HotKeyStore::write(std::string_view name, std::optional<PropertyValue> value) {
    const auto storeKey = key(name);
    if (defaults_.object(storeKey) == value) {
        return;
    }
    if (value) {
        defaults_.set(storeKey, std::move(*value));
    } else {
        defaults_.remove(storeKey);
    }
    notifications_.post(kDidChangeNotification, {{kNameKey, PropertyValue(std::string(name))}});
}

}  // namespace corvetta
