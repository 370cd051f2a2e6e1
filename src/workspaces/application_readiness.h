// application_readiness.h: Brings an application up to the windows a restore needs: launches it,
// opens windows through its new-window item, and waits for them with bounded waits.
#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string>

#include "diagnostics/logger.h"
#include "foundation/main_queue.h"
#include "platform/accessibility.h"
#include "platform/applications.h"

namespace corvetta {

// How long an application is given. Every wait restarts when one of its windows appears, so a
// slow application that keeps showing windows is waited for, and one that went quiet is not.
struct ReadinessTimings {
    // How often the windows are counted while waiting.
    Duration poll = std::chrono::milliseconds(50);
    // After a launch or a new-window request, for the first window to appear.
    Duration firstWindow = std::chrono::seconds(10);
    // After a window appeared, for the next one.
    Duration nextWindow = std::chrono::milliseconds(1500);
};

struct ReadinessRequest {
    std::string bundleIdentifier;
    // How many standard windows the restore wants of it.
    std::size_t windowsWanted = 0;
    // False when the workspace says not to launch missing applications.
    bool mayLaunch = true;
};

struct ReadinessResult {
    enum class Outcome {
        // Running, with every window it could be given (possibly fewer than wanted).
        ready,
        // Not running, and the workspace does not launch missing applications.
        notLaunched,
        // Could not be launched, or launched and never showed a window.
        failed,
    };
    Outcome outcome = Outcome::ready;
    // Why it failed or was not launched.
    std::string reason;
    bool launched = false;
    // New windows requested through its new-window item, and those that appeared.
    std::size_t windowsRequested = 0;
    std::size_t windowsAppeared = 0;
};

// Drives one application to readiness at a time per call; calls for several applications run side
// by side. Main thread only.
class ApplicationReadiness {
public:
    // `status` hears each step ("Launching Editor…") for the restoration's status message.
    ApplicationReadiness(AccessibilityPort& accessibility, ApplicationsPort& applications,
                         MainQueue& queue, LoggingService& logging, ReadinessTimings timings = {});
    ~ApplicationReadiness();
    ApplicationReadiness(const ApplicationReadiness&) = delete;
    ApplicationReadiness& operator=(const ApplicationReadiness&) = delete;

    // `done` runs once, on the main queue; not at all once this object is gone.
    void prepare(ReadinessRequest request, std::function<void(const std::string&)> status,
                 std::function<void(const ReadinessResult&)> done);

    const ReadinessTimings& timings() const { return timings_; }

private:
    struct Run;
    void launched(const std::shared_ptr<Run>& run,
                  const Expected<RunningApplication, LaunchError>& outcome);
    // Counts the windows every poll until `wanted` are there or the wait runs out, then `next`.
    void awaitWindows(const std::shared_ptr<Run>& run, std::size_t wanted, Duration firstWait,
                      std::function<void()> next);
    // Opens the windows still missing, one at a time.
    void openMissingWindows(const std::shared_ptr<Run>& run);
    bool requestNewWindow(const std::shared_ptr<Run>& run);
    std::size_t windowCount(const Run& run) const;
    void finish(const std::shared_ptr<Run>& run);

    AccessibilityPort& accessibility_;
    ApplicationsPort& applications_;
    MainQueue& queue_;
    Logger logger;
    ReadinessTimings timings_;
    std::shared_ptr<bool> alive_;
};

}  // namespace corvetta
