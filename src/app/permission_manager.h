// permission_manager.h: Polls the accessibility permission, which no system event announces.
#pragma once

#include <chrono>
#include <cstddef>
#include <memory>
#include <string>

#include "diagnostics/logger.h"
#include "foundation/main_queue.h"
#include "foundation/notification_center.h"
#include "foundation/preferences.h"
#include "platform/accessibility.h"
#include "platform/alerts.h"

namespace corvetta {

class LoggingService;

// Watches whether the user has granted the accessibility permission, without which no window can
// be read or moved. The user may grant or revoke it at any time in the system settings and the
// platform announces neither, so the monitor asks again on a timer: often while the permission is
// missing, so the program comes alive moments after the user grants it, and rarely once it has
// held for a while. Every change is posted as "PermissionStatusChanged". Main thread only.
class PermissionManager {
public:
    static constexpr const char* kStatusChangedNotification = "PermissionStatusChanged";
    // The notification's user info: the new value of the flag, a boolean.
    static constexpr const char* kGrantedUserInfoKey = "isAccessibilityPermissionGranted";

    // Kept across launches to tell, in a user's log, a permission never given from one that was
    // lost (as after an update replaced the signed binary).
    static constexpr const char* kEverGrantedKey = "CorvettaAccessibilityPermissionEverGranted";
    static constexpr const char* kLastKnownStatusKey = "CorvettaLastKnownAccessibilityStatus";
    // ISO 8601 text in UTC, whole seconds.
    static constexpr const char* kLastCheckTimestampKey = "CorvettaLastPermissionCheckTimestamp";

    static constexpr Duration kCheckIntervalWhenDenied = std::chrono::seconds(3);
    static constexpr Duration kCheckIntervalWhenGranted = std::chrono::seconds(30);
    // How many checks after a grant keep the short granted interval.
    static constexpr int kMaxChecksWhenGranted = 5;
    static constexpr Duration kCheckIntervalWhenSettled = std::chrono::seconds(120);

    PermissionManager(AccessibilityPort& accessibility, AlertPort& alerts, Preferences& preferences,
                      NotificationCenter& notifications, MainQueue& queue, LoggingService& logging);
    ~PermissionManager();
    PermissionManager(const PermissionManager&) = delete;
    PermissionManager& operator=(const PermissionManager&) = delete;

    // Logs what earlier launches stored, checks at once and keeps checking until stopped.
    // Starting a started monitor does nothing.
    void start();
    void stop();
    bool isMonitoring() const { return monitoring_; }

    // Asks the platform now; while monitoring, the next check is timed from this one.
    void checkPermission();
    // Asks the user to grant the permission, unless it is granted already or the question is
    // still open.
    void requestPermission();

    bool isAccessibilityPermissionGranted() const { return isAccessibilityPermissionGranted_; }
    int permissionCheckCount() const { return permissionCheckCount_; }
    int successfulGrantedChecks() const { return successfulGrantedChecks_; }

private:
    void logPersistentState();
    void persist(bool trusted);
    void scheduleNextCheck();
    void handleAlertAnswer(std::size_t buttonIndex);

    bool isAccessibilityPermissionGranted_ = false;
    DelayedWorkSlot permissionCheckTimer_;
    Logger logger_;
    int permissionCheckCount_ = 0;
    // Checks timed at the granted interval since the permission was last missing. A lost
    // permission sets it back to zero, so a new grant is confirmed at the short interval again.
    int successfulGrantedChecks_ = 0;

    AccessibilityPort& accessibility_;
    AlertPort& alerts_;
    Preferences& preferences_;
    NotificationCenter& notifications_;
    const Clock& clock_;
    bool monitoring_ = false;
    bool alertShowing_ = false;
    // An alert answered after this manager is gone must not call into it.
    std::shared_ptr<PermissionManager*> self_ = std::make_shared<PermissionManager*>(this);
};

}  // namespace corvetta
