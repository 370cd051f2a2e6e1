// bundle_identifier.h: Keeps development and release builds on separate default sockets.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include "foundation/paths.h"

namespace corvetta {

// The program's bundle identifier. Linux has no bundle to read it from, so the build decides:
// "com.corvetta.Corvetta" where NDEBUG is defined (release builds), "com.corvetta.Corvetta.debug"
// otherwise, which keeps a development build's socket apart from a release build's.
std::string bundleIdentifier();

// "mcp-dev.sock" for an identifier ending in ".debug", "mcp.sock" for any other.
std::string automationSocketFileName(std::string_view bundleIdentifier);

// Where the server listens and the client connects unless told otherwise: the socket file of this
// build's bundle identifier in the application-support folder.
std::filesystem::path defaultAutomationSocketPath(const Paths& paths);

}  // namespace corvetta
