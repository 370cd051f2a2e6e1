#include "automation/method_support.h"

#include "automation/mcp_error.h"

namespace corvetta {

Json frameJson(const Rect& accessibilityFrame) {
    return Json{{"x", accessibilityFrame.minX()},
                {"y", accessibilityFrame.minY()},
                {"width", accessibilityFrame.width()},
                {"height", accessibilityFrame.height()}};
}

Rect accessibilityFrameOfScreenRect(const Rect& screenFrame, const std::vector<Screen>& screens) {
    if (screens.empty()) {
        return screenFrame;
    }
    const double pivot = screens.front().frame.height();
    return Rect(screenFrame.minX(), pivot - screenFrame.maxY(), screenFrame.width(),
                screenFrame.height());
}

Json textOrNull(const std::optional<std::string>& text) {
    return text ? Json(*text) : Json(nullptr);
}

RunningApplication requireRunningApplication(const ApplicationsPort& applications,
                                             const std::string& bundleIdentifier) {
    for (auto& application : applications.runningApplications()) {
        if (application.bundleIdentifier == bundleIdentifier) {
            return std::move(application);
        }
    }
    throw MCPError::notFound("running app '" + bundleIdentifier + "'");
}

RunningApplication requireRunningApplication(const ApplicationsPort& applications,
                                             const MethodParams& params) {
    return requireRunningApplication(applications, params.requiredText("bundle_id"));
}

const Workspace& requireWorkspace(const WorkspaceService& service, const std::string& name) {
    const auto* workspace = service.workspaceNamed(name);
    if (!workspace) {
        throw MCPError::notFound("workspace '" + name + "'");
    }
    return *workspace;
}

}  // namespace corvetta
