// palette_list_view.h: Draws the palette's sections and rows, matched characters highlighted.
#pragma once

#include <QWidget>
#include <vector>

#include "ui/view_colors.h"

namespace corvetta {

class CommandPaletteModel;

// The rows of the palette as the model has them: section headers, the rows with their shortcut
// text, badge and space, the selected one marked, and the empty text. Only the rows in view are
// painted, so a long list costs nothing to draw. A click selects, a double click activates.
class PaletteListView final : public QWidget {
    Q_OBJECT
public:
    static constexpr int kRowHeight = 38;
    static constexpr int kHeaderHeight = 26;

    PaletteListView(CommandPaletteModel& model, QWidget* parent);
    void setColors(const ViewColors& colors);
    // Re-reads the model and scrolls the selected row into view.
    void refresh();

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    // What occupies a band of the list, top to bottom.
    struct Band {
        enum class Kind { note, header, row } kind;
        int top;
        int height;
        // The section index for a header, the visible row index for a row.
        int index;
    };
    void layoutBands();
    void scrollToSelection();
    int rowAt(int y) const;
    void paintRow(QPainter& painter, const QRect& rect, int index) const;

    CommandPaletteModel& model_;
    ViewColors colors_;
    std::vector<Band> bands_;
    int contentHeight_ = 0;
    int offset_ = 0;
};

}  // namespace corvetta
