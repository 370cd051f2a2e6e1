// keyboard_shortcuts_bridge.h: Shortcuts by name for the program, keeping both stores in step.
#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "diagnostics/logger.h"
#include "foundation/notification_center.h"
#include "shortcuts/keyboard_shortcuts.h"
#include "shortcuts/shortcut_manager.h"

namespace corvetta {

// Where the rest of the program reads, sets, resets and registers shortcuts by name, in the
// legacy form (event modifier flags). The live store is the hot-key library's; the bridge adds its
// own defaults (the "reset all" table and lookup fallback) and keeps the legacy store's changes
// flowing into the live store.
class KeyboardShortcutsBridge {
public:
    KeyboardShortcutsBridge(ShortcutManager& shortcutManager, KeyboardShortcuts& keyboardShortcuts,
                            NotificationCenter& notifications, LoggingService& logging);
    KeyboardShortcutsBridge(const KeyboardShortcutsBridge&) = delete;
    KeyboardShortcutsBridge& operator=(const KeyboardShortcutsBridge&) = delete;

    // The combination in effect: the live store's (a name's own default included), else this
    // table's default ("Using fallback shortcut for <name>"), else none.
    std::optional<Shortcut> shortcut(const std::string& name) const;
    // Writes the live store and reads it back; none clears. False when the value did not stick
    // (a key code that is no key, or a store that reads back something else).
    bool setShortcut(const std::string& name, std::optional<Shortcut> shortcut);
    // `onKeyDown` runs on every press of the name's combination, following later changes of it,
    // until the name is unregistered. Registering a name again replaces its handler.
    void registerShortcut(const std::string& name, std::function<void()> onKeyDown);
    void unregisterShortcut(const std::string& name);
    bool isShortcutRegistered(const std::string& name) const;
    // Every name of the name map gets this table's default, or none.
    void resetAllShortcuts();
    void unregisterAllShortcuts();

    // The live store changed: ignored while the bridge itself is writing.
    void handleKeyboardShortcutChanged(const Notification& notification);
    // The legacy store changed through the shortcut manager: the live store follows.
    void handleShortcutManagerChanged(const Notification& notification);

    const std::string& serviceName() const { return logger_.serviceName(); }
    // The names the bridge addresses, in table order.
    const std::vector<ShortcutName>& nameMap() const { return nameMap_; }
    const std::map<std::string, Shortcut>& defaultShortcuts() const { return defaultShortcuts_; }
    bool isUpdatingShortcut() const { return isUpdatingShortcut_; }

private:
    // Raises isUpdatingShortcut for the lifetime of a write.
    class UpdateScope;

    ShortcutManager& shortcutManager_;
    KeyboardShortcuts& keyboardShortcuts_;
    Logger logger_;
    std::vector<ShortcutName> nameMap_;
    std::map<std::string, Shortcut> defaultShortcuts_;
    bool isUpdatingShortcut_ = false;
    std::map<std::string, Registration> registrations_;
    ObserverToken keyboardShortcutsObserver_;
    ObserverToken shortcutManagerObserver_;
};

}  // namespace corvetta
