// app_delegate.h: The process's root: owns the services and status menu, applies run-time changes.
#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "app/automation_bridge.h"
#include "app/permission_manager.h"
#include "app/shortcut_service.h"
#include "app/status_menu.h"
#include "diagnostics/logbook.h"
#include "diagnostics/logger.h"
#include "foundation/main_queue.h"
#include "foundation/notification_center.h"
#include "foundation/preferences.h"
#include "platform/desktop.h"
#include "shortcuts/shortcut_services.h"
#include "windowing/accessibility_element.h"
#include "windowing/screen_detection_service.h"
#include "windowing/window_calculation_service.h"
#include "windowing/window_mover.h"
#include "windowing/window_snapping_service.h"

namespace corvetta {

// What the delegate is given: the desktop it runs on and the process-wide plumbing.
struct AppDelegateEnvironment {
    Desktop& desktop;
    MainQueue& queue;
    Preferences& defaults;
    NotificationCenter& notifications;
    Logbook& logbook;
    LoggingService& logging;
    // Ends the run loop; called when the user quits.
    std::function<void()> terminate;
    // Where the automation socket listens; without one there is no socket.
    std::optional<std::filesystem::path> socketPath{};
    // For status queries: "corvetta 0.1.0" and what the desktop is.
    std::string version{};
    std::string desktopDescription{};
};

// The process's root object: creates every long-lived service on first use and keeps it for the
// life of the process, holds the status menu, follows the notifications that change behaviour at
// run time and remembers which other application was last in front. Main thread only.
class AppDelegate {
public:
    explicit AppDelegate(AppDelegateEnvironment environment);
    ~AppDelegate();
    AppDelegate(const AppDelegate&) = delete;
    AppDelegate& operator=(const AppDelegate&) = delete;

    enum class LaunchResult { launched, alreadyRunning };
    // alreadyRunning when another Corvetta answers on the automation socket: this one must not
    // take over and leaves everything untouched.
    LaunchResult applicationDidFinishLaunching();
    // Releases what the services hold outside the process (hot keys, timers, observers). Safe to
    // call twice; the destructor calls it.
    void applicationWillTerminate();

    // Runs a menu command; false, logged, when the menu offers no such command or it is disabled.
    bool perform(std::string_view command);
    // While the menu is shown it is not rebuilt under the user's pointer; a change waits for it to
    // close.
    void menuWillOpen();
    void menuDidClose();
    const StatusMenu& statusMenu() const { return statusMenu_; }
    // How many times the menu was rebuilt; lets callers notice a change.
    int statusMenuRevision() const { return statusMenuRevision_; }

    bool isAccessibilityPermissionGranted() const { return isAccessibilityPermissionGranted_; }
    const std::optional<RunningApplication>& previousFrontmostApp() const {
        return previousFrontmostApp_;
    }
    bool isDragToSnapEnabled() const { return isDragToSnapEnabled_; }
    const std::string& ownBundleID() const { return ownBundleID_; }
    // "Window actions ready" and the like, for status queries.
    std::string statusMessage() const;
    // The shortcuts the system refused: name and combination label.
    std::vector<std::pair<std::string, std::string>> shortcutsNotRegistered();

    // The services, each created on first use.
    ScreenDetectionService& screenDetection();
    WindowCalculationService& calculationService();
    WindowMover& windowMover();
    AccessibilityElement& accessibilityElement();
    WindowSnappingService& windowSnappingService();
    ShortcutServices& shortcutServices();
    ShortcutService& shortcutService();
    PermissionManager& permissionManager();
    // None when the environment names no socket.
    AutomationBridge* mcpBridgeService();

private:
    void readLaunchSettings();
    void logShortcutsNotRegistered();
    void observeNotifications();
    void observe(const char* name, void (AppDelegate::*handler)(const Notification&));

    void handleExternalAppActivated(const RunningApplication& application);
    void handlePermissionStatusChanged(const Notification& notification);
    void handleDisplayConfigurationChanged(const Notification& notification);
    void handleDragToSnapEnabledChanged(const Notification& notification);
    void handleSnapModifiersChanged(const Notification& notification);
    void handleAvoidSystemConflictsChanged(const Notification& notification);
    void handleWindowManagementEnabledChanged(const Notification& notification);
    void handleRefreshStatusMenu(const Notification& notification);
    void handleLoggingSettingsChanged(const Notification& notification);

    void updateStatusMenu();
    void rebuildStatusMenu();
    std::string shortcutLabel(std::string_view name);

    AppDelegateEnvironment environment_;
    Logger logger_;
    StatusMenu statusMenu_;
    std::string ownBundleID_;
    bool isAccessibilityPermissionGranted_ = false;

    std::unique_ptr<ScreenDetectionService> screenDetection_;
    std::unique_ptr<WindowCalculationService> calculationService_;
    std::unique_ptr<WindowMover> windowMover_;
    std::unique_ptr<AccessibilityElement> accessibilityElement_;
    std::unique_ptr<WindowSnappingService> windowSnappingService_;
    std::unique_ptr<ShortcutServices> shortcutServices_;
    std::unique_ptr<ShortcutService> shortcutService_;
    std::unique_ptr<AutomationBridge> mcpBridgeService_;
    std::unique_ptr<PermissionManager> permissionManager_;

    std::vector<ObserverToken> workspaceCancellables_;
    std::vector<ObserverToken> loggingObservers_;
    std::vector<ObserverToken> notificationObservers_;
    Registration activationObserver_;
    bool pendingUpdate_ = false;
    std::optional<RunningApplication> previousFrontmostApp_;
    bool menuIsOpen_ = false;
    int statusMenuRevision_ = 0;
    bool isDragToSnapEnabled_ = true;
    bool launched_ = false;
    bool terminated_ = false;
};

}  // namespace corvetta
