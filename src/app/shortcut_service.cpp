#include "app/shortcut_service.h"

#include "shortcuts/shortcut_names.h"
#include "windowing/window_action.h"

namespace corvetta {

namespace {
constexpr const char* kQuitAppName = "quitApp";
}  // namespace

ShortcutService::ShortcutService(KeyboardShortcutsBridge& shortcutBridge,
                                 const HotKeyStore& hotKeyStore,
                                 WindowSnappingService& snappingService,
                                 const Preferences& defaults, LoggingService& logging,
                                 std::function<void()> quit)
    : logger_(logging, "ShortcutService", LogCategory::shortcut()),
      shortcutBridge_(shortcutBridge),
      hotKeyStore_(hotKeyStore),
      snappingService_(snappingService),
      defaults_(defaults),
      quit_(std::move(quit)) {}

ShortcutService::~ShortcutService() {
    unregisterAllShortcuts();
}

bool ShortcutService::isWindowManagementEnabled() const {
    return defaults_.boolValue(kWindowManagementEnabledKey).value_or(true);
}

void ShortcutService::registerAllShortcuts() {
    logger_.info("Registering keyboard shortcuts...");
    if (isWindowManagementEnabled()) {
        registerWindowManagementShortcuts();
    } else {
        logger_.info("Window management features disabled, skipping window management shortcuts");
    }
    registerQuitShortcut();
    logger_.info("All shortcuts registered.");
}

void ShortcutService::registerWindowManagementShortcuts() {
    logger_.info("Registering window management shortcuts...");
    for (const auto& name : shortcutNames(ShortcutRole::windowAction)) {
        const auto action = WindowAction::fromShortcutName(name);
        if (!action) {
            logger_.error("No window action for shortcut " + name);
            continue;
        }
        shortcutBridge_.registerShortcut(name, [this, action = *action] {
            logger_.debug("Shortcut pressed: " + std::string(action.name()));
            action.perform(snappingService_);
        });
    }
    logger_.info("Window management shortcuts registered");
}

void ShortcutService::unregisterWindowManagementShortcuts() {
    logger_.info("Unregistering window management shortcuts...");
    for (const auto& name : shortcutNames(ShortcutRole::windowAction)) {
        shortcutBridge_.unregisterShortcut(name);
    }
    logger_.info("Window management shortcuts unregistered");
}

void ShortcutService::unregisterAllShortcuts() {
    shortcutBridge_.unregisterAllShortcuts();
}

void ShortcutService::registerQuitShortcut() {
    // While the user never chose a combination the name's own default is the one that answers.
    if (hotKeyStore_.entry(kQuitAppName).kind == HotKeyStore::EntryKind::absent) {
        logger_.info("Using fallback shortcut for Quit App");
    }
    shortcutBridge_.registerShortcut(kQuitAppName, [this] {
        logger_.info("Quit App shortcut triggered");
        quit_();
    });
}

}  // namespace corvetta
