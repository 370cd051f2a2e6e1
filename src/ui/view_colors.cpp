#include "ui/view_colors.h"

namespace corvetta {

ViewColors ViewColors::fallback() {
    ViewColors colors;
    colors.backgroundWindow = QColor(0x1e, 0x1f, 0x24);
    colors.backgroundCard = QColor(0x2a, 0x2b, 0x31);
    colors.borderCard = QColor(0xff, 0xff, 0xff, 0x14);
    colors.borderPanel = QColor(0xff, 0xff, 0xff, 0x1f);
    colors.textPrimary = QColor(0xf2, 0xf2, 0xf5);
    colors.textSecondary = QColor(0x9a, 0x9c, 0xa6);
    colors.accent = QColor(0x5b, 0x8d, 0xef);
    colors.layoutColor = QColor(0x8a, 0xad, 0xf4);
    colors.workspaceColor = QColor(0xa6, 0xda, 0x95);
    colors.hotkeyColor = QColor(0xee, 0xd4, 0x9f);
    colors.spaceColor = QColor(0xc6, 0xa0, 0xf6);
    colors.appActionColor = QColor(0xf5, 0xa9, 0x7f);
    colors.useVibrancy = true;
    return colors;
}

QColor ViewColors::windowBackground() const {
    QColor color = backgroundWindow;
    if (useVibrancy) {
        color.setAlphaF(static_cast<float>(color.alphaF() * vibrancyTranslucency));
    }
    return color;
}

}  // namespace corvetta
