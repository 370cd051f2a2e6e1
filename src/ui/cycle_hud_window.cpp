#include "ui/cycle_hud_window.h"

#include <QCursor>
#include <QGuiApplication>
#include <QPainter>
#include <QScreen>
#include <algorithm>

#include "ui/panel_painter.h"

namespace corvetta {

namespace {

constexpr int kPadding = 22;
constexpr int kRowHeight = 28;
constexpr int kMinimumWidth = 300;
constexpr int kMaximumWidth = 560;

QFont scaled(QFont font, double factor, QFont::Weight weight) {
    font.setPointSizeF(font.pointSizeF() * factor);
    font.setWeight(weight);
    return font;
}

}  // namespace

CycleHudWindow::CycleHudWindow(const HoldToCycle& cycle, NotificationCenter& notifications,
                               const ViewColors& colors, DisplayFinder displayFinder)
    : QWidget(nullptr, Qt::FramelessWindowHint | Qt::Tool | Qt::WindowStaysOnTopHint |
                           Qt::WindowDoesNotAcceptFocus | Qt::BypassWindowManagerHint),
      cycle_(cycle),
      colors_(colors),
      displayFinder_(std::move(displayFinder)) {
    setAttribute(Qt::WA_TranslucentBackground);
    setAttribute(Qt::WA_ShowWithoutActivating);
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setWindowTitle("Cycle");
    if (!displayFinder_) {
        displayFinder_ = [] {
            const QScreen* screen = QGuiApplication::screenAt(QCursor::pos());
            screen = screen ? screen : QGuiApplication::primaryScreen();
            return screen ? screen->availableGeometry() : QRect();
        };
    }
    observer_ = notifications.addObserver(HoldToCycle::kDisplayDidChange,
                                          [this](const Notification&) { sync(); });
    sync();
}

void CycleHudWindow::setColors(const ViewColors& colors) {
    colors_ = colors;
    update();
}

QString CycleHudWindow::kindText() const {
    return cycle_.display().kind == CycleDisplay::Kind::spaces ? "Space" : "Workspace";
}

QString CycleHudWindow::pendingText() const {
    const auto& display = cycle_.display();
    if (!display.pendingIndex || *display.pendingIndex >= display.candidates.size()) {
        return {};
    }
    return QString::fromStdString(display.candidates[*display.pendingIndex].name);
}

std::size_t CycleHudWindow::firstRow() const {
    const auto& display = cycle_.display();
    const std::size_t count = display.candidates.size();
    if (count <= kMaxRows) {
        return 0;
    }
    // The pending one in the middle where it can be, the window kept within the list.
    const std::size_t pending = display.pendingIndex.value_or(0);
    const std::size_t start = pending > kMaxRows / 2 ? pending - kMaxRows / 2 : 0;
    return std::min(start, count - kMaxRows);
}

QStringList CycleHudWindow::rowTexts() const {
    const auto& candidates = cycle_.display().candidates;
    QStringList rows;
    const std::size_t first = firstRow();
    for (std::size_t i = first; i < candidates.size() && rows.size() < kMaxRows; ++i) {
        rows.append(QString::fromStdString(candidates[i].name));
    }
    return rows;
}

int CycleHudWindow::pendingRow() const {
    const auto& pending = cycle_.display().pendingIndex;
    if (!pending) {
        return -1;
    }
    const auto row = static_cast<long>(*pending) - static_cast<long>(firstRow());
    return row >= 0 && row < kMaxRows ? static_cast<int>(row) : -1;
}

QColor CycleHudWindow::kindColor() const {
    return cycle_.display().kind == CycleDisplay::Kind::spaces ? colors_.spaceColor
                                                               : colors_.workspaceColor;
}

void CycleHudWindow::sync() {
    if (!cycle_.display().visible) {
        hide();
        return;
    }
    const QFontMetrics title(scaled(font(), 2.0, QFont::DemiBold));
    const QFontMetrics row(scaled(font(), 1.1, QFont::Medium));
    int width = title.horizontalAdvance(pendingText());
    for (const auto& text : rowTexts()) {
        width = std::max(width, row.horizontalAdvance(text) + 28);
    }
    width = std::clamp(width + 2 * kPadding, kMinimumWidth, kMaximumWidth);
    const int height = kPadding + 18 + title.height() + 14 +
                       static_cast<int>(rowTexts().size()) * kRowHeight + kPadding;
    resize(width, height);
    const QRect area = displayFinder_();
    move(area.center() - rect().center());
    update();
    show();
}

void CycleHudWindow::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    QColor background = colors_.windowBackground();
    background.setAlphaF(std::max(background.alphaF(), 0.92F));
    paintPanel(painter, rect(), 16, background, colors_.borderPanel);

    const int inner = width() - 2 * kPadding;
    int y = kPadding;
    // The kind, small, behind a dot of its colour.
    const QFont kindFont = scaled(font(), 0.85, QFont::DemiBold);
    painter.setFont(kindFont);
    painter.setPen(Qt::NoPen);
    painter.setBrush(kindColor());
    painter.drawEllipse(QRectF(kPadding, y + 5, 8, 8));
    // The caption itself in the secondary text colour: the kind colours are chosen to mark, not
    // to be read, and some are pale on light backgrounds.
    painter.setPen(colors_.textSecondary);
    painter.drawText(QRect(kPadding + 14, y, inner - 14, 18), Qt::AlignVCenter | Qt::AlignLeft,
                     kindText().toUpper());
    y += 18;

    const QFont titleFont = scaled(font(), 2.0, QFont::DemiBold);
    painter.setFont(titleFont);
    painter.setPen(colors_.textPrimary);
    const QFontMetrics titleMetrics(titleFont);
    painter.drawText(QRect(kPadding, y, inner, titleMetrics.height()),
                     Qt::AlignVCenter | Qt::AlignLeft,
                     titleMetrics.elidedText(pendingText(), Qt::ElideRight, inner));
    y += titleMetrics.height() + 8;
    painter.setPen(QPen(colors_.borderCard, 1));
    painter.drawLine(QPointF(kPadding, y + 2.5), QPointF(width() - kPadding, y + 2.5));
    y += 6;

    const QFont rowFont = scaled(font(), 1.1, QFont::Medium);
    const QFontMetrics rowMetrics(rowFont);
    const QStringList rows = rowTexts();
    for (int i = 0; i < rows.size(); ++i) {
        const QRect line(kPadding - 8, y, inner + 16, kRowHeight - 2);
        const bool pending = i == pendingRow();
        if (pending) {
            QColor marker = kindColor();
            marker.setAlphaF(0.22F);
            painter.setPen(Qt::NoPen);
            painter.setBrush(marker);
            painter.drawRoundedRect(line, 7, 7);
            painter.setBrush(kindColor());
            painter.drawRoundedRect(QRectF(line.left() + 6, line.top() + 7, 3, line.height() - 14),
                                    1.5, 1.5);
        }
        painter.setFont(pending ? scaled(font(), 1.1, QFont::Bold) : rowFont);
        painter.setPen(pending ? colors_.textPrimary : colors_.textSecondary);
        painter.drawText(line.adjusted(18, 0, -8, 0), Qt::AlignVCenter | Qt::AlignLeft,
                         rowMetrics.elidedText(rows[i], Qt::ElideRight, line.width() - 26));
        y += kRowHeight;
    }
}

}  // namespace corvetta
