// status_item.h: The tray icon and its menu, drawn from the delegate's status menu.
#pragma once

#include <QMenu>
#include <QObject>
#include <QSystemTrayIcon>
#include <memory>

#include "app/app_delegate.h"

namespace corvetta {

// Shows the status item in the system tray (StatusNotifierItem or the X11 tray, whichever the
// desktop offers) and draws the delegate's menu into it. The menu is redrawn when the delegate
// rebuilds it; the delegate holds rebuilds back while the menu is open, so nothing changes under
// the user's pointer.
class StatusItem final : public QObject {
    Q_OBJECT
public:
    explicit StatusItem(AppDelegate& delegate);
    ~StatusItem() override;

    QMenu& menu() { return menu_; }
    // Redraws the menu from the delegate's current one.
    void redraw();

private:
    void fill(QMenu& into, const std::vector<MenuItem>& items);

    AppDelegate& delegate_;
    Logger logger_;
    QMenu menu_;
    QSystemTrayIcon tray_;
    ObserverToken menuChanged_;
};

}  // namespace corvetta
