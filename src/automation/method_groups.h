// method_groups.h: Lets each group of socket methods fill its part of the method table.
#pragma once

// The methods by group; each adds its entries to the table. Private to the automation library.

#include <memory>
#include <utility>

#include "automation/automation_methods.h"
#include "automation/method_params.h"
#include "diagnostics/logger.h"

namespace corvetta {

using SharedContext = std::shared_ptr<const AutomationContext>;

// snap_window, perform_action, list_windows, list_displays, get_frontmost_window.
void addWindowMethods(MethodTable& table, const SharedContext& context);
// open_app, activate_app, inspect_app_windows, close_app_windows.
void addApplicationMethods(MethodTable& table, const SharedContext& context);
// open_new_window, discover_new_window_shortcut.
void addNewWindowMethods(MethodTable& table, const SharedContext& context);
// list_layouts, save_layout, apply_workspace_layout.
void addLayoutMethods(MethodTable& table, const SharedContext& context);
// layout_lock, layout_lock_reset, layout_lock_untile.
void addLayoutLockMethods(MethodTable& table, const SharedContext& context);
// get_logs, get_status, sync.
void addStatusMethods(MethodTable& table, const SharedContext& context);
// capture_workspace, preview_capture, restore_workspace.
void addCaptureMethods(MethodTable& table, const SharedContext& context);
// list_workspaces, get_workspace_layout, delete_workspace, rename_workspace, set_deeplink,
// remove_deeplink, list_spaces, create_space, delete_space, activate_space.
void addWorkspaceMethods(MethodTable& table, const SharedContext& context);
// export_setup, import_preview, import_setup.
void addSetupMethods(MethodTable& table, const SharedContext& context);

// list_shortcuts, set_shortcut.
void addShortcutMethods(MethodTable& table, const SharedContext& context);
// import_theme, list_themes, select_theme, delete_theme.
void addThemeMethods(MethodTable& table, const SharedContext& context);
// The methods log as part of the automation bridge.
inline Logger methodsLogger(const AutomationContext& context) {
    return Logger(context.logging, "MCPBridgeService", LogCategory::mcp());
}

// A method that answers at once with the result `method` returns.
template <class Method>
MethodHandler answeringAtOnce(Method method) {
    return [method = std::move(method)](const MethodParams& params, MethodReply& reply) {
        Json result = method(params);
        std::exchange(reply, nullptr)(std::move(result));
    };
}

}  // namespace corvetta
