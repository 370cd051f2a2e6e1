// auto_restore_on_wake_service.h: Restores the last workspace by itself after a wake or when a
// display goes or comes back.
#pragma once

#include <chrono>
#include <optional>
#include <string>

#include "diagnostics/logger.h"
#include "foundation/date.h"
#include "foundation/main_queue.h"
#include "foundation/notification_center.h"
#include "foundation/preferences.h"
#include "foundation/registration.h"
#include "foundation/uuid.h"
#include "platform/sleep_wake.h"
#include "workspaces/accessibility_readiness_probe.h"
#include "workspaces/display_change_analysis.h"
#include "workspaces/workspace.h"

namespace corvetta {

class DisplayArrangementStabilityService;
class DisplayChangeMonitorService;
class LoggingService;
class WorkspaceRestorer;
class WorkspaceService;

// Hears wakes and display reconfigurations, lets a burst of them settle, decides with
// decideAutoRestore, waits until the accessibility interface takes writes, and then restores the
// last restored workspace as an automatic restore. Main thread only; lives as long as the process.
class AutoRestoreOnWakeService {
public:
    static constexpr const char* kEnabledKey = "autoRestoreOnWakeEnabled";
    static constexpr const char* kSettingTitle = "Auto-Restore on Display Changes";
    static constexpr const char* kSettingDescription =
        "Automatically restore your last workspace when the Mac wakes, or when a display "
        "disconnects or reconnects.";
    // Off until the user turns it on: windows that move by themselves must have been asked for.
    static constexpr bool kEnabledByDefault = false;

    // A burst is handled once it has been quiet this long, and never later than kMaxWait after
    // its first signal (a dock that keeps re-announcing its displays would otherwise hold it off).
    static constexpr std::chrono::milliseconds kQuietDelay{400};
    static constexpr std::chrono::milliseconds kMaxWait{8000};
    static constexpr std::chrono::duration<double> kCooldown{3.0};
    static constexpr std::chrono::milliseconds kReadinessPollInterval{300};
    static constexpr std::chrono::milliseconds kReadinessTimeout{10000};

    struct Services {
        WorkspaceService& workspaces;
        WorkspaceRestorer& restorer;
        DisplayChangeMonitorService& displayMonitor;
        DisplayArrangementStabilityService& displayStability;
        SleepWakePort& sleepWake;
        AccessibilityPort& accessibility;
        ApplicationsPort& applications;
        NotificationCenter& notifications;
        Preferences& defaults;
        MainQueue& queue;
        LoggingService& logging;
    };

    explicit AutoRestoreOnWakeService(Services services);
    AutoRestoreOnWakeService(const AutoRestoreOnWakeService&) = delete;
    AutoRestoreOnWakeService& operator=(const AutoRestoreOnWakeService&) = delete;

    // Starts listening; later calls do nothing.
    void start();

    const std::string& serviceName() const { return logger_.serviceName(); }

private:
    void handleDidWake();
    void handleDisplayConfigChanged();
    void signal(const std::string& reason, bool isWake);
    void settle(const char* timer);
    void evaluate(bool didWake);
    std::optional<Workspace> lastRestoredWorkspace() const;
    std::optional<DisplayChangeType> changeTypeFor(const Workspace& workspace);
    void pollReadiness();
    void restoreAwaited();

    Services services_;
    Logger logger_;
    bool started_ = false;
    bool missingDisplayForWorkspace_ = false;
    std::optional<Uuid> trackedWorkspaceID_;
    std::optional<Date> lastAutoRestoreFireTime_;
    DelayedWorkSlot quietWork_;
    DelayedWorkSlot maxWaitWork_;
    std::optional<std::string> pendingReason_;
    bool pendingIncludesWake_ = false;
    // The workspace that fired, while the readiness probe waits; counts as a restore under way.
    std::optional<Workspace> awaitingReadiness_;
    MonotonicTime probeStarted_;
    DelayedWorkSlot probeWork_;
    AccessibilityReadinessProbe probe_;
    Registration wakeObserver_;
    ObserverToken displayObserver_;
};

}  // namespace corvetta
