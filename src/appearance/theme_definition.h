// theme_definition.h: A theme as stored and listed, what a user imports, and the import's errors.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "appearance/theme_colors.h"
#include "foundation/expected.h"

namespace corvetta {

enum class ThemeSource { builtIn, imported };
// "builtIn", "imported".
std::string_view themeSourceName(ThemeSource source);

// A theme file's content; the JSON keys equal the field names.
struct ThemeDefinition {
    // Written into every file; a later program that changes the format can tell old files.
    static constexpr int kCurrentSchemaVersion = 1;

    int schemaVersion = kCurrentSchemaVersion;
    std::string id;
    std::string name;
    ThemeSource source = ThemeSource::imported;
    bool useVibrancy = false;
    ThemeAppearanceColors light;
    ThemeAppearanceColors dark;

    bool operator==(const ThemeDefinition&) const = default;
};

// What a user pastes or picks: at least one variant; an absent one is filled from the other.
struct CustomThemeImport {
    std::string name;
    std::optional<ThemeAppearanceColors> light;
    std::optional<ThemeAppearanceColors> dark;
    // Not required; imported themes are drawn opaque unless they ask otherwise.
    bool useVibrancy = false;
};

// Why an import failed; `message()` is what the user is shown.
struct ThemeImportError {
    enum class Kind {
        missingField,
        invalidColorValue,
        readFailed,
        writeFailed,
        userCancelled,
        invalidFormat,
        missingVariant,
    };
    Kind kind = Kind::invalidFormat;
    // The key, the colour value or the system's reason, for the cases that carry one.
    std::string detail;

    static ThemeImportError missingField(std::string name) {
        return {Kind::missingField, std::move(name)};
    }
    static ThemeImportError invalidColorValue(std::string value) {
        return {Kind::invalidColorValue, std::move(value)};
    }
    static ThemeImportError readFailed(std::string reason) {
        return {Kind::readFailed, std::move(reason)};
    }
    static ThemeImportError writeFailed(std::string reason) {
        return {Kind::writeFailed, std::move(reason)};
    }
    static ThemeImportError userCancelled() { return {Kind::userCancelled, {}}; }
    static ThemeImportError invalidFormat() { return {Kind::invalidFormat, {}}; }
    static ThemeImportError missingVariant() { return {Kind::missingVariant, {}}; }

    std::string message() const;
    bool operator==(const ThemeImportError&) const = default;
};

// The stored form, pretty-printed with keys in field order.
std::string encodeThemeDefinition(const ThemeDefinition& theme);
// A stored theme file; every field and all twelve valid colours of both variants are required.
// The error says what is wrong, for the log.
Expected<ThemeDefinition, std::string> decodeThemeDefinition(std::string_view text);

}  // namespace corvetta
