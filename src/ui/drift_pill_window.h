// drift_pill_window.h: The floating pill that offers Reset and Untile while a layout has drifted.
#pragma once

#include <QRect>
#include <QWidget>
#include <functional>

#include "foundation/notification_center.h"
#include "layouts/lock/layout_lock_manager.h"
#include "ui/view_colors.h"

class QPropertyAnimation;

namespace corvetta {

// Follows the layout lock's pill: appears (created transparent, then faded in) while the tiled
// windows have drifted and one of them is visible, disappears otherwise. Its buttons hand their
// command to the lock. A non-activating panel: clicking it leaves the keyboard where it was. It
// sits at the bottom centre of the display the tiled windows are on, clear of the windows' own
// title bars and of the panels desktops put at the top.
class DriftPillWindow final : public QWidget {
    Q_OBJECT
public:
    // The available geometry of the display the tiled windows stand on (their frame in
    // accessibility space). The default takes the display holding the frame's centre, reading
    // accessibility space as Qt's (true when the primary display is the desktop's top-left one),
    // else the primary display.
    using DisplayFinder = std::function<QRect(const Rect& groupFrame)>;

    static constexpr int kBottomMargin = 28;
    static constexpr int kFadeInMs = 180;

    DriftPillWindow(LayoutLockManager& lock, NotificationCenter& notifications,
                    const ViewColors& colors = ViewColors::fallback(),
                    DisplayFinder displayFinder = {});

    void setColors(const ViewColors& colors);
    // Shows or hides the pill as the lock says now; called on each of its changes.
    void sync();

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void placeOn(const QRect& area);

    LayoutLockManager& lock_;
    ViewColors colors_;
    DisplayFinder displayFinder_;
    ObserverToken pillObserver_;
    QPropertyAnimation* fadeIn_;
};

}  // namespace corvetta
