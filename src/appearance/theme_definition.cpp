#include "appearance/theme_definition.h"

#include "foundation/json.h"

namespace corvetta {

namespace {

Json colorsToJson(const ThemeAppearanceColors& colors) {
    Json object = Json::object();
    for (const auto& role : themeRoles()) {
        object[std::string(role.key)] = colors.*role.field;
    }
    return object;
}

ThemeAppearanceColors colorsFromJson(const JsonObjectReader& reader) {
    ThemeAppearanceColors colors;
    for (const auto& role : themeRoles()) {
        auto text = reader.get<std::string>(role.key);
        if (!parseHexColor(text) && !(role.acceptsAuto && isAutoColor(text))) {
            throw JsonDecodeError(JsonDecodeError::Kind::malformedValue, reader.path(),
                                  std::string(role.key), "\"" + text + "\" is not a colour");
        }
        colors.*role.field = std::move(text);
    }
    return colors;
}

}  // namespace

std::string_view themeSourceName(ThemeSource source) {
    return source == ThemeSource::builtIn ? "builtIn" : "imported";
}

std::string ThemeImportError::message() const {
    switch (kind) {
        case Kind::missingField:
            return "The theme file is missing a required \"" + detail + "\" value.";
        case Kind::invalidColorValue:
            return "The color \"" + detail +
                   "\" isn't a valid hex color (expected a format like #RRGGBB or #RRGGBBAA).";
        case Kind::readFailed:
            return "The file couldn't be read: " + detail;
        case Kind::writeFailed:
            return "The theme couldn't be saved: " + detail;
        case Kind::userCancelled:
            return "Import was cancelled.";
        case Kind::invalidFormat:
            return "This file isn't a valid Corvetta theme. Make sure it's a JSON file matching "
                   "the Corvetta theme format.";
        case Kind::missingVariant:
            return "The theme must define at least one of \"light\" or \"dark\".";
    }
    return {};
}

std::string encodeThemeDefinition(const ThemeDefinition& theme) {
    return writeJson(Json{{"schemaVersion", theme.schemaVersion},
                          {"id", theme.id},
                          {"name", theme.name},
                          {"source", themeSourceName(theme.source)},
                          {"useVibrancy", theme.useVibrancy},
                          {"light", colorsToJson(theme.light)},
                          {"dark", colorsToJson(theme.dark)}},
                     JsonStyle::pretty);
}

Expected<ThemeDefinition, std::string> decodeThemeDefinition(std::string_view text) {
    auto parsed = parseJson(text);
    if (!parsed) {
        return unexpected(parsed.error().message);
    }
    try {
        const JsonObjectReader reader(*parsed);
        ThemeDefinition theme;
        theme.schemaVersion = reader.get<int>("schemaVersion");
        theme.id = reader.get<std::string>("id");
        theme.name = reader.get<std::string>("name");
        const auto source = reader.get<std::string>("source");
        if (source != themeSourceName(ThemeSource::builtIn) &&
            source != themeSourceName(ThemeSource::imported)) {
            return unexpected("unknown source \"" + source + "\"");
        }
        theme.source = source == "builtIn" ? ThemeSource::builtIn : ThemeSource::imported;
        theme.useVibrancy = reader.get<bool>("useVibrancy");
        theme.light = colorsFromJson(reader.child("light"));
        theme.dark = colorsFromJson(reader.child("dark"));
        return theme;
    } catch (const JsonDecodeError& error) {
        return unexpected(std::string(error.what()));
    }
}

}  // namespace corvetta
