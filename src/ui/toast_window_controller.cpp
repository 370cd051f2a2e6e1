#include "ui/toast_window_controller.h"

#include <QGuiApplication>
#include <QScreen>

namespace corvetta {

ToastWindowController::ToastWindowController(ToastManager& toasts, const ViewColors& colors,
                                             int slideDurationMs)
    : toasts_(toasts),
      window_(std::make_unique<ToastContainerView>(colors)),
      position_(new QPropertyAnimation(window_.get(), "pos")),
      opacity_(new QPropertyAnimation(window_.get(), "windowOpacity")) {
    if (const auto* primary = QGuiApplication::primaryScreen()) {
        screen_ = primary->availableGeometry();
    }
    for (auto* animation : {position_, opacity_}) {
        animation->setDuration(slideDurationMs);
        animation->setEasingCurve(QEasingCurve::OutCubic);
        slideGroup_.addAnimation(animation);
    }
    connect(&slideGroup_, &QAbstractAnimation::finished, this, [this] {
        if (!presented_) {
            window_->hide();
        }
    });
    observation_ = toasts_.observe([this] { follow(); });
    follow();
}

ToastWindowController::~ToastWindowController() {
    observation_.reset();
    slideGroup_.stop();
    slideGroup_.clear();
}

void ToastWindowController::presentOn(const QRect& screenAvailableGeometry) {
    screen_ = screenAvailableGeometry;
    if (presented_ && slideGroup_.state() != QAbstractAnimation::Running) {
        window_->move(restingPosition());
    }
}

void ToastWindowController::setColors(const ViewColors& colors) {
    window_->setColors(colors);
}

QPoint ToastWindowController::restingPosition() const {
    const QSize size = window_->sizeHint();
    return {screen_.x() + (screen_.width() - size.width()) / 2, screen_.y() + kTopMargin};
}

QPoint ToastWindowController::hiddenPosition() const {
    return restingPosition() - QPoint(0, kSlideDistance);
}

void ToastWindowController::follow() {
    const bool presented = toasts_.isPresented() && toasts_.current().has_value();
    if (presented) {
        window_->content().setToast(*toasts_.current());
        window_->fitContent();
    }
    if (presented == presented_) {
        if (presented && slideGroup_.state() != QAbstractAnimation::Running) {
            // A new text changes the width; stay centred.
            window_->move(restingPosition());
        }
        return;
    }
    presented_ = presented;
    slide(presented);
}

void ToastWindowController::slide(bool in) {
    slideGroup_.stop();
    if (in && !window_->isVisible()) {
        window_->move(hiddenPosition());
        window_->setWindowOpacity(0.0);
        window_->show();
        window_->raise();
    }
    position_->setStartValue(window_->pos());
    position_->setEndValue(in ? restingPosition() : hiddenPosition());
    opacity_->setStartValue(window_->windowOpacity());
    opacity_->setEndValue(in ? 1.0 : 0.0);
    slideGroup_.start();
}

}  // namespace corvetta
