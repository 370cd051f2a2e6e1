#include "ui/add_space_window.h"

#include <QLabel>
#include <QVBoxLayout>

namespace corvetta {

AddSpaceWindow::AddSpaceWindow(AddSpaceForm& form, NotificationCenter& notifications,
                               const ViewColors& colors)
    : FormWindow(form, notifications, AddSpaceForm::kDidChange, "Add Space", "Space name", colors),
      form_(form),
      hint_(new QLabel(
          "Spaces let you organize workspaces into named contexts, each with its own shortcut.")) {
    hint_->setWordWrap(true);
    body()->addWidget(hint_);
    syncFields();
}

void AddSpaceWindow::syncFields() {
    QPalette palette = hint_->palette();
    palette.setColor(QPalette::WindowText, colors().textSecondary);
    hint_->setPalette(palette);
}

}  // namespace corvetta
