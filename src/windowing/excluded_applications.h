// excluded_applications.h: Which applications layouts and workspaces never arrange.
#pragma once

#include <string>

#include "foundation/preferences.h"
#include "platform/applications.h"

namespace corvetta {

// The user's own list of applications to leave alone: a list of bundle identifiers.
inline constexpr const char* kUserExcludedBundleIDsKey = "userExcludedBundleIDs";

// This program, the system's own surfaces (system_surfaces.h), and the applications the user
// listed under kUserExcludedBundleIDsKey. Identifiers compare without case.
bool isExcludedApplication(const std::string& bundleIdentifier,
                           const ApplicationsPort& applications, const Preferences& defaults);

}  // namespace corvetta
