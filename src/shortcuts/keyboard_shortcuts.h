// keyboard_shortcuts.h: Binds handlers to shortcut names, following stored combinations.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "foundation/notification_center.h"
#include "shortcuts/hot_key_center.h"
#include "shortcuts/hot_key_store.h"

namespace corvetta {

// The hot-key library: names, their stored combinations, and key-down handlers that stay bound to
// a name. A name with handlers is registered as a hot key while it has a combination; when its
// stored combination changes it is registered again with the new one.
class KeyboardShortcuts {
public:
    KeyboardShortcuts(HotKeyStore& store, HotKeyCenter& hotKeys, NotificationCenter& notifications);
    ~KeyboardShortcuts();
    KeyboardShortcuts(const KeyboardShortcuts&) = delete;
    KeyboardShortcuts& operator=(const KeyboardShortcuts&) = delete;

    // While disabled no hot key is registered; the handlers are kept. Enabled from the start.
    void setEnabled(bool enabled);
    bool isEnabled() const;

    std::optional<HotKeyShortcut> shortcut(const ShortcutName& name) const;
    void setShortcut(const ShortcutName& name, std::optional<HotKeyShortcut> shortcut);
    // Back to the name's own default, or cleared when it has none.
    void reset(const ShortcutName& name);

    // The handler runs on every press of the name's combination while the registration lives.
    [[nodiscard]] Registration onKeyDown(const ShortcutName& name, std::function<void()> handler);
    // Whether the name has a live hot key now.
    bool isRegistered(const std::string& name) const;
    // The names with handlers and a combination that have no live hot key while enabled: the
    // system refused them (another program holds the combination), in name order.
    std::vector<std::pair<std::string, HotKeyShortcut>> notRegistered() const;

private:
    struct State;
    std::shared_ptr<State> state_;
    ObserverToken storeObserver_;
};

}  // namespace corvetta
