// shortcut_manager.h: The facade the program holds for the legacy shortcut manager.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "shortcuts/mas_shortcut_manager.h"

namespace corvetta {

// The facade the rest of the program holds; its implementation is always the MASShortcutManager,
// and callers go through here so the store behind it can change without touching them.
class ShortcutManager {
public:
    explicit ShortcutManager(MASShortcutManager& implementation)
        : implementation_(implementation) {}

    MASShortcutManager& implementation() const { return implementation_; }

    // Registers the name's combination as a hot key that runs `action`.
    void registerShortcut(const std::string& name, std::function<void()> action) {
        implementation_.registerShortcut(name, std::move(action));
    }
    void unregisterShortcut(const std::string& name) { implementation_.unregisterShortcut(name); }
    std::optional<Shortcut> shortcut(const std::string& name) const {
        return implementation_.shortcut(name);
    }
    // None removes the name's combination.
    void setShortcut(const std::string& name, std::optional<Shortcut> shortcut) {
        implementation_.setShortcut(name, shortcut);
    }
    void resetShortcutToDefault(const std::string& name) {
        implementation_.resetShortcutToDefault(name);
    }
    void resetAllShortcutsToDefaults() { implementation_.resetAllShortcutsToDefaults(); }
    void unregisterAllShortcuts() { implementation_.unregisterAllShortcuts(); }

private:
    MASShortcutManager& implementation_;
};

}  // namespace corvetta
