#include "app/app_delegate.h"

#include "app/app_notifications.h"
#include "automation/automation_methods.h"
#include "automation/mcp_bridge_service.h"
#include "diagnostics/logging_manager.h"
#include "shortcuts/key_labels.h"
#include "shortcuts/shortcut.h"
#include "windowing/window_action.h"

namespace corvetta {

AppDelegate::AppDelegate(const ProcessPlumbing& plumbing, std::function<void()> terminate)
    : plumbing_(plumbing),
      terminate_(std::move(terminate)),
      logger_(plumbing_.logging, "AppDelegate", LogCategory::startup()),
      services_(plumbing_,
                ServiceCallbacks{
                    .quit = [this] { perform(StatusMenu::kQuitCommand); },
                    .statusMessage = [this] { return statusMessage(); },
                    .shortcutsNotRegistered = [this] { return shortcutsNotRegistered(); },
                    .previousFrontmostApp = [this] { return previousFrontmostApp_; },
                }) {
    ownBundleID_ =
        plumbing_.desktop.applicationsPort().currentApplication().bundleIdentifier.value_or("");
}

AppDelegate::~AppDelegate() {
    applicationWillTerminate();
}

// MARK: - Launch and termination

AppDelegate::LaunchResult AppDelegate::applicationDidFinishLaunching() {
    if (launched_) {
        return LaunchResult::launched;
    }
    logger_.info("Application did finish launching");
    // First, so a second copy leaves before it grabs a single key or writes a single setting.
    if (auto* server = services_.automationServer();
        server && server->start() == MCPBridgeService::StartResult::alreadyRunning) {
        logger_.error("Corvetta is already running (automation socket " +
                      server->socketPath().string() + ")");
        return LaunchResult::alreadyRunning;
    }
    launched_ = true;
    // A status-bar item and no Dock icon.
    plumbing_.desktop.applicationsPort().setActivationPolicy(ActivationPolicy::accessory);

    // Shortcut storage is settled before anything reads a combination.
    services_.shortcutStartup.run();
    // Before shortcuts are registered: seeding moves the built-in layouts' shortcuts.
    services_.customLayoutStore.seedDefaultsIfNeeded();
    readLaunchSettings();
    observeNotifications();

    // The observer is in place first, so the first check's answer decides whether the window
    // actions' keys are grabbed at all.
    services_.permissionManager.start();
    services_.autoRestoreOnWake.start();
    services_.shortcutService.registerAllShortcuts();
    logShortcutsNotRegistered();
    rebuildStatusMenu();
    return LaunchResult::launched;
}

void AppDelegate::readLaunchSettings() {
    auto& defaults = plumbing_.defaults;
    const auto readBool = [&](const char* key, bool fallback) {
        if (const auto value = defaults.boolValue(key)) {
            return *value;
        }
        defaults.set(key, fallback);
        logger_.info(std::string("Set default ") + key + " to " + (fallback ? "true" : "false"));
        return fallback;
    };
    isDragToSnapEnabled_ = readBool(AppSettings::kDragToSnapEnabled, true);
    const bool allowAnyShortcut = readBool(ShortcutStartup::kAllowAnyShortcutKey, true);
    logger_.info(std::string("Drag to snap ") + (isDragToSnapEnabled_ ? "enabled" : "disabled") +
                 ", any shortcut " + (allowAnyShortcut ? "allowed" : "restricted"));
}

void AppDelegate::observe(const char* name, void (AppDelegate::*handler)(const Notification&)) {
    notificationObservers_.push_back(plumbing_.notifications.addObserver(
        name, [this, handler](const Notification& n) { (this->*handler)(n); }));
}

void AppDelegate::observeNotifications() {
    // Whatever is in front at launch is the window the user means until something else comes
    // forward.
    if (const auto frontmost = plumbing_.desktop.applicationsPort().frontmostApplication()) {
        handleExternalAppActivated(*frontmost);
    }
    activationObserver_ = plumbing_.desktop.applicationsPort().observeDidActivateApplication(
        [this](const RunningApplication& app) { handleExternalAppActivated(app); });
    observe(PermissionManager::kStatusChangedNotification,
            &AppDelegate::handlePermissionStatusChanged);
    observe(AppNotifications::kDisplayConfigurationChanged,
            &AppDelegate::handleDisplayConfigurationChanged);
    observe(AppNotifications::kDragToSnapEnabledChanged,
            &AppDelegate::handleDragToSnapEnabledChanged);
    observe(AppNotifications::kSnapModifiersChanged, &AppDelegate::handleSnapModifiersChanged);
    observe(AppNotifications::kAvoidSystemConflictsChanged,
            &AppDelegate::handleAvoidSystemConflictsChanged);
    observe(AppNotifications::kWindowManagementEnabledChanged,
            &AppDelegate::handleWindowManagementEnabledChanged);
    observe(AppNotifications::kRefreshStatusMenu, &AppDelegate::handleRefreshStatusMenu);
    // The submenus list the records and the labels show the combinations.
    for (const char* name :
         {AppNotifications::kWorkspacesDidChange, SpaceManager::kSpacesDidChange,
          CustomLayoutStore::kDidChangeNotification, HotKeyStore::kDidChangeNotification}) {
        workspaceCancellables_.push_back(plumbing_.notifications.addObserver(
            name, [this](const Notification& n) { handleRefreshStatusMenu(n); }));
    }
    loggingObservers_.push_back(plumbing_.notifications.addObserver(
        LoggingManager::kSettingsChangedNotification,
        [this](const Notification& n) { handleLoggingSettingsChanged(n); }));
    logger_.info(std::string("Logging observer set up for notification: ") +
                 LoggingManager::kSettingsChangedNotification);
}

void AppDelegate::applicationWillTerminate() {
    if (terminated_ || !launched_) {
        terminated_ = true;
        return;
    }
    terminated_ = true;
    logger_.info("Application will terminate");
    // Nothing may call back into a half-torn-down delegate.
    activationObserver_ = {};
    notificationObservers_.clear();
    workspaceCancellables_.clear();
    loggingObservers_.clear();
    // Launched, so the server (if any) exists already.
    if (auto* server = services_.automationServer()) {
        server->stop();
    }
    services_.permissionManager.stop();
    services_.shortcutService.unregisterAllShortcuts();
    services_.commandPalette.servicesStopped();
}

// MARK: - Menu commands

bool AppDelegate::perform(std::string_view command, std::string_view argument) {
    const auto item = statusMenu_.item(command, argument);
    if (!item) {
        logger_.warning("Menu command not available: " + std::string(command));
        return false;
    }
    if (!item->isEnabled) {
        logger_.info("Menu command disabled: " + std::string(command));
        return false;
    }
    if (command == StatusMenu::kQuitCommand) {
        logger_.info("Quit requested");
        terminate_();
        return true;
    }
    if (performOwnCommand(command, item->argument)) {
        return true;
    }
    const auto name = windowActionShortcutName(command);
    const auto action = name ? WindowAction::fromShortcutName(*name) : std::nullopt;
    if (!action) {
        logger_.error("Menu command has no action: " + std::string(command));
        return false;
    }
    action->perform(services_.windowSnappingService);
    return true;
}

bool AppDelegate::performOwnCommand(std::string_view command, const std::string& argument) {
    auto& presenter = services_.windowPresenter;
    const auto id = Uuid::parse(argument);
    if (command == StatusMenu::kRequestPermissionCommand) {
        services_.permissionManager.requestPermission();
    } else if (command == StatusMenu::kCommandPaletteCommand) {
        presenter.toggleCommandPalette();
    } else if (command == StatusMenu::kSaveWorkspaceCommand) {
        presenter.showSaveWorkspaceWindow();
    } else if (command == StatusMenu::kAddSpaceCommand) {
        presenter.showAddSpaceWindow();
    } else if (command == StatusMenu::kAboutCommand) {
        presenter.showAboutWindow();
    } else if (command == StatusMenu::kHelpCommand) {
        presenter.showHelp();
    } else if (command == StatusMenu::kRestoreWorkspaceCommand) {
        const Workspace* workspace = id ? services_.workspaceService.workspace(*id) : nullptr;
        if (!workspace) {
            logger_.warning("No workspace " + argument + " to restore");
            return true;
        }
        services_.toastAnnouncer.restore(*workspace, RestoreTrigger::user, {});
    } else if (command == StatusMenu::kSwitchSpaceCommand) {
        // The "Global" stand-in has an id of its own, but activating it means no named space.
        const bool global = id && *id == services_.spaceManager.globalSpace().id;
        services_.spaceManager.activate(global ? std::nullopt : id);
    } else if (command == StatusMenu::kApplyLayoutCommand) {
        const CustomLayoutTemplate* layout = id ? services_.customLayoutStore.find(*id) : nullptr;
        if (!layout) {
            logger_.warning("No layout " + argument + " to apply");
            return true;
        }
        services_.toastAnnouncer.applyLayout(*layout);
    } else {
        return false;
    }
    return true;
}

void AppDelegate::menuWillOpen() {
    menuIsOpen_ = true;
}

void AppDelegate::menuDidClose() {
    menuIsOpen_ = false;
    if (pendingUpdate_) {
        rebuildStatusMenu();
    }
}

void AppDelegate::updateStatusMenu() {
    if (menuIsOpen_) {
        pendingUpdate_ = true;
        return;
    }
    rebuildStatusMenu();
}

void AppDelegate::rebuildStatusMenu() {
    pendingUpdate_ = false;
    StatusMenuState state{
        .isAccessibilityPermissionGranted = isAccessibilityPermissionGranted_,
        .isWindowManagementEnabled = services_.shortcutService.isWindowManagementEnabled(),
        .hideWindowManagementMenuItems =
            plumbing_.defaults.boolValue(AppSettings::kHideWindowManagementMenuItems)
                .value_or(false),
    };
    for (const auto& workspace : services_.workspaceService.workspaces()) {
        if (workspace.id) {
            state.workspaces.push_back({workspace.id->string(), workspace.name,
                                        workspaceShortcutName(workspace.id->string())});
        }
    }
    const auto& global = services_.spaceManager.globalSpace();
    state.spaces.push_back({global.id.string(), global.name});
    for (const auto& space : services_.spaceManager.spaces()) {
        state.spaces.push_back(
            {space.id.string(), space.name, spaceShortcutName(space.id.string())});
    }
    const auto& active = services_.workspaceService.activeSpaceId();
    state.activeSpaceId =
        (active && services_.spaceManager.space(*active) ? *active : global.id).string();
    for (const auto& layout : services_.customLayoutStore.layouts()) {
        state.layouts.push_back({layout.id.string(), layout.name, layout.shortcutName()});
    }
    for (const auto& [name, shortcut] : services_.keyboardShortcuts.notRegistered()) {
        state.shortcutsInUse.insert(name);
    }
    statusMenu_ =
        StatusMenu::build(state, [this](std::string_view name) { return shortcutLabel(name); });
    ++statusMenuRevision_;
    plumbing_.notifications.post(AppNotifications::kStatusMenuDidChange);
}

std::string AppDelegate::shortcutLabel(std::string_view name) {
    // Read from the live store, not through the bridge: building a menu is no lookup worth a log
    // line.
    const auto live = services_.keyboardShortcuts.shortcut(libraryShortcutName(name));
    return live ? corvetta::shortcutLabel(ShortcutConverter::toShortcut(*live)) : "";
}

std::vector<std::pair<std::string, std::string>> AppDelegate::shortcutsNotRegistered() {
    std::vector<std::pair<std::string, std::string>> refused;
    for (const auto& [name, shortcut] : services_.keyboardShortcuts.notRegistered()) {
        refused.emplace_back(name,
                             corvetta::shortcutLabel(ShortcutConverter::toShortcut(shortcut)));
    }
    return refused;
}

// Once, at start, on one line: each refusal was logged as it happened, among everything else.
void AppDelegate::logShortcutsNotRegistered() {
    const auto refused = shortcutsNotRegistered();
    if (refused.empty()) {
        return;
    }
    std::string listed;
    for (const auto& [name, combination] : refused) {
        listed += (listed.empty() ? "" : ", ") + name + " (" + combination + ")";
    }
    logger_.warning("Shortcuts not registered, their combinations are in use: " + listed);
    // Said once on screen too, so a first key press that does nothing is never a mystery.
    services_.toastManager.show(
        ToastData::make("Another program holds " + std::to_string(refused.size()) +
                            (refused.size() == 1 ? " shortcut: " : " shortcuts: ") + listed,
                        ToastStyle::error));
}

std::string AppDelegate::statusMessage() const {
    if (!isAccessibilityPermissionGranted_) {
        return "Waiting for accessibility permission";
    }
    if (!services_.shortcutService.isWindowManagementEnabled()) {
        return "Window management disabled";
    }
    return "Window actions ready";
}

// MARK: - Notification handlers

void AppDelegate::handleExternalAppActivated(const RunningApplication& application) {
    if (application.bundleIdentifier && *application.bundleIdentifier == ownBundleID_) {
        return;
    }
    previousFrontmostApp_ = application;
    logger_.debug("Previous frontmost app: " + application.description());
}

void AppDelegate::handlePermissionStatusChanged(const Notification& notification) {
    const auto found = notification.userInfo.find(PermissionManager::kGrantedUserInfoKey);
    const auto granted =
        found == notification.userInfo.end() ? std::nullopt : found->second.toBool();
    isAccessibilityPermissionGranted_ =
        granted.value_or(services_.permissionManager.isAccessibilityPermissionGranted());
    logger_.info(std::string("Accessibility permission ") + (isAccessibilityPermissionGranted_
                                                                 ? "granted: window features on"
                                                                 : "missing: window features off"));
    updateWindowFeatures();
}

void AppDelegate::handleDisplayConfigurationChanged(const Notification&) {
    logger_.info("Display configuration changed, refreshing screen caches");
    services_.screenDetection.refresh();
}

void AppDelegate::handleDragToSnapEnabledChanged(const Notification&) {
    isDragToSnapEnabled_ =
        plumbing_.defaults.boolValue(AppSettings::kDragToSnapEnabled).value_or(true);
    logger_.info(std::string("Drag to snap ") + (isDragToSnapEnabled_ ? "enabled" : "disabled"));
}

void AppDelegate::handleSnapModifiersChanged(const Notification&) {
    const auto modifiers = plumbing_.defaults.integer(AppSettings::kSnapModifiers);
    logger_.info("Snap modifiers changed to " +
                 (modifiers ? std::to_string(*modifiers) : std::string("default")));
}

void AppDelegate::handleAvoidSystemConflictsChanged(const Notification&) {
    const bool avoid =
        plumbing_.defaults.boolValue(AppSettings::kAvoidSystemConflicts).value_or(true);
    logger_.info(std::string("Avoid system conflicts ") + (avoid ? "on" : "off"));
}

void AppDelegate::handleWindowManagementEnabledChanged(const Notification&) {
    updateWindowFeatures();
}

void AppDelegate::updateWindowFeatures() {
    services_.shortcutService.updateWindowManagementShortcuts(isAccessibilityPermissionGranted_);
    updateStatusMenu();
}

void AppDelegate::handleRefreshStatusMenu(const Notification&) {
    updateStatusMenu();
}

void AppDelegate::handleLoggingSettingsChanged(const Notification&) {
    plumbing_.logging.reloadSettings();
}

}  // namespace corvetta
