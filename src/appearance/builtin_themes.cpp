#include "appearance/builtin_themes.h"

#include <array>

namespace corvetta {

namespace {

// backgroundWindow, backgroundCard, borderCard, borderPanel, textPrimary, textSecondary, accent,
// layoutColor, workspaceColor, hotkeyColor, spaceColor, appActionColor.
using Variant = std::array<const char*, kThemeRoleCount>;

struct BuiltInRow {
    const char* id;
    const char* name;
    bool useVibrancy;
    Variant light;
    Variant dark;
};

// Catppuccin's light flavour, Latte, serves as the light form of its dark flavours.
constexpr Variant kCatppuccinLatte = {"#EFF1F5", "#E6E9EF", "#0000001A", "#CCD0DA",
                                      "#4C4F69", "#6C6F85", "#8839EF",   "#1E66F5",
                                      "#8839EF", "#FE640B", "#40A02B",   "#179299"};
constexpr Variant kDracula = {"#282A36", "#21222C", "#FFFFFF14", "#44475A", "#F8F8F2", "#6272A4",
                              "#BD93F9", "#8BE9FD", "#FF79C6",   "#FFB86C", "#50FA7B", "#F1FA8C"};
constexpr Variant kMonokai = {"#272822", "#3E3D32", "#FFFFFF14", "#49483E", "#F8F8F2", "#75715E",
                              "#A6E22E", "#66D9EF", "#AE81FF",   "#FD971F", "#A6E22E", "#E6DB74"};

// Sources: catppuccin.com/palette, draculatheme.com/contribute, nordtheme.com/docs/colors-and-
// palettes, github.com/morhetz/gruvbox, monokai.pro's classic Monokai, Primer's functional colours
// (primer.style), github.com/rebelot/kanagawa.nvim (wave and lotus).
const BuiltInRow kBuiltIns[] = {
    {"default",
     "Default",
     true,
     {"#F5F5F7", "#FFFFFF", "#00000014", "#D1D1D6", "#1D1D1F", "#6E6E73", "auto", "auto", "auto",
      "auto", "auto", "auto"},
     {"#1C1C1E", "#2C2C2E", "#FFFFFF14", "#3A3A3C", "#F5F5F7", "#98989D", "auto", "auto", "auto",
      "auto", "auto", "auto"}},
    {"catppuccin-macchiato",
     "Catppuccin Macchiato",
     false,
     kCatppuccinLatte,
     {"#24273A", "#1E2030", "#FFFFFF14", "#363A4F", "#CAD3F5", "#A5ADCB", "#C6A0F6", "#8AADF4",
      "#C6A0F6", "#F5A97F", "#A6DA95", "#8BD5CA"}},
    {"catppuccin-frappe",
     "Catppuccin Frappé",
     false,
     kCatppuccinLatte,
     {"#303446", "#292C3C", "#FFFFFF14", "#414559", "#C6D0F5", "#A5ADCE", "#CA9EE6", "#8CAAEE",
      "#CA9EE6", "#EF9F76", "#A6D189", "#81C8BE"}},
    {"dracula", "Dracula", false, kDracula, kDracula},
    {"nord",
     "Nord",
     false,
     {"#ECEFF4", "#E5E9F0", "#0000001A", "#D8DEE9", "#2E3440", "#4C566A", "#5E81AC", "#5E81AC",
      "#B48EAD", "#D08770", "#A3BE8C", "#8FBCBB"},
     {"#2E3440", "#3B4252", "#FFFFFF14", "#434C5E", "#ECEFF4", "#D8DEE9", "#88C0D0", "#81A1C1",
      "#B48EAD", "#D08770", "#A3BE8C", "#8FBCBB"}},
    {"gruvbox",
     "Gruvbox",
     false,
     {"#FBF1C7", "#EBDBB2", "#0000001A", "#D5C4A1", "#3C3836", "#7C6F64", "#AF3A03", "#076678",
      "#8F3F71", "#AF3A03", "#79740E", "#427B58"},
     {"#282828", "#3C3836", "#FFFFFF14", "#504945", "#EBDBB2", "#A89984", "#FE8019", "#83A598",
      "#D3869B", "#FE8019", "#B8BB26", "#8EC07C"}},
    {"monokai", "Monokai", false, kMonokai, kMonokai},
    {"github",
     "GitHub",
     false,
     {"#FFFFFF", "#F6F8FA", "#0000001A", "#D0D7DE", "#1F2328", "#656D76", "#0969DA", "#0969DA",
      "#8250DF", "#BC4C00", "#1A7F37", "#9A6700"},
     {"#0D1117", "#161B22", "#FFFFFF14", "#30363D", "#E6EDF3", "#7D8590", "#2F81F7", "#2F81F7",
      "#A371F7", "#DB6D28", "#3FB950", "#D29922"}},
    {"kanagawa",
     "Kanagawa",
     false,
     {"#F2ECBC", "#E5DDB0", "#0000001A", "#DCD5AC", "#545464", "#8A8980", "#4D699B", "#4D699B",
      "#624C83", "#CC6D00", "#6F894E", "#597B75"},
     {"#1F1F28", "#2A2A37", "#FFFFFF14", "#363646", "#DCD7BA", "#727169", "#7E9CD8", "#7E9CD8",
      "#957FB8", "#FFA066", "#98BB6C", "#7AA89F"}},
};

ThemeAppearanceColors colorsOf(const Variant& variant) {
    ThemeAppearanceColors colors;
    for (const auto& role : themeRoles()) {
        colors.*role.field = variant[static_cast<std::size_t>(role.role)];
    }
    return colors;
}

}  // namespace

const std::vector<ThemeDefinition>& builtInThemes() {
    static const std::vector<ThemeDefinition> themes = [] {
        std::vector<ThemeDefinition> built;
        for (const auto& row : kBuiltIns) {
            built.push_back({.id = row.id,
                             .name = row.name,
                             .source = ThemeSource::builtIn,
                             .useVibrancy = row.useVibrancy,
                             .light = colorsOf(row.light),
                             .dark = colorsOf(row.dark)});
        }
        return built;
    }();
    return themes;
}

}  // namespace corvetta
