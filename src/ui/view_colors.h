// view_colors.h: The theme's twelve colours as a view draws them, for the appearance in force.
#pragma once

#include <QColor>

namespace corvetta {

// What every window of ours paints with. The shell fills it from the theme manager for the
// current light or dark appearance and hands it to each view; views never read the theme
// themselves, so a view test can give them any colours.
struct ViewColors {
    QColor backgroundWindow;
    QColor backgroundCard;
    QColor borderCard;
    QColor borderPanel;
    QColor textPrimary;
    QColor textSecondary;
    QColor accent;
    QColor layoutColor;
    QColor workspaceColor;
    QColor hotkeyColor;
    QColor spaceColor;
    QColor appActionColor;
    // The window background is drawn translucent at this opacity.
    bool useVibrancy = false;
    double vibrancyTranslucency = 0.7;

    // The built-in default theme's dark variant, for views shown before a theme is known.
    static ViewColors fallback();
    // The window background with the vibrancy opacity applied when the theme asks for it.
    QColor windowBackground() const;
};

}  // namespace corvetta
