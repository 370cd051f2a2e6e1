// hold_to_cycle.h: Steps through workspaces or spaces while Control is held; its release commits.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "diagnostics/logger.h"
#include "foundation/notification_center.h"
#include "foundation/preferences.h"
#include "foundation/registration.h"
#include "foundation/uuid.h"
#include "platform/input_events.h"
#include "workspaces/space_manager.h"
#include "workspaces/workspace_restorer.h"
#include "workspaces/workspace_service.h"

namespace corvetta {

// What the cycle display shows: the candidates in cycle order and which one would be committed.
struct CycleDisplay {
    enum class Kind { workspaces, spaces };
    struct Candidate {
        Uuid id;
        std::string name;
    };
    bool visible = false;
    Kind kind = Kind::workspaces;
    std::vector<Candidate> candidates;
    std::optional<std::size_t> pendingIndex;
};

// Hold-to-cycle. Each press of a cycle shortcut moves the preview on by one, wrapping after the
// last candidate; the first press also starts listening to modifier changes. The cycle commits
// when a modifier change leaves Control up, whatever else is still held: Control is the commit
// key, so letting go of Shift or Option first changes nothing. Workspaces cycle within the active
// space and the global one, in stored order, starting after the last restored one; spaces cycle
// the global space first, then the stored spaces. Starting one kind of cycle drops the other's
// pending item. Main thread only.
class HoldToCycle {
public:
    static constexpr const char* kDisplayDidChange = "com.corvetta.cycleDisplayDidChange";

    struct Services {
        WorkspaceService& workspaces;
        SpaceManager& spaces;
        WorkspaceRestorer& restorer;
        EventMonitorPort& events;
        const Preferences& defaults;
        NotificationCenter& notifications;
        LoggingService& logging;
    };

    explicit HoldToCycle(Services services);
    HoldToCycle(const HoldToCycle&) = delete;
    HoldToCycle& operator=(const HoldToCycle&) = delete;

    void cycleWorkspaces();
    void cycleSpaces();
    // Drops whatever is pending and stops listening, committing nothing.
    void cancel();

    const CycleDisplay& display() const { return display_; }
    const std::optional<Uuid>& pendingWorkspaceId() const { return pendingWorkspaceId_; }
    bool isListening() const { return cycleGlobalMonitor_.isActive(); }

private:
    std::vector<CycleDisplay::Candidate> workspaceCandidates() const;
    std::vector<CycleDisplay::Candidate> spaceCandidates() const;
    void show(CycleDisplay::Kind kind, std::vector<CycleDisplay::Candidate> candidates,
              const Uuid& pending);
    void hide();
    void installMonitors();
    void removeMonitors();
    void modifiersChanged(const InputEvent& event);
    void commitPendingWorkspace();
    void commitPendingSpace();

    Services services_;
    Logger logger_;
    Registration cycleGlobalMonitor_;
    Registration cycleLocalMonitor_;
    std::optional<Uuid> pendingWorkspaceId_;
    CycleDisplay display_;
};

}  // namespace corvetta
