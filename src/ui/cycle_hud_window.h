// cycle_hud_window.h: The heads-up display shown while a cycle shortcut is held.
#pragma once

#include <QRect>
#include <QWidget>
#include <functional>

#include "foundation/notification_center.h"
#include "ui/view_colors.h"
#include "workspaces/hold_to_cycle.h"

namespace corvetta {

// Follows the hold-to-cycle state: while a cycle runs it shows what kind of item is cycled, the
// pending one's name large, and the candidates in cycle order with the pending one marked; it
// hides when the cycle commits or is cancelled. Centred on the display the user is looking at (the
// one under the pointer by default). A non-activating panel: the keys stay with the shortcut.
class CycleHudWindow final : public QWidget {
    Q_OBJECT
public:
    using DisplayFinder = std::function<QRect()>;
    // Candidates listed at most; longer lists show the ones around the pending one.
    static constexpr int kMaxRows = 7;

    CycleHudWindow(const HoldToCycle& cycle, NotificationCenter& notifications,
                   const ViewColors& colors = ViewColors::fallback(),
                   DisplayFinder displayFinder = {});

    void setColors(const ViewColors& colors);
    void sync();

    // What is drawn, in order: the kind, the pending name, then the listed candidates.
    QString kindText() const;
    QString pendingText() const;
    QStringList rowTexts() const;
    // Index in rowTexts() of the pending candidate; -1 when none.
    int pendingRow() const;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    // First candidate listed.
    std::size_t firstRow() const;
    QColor kindColor() const;

    const HoldToCycle& cycle_;
    ViewColors colors_;
    DisplayFinder displayFinder_;
    ObserverToken observer_;
};

}  // namespace corvetta
