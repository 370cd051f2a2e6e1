#include "app/app_delegate.h"

#include "app/app_notifications.h"
#include "automation/automation_methods.h"
#include "diagnostics/logging_manager.h"
#include "shortcuts/key_labels.h"
#include "shortcuts/shortcut.h"
#include "windowing/window_action.h"

namespace corvetta {

AppDelegate::AppDelegate(AppDelegateEnvironment environment)
    : environment_(std::move(environment)),
      logger_(environment_.logging, "AppDelegate", LogCategory::startup()) {
    ownBundleID_ =
        environment_.desktop.applicationsPort().currentApplication().bundleIdentifier.value_or("");
}

AppDelegate::~AppDelegate() {
    applicationWillTerminate();
}

// MARK: - Services, on first use

ScreenDetectionService& AppDelegate::screenDetection() {
    if (!screenDetection_) {
        screenDetection_ = std::make_unique<ScreenDetectionService>(
            environment_.desktop.screenPort(), environment_.logging);
    }
    return *screenDetection_;
}

WindowCalculationService& AppDelegate::calculationService() {
    if (!calculationService_) {
        calculationService_ = std::make_unique<WindowCalculationService>(
            screenDetection(), environment_.defaults, environment_.logging);
    }
    return *calculationService_;
}

WindowMover& AppDelegate::windowMover() {
    if (!windowMover_) {
        windowMover_ = std::make_unique<WindowMover>(
            accessibilityElement(), calculationService(), screenDetection(),
            environment_.desktop.screenPort(), environment_.queue, environment_.logging);
    }
    return *windowMover_;
}

AccessibilityElement& AppDelegate::accessibilityElement() {
    if (!accessibilityElement_) {
        auto& desktop = environment_.desktop;
        accessibilityElement_ = std::make_unique<AccessibilityElement>(
            desktop.accessibilityPort(), desktop.screenPort(), desktop.windowListPort(),
            desktop.applicationsPort(), desktop.pointerPort(), environment_.logging);
    }
    return *accessibilityElement_;
}

WindowSnappingService& AppDelegate::windowSnappingService() {
    if (!windowSnappingService_) {
        windowSnappingService_ = std::make_unique<WindowSnappingService>(
            windowMover(), screenDetection(), accessibilityElement(), calculationService(),
            environment_.desktop.applicationsPort(), environment_.defaults, environment_.logging);
    }
    return *windowSnappingService_;
}

ShortcutServices& AppDelegate::shortcutServices() {
    if (!shortcutServices_) {
        shortcutServices_ = std::make_unique<ShortcutServices>(
            environment_.desktop.hotKeyPort(), environment_.defaults, environment_.notifications,
            environment_.logging);
    }
    return *shortcutServices_;
}

ShortcutService& AppDelegate::shortcutService() {
    if (!shortcutService_) {
        auto& layers = shortcutServices();
        shortcutService_ = std::make_unique<ShortcutService>(
            layers.bridge, layers.hotKeyStore, windowSnappingService(), environment_.defaults,
            environment_.logging, [this] { perform(StatusMenu::kQuitCommand); });
    }
    return *shortcutService_;
}

PermissionManager& AppDelegate::permissionManager() {
    if (!permissionManager_) {
        auto& desktop = environment_.desktop;
        permissionManager_ = std::make_unique<PermissionManager>(
            desktop.accessibilityPort(), desktop.alertPort(), environment_.defaults,
            environment_.notifications, environment_.queue, environment_.logging);
    }
    return *permissionManager_;
}

AutomationBridge* AppDelegate::mcpBridgeService() {
    if (!mcpBridgeService_ && environment_.socketPath) {
        mcpBridgeService_ = std::make_unique<AutomationBridge>(
            *environment_.socketPath,
            AutomationContext{
                .desktop = environment_.desktop,
                .queue = environment_.queue,
                .screenDetection = screenDetection(),
                .snappingService = windowSnappingService(),
                .windowMover = windowMover(),
                .logbook = environment_.logbook,
                .logging = environment_.logging,
                .version = environment_.version,
                .desktopDescription = environment_.desktopDescription,
                .statusMessage = [this] { return statusMessage(); },
                .shortcutsNotRegistered = [this] { return shortcutsNotRegistered(); },
            });
    }
    return mcpBridgeService_.get();
}

// MARK: - Launch and termination

AppDelegate::LaunchResult AppDelegate::applicationDidFinishLaunching() {
    if (launched_) {
        return LaunchResult::launched;
    }
    logger_.info("Application did finish launching");
    // First, so a second copy leaves before it grabs a single key or writes a single setting.
    if (auto* bridge = mcpBridgeService();
        bridge && bridge->start() == AutomationBridge::StartResult::alreadyRunning) {
        logger_.error("Corvetta is already running (automation socket " +
                      bridge->socketPath().string() + ")");
        mcpBridgeService_.reset();
        return LaunchResult::alreadyRunning;
    }
    launched_ = true;
    // A status-bar item and no Dock icon.
    environment_.desktop.applicationsPort().setActivationPolicy(ActivationPolicy::accessory);

    // Shortcut storage is settled before anything reads a combination.
    shortcutServices().startup.run();
    readLaunchSettings();
    observeNotifications();

    // The observer is in place first, so the first check's change reaches the flag.
    permissionManager().start();
    shortcutService().registerAllShortcuts();
    logShortcutsNotRegistered();
    rebuildStatusMenu();
    return LaunchResult::launched;
}

void AppDelegate::readLaunchSettings() {
    auto& defaults = environment_.defaults;
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
    notificationObservers_.push_back(environment_.notifications.addObserver(
        name, [this, handler](const Notification& n) { (this->*handler)(n); }));
}

void AppDelegate::observeNotifications() {
    // Whatever is in front at launch is the window the user means until something else comes
    // forward.
    if (const auto frontmost = environment_.desktop.applicationsPort().frontmostApplication()) {
        handleExternalAppActivated(*frontmost);
    }
    activationObserver_ = environment_.desktop.applicationsPort().observeDidActivateApplication(
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
    workspaceCancellables_.push_back(environment_.notifications.addObserver(
        AppNotifications::kWorkspacesDidChange,
        [this](const Notification& n) { handleRefreshStatusMenu(n); }));
    loggingObservers_.push_back(environment_.notifications.addObserver(
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
    if (mcpBridgeService_) {
        mcpBridgeService_->stop();
    }
    if (permissionManager_) {
        permissionManager_->stop();
    }
    // Reverse order of dependency: a service never outlives what it holds a reference to.
    mcpBridgeService_.reset();
    shortcutService_.reset();
    shortcutServices_.reset();
    windowSnappingService_.reset();
    windowMover_.reset();
    accessibilityElement_.reset();
    calculationService_.reset();
    screenDetection_.reset();
    permissionManager_.reset();
}

// MARK: - Menu commands

bool AppDelegate::perform(std::string_view command) {
    const auto item = statusMenu_.item(command);
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
        environment_.terminate();
        return true;
    }
    if (command == StatusMenu::kRequestPermissionCommand) {
        permissionManager().requestPermission();
        return true;
    }
    const auto name = windowActionShortcutName(command);
    const auto action = name ? WindowAction::fromShortcutName(*name) : std::nullopt;
    if (!action) {
        logger_.error("Menu command has no action: " + std::string(command));
        return false;
    }
    action->perform(windowSnappingService());
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
    const StatusMenuState state{
        .isAccessibilityPermissionGranted = isAccessibilityPermissionGranted_,
        .isWindowManagementEnabled = shortcutService().isWindowManagementEnabled(),
        .hideWindowManagementMenuItems =
            environment_.defaults.boolValue(AppSettings::kHideWindowManagementMenuItems)
                .value_or(false),
    };
    statusMenu_ =
        StatusMenu::build(state, [this](std::string_view name) { return shortcutLabel(name); });
    ++statusMenuRevision_;
}

std::string AppDelegate::shortcutLabel(std::string_view name) {
    // Read from the live store, not through the bridge: building a menu is no lookup worth a log
    // line.
    const auto live = shortcutServices().keyboardShortcuts.shortcut(libraryShortcutName(name));
    return live ? corvetta::shortcutLabel(ShortcutConverter::toShortcut(*live)) : "";
}

std::vector<std::pair<std::string, std::string>> AppDelegate::shortcutsNotRegistered() {
    std::vector<std::pair<std::string, std::string>> refused;
    for (const auto& [name, shortcut] : shortcutServices().keyboardShortcuts.notRegistered()) {
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
}

std::string AppDelegate::statusMessage() const {
    if (!isAccessibilityPermissionGranted_) {
        return "Waiting for accessibility permission";
    }
    if (shortcutService_ && !shortcutService_->isWindowManagementEnabled()) {
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
        granted.value_or(permissionManager().isAccessibilityPermissionGranted());
    logger_.info(std::string("Accessibility permission ") + (isAccessibilityPermissionGranted_
                                                                 ? "granted: window features on"
                                                                 : "missing: window features off"));
    updateStatusMenu();
}

void AppDelegate::handleDisplayConfigurationChanged(const Notification&) {
    logger_.info("Display configuration changed, refreshing screen caches");
    if (screenDetection_) {
        screenDetection_->refresh();
    }
}

void AppDelegate::handleDragToSnapEnabledChanged(const Notification&) {
    isDragToSnapEnabled_ =
        environment_.defaults.boolValue(AppSettings::kDragToSnapEnabled).value_or(true);
    logger_.info(std::string("Drag to snap ") + (isDragToSnapEnabled_ ? "enabled" : "disabled"));
}

void AppDelegate::handleSnapModifiersChanged(const Notification&) {
    const auto modifiers = environment_.defaults.integer(AppSettings::kSnapModifiers);
    logger_.info("Snap modifiers changed to " +
                 (modifiers ? std::to_string(*modifiers) : std::string("default")));
}

void AppDelegate::handleAvoidSystemConflictsChanged(const Notification&) {
    const bool avoid =
        environment_.defaults.boolValue(AppSettings::kAvoidSystemConflicts).value_or(true);
    logger_.info(std::string("Avoid system conflicts ") + (avoid ? "on" : "off"));
}

void AppDelegate::handleWindowManagementEnabledChanged(const Notification&) {
    auto& shortcuts = shortcutService();
    if (shortcuts.isWindowManagementEnabled()) {
        shortcuts.registerWindowManagementShortcuts();
    } else {
        shortcuts.unregisterWindowManagementShortcuts();
    }
    updateStatusMenu();
}

void AppDelegate::handleRefreshStatusMenu(const Notification&) {
    updateStatusMenu();
}

void AppDelegate::handleLoggingSettingsChanged(const Notification&) {
    environment_.logging.reloadSettings();
}

}  // namespace corvetta
