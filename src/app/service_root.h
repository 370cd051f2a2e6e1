// service_root.h: Builds every long-lived service once, in dependency order, for the process.
#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "app/permission_manager.h"
#include "app/shortcut_service.h"
#include "app/toast_announcer.h"
#include "appearance/theme_color_service.h"
#include "appearance/theme_manager.h"
#include "appearance/toast_manager.h"
#include "diagnostics/logbook.h"
#include "diagnostics/logging_service.h"
#include "foundation/main_queue.h"
#include "foundation/notification_center.h"
#include "foundation/preferences.h"
#include "import_export/workspace_import_export_service.h"
#include "layouts/custom_layout_store.h"
#include "layouts/layout_service.h"
#include "layouts/lock/layout_lock_manager.h"
#include "layouts/lock/learned_min_size_store.h"
#include "palette/command_palette_controller.h"
#include "platform/desktop.h"
#include "shortcuts/hot_key_center.h"
#include "shortcuts/hot_key_store.h"
#include "shortcuts/keyboard_shortcuts.h"
#include "shortcuts/keyboard_shortcuts_bridge.h"
#include "shortcuts/mas_shortcut_manager.h"
#include "shortcuts/shortcut_manager.h"
#include "shortcuts/shortcut_startup.h"
#include "shortcuts/window_presenter.h"
#include "windowing/accessibility_element.h"
#include "windowing/screen_detection_service.h"
#include "windowing/window_calculation_service.h"
#include "windowing/window_mover.h"
#include "windowing/window_snapping_service.h"
#include "workspaces/add_space_form.h"
#include "workspaces/auto_restore_on_wake_service.h"
#include "workspaces/deeplink_opener.h"
#include "workspaces/display_arrangement_stability_service.h"
#include "workspaces/display_change_monitor_service.h"
#include "workspaces/save_workspace_form.h"
#include "workspaces/space_manager.h"
#include "workspaces/workspace_capture.h"
#include "workspaces/workspace_restoration.h"
#include "workspaces/workspace_service.h"

namespace corvetta {

class AutomationMethods;
struct AutomationContext;
class MCPBridgeService;

// The desktop the services act on and the process-wide plumbing they share. Everything here must
// outlive the root.
struct ProcessPlumbing {
    Desktop& desktop;
    MainQueue& queue;
    Preferences& defaults;
    NotificationCenter& notifications;
    Logbook& logbook;
    LoggingService& logging;
    // Where the automation socket listens; without one there is no socket server.
    std::optional<std::filesystem::path> socketPath{};
    // For status queries: "corvetta 0.1.0" and what the desktop is.
    std::string version{};
    std::string desktopDescription{};
    // Where the program's own files go (workspace backup, spaces, quarantine files); without one,
    // the config folder HOME and the XDG variables name.
    std::optional<std::filesystem::path> configFolder{};
    // The interface's windows; none where nothing is drawn.
    WindowPresenter* windowPresenter = nullptr;
};

// What the services ask of whoever owns the root; called only once the services run.
struct ServiceCallbacks {
    // The quit shortcut was pressed.
    std::function<void()> quit = [] {};
    // "Window actions ready" and the like, for status queries.
    std::function<std::string()> statusMessage = [] { return std::string("Ready"); };
    // The shortcuts the system refused, as name and combination label ("leftHalf", "⌃⌥←").
    std::function<std::vector<std::pair<std::string, std::string>>()> shortcutsNotRegistered = [] {
        return std::vector<std::pair<std::string, std::string>>{};
    };
    // Sees the window before a snap moves it; the layout lock's, once there is one.
    WillSnapHook willSnap{};
    // The other application that was last in front, which the command palette gives focus back.
    std::function<std::optional<RunningApplication>()> previousFrontmostApp = [] {
        return std::optional<RunningApplication>{};
    };
};

// The one place the long-lived services are built: each is a member, constructed from the
// plumbing and the members declared before it, and destroyed in reverse order, so no service
// outlives what it holds a reference to. Nothing is replaced at run time. Building has no effect
// outside the process beyond loading the stores (no key grabbed, no socket bound; the stores may
// record their one-time migrations and keep damaged data aside): starting things is
// the launch's job, in the order it chooses. Adding a service is one member and one line in the
// constructor. Main thread only.
class ServiceRoot {
public:
    explicit ServiceRoot(const ProcessPlumbing& plumbing, ServiceCallbacks callbacks = {});
    ~ServiceRoot();
    ServiceRoot(const ServiceRoot&) = delete;
    ServiceRoot& operator=(const ServiceRoot&) = delete;

    // What the automation methods work with.
    AutomationContext automationContext();
    // Tells whoever reacts to a setting that an import changed it.
    void announceSettingChanges(const std::vector<std::string>& keys);

    // The socket server, created on its first use (the launch asks for it before anything else,
    // so a second copy can leave before it touches anything); none without a socket path.
    MCPBridgeService* automationServer();

    const ProcessPlumbing plumbing;
    const ServiceCallbacks callbacks;

    // Moving windows.
    ScreenDetectionService screenDetection;
    WindowCalculationService calculationService;
    AccessibilityElement accessibilityElement;
    WindowMover windowMover;
    WindowSnappingService windowSnappingService;

    // Shortcuts, from the hot-key layer up to the service that owns the live set.
    HotKeyCenter hotKeyCenter;
    HotKeyStore hotKeyStore;
    KeyboardShortcuts keyboardShortcuts;
    MASShortcutManager masShortcutManager;
    ShortcutManager shortcutManager;
    KeyboardShortcutsBridge shortcutBridge;
    ShortcutStartup shortcutStartup;

    // The user's layout templates.
    CustomLayoutStore customLayoutStore;
    // Keeps the windows a layout placed together, learning what sizes applications refuse.
    LearnedMinSizeStore learnedMinSizes;
    LayoutLockManager layoutLock;

    PermissionManager permissionManager;

    // The user's accent colours, the themes, and the one toast on screen.
    ThemeColorService themeColors;
    ThemeManager themeManager;
    ToastManager toastManager;

    // What the user keeps: workspaces and the spaces that group them.
    WorkspaceService workspaceService;
    SpaceManager spaceManager;
    // The whole set-up to one file and back.
    WorkspaceImportExportService importExport;
    // The display arrangement: the current one, and how it changed from a saved one.
    DisplayArrangementStabilityService displayStability;
    DisplayChangeMonitorService displayChangeMonitor;
    // Which windows a workspace holds, read from the desktop.
    WorkspaceCapture workspaceCapture;
    // The forms that save the windows on screen as a workspace and add a space.
    SaveWorkspaceForm saveWorkspaceForm;
    AddSpaceForm addSpaceForm;
    // A restored workspace's links, folders and terminal commands, opened last.
    DeeplinkOpener deeplinkOpener;
    // Puts a saved workspace back.
    WorkspaceRestoration workspaceRestoration;
    // Places windows into a template's panes.
    LayoutService layoutService;
    // What every restoration and layout application goes through, so the user sees it run and
    // end; imports report to it too.
    ToastAnnouncer toastAnnouncer;
    // Restores the last workspace when the displays change or the machine wakes, if asked to.
    AutoRestoreOnWakeService autoRestoreOnWake;
    // The command palette: its rows, keys and what they do, and when its window opens.
    CommandPaletteController commandPalette;

    // The program's own windows: the interface's, or, without one, the stand-in that logs.
    LoggingWindowPresenter loggingWindowPresenter;
    WindowPresenter& windowPresenter;
    // The live set of global shortcuts, over everything above.
    ShortcutService shortcutService;

    // The socket's methods.
    std::unique_ptr<AutomationMethods> automationMethods;

private:
    // Last, so it goes first at exit: its threads may still be handing requests to the methods.
    std::unique_ptr<MCPBridgeService> mcpBridgeService_;
};

}  // namespace corvetta
