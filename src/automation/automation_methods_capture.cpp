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

Json reportJson(const RestoreReport& report) {
    return Json{{"name", report.workspaceName},
                {"windowsSaved", report.windowsSaved},
                {"windowsPlaced", report.windowsPlaced},
                {"windowsOpened", report.windowsOpened},
                {"failedApps", report.failedApplications},
                {"deeplinksOpened", report.deeplinksOpened},
                {"deeplinksRaised", report.deeplinksRaised},
                {"summary", report.summary}};
}

// Answers once the restoration has finished: the client learns what was done, not that it began.
void restoreWorkspace(const SharedContext& context, const MethodParams& params,
                      MethodReply& reply) {
    const Workspace& workspace =
        requireWorkspace(context->workspaceService, params.requiredText("name"));
    context->restorer.restore(workspace, RestoreTrigger::user,
                              [reply = std::exchange(reply, nullptr)](const RestoreReport& done) {
                                  if (!done.began) {
                                      reply(unexpected(done.summary));
                                      return;
                                  }
                                  reply(reportJson(done));
                              });
}

}  // namespace

void addCaptureMethods(MethodTable& table, const SharedContext& context) {
    table["capture_workspace"] = answeringAtOnce(
        [context](const MethodParams& params) { return captureWorkspace(*context, params); });
    table["preview_capture"] = answeringAtOnce(
        [context](const MethodParams& params) { return previewCapture(*context, params); });
    table["restore_workspace"] = [context](const MethodParams& params, MethodReply& reply) {
        restoreWorkspace(context, params, reply);
    };
}

}  // namespace corvetta
