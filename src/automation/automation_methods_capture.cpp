#include "automation/mcp_error.h"
#include "automation/method_groups.h"
#include "automation/method_support.h"
#include "workspaces/workspace_capture.h"

namespace corvetta {

namespace {

constexpr const char* kBundleIdsParam = "bundle_ids";

// The optional filter: a list of texts; absent or null is no filter.
std::vector<std::string> bundleFilter(const MethodParams& params) {
    const Json* value = params.find(kBundleIdsParam);
    if (value == nullptr || value->is_null()) {
        return {};
    }
    std::vector<std::string> identifiers;
    if (value->is_array()) {
        for (const auto& entry : *value) {
            if (!entry.is_string()) {
                identifiers.clear();
                break;
            }
            identifiers.push_back(entry.get<std::string>());
        }
        if (identifiers.size() == value->size()) {
            return identifiers;
        }
    }
    throw MCPError::invalidParam(std::string("Invalid param ") + kBundleIdsParam +
                                 ": expected a list of bundle identifiers");
}

Json windowJson(const WindowInfo& window) {
    return Json{{"appBundleIdentifier", textOrNull(window.appBundleIdentifier)},
                {"windowTitle", textOrNull(window.windowTitle)},
                {"frame", frameJson(window.frame)},
                {"monitorID", textOrNull(window.monitorID)},
                {"zOrder", window.zOrder ? Json(*window.zOrder) : Json(nullptr)},
                {"windowIndex", window.windowIndex ? Json(*window.windowIndex) : Json(nullptr)},
                {"isFullscreen", window.isFullscreen},
                {"isMinimized", window.isMinimized.value_or(false)},
                {"newWindowMenuName", textOrNull(window.newWindowMenuName)},
                {"newWindowItemTitle", textOrNull(window.newWindowItemTitle)}};
}

Json previewCapture(const AutomationContext& context, const MethodParams& params) {
    Json windows = Json::array();
    for (const auto& window : context.workspaceCapture.captureWindows(bundleFilter(params))) {
        windows.push_back(windowJson(window));
    }
    const std::size_t count = windows.size();
    return Json{{"windowCount", count}, {"windows", std::move(windows)}};
}

Json captureWorkspace(const AutomationContext& context, const MethodParams& params) {
    const std::string name = params.requiredText("name");
    const auto captured = context.workspaceCapture.captureWorkspace(name, bundleFilter(params));
    if (!captured) {
        throw MCPError::invalidParam(captured.error());
    }
    return Json{{"success", true},
                {"id", captured->id->string()},
                {"name", captured->name},
                {"windowCount", captured->windowInfos.size()}};
}

}  // namespace

void addCaptureMethods(MethodTable& table, const SharedContext& context) {
    table["capture_workspace"] = answeringAtOnce(
        [context](const MethodParams& params) { return captureWorkspace(*context, params); });
    table["preview_capture"] = answeringAtOnce(
        [context](const MethodParams& params) { return previewCapture(*context, params); });
}

}  // namespace corvetta
