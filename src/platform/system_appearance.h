// system_appearance.h: The appearance port: whether the desktop asks for light or dark.
#pragma once

#include <functional>
#include <string_view>

#include "foundation/registration.h"

namespace corvetta {

// "unknown" when the desktop does not say (no settings service, or no preference set); whoever
// draws then decides from what else it knows.
enum class SystemAppearance { light, dark, unknown };

// "light", "dark", "unknown".
constexpr std::string_view systemAppearanceName(SystemAppearance appearance) {
    return appearance == SystemAppearance::light  ? "light"
           : appearance == SystemAppearance::dark ? "dark"
                                                  : "unknown";
}

// The system appearance, as the global "AppleInterfaceStyle" default gives it on macOS.
class SystemAppearancePort {
public:
    virtual ~SystemAppearancePort() = default;

    virtual SystemAppearance currentAppearance() const = 0;
    // Called on the main thread with the new appearance whenever it changes, for as long as the
    // registration lives. The registration may outlive the port.
    [[nodiscard]] virtual Registration observeAppearance(
        std::function<void(SystemAppearance)> handler) = 0;
};

}  // namespace corvetta
