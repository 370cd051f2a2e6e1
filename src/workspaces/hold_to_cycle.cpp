#include "workspaces/hold_to_cycle.h"

#include <algorithm>

namespace corvetta {

HoldToCycle::HoldToCycle(Services services)
    : services_(services), logger_(services.logging, "ShortcutService", LogCategory::shortcut()) {}

std::vector<CycleDisplay::Candidate> HoldToCycle::workspaceCandidates() const {
    const auto& active = services_.workspaces.activeSpaceId();
    std::vector<CycleDisplay::Candidate> candidates;
    for (const auto& workspace : services_.workspaces.workspaces()) {
        // A workspace without an id cannot be found again at commit time.
        if (workspace.id && (!workspace.spaceId || workspace.spaceId == active)) {
            candidates.push_back({*workspace.id, workspace.name});
        }
    }
    return candidates;
}

std::vector<CycleDisplay::Candidate> HoldToCycle::spaceCandidates() const {
    const auto& global = services_.spaces.globalSpace();
    std::vector<CycleDisplay::Candidate> candidates{{global.id, global.name}};
    for (const auto& space : services_.spaces.spaces()) {
        candidates.push_back({space.id, space.name});
    }
    return candidates;
}

void HoldToCycle::cycleWorkspaces() {
    if (services_.spaces.pendingSpaceId()) {
        services_.spaces.cancelPendingSpace();
    }
    auto candidates = workspaceCandidates();
    if (candidates.empty()) {
        logger_.info("Cycle: previewNextWorkspace called but no workspaces exist");
        cancel();
        return;
    }
    // From the one previewed, else the one restored last; one that is not a candidate (another
    // space's, or deleted) starts the cycle at the first.
    auto from = pendingWorkspaceId_;
    if (!from) {
        if (const auto stored =
                services_.defaults.string(WorkspaceRestorer::kLastRestoredWorkspaceIDKey)) {
            from = Uuid::parse(*stored);
        }
    }
    const auto at = std::find_if(candidates.begin(), candidates.end(),
                                 [&](const auto& candidate) { return candidate.id == from; });
    const auto next =
        (at == candidates.end() || at + 1 == candidates.end()) ? candidates.begin() : at + 1;
    pendingWorkspaceId_ = next->id;
    logger_.info("Cycle: previewing workspace '" + next->name + "' (" +
                 std::to_string(candidates.size()) + " candidates)");
    const auto pending = next->id;
    show(CycleDisplay::Kind::workspaces, std::move(candidates), pending);
}

void HoldToCycle::cycleSpaces() {
    pendingWorkspaceId_.reset();
    services_.spaces.previewNextSpace();
    const auto& pending = services_.spaces.pendingSpaceId();
    if (!pending) {
        cancel();
        return;
    }
    auto candidates = spaceCandidates();
    const auto at = std::find_if(candidates.begin(), candidates.end(),
                                 [&](const auto& candidate) { return candidate.id == *pending; });
    logger_.info("Cycle: previewing space '" + (at == candidates.end() ? "" : at->name) + "' (" +
                 std::to_string(candidates.size()) + " candidates)");
    const auto pendingId = *pending;
    show(CycleDisplay::Kind::spaces, std::move(candidates), pendingId);
}

void HoldToCycle::cancel() {
    pendingWorkspaceId_.reset();
    if (services_.spaces.pendingSpaceId()) {
        services_.spaces.cancelPendingSpace();
    }
    removeMonitors();
    hide();
}

void HoldToCycle::show(CycleDisplay::Kind kind, std::vector<CycleDisplay::Candidate> candidates,
                       const Uuid& pending) {
    const auto at = std::find_if(candidates.begin(), candidates.end(),
                                 [&](const auto& candidate) { return candidate.id == pending; });
    const auto index = static_cast<std::size_t>(at - candidates.begin());
    display_ = CycleDisplay{
        .visible = true, .kind = kind, .candidates = std::move(candidates), .pendingIndex = index};
    installMonitors();
    services_.notifications.post(kDisplayDidChange);
}

void HoldToCycle::hide() {
    if (!display_.visible) {
        return;
    }
    display_ = CycleDisplay{};
    services_.notifications.post(kDisplayDidChange);
}

void HoldToCycle::installMonitors() {
    if (isListening()) {
        logger_.info("Cycle: monitors already installed, skipping");
        return;
    }
    logger_.info("Cycle: installing modifier-release monitors");
    const auto handler = [this](const InputEvent& event) { modifiersChanged(event); };
    const auto mask = eventMask(EventType::flagsChanged);
    cycleGlobalMonitor_ = services_.events.addGlobalMonitor(mask, handler);
    cycleLocalMonitor_ = services_.events.addLocalMonitor(mask, handler);
}

void HoldToCycle::removeMonitors() {
    if (!isListening()) {
        return;
    }
    logger_.info("Cycle: removing monitors");
    cycleGlobalMonitor_.reset();
    cycleLocalMonitor_.reset();
}

void HoldToCycle::modifiersChanged(const InputEvent& event) {
    if (event.type != EventType::flagsChanged || (event.modifierFlags & ModifierFlag::kControl)) {
        return;
    }
    if (display_.kind == CycleDisplay::Kind::spaces) {
        logger_.info("Cycle: modifier released — committing pending space");
        removeMonitors();
        hide();
        commitPendingSpace();
    } else {
        logger_.info("Cycle: modifier released — committing pending workspace");
        removeMonitors();
        hide();
        commitPendingWorkspace();
    }
}

void HoldToCycle::commitPendingWorkspace() {
    const auto id = std::exchange(pendingWorkspaceId_, std::nullopt);
    const auto* workspace = id ? services_.workspaces.workspace(*id) : nullptr;
    if (!workspace) {
        logger_.info("Cycle: commitPendingWorkspace called but no pending workspace");
        return;
    }
    logger_.info("Cycle: restoring workspace '" + workspace->name + "'");
    services_.restorer.restore(*workspace, RestoreTrigger::user,
                               [logger = logger_](const RestoreReport& report) {
                                   logger.info("Cycle: " + report.summary);
                               });
}

void HoldToCycle::commitPendingSpace() {
    if (!services_.spaces.pendingSpaceId()) {
        logger_.info("Cycle: commitPendingSpace called but no pending space");
        return;
    }
    services_.spaces.commitPendingSpace();
}

}  // namespace corvetta
