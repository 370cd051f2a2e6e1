// method_support.h: What the socket methods share: frames as JSON, application lookups.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "automation/method_params.h"
#include "foundation/geometry.h"
#include "foundation/json.h"
#include "platform/applications.h"
#include "platform/screen.h"
#include "workspaces/workspace_service.h"

namespace corvetta {

// {"x", "y", "width", "height"}; every frame a method returns is in accessibility space.
Json frameJson(const Rect& accessibilityFrame);
// A display's frame (screen space) in accessibility space, pivoting on the primary display.
Rect accessibilityFrameOfScreenRect(const Rect& screenFrame, const std::vector<Screen>& screens);
// The text, or null when there is none (an application without a bundle).
Json textOrNull(const std::optional<std::string>& text);
// The first running application with the identifier; throws MCPError::notFound
// ("running app '<id>'") when none runs.
RunningApplication requireRunningApplication(const ApplicationsPort& applications,
                                             const std::string& bundleIdentifier);
// The same for the identifier in the "bundle_id" param, which is required.
RunningApplication requireRunningApplication(const ApplicationsPort& applications,
                                             const MethodParams& params);
// The workspace with exactly that name; throws MCPError::notFound ("workspace '<name>'").
const Workspace& requireWorkspace(const WorkspaceService& service, const std::string& name);

}  // namespace corvetta
