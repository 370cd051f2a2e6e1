// shortcut_service.h: Owns the live global shortcuts and sends each press to its service.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "diagnostics/logger.h"
#include "foundation/preferences.h"
#include "shortcuts/hot_key_store.h"
#include "shortcuts/keyboard_shortcuts_bridge.h"
#include "windowing/window_snapping_service.h"

namespace corvetta {

// Owns the live global shortcuts: registers the window actions and the fixed commands, and sends
// each press to the service that performs it. The window actions' keys are grabbed only while
// the accessibility permission is granted and the user has not switched keyboard window
// management off: without the permission no window can move, and a key that does nothing should
// stay free for other applications. Main thread only.
class ShortcutService {
public:
    static constexpr const char* kWindowManagementEnabledKey = "windowManagementEnabled";

    ShortcutService(KeyboardShortcutsBridge& shortcutBridge, const HotKeyStore& hotKeyStore,
                    WindowSnappingService& snappingService, const Preferences& defaults,
                    LoggingService& logging, std::function<void()> quit);
    ~ShortcutService();
    ShortcutService(const ShortcutService&) = delete;
    ShortcutService& operator=(const ShortcutService&) = delete;

    // At start and whenever the set of shortcuts must be rebuilt.
    void registerAllShortcuts();
    // After a change of the permission or of the switch: grabs or releases the window actions'
    // keys when whether they should be live has changed. Before registerAllShortcuts it only
    // remembers the permission.
    void updateWindowManagementShortcuts(bool accessibilityPermissionGranted);
    void unregisterAllShortcuts();

    // Absent means on.
    bool isWindowManagementEnabled() const;

private:
    bool windowActionsWanted() const;
    void registerWindowManagementShortcuts();
    void unregisterWindowManagementShortcuts();
    void registerQuitShortcut();

    Logger logger_;
    KeyboardShortcutsBridge& shortcutBridge_;
    const HotKeyStore& hotKeyStore_;
    WindowSnappingService& snappingService_;
    const Preferences& defaults_;
    std::function<void()> quit_;
    bool permissionGranted_ = false;
    bool started_ = false;
    bool windowActionsRegistered_ = false;
};

}  // namespace corvetta
