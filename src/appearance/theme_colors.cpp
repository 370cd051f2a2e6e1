#include "appearance/theme_colors.h"

#include <algorithm>
#include <cctype>

namespace corvetta {

namespace {

using C = ThemeAppearanceColors;

constexpr ThemeRoleInfo kRoles[] = {
    {ThemeRole::backgroundWindow, "backgroundWindow", &C::backgroundWindow, false},
    {ThemeRole::backgroundCard, "backgroundCard", &C::backgroundCard, false},
    {ThemeRole::borderCard, "borderCard", &C::borderCard, false},
    {ThemeRole::borderPanel, "borderPanel", &C::borderPanel, false},
    {ThemeRole::textPrimary, "textPrimary", &C::textPrimary, false},
    {ThemeRole::textSecondary, "textSecondary", &C::textSecondary, false},
    {ThemeRole::accent, "accent", &C::accent, true},
    {ThemeRole::layoutColor, "layoutColor", &C::layoutColor, true},
    {ThemeRole::workspaceColor, "workspaceColor", &C::workspaceColor, true},
    {ThemeRole::hotkeyColor, "hotkeyColor", &C::hotkeyColor, true},
    {ThemeRole::spaceColor, "spaceColor", &C::spaceColor, true},
    {ThemeRole::appActionColor, "appActionColor", &C::appActionColor, true},
};
static_assert(std::size(kRoles) == kThemeRoleCount);

int hexDigit(char c) {
    if (c >= '0' && c <= '9') {
        return c - '0';
    }
    const char lower = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

}  // namespace

std::span<const ThemeRoleInfo> themeRoles() {
    return kRoles;
}

const ThemeRoleInfo& themeRoleInfo(ThemeRole role) {
    return kRoles[static_cast<std::size_t>(role)];
}

const std::string& ThemeAppearanceColors::operator[](ThemeRole role) const {
    return this->*themeRoleInfo(role).field;
}

std::string& ThemeAppearanceColors::operator[](ThemeRole role) {
    return this->*themeRoleInfo(role).field;
}

std::string_view trimmedColorText(std::string_view text) {
    const auto isSpace = [](char c) { return std::isspace(static_cast<unsigned char>(c)) != 0; };
    while (!text.empty() && isSpace(text.front())) {
        text.remove_prefix(1);
    }
    while (!text.empty() && isSpace(text.back())) {
        text.remove_suffix(1);
    }
    return text;
}

bool isAutoColor(std::string_view text) {
    text = trimmedColorText(text);
    return text.size() == 4 && std::equal(text.begin(), text.end(), "auto", [](char a, char b) {
               return std::tolower(static_cast<unsigned char>(a)) == b;
           });
}

std::optional<ThemeColor> parseHexColor(std::string_view text) {
    text = trimmedColorText(text);
    if (text.empty() || text.front() != '#' || (text.size() != 7 && text.size() != 9)) {
        return std::nullopt;
    }
    double components[4] = {0, 0, 0, 1};
    for (std::size_t i = 0; i * 2 + 1 < text.size(); ++i) {
        const int high = hexDigit(text[1 + i * 2]);
        const int low = hexDigit(text[2 + i * 2]);
        if (high < 0 || low < 0) {
            return std::nullopt;
        }
        components[i] = (high * 16 + low) / 255.0;
    }
    return ThemeColor{components[0], components[1], components[2], components[3]};
}

}  // namespace corvetta
