#include "appearance/theme_color_service.h"

namespace corvetta {

namespace {

struct AccentDefault {
    ThemeRole role;
    const char* color;
};

// The system's own accent hues on a dark or light background alike.
constexpr AccentDefault kAccentDefaults[] = {
    {ThemeRole::accent, "#0A84FF"},         {ThemeRole::layoutColor, "#0A84FF"},
    {ThemeRole::workspaceColor, "#BF5AF2"}, {ThemeRole::hotkeyColor, "#FF9F0A"},
    {ThemeRole::spaceColor, "#30D158"},     {ThemeRole::appActionColor, "#64D2FF"},
};

}  // namespace

ThemeColorService::ThemeColorService(Preferences& defaults, LoggingService& logging)
    : defaults_(defaults), logger(logging, kServiceName, LogCategory::general()) {}

std::string ThemeColorService::keyOf(ThemeRole role) {
    return std::string(kKeyPrefix) + std::string(themeRoleInfo(role).key);
}

std::string_view ThemeColorService::defaultColor(ThemeRole role) {
    for (const auto& entry : kAccentDefaults) {
        if (entry.role == role) {
            return entry.color;
        }
    }
    return kAccentDefaults[0].color;
}

ThemeColor ThemeColorService::color(ThemeRole role) const {
    if (themeRoleInfo(role).acceptsAuto) {
        if (const auto stored = defaults_.string(keyOf(role))) {
            if (const auto parsed = parseHexColor(*stored)) {
                return *parsed;
            }
            logger.warning("Ignoring unreadable colour \"" + *stored + "\" of " + keyOf(role));
        }
    }
    return *parseHexColor(defaultColor(role));
}

bool ThemeColorService::setColor(ThemeRole role, std::string_view hex) {
    if (!themeRoleInfo(role).acceptsAuto || !parseHexColor(hex)) {
        return false;
    }
    defaults_.set(keyOf(role), PropertyValue(std::string(trimmedColorText(hex))));
    observers_.notify();
    return true;
}

void ThemeColorService::resetColor(ThemeRole role) {
    defaults_.remove(keyOf(role));
    observers_.notify();
}

}  // namespace corvetta
