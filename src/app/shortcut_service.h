// shortcut_service.h: Registers the global shortcuts and sends each press to its service.
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

// Owns the live global shortcuts: registers the window actions (unless the user switched keyboard
// window management off) and the fixed commands, and sends each press to the service that
// performs it. Main thread only.
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
    void registerWindowManagementShortcuts();
    void unregisterWindowManagementShortcuts();
    void unregisterAllShortcuts();

    // Absent means on.
    bool isWindowManagementEnabled() const;

private:
    void registerQuitShortcut();

    Logger logger_;
    KeyboardShortcutsBridge& shortcutBridge_;
    const HotKeyStore& hotKeyStore_;
    WindowSnappingService& snappingService_;
    const Preferences& defaults_;
    std::function<void()> quit_;
};

}  // namespace corvetta
