// theme_color_service.h: The user's accent colours, which a theme's "auto" colours stand for.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "appearance/theme_colors.h"
#include "diagnostics/logger.h"
#include "foundation/observer_list.h"
#include "foundation/preferences.h"

namespace corvetta {

// One colour for each of the six roles that accept "auto", kept as "#RRGGBB" text in the user
// defaults under "ThemeColorService.<role>" ("ThemeColorService.accent", ...). A missing or
// unreadable setting falls back to the role's fixed default; docs/appearance.md lists them.
// Main thread only.
class ThemeColorService {
public:
    static constexpr const char* kServiceName = "ThemeColorService";
    static constexpr std::string_view kKeyPrefix = "ThemeColorService.";

    ThemeColorService(Preferences& defaults, LoggingService& logging);

    // The colour for an accent role; the role's default for a role that does not accept "auto".
    ThemeColor color(ThemeRole role) const;
    // The default for `role`, as text.
    static std::string_view defaultColor(ThemeRole role);
    // Stores a hex colour for an accent role; false (and nothing stored) for anything else.
    bool setColor(ThemeRole role, std::string_view hex);
    // Back to the role's default.
    void resetColor(ThemeRole role);

    // Called after any colour changed.
    [[nodiscard]] Registration observe(std::function<void()> handler) {
        return observers_.add(std::move(handler));
    }

private:
    static std::string keyOf(ThemeRole role);

    Preferences& defaults_;
    ObserverList<> observers_;
    Logger logger;
};

}  // namespace corvetta
