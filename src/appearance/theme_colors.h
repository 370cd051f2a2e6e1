// theme_colors.h: A theme variant's twelve colour roles, and the colour strings they hold.
#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace corvetta {

enum class ThemeRole {
    backgroundWindow,
    backgroundCard,
    borderCard,
    borderPanel,
    textPrimary,
    textSecondary,
    accent,
    layoutColor,
    workspaceColor,
    hotkeyColor,
    spaceColor,
    appActionColor,
};
inline constexpr std::size_t kThemeRoleCount = 12;

// One variant (light or dark) of a theme: a colour string per role, "#RRGGBB", "#RRGGBBAA" or,
// for the accent roles, "auto".
struct ThemeAppearanceColors {
    std::string backgroundWindow;
    std::string backgroundCard;
    std::string borderCard;
    std::string borderPanel;
    std::string textPrimary;
    std::string textSecondary;
    std::string accent;
    std::string layoutColor;
    std::string workspaceColor;
    std::string hotkeyColor;
    std::string spaceColor;
    std::string appActionColor;

    const std::string& operator[](ThemeRole role) const;
    std::string& operator[](ThemeRole role);
    bool operator==(const ThemeAppearanceColors&) const = default;
};

struct ThemeRoleInfo {
    ThemeRole role;
    // The JSON key, also the field's name.
    std::string_view key;
    std::string ThemeAppearanceColors::*field;
    // "auto" hands the role to the user's accent colours.
    bool acceptsAuto;
};

// Every role, in the order the theme files list them.
std::span<const ThemeRoleInfo> themeRoles();
const ThemeRoleInfo& themeRoleInfo(ThemeRole role);

// Components from 0 to 1.
struct ThemeColor {
    double red = 0;
    double green = 0;
    double blue = 0;
    double alpha = 1;
    bool operator==(const ThemeColor&) const = default;
};

// The colours of one variant with "auto" resolved, indexed by role.
struct ResolvedThemeColors {
    std::array<ThemeColor, kThemeRoleCount> colors{};
    const ThemeColor& operator[](ThemeRole role) const {
        return colors[static_cast<std::size_t>(role)];
    }
    ThemeColor& operator[](ThemeRole role) { return colors[static_cast<std::size_t>(role)]; }
    bool operator==(const ResolvedThemeColors&) const = default;
};

// White space at either end removed.
std::string_view trimmedColorText(std::string_view text);
// "auto" in any case, after trimming.
bool isAutoColor(std::string_view text);
// "#RRGGBB" or "#RRGGBBAA" in either case, after trimming; alpha 0xFF when absent.
std::optional<ThemeColor> parseHexColor(std::string_view text);

}  // namespace corvetta
