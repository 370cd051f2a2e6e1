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

bool ShortcutService::windowActionsWanted() const {
    return permissionGranted_ && isWindowManagementEnabled();
}

void ShortcutService::registerAllShortcuts() {
    started_ = true;
    logger_.info("Registering keyboard shortcuts...");
    if (!isWindowManagementEnabled()) {
        logger_.info("Window management features disabled, skipping window management shortcuts");
    } else if (!permissionGranted_) {
        logger_.info("Accessibility permission missing, skipping window management shortcuts");
    } else {
        registerWindowManagementShortcuts();
    }
    registerQuitShortcut();
    logger_.info("All shortcuts registered.");
}

void ShortcutService::updateWindowManagementShortcuts(bool accessibilityPermissionGranted) {
    permissionGranted_ = accessibilityPermissionGranted;
    if (!started_ || windowActionsWanted() == windowActionsRegistered_) {
        return;
    }
    if (windowActionsRegistered_) {
        unregisterWindowManagementShortcuts();
    } else {
        registerWindowManagementShortcuts();
    }
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
    windowActionsRegistered_ = true;
    logger_.info("Window management shortcuts registered");
}

void ShortcutService::unregisterWindowManagementShortcuts() {
    logger_.info("Unregistering window management shortcuts...");
    for (const auto& name : shortcutNames(ShortcutRole::windowAction)) {
        shortcutBridge_.unregisterShortcut(name);
    }
    windowActionsRegistered_ = false;
    logger_.info("Window management shortcuts unregistered");
}

void ShortcutService::unregisterAllShortcuts() {
    shortcutBridge_.unregisterAllShortcuts();
    windowActionsRegistered_ = false;
    started_ = false;
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
