#include "ui/status_item.h"

#include <QIcon>

#include "app/app_notifications.h"

namespace corvetta {

StatusItem::StatusItem(AppDelegate& delegate)
    : delegate_(delegate),
      logger_(delegate.services().plumbing.logging, "StatusItem", LogCategory::startup()) {
    tray_.setIcon(QIcon(":/icons/corvetta-symbolic.svg"));
    tray_.setToolTip("Corvetta");
    tray_.setContextMenu(&menu_);
    connect(&menu_, &QMenu::aboutToShow, this, [this] { delegate_.menuWillOpen(); });
    connect(&menu_, &QMenu::aboutToHide, this, [this] {
        // After the action the user chose has run: Qt hides the menu before it triggers it.
        QMetaObject::invokeMethod(
            this, [this] { delegate_.menuDidClose(); }, Qt::QueuedConnection);
    });
    // A left click opens the menu too, as a status-bar item's does.
    connect(&tray_, &QSystemTrayIcon::activated, this,
            [this](QSystemTrayIcon::ActivationReason reason) {
                if (reason == QSystemTrayIcon::Trigger) {
                    menu_.popup(QCursor::pos());
                }
            });
    menuChanged_ = delegate.services().plumbing.notifications.addObserver(
        AppNotifications::kStatusMenuDidChange, [this](const Notification&) {
            // Never from inside one of the menu's own actions, whose QAction a redraw deletes.
            QMetaObject::invokeMethod(
                this, [this] { redraw(); }, Qt::QueuedConnection);
        });
    redraw();
    if (!QSystemTrayIcon::isSystemTrayAvailable()) {
        logger_.warning(
            "No system tray on this desktop: the status item waits for one; shortcuts, the "
            "command palette and the socket work without it");
    }
    tray_.show();
    logger_.info("Status item shown");
}

StatusItem::~StatusItem() = default;

void StatusItem::redraw() {
    menu_.clear();
    fill(menu_, delegate_.statusMenu().items());
}

void StatusItem::fill(QMenu& into, const std::vector<MenuItem>& items) {
    for (const auto& item : items) {
        if (item.isSeparator) {
            into.addSeparator();
            continue;
        }
        if (!item.submenu.empty()) {
            QMenu* sub = into.addMenu(QString::fromStdString(item.title));
            fill(*sub, item.submenu);
            continue;
        }
        QString text = QString::fromStdString(item.title);
        if (!item.shortcutLabel.empty()) {
            // Our labels are the macOS symbols (⌃⌥←); a tab puts them in the shortcut column
            // without registering anything with Qt, whose shortcuts would be local to the menu.
            text += '\t' + QString::fromStdString(item.shortcutLabel);
        }
        QAction* action = into.addAction(text);
        action->setEnabled(item.isEnabled && !item.command.empty());
        if (item.isChecked) {
            action->setCheckable(true);
            action->setChecked(true);
        }
        if (item.isShortcutInUse) {
            action->setToolTip("Another program holds this combination");
        }
        connect(action, &QAction::triggered, this,
                [this, command = item.command, argument = item.argument] {
                    delegate_.perform(command, argument);
                });
    }
}

}  // namespace corvetta
