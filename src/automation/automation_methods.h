// automation_methods.h: What automation clients can do: methods on windows, apps, logs and status.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "appearance/theme_manager.h"
#include "automation/method_dispatcher.h"
#include "automation/outcome_announcer.h"
#include "diagnostics/logbook.h"
#include "diagnostics/logging_service.h"
#include "foundation/main_queue.h"
#include "import_export/workspace_import_export_service.h"
#include "layouts/custom_layout_store.h"
#include "layouts/layout_service.h"
#include "layouts/lock/layout_lock_manager.h"
#include "platform/desktop.h"
#include "shortcuts/shortcut_directory.h"
#include "windowing/screen_detection_service.h"
#include "windowing/window_mover.h"
#include "windowing/window_snapping_service.h"
#include "workspaces/space_manager.h"
#include "workspaces/workspace_capture.h"
#include "workspaces/workspace_restorer.h"
#include "workspaces/workspace_service.h"

namespace corvetta {

// What the socket's methods act on and report.
struct AutomationContext {
    Desktop& desktop;
    MainQueue& queue;
    ScreenDetectionService& screenDetection;
    WindowSnappingService& snappingService;
    WindowMover& windowMover;
    CustomLayoutStore& layoutStore;
    LayoutService& layoutService;
    LayoutLockManager& layoutLock;
    WorkspaceService& workspaceService;
    WorkspaceCapture& workspaceCapture;
    WorkspaceRestorer& restorer;
    SpaceManager& spaceManager;
    ShortcutDirectory& shortcuts;
    WorkspaceImportExportService& importExport;
    ThemeManager& themes;
    // Hears how layouts and imports a client started ended, to tell the user.
    OutcomeAnnouncer& announcer;
    Logbook& logbook;
    LoggingService& logging;
    // "Corvetta 0.1.0".
    std::string version;
    // What the program says about the desktop it runs on.
    std::string desktopDescription;
    // The status line of the application delegate.
    std::function<std::string()> statusMessage;
    // The shortcuts the system refused, as name and combination label ("leftHalf", "⌃⌥←").
    std::function<std::vector<std::pair<std::string, std::string>>()> shortcutsNotRegistered;
};

class MethodParams;
// One method: replies through `reply` (taking it when it answers later), or throws the MCPError
// or other error to answer with, leaving `reply` in place.
using MethodHandler = std::function<void(const MethodParams& params, MethodReply& reply)>;
using MethodTable = std::map<std::string, MethodHandler, std::less<>>;

// The socket's methods: windows, displays, applications, logs, status and sync. Methods that wait
// (for a window to move, an application to launch or a window to appear) answer later; every wait
// is bounded. Work still waiting when this object goes away is dropped unanswered. A method runs
// once the desktop has caught up (Desktop::synchronize): a client that changed the desktop just
// before asking finds its change known.
class AutomationMethods : public MethodDispatcher {
public:
    explicit AutomationMethods(AutomationContext context);
    AutomationMethods(const AutomationMethods&) = delete;
    AutomationMethods& operator=(const AutomationMethods&) = delete;

    void dispatch(const std::string& method, const Json& params, MethodReply reply) override;
    // A method only one desktop has, added by whoever wires that desktop.
    void add(const std::string& method, MethodHandler handler);

private:
    void run(const std::string& method, const Json& params, MethodReply& reply) const;

    // Shared so waiting work can hold it weakly and find it gone.
    std::shared_ptr<const AutomationContext> context_;
    MethodTable methods_;
    std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);
};

}  // namespace corvetta
