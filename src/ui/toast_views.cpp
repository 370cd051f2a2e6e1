#include "ui/toast_views.h"

#include <QFontMetrics>
#include <QPainter>
#include <cmath>

#include "ui/panel_painter.h"

namespace corvetta {

namespace {

constexpr int kIconSize = 18;
constexpr int kPaddingX = 16;
constexpr int kPaddingY = 11;
constexpr int kIconGap = 10;
constexpr int kMaxTextWidth = 460;
constexpr int kCornerRadius = 12;
constexpr int kSpinnerStepDegrees = 30;
constexpr int kSpinnerIntervalMs = 80;
// A red every theme's backgrounds leave readable; themes have no role for failure.
const QColor kErrorColor(0xFF, 0x45, 0x3A);

}  // namespace

ToastContentView::ToastContentView(const ViewColors& colors, QWidget* parent)
    : QWidget(parent), colors_(colors) {
    QFont font = this->font();
    font.setPixelSize(13);
    font.setWeight(QFont::Medium);
    setFont(font);
    spinner_.setInterval(kSpinnerIntervalMs);
    connect(&spinner_, &QTimer::timeout, this, [this] {
        spinnerAngle_ = (spinnerAngle_ + kSpinnerStepDegrees) % 360;
        update();
    });
}

void ToastContentView::setToast(const ToastData& toast) {
    message_ = QString::fromStdString(toast.message);
    style_ = toast.style;
    updateSpinner();
    updateGeometry();
    update();
}

void ToastContentView::setColors(const ViewColors& colors) {
    colors_ = colors;
    update();
}

QColor ToastContentView::iconColor(ToastStyle style) const {
    switch (style) {
        case ToastStyle::success:
            return colors_.spaceColor;
        case ToastStyle::error:
            return kErrorColor;
        case ToastStyle::info:
        case ToastStyle::loading:
            break;
    }
    return colors_.accent;
}

QSize ToastContentView::sizeHint() const {
    const QFontMetricsF metrics(font());
    // Rounded up with a pixel to spare: hinting may draw a line slightly wider than measured.
    const int textWidth = std::min(
        static_cast<int>(std::ceil(metrics.boundingRect(message_).width())) + 2, kMaxTextWidth);
    return {kPaddingX * 2 + kIconSize + kIconGap + textWidth,
            kPaddingY * 2 + std::max(kIconSize, static_cast<int>(std::ceil(metrics.height())))};
}

void ToastContentView::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    updateSpinner();
}

void ToastContentView::hideEvent(QHideEvent* event) {
    QWidget::hideEvent(event);
    updateSpinner();
}

void ToastContentView::updateSpinner() {
    if (style_ == ToastStyle::loading && isVisible()) {
        spinner_.start();
    } else {
        spinner_.stop();
    }
}

void ToastContentView::paintIcon(QPainter& painter, const QRectF& box) const {
    const QColor color = iconColor(style_);
    if (style_ == ToastStyle::loading) {
        QPen track(colors_.borderPanel, 2.2);
        painter.setPen(track);
        painter.drawEllipse(box.adjusted(1.5, 1.5, -1.5, -1.5));
        QPen arc(color, 2.2);
        arc.setCapStyle(Qt::RoundCap);
        painter.setPen(arc);
        painter.drawArc(box.adjusted(1.5, 1.5, -1.5, -1.5), -spinnerAngle_ * 16, 100 * 16);
        return;
    }
    painter.setPen(Qt::NoPen);
    painter.setBrush(color);
    painter.drawEllipse(box);
    QPen mark(colors_.backgroundCard.alpha() < 255 ? QColor(Qt::white) : colors_.backgroundCard,
              1.8);
    mark.setCapStyle(Qt::RoundCap);
    mark.setJoinStyle(Qt::RoundJoin);
    painter.setPen(mark);
    painter.setBrush(Qt::NoBrush);
    const QPointF c = box.center();
    const double s = box.width() / 18.0;
    switch (style_) {
        case ToastStyle::success:
            painter.drawPolyline(QPolygonF{c + QPointF(-4.5 * s, 0.2 * s),
                                           c + QPointF(-1.4 * s, 3.2 * s),
                                           c + QPointF(4.6 * s, -3.4 * s)});
            break;
        case ToastStyle::error:
            painter.drawLine(c + QPointF(-3.4 * s, -3.4 * s), c + QPointF(3.4 * s, 3.4 * s));
            painter.drawLine(c + QPointF(3.4 * s, -3.4 * s), c + QPointF(-3.4 * s, 3.4 * s));
            break;
        default:
            painter.drawLine(c + QPointF(0, -0.6 * s), c + QPointF(0, 4.2 * s));
            painter.setBrush(painter.pen().color());
            painter.drawEllipse(c + QPointF(0, -3.6 * s), 0.6 * s, 0.6 * s);
            break;
    }
}

void ToastContentView::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF icon(kPaddingX, (height() - kIconSize) / 2.0, kIconSize, kIconSize);
    paintIcon(painter, icon);
    painter.setPen(colors_.textPrimary);
    const QRect text(kPaddingX + kIconSize + kIconGap, 0,
                     width() - kPaddingX * 2 - kIconSize - kIconGap, height());
    painter.drawText(text, Qt::AlignVCenter | Qt::AlignLeft,
                     QFontMetrics(font()).elidedText(message_, Qt::ElideRight, text.width()));
}

ToastContainerView::ToastContainerView(const ViewColors& colors)
    // An overlay the window manager leaves alone, as the pill is (docs/interface.md).
    : QWidget(nullptr, Qt::FramelessWindowHint | Qt::Tool | Qt::WindowStaysOnTopHint |
                           Qt::WindowDoesNotAcceptFocus | Qt::BypassWindowManagerHint),
      colors_(colors),
      content_(new ToastContentView(colors, this)) {
    setAttribute(Qt::WA_TranslucentBackground);
    setAttribute(Qt::WA_ShowWithoutActivating);
    setFocusPolicy(Qt::NoFocus);
    setWindowTitle(QStringLiteral("Corvetta notice"));
}

QSize ToastContainerView::sizeHint() const {
    return content_->sizeHint();
}

void ToastContainerView::fitContent() {
    resize(sizeHint());
    content_->setGeometry(rect());
}

void ToastContainerView::setColors(const ViewColors& colors) {
    colors_ = colors;
    content_->setColors(colors);
    update();
}

void ToastContainerView::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    paintPanel(painter, rect(), kCornerRadius, colors_.windowBackground(), colors_.borderPanel);
}

}  // namespace corvetta
