// shortcut_startup.h: Start-up work on stored shortcuts: defaults and one-time migrations.
#pragma once

#include <map>
#include <optional>
#include <string>

#include "diagnostics/logger.h"
#include "foundation/preferences.h"
#include "shortcuts/keyboard_shortcuts.h"
#include "shortcuts/shortcut_manager.h"

namespace corvetta {

struct ShortcutDefaults {
    // Where a dictionary of every shortcut was kept before each name had its own entry: data
    // holding {"<name>": {"keyCode": k, "modifiers": m}, ...}. Read only by the migration.
    static constexpr const char* shortcutsKey = "Corvetta.Shortcuts";
};

// What runs once at every start, before any shortcut is registered: the default for a new user,
// the hot-key library switched on, the one-time copy of legacy shortcuts into the live store, and
// the one-time reset of "saveWorkspace". A second start changes nothing stored.
class ShortcutStartup {
public:
    static constexpr const char* kMigrationCompletedKey = "shortcutMigrationCompleted";
    static constexpr const char* kSaveWorkspaceFixAppliedKey = "SaveWorkspaceShortcutFixApplied";
    static constexpr const char* kAllowAnyShortcutKey = "allowAnyShortcut";

    ShortcutStartup(Preferences& defaults, ShortcutManager& shortcutManager,
                    HotKeyStore& hotKeyStore, KeyboardShortcuts& keyboardShortcuts,
                    LoggingService& logging);

    void run();

private:
    void applyNewUserDefaults();
    void migrateLegacyShortcuts();
    void applySaveWorkspaceFix();
    // The legacy combination of a name: its own entry, else the old dictionary's.
    std::optional<Shortcut> legacyShortcut(const std::string& name,
                                           const std::map<std::string, Shortcut>& dictionary);
    std::map<std::string, Shortcut> legacyDictionary();

    Preferences& defaults_;
    ShortcutManager& shortcutManager_;
    HotKeyStore& hotKeyStore_;
    KeyboardShortcuts& keyboardShortcuts_;
    Logger logger_;
};

}  // namespace corvetta
