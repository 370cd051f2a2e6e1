// builtin_themes.h: The themes that ship with the program, in the order they are listed.
#pragma once

#include <vector>

#include "appearance/theme_definition.h"

namespace corvetta {

// The id of the theme in force when none, or an unknown one, is selected.
inline constexpr const char* kDefaultThemeId = "default";

// "default" first, then the published editor palettes; all with source builtIn.
const std::vector<ThemeDefinition>& builtInThemes();

}  // namespace corvetta
