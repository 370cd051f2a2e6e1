#include "automation/bundle_identifier.h"

namespace corvetta {

std::string bundleIdentifier() {
#if defined(NDEBUG)
    return "com.corvetta.Corvetta";
#else
    return "com.corvetta.Corvetta.debug";
#endif
}

std::string automationSocketFileName(std::string_view identifier) {
    return identifier.ends_with(".debug") ? "mcp-dev.sock" : "mcp.sock";
}

std::filesystem::path defaultAutomationSocketPath(const Paths& paths) {
    return paths.applicationSupportFolder / automationSocketFileName(bundleIdentifier());
}

}  // namespace corvetta
