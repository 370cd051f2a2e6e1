// hot_key_store.h: The live store of shortcut combinations, announcing each change.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "diagnostics/logger.h"
#include "foundation/notification_center.h"
#include "foundation/preferences.h"
#include "shortcuts/shortcut_names.h"

namespace corvetta {

// The live store of combinations: one user-defaults entry per name under
// "KeyboardShortcuts_<name>", holding {"carbonKeyCode": k, "carbonModifiers": m}, or false for a
// name the user cleared although it has a default of its own (so the default does not come back).
// Every change posts "KeyboardShortcuts_shortcutByNameDidChange" with the name under "name".
class HotKeyStore {
public:
    static constexpr std::string_view kKeyPrefix = "KeyboardShortcuts_";
    static constexpr const char* kDidChangeNotification =
        "KeyboardShortcuts_shortcutByNameDidChange";
    static constexpr const char* kNameKey = "name";
    static constexpr const char* kKeyCodeKey = "carbonKeyCode";
    static constexpr const char* kModifiersKey = "carbonModifiers";

    enum class EntryKind { absent, cleared, combination, unreadable };
    struct Entry {
        EntryKind kind = EntryKind::absent;
        std::optional<HotKeyShortcut> shortcut;
    };

    HotKeyStore(Preferences& defaults, NotificationCenter& notifications, LoggingService& logging);

    static std::string key(std::string_view name);

    // What is stored, as stored.
    Entry entry(std::string_view name) const;
    // The combination in effect: the stored one; the name's own default while nothing is stored;
    // none once cleared, or when the entry is unreadable (logged).
    std::optional<HotKeyShortcut> shortcut(const ShortcutName& name) const;
    // With none, a name with a default of its own is marked cleared, any other name's entry is
    // removed. Posts only when the stored value changes.
    void setShortcut(const ShortcutName& name, std::optional<HotKeyShortcut> shortcut);

private:
    void write(std::string_view name, std::optional<PropertyValue> value);

    Preferences& defaults_;
    NotificationCenter& notifications_;
    Logger logger_;
};

}  // namespace corvetta
