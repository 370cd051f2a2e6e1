#include "appearance/theme_import_service.h"

#include "foundation/json.h"

namespace corvetta {

namespace {

using ImportResult = Expected<CustomThemeImport, ThemeImportError>;

// The shape of one variant: every key present and a string. Colours are checked later, once the
// whole shape is known to be right.
Expected<std::optional<ThemeAppearanceColors>, ThemeImportError> readVariant(const Json& document,
                                                                             const char* key) {
    const auto found = document.find(key);
    if (found == document.end() || found->is_null()) {
        return std::optional<ThemeAppearanceColors>();
    }
    if (!found->is_object()) {
        return unexpected(ThemeImportError::invalidFormat());
    }
    ThemeAppearanceColors colors;
    for (const auto& role : themeRoles()) {
        const auto value = found->find(role.key);
        if (value == found->end() || value->is_null()) {
            return unexpected(ThemeImportError::missingField(std::string(role.key)));
        }
        if (!value->is_string()) {
            return unexpected(ThemeImportError::invalidFormat());
        }
        colors.*role.field = std::string(trimmedColorText(value->get<std::string>()));
    }
    return std::optional(colors);
}

std::optional<ThemeImportError> invalidColorIn(const ThemeAppearanceColors& colors) {
    for (const auto& role : themeRoles()) {
        const auto& text = colors.*role.field;
        if (role.acceptsAuto && isAutoColor(text)) {
            continue;
        }
        if (!parseHexColor(text)) {
            return ThemeImportError::invalidColorValue(text);
        }
    }
    return std::nullopt;
}

}  // namespace

ImportResult ThemeImportService::parse(std::string_view text) {
    const auto parsed = parseJson(text);
    if (!parsed || !parsed->is_object()) {
        return unexpected(ThemeImportError::invalidFormat());
    }
    const Json& document = *parsed;
    CustomThemeImport theme;
    const auto name = document.find("name");
    if (name == document.end() || name->is_null()) {
        return unexpected(ThemeImportError::missingField("name"));
    }
    if (!name->is_string()) {
        return unexpected(ThemeImportError::invalidFormat());
    }
    theme.name = name->get<std::string>();
    if (const auto vibrancy = document.find("useVibrancy"); vibrancy != document.end()) {
        if (!vibrancy->is_boolean()) {
            return unexpected(ThemeImportError::invalidFormat());
        }
        theme.useVibrancy = vibrancy->get<bool>();
    }
    for (auto [key, slot] : {std::pair{"light", &theme.light}, std::pair{"dark", &theme.dark}}) {
        auto variant = readVariant(document, key);
        if (!variant) {
            return unexpected(variant.error());
        }
        *slot = std::move(*variant);
    }
    if (!theme.light && !theme.dark) {
        return unexpected(ThemeImportError::missingVariant());
    }
    for (const auto* variant : {&theme.light, &theme.dark}) {
        if (*variant) {
            if (auto error = invalidColorIn(**variant)) {
                return unexpected(std::move(*error));
            }
        }
    }
    return theme;
}

}  // namespace corvetta
