#include "foundation/paths.h"

#include <cstdlib>

#include <pwd.h>
#include <unistd.h>

namespace corvetta {

namespace {
// The XDG rules: an unset, empty or relative value is ignored.
std::optional<std::filesystem::path> absoluteFrom(const EnvironmentLookup& environment,
                                                  const std::string& name) {
    const auto value = environment(name);
    if (!value || value->empty() || (*value)[0] != '/') {
        return std::nullopt;
    }
    return std::filesystem::path(*value);
}

std::filesystem::path accountHome() {
    if (const passwd* entry = getpwuid(getuid()); entry && entry->pw_dir) {
        return entry->pw_dir;
    }
    return "/";
}
}  // namespace

EnvironmentLookup processEnvironment() {
    return [](const std::string& name) -> std::optional<std::string> {
        const char* value = std::getenv(name.c_str());
        return value ? std::optional<std::string>(value) : std::nullopt;
    };
}

Paths Paths::resolve(const EnvironmentLookup& environment) {
    Paths paths;
    paths.home = absoluteFrom(environment, "HOME").value_or(accountHome());
#if defined(__APPLE__)
    paths.configFolder = paths.home / ".config" / "corvetta";
    paths.applicationSupportFolder = paths.home / "Library" / "Application Support" / "Corvetta";
#else
    paths.configFolder =
        absoluteFrom(environment, "XDG_CONFIG_HOME").value_or(paths.home / ".config") / "corvetta";
    paths.applicationSupportFolder =
        absoluteFrom(environment, "XDG_DATA_HOME").value_or(paths.home / ".local" / "share") /
        "Corvetta";
#endif
    return paths;
}

}  // namespace corvetta
