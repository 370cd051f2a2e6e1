#include "workspaces/auto_restore_decision.h"

namespace corvetta {

AutoRestoreDecision decideAutoRestore(const AutoRestoreDecisionInput& input) {
    const auto quiet = [&](std::string reason) {
        return AutoRestoreDecision{false, input.wasMissing, std::move(reason)};
    };
    if (!input.enabled) {
        return quiet("feature disabled");
    }
    if (input.isRestoring) {
        return quiet("a restoration is already in progress");
    }
    if (input.lastFireTime && input.now - *input.lastFireTime < input.cooldown) {
        return quiet("within cooldown window");
    }
    if (!input.workspace) {
        return quiet("no last-restored workspace on record");
    }
    const std::string& name = input.workspace->name;
    if (input.workspace->spaceId != input.activeSpaceId) {
        return quiet("'" + name + "' belongs to a different space than the active one");
    }
    if (!input.changeType) {
        if (input.didWake) {
            return {true, false, "system woke from sleep"};
        }
        return quiet("'" + name + "' has no saved display arrangement to compare");
    }
    const bool removed = *input.changeType == DisplayChangeType::displayRemoved;
    if (input.didWake) {
        return {true, removed, "system woke from sleep"};
    }
    if (removed && !input.wasMissing) {
        return {true, true, "display disconnected"};
    }
    if (!removed && input.wasMissing) {
        return {true, false, "display reconnected"};
    }
    if (removed) {
        return {false, true, "a display '" + name + "' needs is still missing"};
    }
    return {false, false, "displays already present, nothing to recover"};
}

}  // namespace corvetta
