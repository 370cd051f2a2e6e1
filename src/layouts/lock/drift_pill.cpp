#include "layouts/lock/drift_pill.h"

namespace corvetta {

std::span<const DriftPillButton> driftPillButtons() {
    static constexpr DriftPillButton kButtons[] = {
        {DriftPillCommand::reset, "Reset", "ArrowCounterClockwise",
         "Put the windows back in the original layout"},
        {DriftPillCommand::untile, "Untile", "LockOpen",
         "Stop Layout Lock and leave the windows as they are"},
    };
    return kButtons;
}

}  // namespace corvetta
