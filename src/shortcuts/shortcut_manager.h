// shortcut_manager.h: Legacy shortcut operations behind a facade, so the store can change.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "shortcuts/shortcut.h"

namespace corvetta {

// The operations of a shortcut manager, addressed by shortcut name, in the legacy form.
class ShortcutManaging {
public:
    virtual ~ShortcutManaging() = default;

    // Registers the name's combination as a hot key that runs `action`.
    virtual void registerShortcut(const std::string& name, std::function<void()> action) = 0;
    virtual void unregisterShortcut(const std::string& name) = 0;
    virtual std::optional<Shortcut> shortcut(const std::string& name) const = 0;
    // None removes the name's combination.
    virtual void setShortcut(const std::string& name, std::optional<Shortcut> shortcut) = 0;
    virtual void resetShortcutToDefault(const std::string& name) = 0;
    virtual void resetAllShortcutsToDefaults() = 0;
    virtual void unregisterAllShortcuts() = 0;
};

// The facade the rest of the program holds; the implementation is always a MASShortcutManager,
// kept behind the operations so the store behind it can change without touching callers.
class ShortcutManager {
public:
    explicit ShortcutManager(ShortcutManaging& implementation) : implementation_(implementation) {}

    ShortcutManaging& implementation() const { return implementation_; }

    void registerShortcut(const std::string& name, std::function<void()> action) {
        implementation_.registerShortcut(name, std::move(action));
    }
    void unregisterShortcut(const std::string& name) { implementation_.unregisterShortcut(name); }
    std::optional<Shortcut> shortcut(const std::string& name) const {
        return implementation_.shortcut(name);
    }
    void setShortcut(const std::string& name, std::optional<Shortcut> shortcut) {
        implementation_.setShortcut(name, shortcut);
    }
    void resetShortcutToDefault(const std::string& name) {
        implementation_.resetShortcutToDefault(name);
    }
    void resetAllShortcutsToDefaults() { implementation_.resetAllShortcutsToDefaults(); }
    void unregisterAllShortcuts() { implementation_.unregisterAllShortcuts(); }

private:
    ShortcutManaging& implementation_;
};

}  // namespace corvetta
