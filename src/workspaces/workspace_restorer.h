// workspace_restorer.h: What puts a saved workspace back, as the socket and auto-restore see it.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "workspaces/workspace.h"

namespace corvetta {

// Who asked: an automatic restore hides other applications' windows rather than closing them.
enum class RestoreTrigger { user, automatic };

// What a restoration did, ready for a toast and the log.
struct RestoreReport {
    std::string workspaceName;
    // False when another restoration held the gate and nothing was done.
    bool began = true;
    // Saved windows, and how many of them stand where the workspace wants them.
    int windowsSaved = 0;
    int windowsPlaced = 0;
    // Windows that had to be opened through the new-window item.
    int windowsOpened = 0;
    // Applications (bundle identifiers) that could not be launched or never showed a window.
    std::vector<std::string> failedApplications;
    // Deeplinks dispatched, and those whose target an open window already showed.
    int deeplinksOpened = 0;
    int deeplinksRaised = 0;
    // One sentence: "Restored 'Work': 8 of 9 windows placed; Mail failed".
    std::string summary;
};

using RestoreCompletion = std::function<void(const RestoreReport&)>;

// Restores one workspace at a time. Main thread only.
class WorkspaceRestorer {
public:
    // Preference key of the workspace restored last, manually or automatically (a UUID string).
    static constexpr const char* kLastRestoredWorkspaceIDKey = "lastRestoredWorkspaceID";

    virtual ~WorkspaceRestorer() = default;

    virtual bool isRestoring() const = 0;
    // The step under way ("Launching Editor…"); empty while no restoration runs.
    virtual const std::string& restorationStatusMessage() const = 0;
    // `done` runs once, on the main queue, when the restoration has finished or was refused.
    virtual void restore(const Workspace& workspace, RestoreTrigger trigger,
                         RestoreCompletion done) = 0;
};

}  // namespace corvetta
