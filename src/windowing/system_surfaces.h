// system_surfaces.h: The system's own surfaces (Dock, Spotlight...), never arranged as windows.
#pragma once

#include <algorithm>
#include <array>
#include <cctype>
#include <string_view>

namespace corvetta {

// Bundle identifiers beginning with one of these belong to the system's own surfaces: the Dock,
// the notification centre, the control centre, Spotlight, Stage Manager. Layouts and workspaces
// leave them out, as they leave out this program. Compared without case: Spotlight's own
// identifier is "com.apple.Spotlight".
inline constexpr std::array<std::string_view, 5> kSystemSurfacePrefixes{
    "com.apple.dock", "com.apple.notificationcenterui", "com.apple.controlcenter",
    "com.apple.spotlight", "com.apple.WindowManager"};

inline bool isSystemSurface(std::string_view bundleIdentifier) {
    for (const auto prefix : kSystemSurfacePrefixes) {
        if (bundleIdentifier.size() >= prefix.size() &&
            std::equal(prefix.begin(), prefix.end(), bundleIdentifier.begin(),
                       [](unsigned char a, unsigned char b) {
                           return std::tolower(a) == std::tolower(b);
                       })) {
            return true;
        }
    }
    return false;
}

}  // namespace corvetta
