#include "ui/palette_list_view.h"

#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <QWheelEvent>
#include <algorithm>

#include "palette/command_palette_model.h"

namespace corvetta {

namespace {

constexpr int kNoteHeight = 30;
constexpr int kMargin = 8;

QColor kindColor(const ViewColors& colors, PaletteItem::Kind kind) {
    switch (kind) {
        case PaletteItem::Kind::space:
            return colors.spaceColor;
        case PaletteItem::Kind::workspace:
            return colors.workspaceColor;
        case PaletteItem::Kind::layout:
        case PaletteItem::Kind::customLayout:
            return colors.layoutColor;
        case PaletteItem::Kind::action:
            break;
    }
    return colors.appActionColor;
}

QString fromCodePoints(const std::u32string& text, std::size_t from, std::size_t to) {
    return QString::fromUcs4(text.data() + from, static_cast<qsizetype>(to - from));
}

}  // namespace

PaletteListView::PaletteListView(CommandPaletteModel& model, QWidget* parent)
    : QWidget(parent), model_(model), colors_(ViewColors::fallback()) {
    setObjectName("paletteRows");
}

void PaletteListView::setColors(const ViewColors& colors) {
    colors_ = colors;
    update();
}

void PaletteListView::refresh() {
    layoutBands();
    scrollToSelection();
    update();
}

void PaletteListView::layoutBands() {
    bands_.clear();
    int y = 0;
    const bool hasRows = model_.visibleRowCount() > 0;
    // "No workspaces or spaces." sits above the layouts; a search without results fills the list.
    if (model_.emptyText() && hasRows) {
        bands_.push_back({Band::Kind::note, y, kNoteHeight, 0});
        y += kNoteHeight;
    }
    int row = 0;
    const auto& sections = model_.sections();
    for (std::size_t s = 0; s < sections.size(); ++s) {
        bands_.push_back({Band::Kind::header, y, kHeaderHeight, static_cast<int>(s)});
        y += kHeaderHeight;
        for (std::size_t r = 0; r < sections[s].rows.size(); ++r) {
            bands_.push_back({Band::Kind::row, y, kRowHeight, row++});
            y += kRowHeight;
        }
    }
    contentHeight_ = y;
}

void PaletteListView::scrollToSelection() {
    for (const auto& band : bands_) {
        if (band.kind == Band::Kind::row && band.index == model_.selectedIndex()) {
            // The header above the first row of a section comes into view with it.
            const int top = band.index == 0 ? 0 : band.top;
            if (top < offset_) {
                offset_ = top;
            } else if (band.top + band.height > offset_ + height()) {
                offset_ = band.top + band.height - height();
            }
        }
    }
    offset_ = std::clamp(offset_, 0, std::max(0, contentHeight_ - height()));
}

int PaletteListView::rowAt(int y) const {
    for (const auto& band : bands_) {
        if (band.kind == Band::Kind::row && y + offset_ >= band.top &&
            y + offset_ < band.top + band.height) {
            return band.index;
        }
    }
    return -1;
}

void PaletteListView::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const auto empty = model_.emptyText();
    if (bands_.empty() && empty) {
        painter.setPen(colors_.textSecondary);
        painter.drawText(rect(), Qt::AlignCenter, QString::fromStdString(*empty));
        return;
    }
    QFont headerFont = font();
    headerFont.setPointSizeF(font().pointSizeF() * 0.85);
    headerFont.setBold(true);
    for (const auto& band : bands_) {
        const QRect rect(0, band.top - offset_, width(), band.height);
        if (rect.bottom() < 0 || rect.top() > height()) {
            continue;
        }
        switch (band.kind) {
            case Band::Kind::note:
                painter.setPen(colors_.textSecondary);
                painter.drawText(rect.adjusted(kMargin + 6, 0, 0, 0), Qt::AlignVCenter,
                                 QString::fromStdString(empty.value_or("")));
                break;
            case Band::Kind::header:
                painter.setFont(headerFont);
                painter.setPen(colors_.textSecondary);
                {
                    const auto title =
                        model_.sections()[static_cast<std::size_t>(band.index)].title;
                    painter.drawText(
                        rect.adjusted(kMargin + 6, 6, 0, 0), Qt::AlignVCenter,
                        QString::fromUtf8(title.data(), static_cast<qsizetype>(title.size()))
                            .toUpper());
                }
                painter.setFont(font());
                break;
            case Band::Kind::row:
                paintRow(painter, rect, band.index);
                break;
        }
    }
}

void PaletteListView::paintRow(QPainter& painter, const QRect& rect, int index) const {
    const auto* visible = model_.visibleRow(index);
    if (!visible) {
        return;
    }
    const auto& row = model_.rows()[visible->row];
    const QRect inner = rect.adjusted(kMargin, 2, -kMargin, -2);
    if (index == model_.selectedIndex()) {
        QColor selection = colors_.accent;
        selection.setAlphaF(0.28F);
        QPainterPath path;
        path.addRoundedRect(inner, 7, 7);
        painter.fillPath(path, selection);
    }
    // The kind's colour as a dot; filled for items of the active space.
    const QColor kind = kindColor(colors_, row.item.kind());
    const QRectF dot(inner.left() + 12, inner.center().y() - 4.5, 9, 9);
    painter.setPen(QPen(kind, 1.5));
    painter.setBrush(row.inActiveSpace ? kind : Qt::transparent);
    painter.drawEllipse(dot);
    painter.setBrush(Qt::NoBrush);

    // The title, the matched characters in the accent colour and bold.
    QFont plain = font();
    QFont bold = plain;
    bold.setBold(true);
    int x = inner.left() + 32;
    const int baseline = inner.center().y() + QFontMetrics(plain).ascent() / 2 - 1;
    std::size_t start = 0;
    const auto& title = row.title;
    const auto& matched = visible->matched;
    while (start < title.size()) {
        const bool hit =
            std::binary_search(matched.begin(), matched.end(), static_cast<int>(start));
        std::size_t end = start + 1;
        while (end < title.size() &&
               std::binary_search(matched.begin(), matched.end(), static_cast<int>(end)) == hit) {
            ++end;
        }
        const QString run = fromCodePoints(title, start, end);
        painter.setFont(hit ? bold : plain);
        painter.setPen(hit ? colors_.accent : colors_.textPrimary);
        painter.drawText(x, baseline, run);
        x += QFontMetrics(hit ? bold : plain).horizontalAdvance(run);
        start = end;
    }
    painter.setFont(plain);

    // Right to left: shortcut, badge; the space after the title.
    int right = inner.right() - 10;
    const QFontMetrics metrics(plain);
    if (!row.shortcutText.empty()) {
        const QString text = QString::fromStdString(row.shortcutText);
        const int w = metrics.horizontalAdvance(text);
        painter.setPen(colors_.hotkeyColor);
        painter.drawText(right - w, baseline, text);
        right -= w + 12;
    }
    if (!row.badge.empty()) {
        QFont small = plain;
        small.setPointSizeF(plain.pointSizeF() * 0.85);
        const QFontMetrics smallMetrics(small);
        const QString text = QString::fromStdString(row.badge);
        const int w = smallMetrics.horizontalAdvance(text) + 14;
        const QRect pill(right - w, inner.center().y() - 10, w, 20);
        QPainterPath path;
        path.addRoundedRect(pill, 10, 10);
        painter.fillPath(path, colors_.backgroundCard);
        painter.setPen(colors_.borderCard);
        painter.drawPath(path);
        painter.setFont(small);
        painter.setPen(row.badge == "Active" ? colors_.accent : colors_.textSecondary);
        painter.drawText(pill, Qt::AlignCenter, text);
        painter.setFont(plain);
        right -= w + 10;
    }
    if (!row.scope.empty() && x + 16 < right) {
        painter.setPen(colors_.textSecondary);
        const QString scope =
            metrics.elidedText(QString::fromStdString(row.scope), Qt::ElideRight, right - x - 16);
        painter.drawText(x + 12, baseline, scope);
    }
}

void PaletteListView::mousePressEvent(QMouseEvent* event) {
    const int index = rowAt(static_cast<int>(event->position().y()));
    if (index >= 0) {
        model_.select(index);
    }
}

void PaletteListView::mouseDoubleClickEvent(QMouseEvent* event) {
    const int index = rowAt(static_cast<int>(event->position().y()));
    if (index >= 0 && index == model_.selectedIndex()) {
        model_.confirm();
    }
}

void PaletteListView::wheelEvent(QWheelEvent* event) {
    offset_ = std::clamp(offset_ - event->angleDelta().y() / 3, 0,
                         std::max(0, contentHeight_ - height()));
    update();
}

void PaletteListView::resizeEvent(QResizeEvent*) {
    scrollToSelection();
}

}  // namespace corvetta
