// toast_window_controller.h: Shows the toast manager's toast at the top of a display, sliding.
#pragma once

#include <QObject>
#include <QParallelAnimationGroup>
#include <QPointer>
#include <QPropertyAnimation>
#include <QRect>
#include <memory>

#include "appearance/toast_manager.h"
#include "foundation/registration.h"
#include "ui/toast_views.h"

namespace corvetta {

// Follows the toast manager: while a toast is presented its window stands centred at the top of
// the display last given to `presentOn`, sliding down from a hidden offset (and fading in) when it
// appears and back up when it is dismissed, over 0.3 s. A new toast while one shows replaces the
// text in place. The window never takes focus.
class ToastWindowController final : public QObject {
    Q_OBJECT
public:
    static constexpr int kSlideDurationMs = 300;
    // Below the display's top edge at rest; the hidden offset is this much higher still.
    static constexpr int kTopMargin = 14;
    static constexpr int kSlideDistance = 28;

    ToastWindowController(ToastManager& toasts, const ViewColors& colors,
                          int slideDurationMs = kSlideDurationMs);
    ~ToastWindowController() override;

    // Where toasts appear from now on: the available area of a display (below any panel).
    void presentOn(const QRect& screenAvailableGeometry);
    void setColors(const ViewColors& colors);
    // Takes the toast away now, as its timer would.
    void dismiss() { toasts_.dismiss(); }

    ToastContainerView& window() { return *window_; }
    QPoint restingPosition() const;
    QPoint hiddenPosition() const;

private:
    void follow();
    void slide(bool in);

    ToastManager& toasts_;
    std::unique_ptr<ToastContainerView> window_;
    QRect screen_;
    bool presented_ = false;
    QParallelAnimationGroup slideGroup_;
    QPropertyAnimation* position_;
    QPropertyAnimation* opacity_;
    Registration observation_;
};

}  // namespace corvetta
