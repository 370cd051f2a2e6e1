// command_palette_window.h: The command palette's frameless window: search, rows, panel, hints.
#pragma once

#include <QWidget>

#include "foundation/notification_center.h"
#include "foundation/registration.h"
#include "palette/command_palette_controller.h"
#include "ui/view_colors.h"

class QLabel;
class QLineEdit;

namespace corvetta {

class PaletteItemActionsView;
class PaletteListView;

// Draws the palette's model and forwards input to it: typing goes to the search text; ↑ ↓,
// Return, Ctrl+K and Escape go out as the palette's key notifications. Built once and attached
// to the controller, which shows it on the display under the pointer and hides it again; hiding
// keeps it built, so showing it again only refreshes the rows.
class CommandPaletteWindow final : public QWidget, public PaletteSurface {
    Q_OBJECT
public:
    static constexpr int kWidth = 640;
    static constexpr int kHeight = 460;

    CommandPaletteWindow(CommandPaletteController& controller, NotificationCenter& notifications,
                         const ViewColors& colors, QWidget* parent = nullptr);
    ~CommandPaletteWindow() override;

    void setColors(const ViewColors& colors);
    const ViewColors& colors() const { return colors_; }
    // Shows it centred across the given display area, a fifth of the way down, and focused.
    void presentOn(const QRect& screenAvailableGeometry);
    // Closes it as Escape does.
    void dismiss();

    bool isPaletteVisible() const override;
    void presentPalette() override;
    void hidePalette() override;

protected:
    void paintEvent(QPaintEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    bool event(QEvent* event) override;

private:
    // The notification a key stands for; none for keys that are typing.
    static const char* keyNotification(const QKeyEvent& key);
    void refresh();

    CommandPaletteController& controller_;
    CommandPaletteModel& model_;
    NotificationCenter& notifications_;
    ViewColors colors_;
    QLineEdit* search_;
    PaletteListView* list_;
    PaletteItemActionsView* panel_;
    QLabel* hints_;
    ObserverToken changes_;
    Registration attachment_;
};

}  // namespace corvetta
