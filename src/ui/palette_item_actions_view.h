// palette_item_actions_view.h: The palette's item-actions panel and its delete confirmation.
#pragma once

#include <QFrame>

#include "ui/view_colors.h"

class QLabel;
class QPushButton;

namespace corvetta {

class CommandPaletteModel;

// The panel over the rows while it is open: the selected item's actions, the chosen one marked;
// a click chooses one. While a deletion waits for an answer it asks instead, with "Delete" and
// "Cancel" buttons.
class PaletteItemActionsView final : public QFrame {
    Q_OBJECT
public:
    PaletteItemActionsView(CommandPaletteModel& model, QWidget* parent);
    void setColors(const ViewColors& colors);
    // Shows or hides itself as the model says and sizes itself to what it shows.
    void refresh();

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;

private:
    static constexpr int kRowHeight = 32;
    static constexpr int kWidth = 250;

    CommandPaletteModel& model_;
    ViewColors colors_;
    QFrame* confirmation_;
    QLabel* title_;
    QLabel* message_;
    QPushButton* deleteButton_;
    QPushButton* cancelButton_;
};

}  // namespace corvetta
