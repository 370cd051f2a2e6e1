// auto_restore_decision.h: Whether a wake or a display change should restore the last workspace.
#pragma once

#include <chrono>
#include <optional>
#include <string>

#include "foundation/date.h"
#include "foundation/uuid.h"
#include "workspaces/display_change_analysis.h"
#include "workspaces/workspace.h"

namespace corvetta {

// Everything the decision looks at, gathered once a burst of signals has settled.
struct AutoRestoreDecisionInput {
    bool enabled = false;
    bool isRestoring = false;
    Date now;
    std::optional<Date> lastFireTime;
    std::chrono::duration<double> cooldown{3.0};
    // The last restored workspace, absent when none is on record or it was deleted.
    std::optional<Workspace> workspace;
    // Absent is the global space.
    std::optional<Uuid> activeSpaceId;
    // From the workspace's saved arrangement to the current one; absent when it saved none.
    std::optional<DisplayChangeType> changeType;
    // A display the workspace needs was already missing before this burst.
    bool wasMissing = false;
    bool didWake = false;
};

struct AutoRestoreDecision {
    bool shouldFire = false;
    // The new value of the missing flag.
    bool displayMissing = false;
    std::string reason;

    bool operator==(const AutoRestoreDecision&) const = default;
};

// Pure: the first rule that applies decides. A disconnection fires once (the workspace is laid
// out on the displays that remain), further changes while the display stays away keep quiet, and
// its return fires once more.
AutoRestoreDecision decideAutoRestore(const AutoRestoreDecisionInput& input);

}  // namespace corvetta
