#include "app/permission_manager.h"

#include <string>
#include <utility>

#include "foundation/date.h"

namespace corvetta {

namespace {

// Every line of this service carries it, so a user can grep one word out of a long log.
const std::string kDiagnostic = "🔍 PERMISSION DIAGNOSTIC: ";

std::string text(bool value) {
    return value ? "true" : "false";
}

}  // namespace

PermissionManager::PermissionManager(AccessibilityPort& accessibility, AlertPort& alerts,
                                     Preferences& preferences, NotificationCenter& notifications,
                                     MainQueue& queue, LoggingService& logging)
    : permissionCheckTimer_(queue),
      logger_(logging, "PermissionManager", LogCategory::permission()),
      accessibility_(accessibility),
      alerts_(alerts),
      preferences_(preferences),
      notifications_(notifications),
      clock_(queue.clock()) {}

// The pending check and an unanswered alert both call back into this object; the timer slot
// cancels the one and the expired self handle silences the other.
PermissionManager::~PermissionManager() = default;

void PermissionManager::start() {
    if (monitoring_) {
        return;
    }
    monitoring_ = true;
    logPersistentState();
    checkPermission();
}

void PermissionManager::stop() {
    if (!monitoring_) {
        return;
    }
    monitoring_ = false;
    permissionCheckTimer_.cancel();
    logger_.debug(kDiagnostic + "Stopped checking the permission");
}

void PermissionManager::logPersistentState() {
    const auto everGranted = preferences_.boolValue(kEverGrantedKey).value_or(false);
    const auto lastKnown = preferences_.boolValue(kLastKnownStatusKey);
    const auto lastCheck = preferences_.string(kLastCheckTimestampKey);
    logger_.info(kDiagnostic + "Persistent state - Ever granted: " + text(everGranted) +
                 ", Last known status: " + (lastKnown ? text(*lastKnown) : "unknown") +
                 ", Last check: " + lastCheck.value_or("never"));
}

void PermissionManager::checkPermission() {
    const bool trusted = accessibility_.isProcessTrusted();
    ++permissionCheckCount_;
    if (permissionCheckCount_ == 1) {
        logger_.info(kDiagnostic +
                     "FIRST CHECK ON APP LAUNCH - AXIsProcessTrusted() = " + text(trusted));
    } else {
        logger_.debug(kDiagnostic + "Check #" + std::to_string(permissionCheckCount_) +
                      " - AXIsProcessTrusted() = " + text(trusted));
    }
    persist(trusted);

    // A permission that comes back gets the close follow-up checks again: right after the user
    // toggles it is when it is most likely to flip once more.
    if (!trusted) {
        successfulGrantedChecks_ = 0;
    }
    if (trusted != isAccessibilityPermissionGranted_) {
        logger_.info(kDiagnostic + "Permission status CHANGED from " +
                     text(isAccessibilityPermissionGranted_) + " to " + text(trusted));
        isAccessibilityPermissionGranted_ = trusted;
        notifications_.post(kStatusChangedNotification, {{kGrantedUserInfoKey, trusted}});
    }
    // An observer of the change may have stopped the monitor.
    if (monitoring_) {
        scheduleNextCheck();
    }
}

void PermissionManager::persist(bool trusted) {
    if (trusted) {
        preferences_.set(kEverGrantedKey, true);
    } else if (!preferences_.boolValue(kEverGrantedKey).has_value()) {
        preferences_.set(kEverGrantedKey, false);
    }
    preferences_.set(kLastKnownStatusKey, trusted);
    preferences_.set(kLastCheckTimestampKey, formatIso8601(clock_.now()));
}

void PermissionManager::scheduleNextCheck() {
    Duration interval = kCheckIntervalWhenDenied;
    if (isAccessibilityPermissionGranted_) {
        if (successfulGrantedChecks_ < kMaxChecksWhenGranted) {
            interval = kCheckIntervalWhenGranted;
            ++successfulGrantedChecks_;
        } else {
            interval = kCheckIntervalWhenSettled;
        }
    }
    permissionCheckTimer_.schedule(interval, [this] { checkPermission(); });
}

void PermissionManager::requestPermission() {
    if (accessibility_.isProcessTrusted()) {
        logger_.info(kDiagnostic + "Permission already granted - not asking the user");
        return;
    }
    if (alertShowing_) {
        logger_.debug(kDiagnostic + "Still waiting for the user to answer the permission alert");
        return;
    }
    alertShowing_ = true;
    logger_.info(kDiagnostic + "Asking the user to grant Accessibility access");
    std::weak_ptr<PermissionManager*> self = self_;
    alerts_.showAlert(
        Alert{"Accessibility Access Required",
              "Corvetta needs Accessibility access to manage window positions. Open System "
              "Settings > Privacy & Security > Accessibility to grant it.",
              {"Open Settings", "Cancel"}},
        [self](std::size_t buttonIndex) {
            if (const auto manager = self.lock()) {
                (*manager)->handleAlertAnswer(buttonIndex);
            }
        });
}

void PermissionManager::handleAlertAnswer(std::size_t buttonIndex) {
    alertShowing_ = false;
    if (buttonIndex != 0) {
        logger_.info(kDiagnostic + "User cancelled the permission request");
        return;
    }
    if (alerts_.openAccessibilitySettings()) {
        logger_.info(kDiagnostic + "Opened System Settings at Privacy & Security > Accessibility");
    } else {
        logger_.warning(kDiagnostic +
                        "Could not open System Settings at Privacy & Security > Accessibility");
    }
}

}  // namespace corvetta
