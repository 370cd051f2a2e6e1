#include "ui/theme_view_colors.h"

#include <QGuiApplication>
#include <QPalette>

namespace corvetta {

namespace {

QColor qColorOf(const ThemeColor& color) {
    return QColor::fromRgbF(static_cast<float>(color.red), static_cast<float>(color.green),
                            static_cast<float>(color.blue), static_cast<float>(color.alpha));
}

}  // namespace

ViewColors viewColorsOf(const ThemeManager& themes) {
    const auto color = [&](ThemeRole role) { return qColorOf(themes.color(role)); };
    ViewColors colors;
    colors.backgroundWindow = color(ThemeRole::backgroundWindow);
    colors.backgroundCard = color(ThemeRole::backgroundCard);
    colors.borderCard = color(ThemeRole::borderCard);
    colors.borderPanel = color(ThemeRole::borderPanel);
    colors.textPrimary = color(ThemeRole::textPrimary);
    colors.textSecondary = color(ThemeRole::textSecondary);
    colors.accent = color(ThemeRole::accent);
    colors.layoutColor = color(ThemeRole::layoutColor);
    colors.workspaceColor = color(ThemeRole::workspaceColor);
    colors.hotkeyColor = color(ThemeRole::hotkeyColor);
    colors.spaceColor = color(ThemeRole::spaceColor);
    colors.appActionColor = color(ThemeRole::appActionColor);
    colors.useVibrancy = themes.current().useVibrancy;
    colors.vibrancyTranslucency = themes.vibrancyTranslucency();
    return colors;
}

void followPaletteAppearance(ThemeManager& themes) {
    // A dark palette has a window colour darker than its text.
    const QPalette palette = QGuiApplication::palette();
    themes.setFallbackAppearance(palette.color(QPalette::Window).lightness() <
                                 palette.color(QPalette::WindowText).lightness());
}

}  // namespace corvetta
