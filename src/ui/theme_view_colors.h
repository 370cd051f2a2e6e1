// theme_view_colors.h: The current theme's colours, for the appearance in force, as views draw
// them.
#pragma once

#include "appearance/theme_manager.h"
#include "ui/view_colors.h"

namespace corvetta {

// The theme in force, light or dark as the theme manager decides, "auto" resolved, with its
// vibrancy and the user's translucency.
ViewColors viewColorsOf(const ThemeManager& themes);

// While the desktop does not say light or dark, the application palette's window colour does.
void followPaletteAppearance(ThemeManager& themes);

}  // namespace corvetta
