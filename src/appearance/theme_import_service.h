// theme_import_service.h: Reads and validates a theme a user pastes or picks as JSON.
#pragma once

#include <string_view>

#include "appearance/theme_definition.h"
#include "foundation/expected.h"

namespace corvetta {

// Turns the user's JSON into a theme to install, or the error to show them. No side effects.
class ThemeImportService {
public:
    // {"name": ..., "light": {twelve colours}, "dark": {twelve colours}}; one variant may be left
    // out, every colour of a present variant is required. Colours are checked after the shape, in
    // key order, light first; the trimmed texts are kept.
    static Expected<CustomThemeImport, ThemeImportError> parse(std::string_view text);
};

}  // namespace corvetta
