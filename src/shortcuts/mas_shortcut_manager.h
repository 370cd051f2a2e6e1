// mas_shortcut_manager.h: The legacy shortcut store: archived combinations per name.
#pragma once

#include <map>
#include <string>

#include "diagnostics/logger.h"
#include "foundation/notification_center.h"
#include "foundation/preferences.h"
#include "shortcuts/hot_key_center.h"
#include "shortcuts/shortcut_manager.h"

namespace corvetta {

// The legacy store: one user-defaults entry per name under "Corvetta.Shortcuts.<name>", holding an
// archive of the shortcut (data). Every write or removal posts "ShortcutManager.shortcutChanged"
// with the name under "name". Registration goes through the hot-key layer.
class MASShortcutManager final : public ShortcutManaging {
public:
    static constexpr const char* kUserDefaultsPrefix = "Corvetta.Shortcuts.";
    static constexpr const char* kChangedNotification = "ShortcutManager.shortcutChanged";
    static constexpr const char* kNameKey = "name";

    MASShortcutManager(Preferences& defaults, NotificationCenter& notifications,
                       HotKeyCenter& hotKeys, LoggingService& logging);

    // A registration keeps the combination it was made with; register again after a change.
    // A name with no stored and no default combination is not registered.
    void registerShortcut(const std::string& name, std::function<void()> action) override;
    void unregisterShortcut(const std::string& name) override;
    // Damaged data is logged and reads as none.
    std::optional<Shortcut> shortcut(const std::string& name) const override;
    void setShortcut(const std::string& name, std::optional<Shortcut> shortcut) override;
    void resetShortcutToDefault(const std::string& name) override;
    // Every static name except the recorders' scratch names.
    void resetAllShortcutsToDefaults() override;
    void unregisterAllShortcuts() override;

    const std::string& serviceName() const { return logger_.serviceName(); }
    // Only "leftHalf" and "rightHalf" have one.
    const std::map<std::string, Shortcut>& defaultShortcuts() const { return defaultShortcuts_; }
    bool isRegistered(const std::string& name) const {
        return registeredShortcuts_.count(name) > 0;
    }

private:
    static std::string key(const std::string& name);
    // Archives and stores; false (logged) when the shortcut cannot be archived.
    bool store(const std::string& name, const Shortcut& shortcut);
    void remove(const std::string& name);
    void announce(const std::string& name);

    Preferences& defaults_;
    NotificationCenter& notifications_;
    HotKeyCenter& hotKeys_;
    Logger logger_;
    std::map<std::string, Registration> registeredShortcuts_;
    std::map<std::string, Shortcut> defaultShortcuts_;
};

}  // namespace corvetta
