// workspace_restoration.h: Puts a saved workspace back: launches, matches, places, stacks.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "diagnostics/logger.h"
#include "foundation/main_queue.h"
#include "foundation/preferences.h"
#include "platform/accessibility.h"
#include "platform/applications.h"
#include "platform/screen.h"
#include "platform/window_list.h"
#include "windowing/accessibility_element.h"
#include "windowing/window_mover.h"
#include "workspaces/application_readiness.h"
#include "workspaces/deeplink_opener.h"
#include "workspaces/workspace_capture.h"
#include "workspaces/workspace_restorer.h"
#include "workspaces/workspace_service.h"

namespace corvetta {

// The restoration pipeline, one restoration at a time through the workspace service's gate.
// docs/workspaces.md, "Restoration", has the steps and the rules. Main thread only.
class WorkspaceRestoration : public WorkspaceRestorer {
public:
    static constexpr const char* kServiceName = "WorkspaceRestoration";
    static constexpr const char* kBusy = "A restoration is already in progress";
    // Attempts of each window's move before it counts as not placed.
    static constexpr int kMoveAttempts = 3;

    struct Ports {
        AccessibilityPort& accessibility;
        ApplicationsPort& applications;
        ScreenPort& screens;
        WindowListPort& windowList;
    };

    WorkspaceRestoration(Ports ports, AccessibilityElement& accessibilityElement,
                         WindowMover& windowMover, DeeplinkOpener& deeplinks,
                         WorkspaceService& workspaceService, const WorkspaceCapture& capture,
                         Preferences& defaults, MainQueue& queue, LoggingService& logging,
                         ReadinessTimings timings = {});
    ~WorkspaceRestoration() override;
    WorkspaceRestoration(const WorkspaceRestoration&) = delete;
    WorkspaceRestoration& operator=(const WorkspaceRestoration&) = delete;

    bool isRestoring() const override;
    const std::string& restorationStatusMessage() const override { return statusMessage_; }
    void restore(const Workspace& workspace, RestoreTrigger trigger,
                 RestoreCompletion done) override;

private:
    struct Run;
    struct Placement;
    void applicationReady(const std::shared_ptr<Run>& run, const std::string& bundleIdentifier,
                          const ReadinessResult& result);
    void place(const std::shared_ptr<Run>& run);
    void placeApplication(const std::shared_ptr<Run>& run, const std::string& bundleIdentifier,
                          const class DisplayMigration& migration);
    // Sends every frame in one batch, then has the mover verify and retry each.
    void startMoves(const std::shared_ptr<Run>& run);
    void moved(const std::shared_ptr<Run>& run, const WindowMoveResult& result);
    void raiseInSavedOrder(const std::shared_ptr<Run>& run);
    void arrange(const std::shared_ptr<Run>& run);
    void dealWithOtherApplications(const std::shared_ptr<Run>& run);
    void openDeeplinks(const std::shared_ptr<Run>& run);
    void finish(const std::shared_ptr<Run>& run);
    // The run still owns the gate: not ended, not taken over by a newer one.
    bool isCurrent(const std::shared_ptr<Run>& run) const;
    void setStatus(std::string message);
    bool setFlag(const AXElement& window, std::string_view attribute, bool value, const char* what);

    Ports ports_;
    AccessibilityElement& accessibilityElement_;
    WindowMover& windowMover_;
    DeeplinkOpener& deeplinks_;
    WorkspaceService& workspaceService_;
    const WorkspaceCapture& capture_;
    Preferences& defaults_;
    MainQueue& queue_;
    Logger logger;
    ApplicationReadiness readiness_;
    std::string statusMessage_;
    std::shared_ptr<Run> current_;
    std::shared_ptr<bool> alive_;
};

}  // namespace corvetta
