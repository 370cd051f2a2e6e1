// shortcut_services.h: Builds the shortcut layers once, in dependency order, for the process.
#pragma once

#include "diagnostics/logging_service.h"
#include "foundation/notification_center.h"
#include "foundation/preferences.h"
#include "platform/hot_keys.h"
#include "shortcuts/hot_key_center.h"
#include "shortcuts/hot_key_store.h"
#include "shortcuts/keyboard_shortcuts.h"
#include "shortcuts/keyboard_shortcuts_bridge.h"
#include "shortcuts/mas_shortcut_manager.h"
#include "shortcuts/shortcut_manager.h"
#include "shortcuts/shortcut_startup.h"

namespace corvetta {

// The shortcut layers built once, in the order they depend on each other, and kept for the life
// of the process. The hot-key port must outlive them.
struct ShortcutServices {
    ShortcutServices(HotKeyPort& hotKeyPort, Preferences& defaults,
                     NotificationCenter& notifications, LoggingService& logging)
        : hotKeyCenter(hotKeyPort, logging),
          hotKeyStore(defaults, notifications, logging),
          keyboardShortcuts(hotKeyStore, hotKeyCenter, notifications),
          masShortcutManager(defaults, notifications, hotKeyCenter, logging),
          shortcutManager(masShortcutManager),
          bridge(shortcutManager, keyboardShortcuts, notifications, logging),
          startup(defaults, shortcutManager, hotKeyStore, keyboardShortcuts, logging) {}
    ShortcutServices(const ShortcutServices&) = delete;
    ShortcutServices& operator=(const ShortcutServices&) = delete;

    HotKeyCenter hotKeyCenter;
    HotKeyStore hotKeyStore;
    KeyboardShortcuts keyboardShortcuts;
    MASShortcutManager masShortcutManager;
    ShortcutManager shortcutManager;
    KeyboardShortcutsBridge bridge;
    // Run once at start, before registering any shortcut.
    ShortcutStartup startup;
};

}  // namespace corvetta
