// workspace_capture.h: Reads which windows a workspace holds, and saves them as a new workspace.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "diagnostics/logger.h"
#include "foundation/clock.h"
#include "foundation/expected.h"
#include "foundation/preferences.h"
#include "platform/accessibility.h"
#include "platform/applications.h"
#include "platform/screen.h"
#include "platform/window_list.h"
#include "windowing/excluded_applications.h"
#include "windowing/new_window_item.h"
#include "workspaces/workspace.h"
#include "workspaces/workspace_service.h"

namespace corvetta {

// A workspace about to be saved, as a form or a request describes it.
struct WorkspaceDraft {
    std::string name;
    // Absent is the global space.
    std::optional<Uuid> spaceId;
    std::vector<WindowInfo> windows;
    bool closeNonWorkspaceWindows = false;
    bool skipLaunchMissingApps = false;
};

// The regular applications' standard windows, front to back, minimized and full-screen ones
// included, each with its frame, display, stacking place, title, index among its application's
// windows and the application's new-window item; the system's own surfaces, this program and the
// user's excluded applications left out. docs/workspaces.md, "Capture", has the rules.
class WorkspaceCapture {
public:
    static constexpr const char* kServiceName = "WorkspaceCapture";
    static constexpr const char* kUserExcludedBundleIDsKey = corvetta::kUserExcludedBundleIDsKey;
    static constexpr const char* kNothingToCapture = "No windows to capture";

    WorkspaceCapture(AccessibilityPort& accessibility, WindowListPort& windowList,
                     ApplicationsPort& applications, ScreenPort& screens, Preferences& defaults,
                     WorkspaceService& workspaceService, const Clock& clock,
                     LoggingService& logging);
    WorkspaceCapture(const WorkspaceCapture&) = delete;
    WorkspaceCapture& operator=(const WorkspaceCapture&) = delete;

    // What a workspace would hold now. `bundleIdentifiers`, when not empty, keeps only those
    // applications (any case).
    std::vector<WindowInfo> captureWindows(const std::vector<std::string>& bundleIdentifiers = {});

    // Captures into a new workspace of the active space, with the display arrangement, and saves
    // it. A name that is empty or taken is refused with the validation text, and a capture that
    // finds no window with kNothingToCapture; nothing is saved then.
    Expected<Workspace, std::string> captureWorkspace(
        const std::string& name, const std::vector<std::string>& bundleIdentifiers = {});

    // Saves the draft's windows as a new workspace with the display arrangement of now. Refused,
    // with nothing saved, for a name that is empty or taken in the draft's space, or no windows.
    // A workspace the preferences would not take stays in the list; the service's
    // lastWriteError() says why.
    Expected<Workspace, std::string> saveWorkspace(WorkspaceDraft draft);

    // The running application's name, else the bundle identifier itself.
    std::string applicationName(const std::string& bundleIdentifier) const;

    // This program, the system's own surfaces, and the user's "userExcludedBundleIDs".
    bool isExcluded(const std::string& bundleIdentifier) const;

private:
    struct Candidate;
    // By bundle identifier; none for an application that offers no new-window item.
    using NewWindowItems = std::map<std::string, std::optional<NewWindowItem>>;
    std::vector<RunningApplication> applicationsToCapture(
        const std::vector<std::string>& bundleIdentifiers) const;
    void addWindowsOf(const RunningApplication& application, std::vector<Candidate>& windows,
                      NewWindowItems& newWindowItems);

    AccessibilityPort& accessibility_;
    WindowListPort& windowList_;
    ApplicationsPort& applications_;
    ScreenPort& screens_;
    Preferences& defaults_;
    WorkspaceService& workspaceService_;
    const Clock& clock_;
    Logger logger;
};

}  // namespace corvetta
