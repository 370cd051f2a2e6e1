#include "ui/drift_pill_window.h"

#include <QAbstractButton>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QPainter>
#include <QPainterPath>
#include <QPropertyAnimation>
#include <QScreen>
#include <algorithm>
#include <cmath>
#include <numbers>

#include "ui/panel_painter.h"

namespace corvetta {

namespace {

// Both drawn in a 16-point square with a pen of the text colour.
void drawCounterClockwiseArrow(QPainter& painter, const QRectF& box) {
    const QPointF centre = box.center();
    const double radius = box.width() * 0.34;
    // The arc runs counter-clockwise from the lower right and ends in a head at the upper left.
    constexpr double kEnd = 150.0;
    constexpr double kSpan = 290.0;
    const QRectF circle(centre.x() - radius, centre.y() - radius, 2 * radius, 2 * radius);
    painter.drawArc(circle, static_cast<int>((kEnd - kSpan) * 16), static_cast<int>(kSpan * 16));
    const double angle = kEnd * std::numbers::pi / 180.0;
    const QPointF tip(centre.x() + radius * std::cos(angle), centre.y() - radius * std::sin(angle));
    // The way a counter-clockwise point moves on screen, and across it.
    const QPointF along(-std::sin(angle), -std::cos(angle));
    const QPointF across(along.y(), -along.x());
    const double size = box.width() * 0.2;
    QPainterPath head;
    head.moveTo(tip + along * size);
    head.lineTo(tip + across * size * 0.9);
    head.lineTo(tip - across * size * 0.9);
    head.closeSubpath();
    painter.fillPath(head, painter.pen().color());
}

void drawOpenLock(QPainter& painter, const QRectF& box) {
    const double w = box.width();
    const double h = box.height();
    const QRectF body(box.left() + 0.2 * w, box.top() + 0.46 * h, 0.6 * w, 0.42 * h);
    painter.drawRoundedRect(body, 0.08 * w, 0.08 * w);
    // The shackle stands on the body's left and swings free on its right.
    QPainterPath shackle;
    const double left = box.left() + 0.32 * w;
    const double right = box.left() + 0.68 * w;
    const double top = box.top() + 0.1 * h;
    shackle.moveTo(left, body.top());
    shackle.lineTo(left, top + (right - left) / 2);
    shackle.arcTo(QRectF(left, top, right - left, right - left), 180, -180);
    shackle.lineTo(right, top + (right - left) / 2 + 0.06 * h);
    painter.drawPath(shackle);
}

// A button with a tinted background, its icon and its title, drawn by hand so it looks the same
// with any widget style.
class PillButton final : public QAbstractButton {
public:
    PillButton(const DriftPillButton& button, QWidget* parent)
        : QAbstractButton(parent), command_(button.command) {
        setText(
            QString::fromUtf8(button.title.data(), static_cast<qsizetype>(button.title.size())));
        setToolTip(QString::fromUtf8(button.helpText.data(),
                                     static_cast<qsizetype>(button.helpText.size())));
        setFocusPolicy(Qt::NoFocus);
        setCursor(Qt::PointingHandCursor);
        setAttribute(Qt::WA_Hover);
    }

    void setColors(const QColor& tint, const QColor& text) {
        tint_ = tint;
        text_ = text;
        update();
    }
    QSize sizeHint() const override {
        return {fontMetrics().horizontalAdvance(text()) + kIcon + 30, 30};
    }

protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        QColor fill = tint_;
        const double boost = isDown() ? 0.16 : (underMouse() ? 0.08 : 0.0);
        fill.setAlphaF(static_cast<float>(kDriftPillButtonTintOpacity + boost));
        painter.setPen(Qt::NoPen);
        painter.setBrush(fill);
        painter.drawRoundedRect(QRectF(rect()), height() / 2.0, height() / 2.0);

        QPen pen(text_, 1.6, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin);
        painter.setPen(pen);
        painter.setBrush(Qt::NoBrush);
        const QRectF icon(12, (height() - kIcon) / 2.0, kIcon, kIcon);
        if (command_ == DriftPillCommand::reset) {
            drawCounterClockwiseArrow(painter, icon);
        } else {
            drawOpenLock(painter, icon);
        }
        painter.drawText(QRectF(icon.right() + 6, 0, width() - icon.right() - 6, height()),
                         Qt::AlignVCenter | Qt::AlignLeft, text());
    }

private:
    static constexpr int kIcon = 16;
    DriftPillCommand command_;
    QColor tint_;
    QColor text_;
};

}  // namespace

DriftPillWindow::DriftPillWindow(LayoutLockManager& lock, NotificationCenter& notifications,
                                 const ViewColors& colors, DisplayFinder displayFinder)
    // Left alone by the window manager, as an overlay should be: managed, a window that takes no
    // focus had its clicks swallowed by the manager's click-to-focus grab (seen under openbox).
    : QWidget(nullptr, Qt::FramelessWindowHint | Qt::Tool | Qt::WindowStaysOnTopHint |
                           Qt::WindowDoesNotAcceptFocus | Qt::BypassWindowManagerHint),
      lock_(lock),
      colors_(colors),
      displayFinder_(std::move(displayFinder)),
      fadeIn_(new QPropertyAnimation(this, "windowOpacity", this)) {
    setAttribute(Qt::WA_TranslucentBackground);
    setAttribute(Qt::WA_ShowWithoutActivating);
    setWindowTitle("Layout Lock");
    setWindowOpacity(0.0);
    fadeIn_->setDuration(kFadeInMs);
    fadeIn_->setEndValue(1.0);
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(6, 6, 6, 6);
    layout->setSpacing(6);
    for (const auto& button : driftPillButtons()) {
        auto* pillButton = new PillButton(button, this);
        const auto command = button.command;
        connect(pillButton, &QAbstractButton::clicked, this,
                [this, command] { lock_.perform(command); });
        layout->addWidget(pillButton);
    }
    if (!displayFinder_) {
        displayFinder_ = [](const Rect& frame) {
            const QPoint centre(static_cast<int>(frame.midX()), static_cast<int>(frame.midY()));
            const QScreen* screen = frame.isNull() ? nullptr : QGuiApplication::screenAt(centre);
            screen = screen ? screen : QGuiApplication::primaryScreen();
            return screen ? screen->availableGeometry() : QRect();
        };
    }
    setColors(colors);
    pillObserver_ = notifications.addObserver(LayoutLockManager::kPillDidChange,
                                              [this](const Notification&) { sync(); });
    sync();
}

void DriftPillWindow::setColors(const ViewColors& colors) {
    colors_ = colors;
    const auto buttons = findChildren<PillButton*>();
    for (std::size_t i = 0; i < static_cast<std::size_t>(buttons.size()); ++i) {
        // Reset in the accent, Untile in a colour of its own so the two never read as one.
        buttons[static_cast<qsizetype>(i)]->setColors(
            i == 0 ? colors.accent : colors.appActionColor, colors.textPrimary);
    }
    update();
}

void DriftPillWindow::sync() {
    const DriftPill& pill = lock_.pill();
    if (!pill.visible) {
        fadeIn_->stop();
        hide();
        setWindowOpacity(0.0);
        return;
    }
    placeOn(displayFinder_(pill.groupFrame));
    if (!isVisible()) {
        show();
        fadeIn_->setStartValue(windowOpacity());
        fadeIn_->start();
    }
}

void DriftPillWindow::placeOn(const QRect& area) {
    adjustSize();
    move(area.center().x() - width() / 2, area.bottom() + 1 - kBottomMargin - height());
}

void DriftPillWindow::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    // Nearly opaque whatever the theme's translucency: without a compositor whatever shows
    // through is black, and the buttons must stay readable over busy windows.
    QColor background = colors_.windowBackground();
    background.setAlphaF(std::max(background.alphaF(), 0.92F));
    paintPanel(painter, rect(), (height() - 1) / 2.0, background, colors_.borderPanel);
}

}  // namespace corvetta
