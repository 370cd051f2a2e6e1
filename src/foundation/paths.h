// paths.h: Where the program keeps its files, following HOME and the XDG variables.
#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <string>

namespace corvetta {

// Reads one environment variable; injected so tests never see the real home.
using EnvironmentLookup = std::function<std::optional<std::string>(const std::string&)>;

EnvironmentLookup processEnvironment();

// Where the program keeps its files. All follow HOME and the XDG variables, so pointing those at
// a temporary folder moves everything.
struct Paths {
    std::filesystem::path home;
    // ${XDG_CONFIG_HOME:-~/.config}/corvetta: preferences, workspace backup, spaces, quarantine.
    std::filesystem::path configFolder;
    // ${XDG_DATA_HOME:-~/.local/share}/Corvetta: automation socket, themes.
    std::filesystem::path applicationSupportFolder;

    std::filesystem::path preferencesFile() const { return configFolder / "preferences.json"; }

    static Paths resolve(const EnvironmentLookup& environment);
};

}  // namespace corvetta
