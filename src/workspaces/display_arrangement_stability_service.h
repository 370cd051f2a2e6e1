// display_arrangement_stability_service.h: Tells how the displays changed between a saved
// arrangement and the current one, and how far to trust that while they keep changing.
#pragma once

#include <chrono>
#include <cstddef>
#include <string>
#include <vector>

#include "diagnostics/logger.h"
#include "foundation/clock.h"
#include "workspaces/display_change_analysis.h"

namespace corvetta {

class LoggingService;

// Compares a saved arrangement with the current one. Every analysis also records the current
// arrangement in a short in-memory history, so a burst of reconfigurations (a dock waking its
// displays one by one, a flaky cable) lowers the confidence of what the analysis concludes. The
// first 30 seconds after the process started are a grace period: display identifiers that change
// then are more likely a restart of the system than a new display.
class DisplayArrangementStabilityService {
public:
    static constexpr std::size_t maxSnapshotHistory = 5;
    static constexpr std::chrono::duration<double> stabilityCheckInterval{2.0};
    static constexpr std::chrono::duration<double> postStartupGracePeriod{30.0};

    DisplayArrangementStabilityService(const Clock& clock, LoggingService& logging);
    DisplayArrangementStabilityService(const DisplayArrangementStabilityService&) = delete;
    DisplayArrangementStabilityService& operator=(const DisplayArrangementStabilityService&) =
        delete;

    // Records `current`, then classifies the change from `saved` to it.
    DisplayChangeAnalysis analyzeDisplayChange(const DisplayArrangementInfo& saved,
                                               const DisplayArrangementInfo& current);

    // Appends the arrangement with the time now; the oldest go beyond the history's length.
    void recordSnapshot(const DisplayArrangementInfo& arrangement);
    bool isInGracePeriod() const;
    // Three snapshots within 10 seconds.
    bool hasRapidChanges() const;
    // 0.7 for each change between consecutive snapshots of the newest three; 1 for fewer than 2.
    double stabilityFactor() const;

    const std::vector<DisplayArrangementSnapshot>& recentArrangements() const {
        return recentArrangements_;
    }
    Date systemStartupTime() const { return systemStartupTime_; }
    const std::string& serviceName() const { return logger_.serviceName(); }

private:
    bool detectIdenticalMonitorSwap(const DisplayArrangementInfo& saved,
                                    const DisplayArrangementInfo& current) const;
    void classify(const DisplayArrangementInfo& saved, const DisplayArrangementInfo& current,
                  DisplayChangeAnalysis& analysis) const;
    void log(const DisplayChangeAnalysis& analysis) const;

    const Clock& clock_;
    Logger logger_;
    Date systemStartupTime_;
    std::vector<DisplayArrangementSnapshot> recentArrangements_;
};

}  // namespace corvetta
