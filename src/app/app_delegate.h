// app_delegate.h: The process's root: holds the services and status menu, applies run-time changes.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "app/service_root.h"
#include "app/status_menu.h"
#include "diagnostics/logger.h"
#include "foundation/notification_center.h"

namespace corvetta {

// The process's root object: holds the services (built by the service root), starts them at launch
// in the order that keeps a second copy harmless, holds the status menu, follows the notifications
// that change behaviour at run time and remembers which other application was last in front.
// Main thread only.
class AppDelegate {
public:
    // `terminate` ends the run loop; called when the user quits.
    AppDelegate(const ProcessPlumbing& plumbing, std::function<void()> terminate);
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

    // Runs a menu command (on the record `argument` names, for the submenus); false, logged, when
    // the menu offers no such command or it is disabled.
    bool perform(std::string_view command, std::string_view argument = {});
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

    ServiceRoot& services() { return services_; }

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

    // The commands that are no window action; false for a window action.
    bool performOwnCommand(std::string_view command, const std::string& argument);
    // Window actions need both the permission and the user's switch.
    void updateWindowFeatures();
    void updateStatusMenu();
    void rebuildStatusMenu();
    std::string shortcutLabel(std::string_view name);

    const ProcessPlumbing plumbing_;
    std::function<void()> terminate_;
    Logger logger_;
    StatusMenu statusMenu_;
    std::string ownBundleID_;
    bool isAccessibilityPermissionGranted_ = false;
    // Declared before the observers below, so they are dropped before any service goes.
    ServiceRoot services_;

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
