// deeplink_profiles.h: What each known application takes as a deeplink, by bundle or desktop id.
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace corvetta {

// How one application's deeplinks look: the scheme its own links use, the example the entry
// field shows, and further prefixes (the service's web address) that also count as its links.
struct AppDeeplinkProfile {
    // Empty when the application takes plain paths.
    std::string schemePrefix;
    std::string placeholder;
    std::vector<std::string> extraPrefixes;

    bool operator==(const AppDeeplinkProfile&) const = default;
};

// The macOS applications with a profile, keyed by bundle identifier, in their fixed order. Built
// once.
const std::vector<std::pair<std::string, AppDeeplinkProfile>>& appDeeplinkProfiles();

// The profile of an application named by its bundle identifier or, on Linux, by its desktop entry
// id or window class (compared ignoring case: X11 names xterm's windows "XTerm"); none for an
// application without one.
const AppDeeplinkProfile* deeplinkProfile(std::string_view applicationID);

// The terminals: their deeplink is a directory to open or any shell command to type.
bool isTerminalApplication(std::string_view applicationID);

// WezTerm takes typed commands through its own command-line program rather than key presses.
bool isWezTerm(std::string_view applicationID);

}  // namespace corvetta
