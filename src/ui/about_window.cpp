#include "ui/about_window.h"

#include <QDialogButtonBox>
#include <QIcon>
#include <QLabel>
#include <QVBoxLayout>

namespace corvetta {

AboutWindow::AboutWindow(const QString& version) {
    setWindowTitle("About Corvetta");
    setWindowIcon(QIcon(":/icons/corvetta.svg"));
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(28, 24, 28, 18);
    layout->setSpacing(8);

    auto* icon = new QLabel;
    icon->setPixmap(QIcon(":/icons/corvetta.svg").pixmap(96, 96));
    icon->setAlignment(Qt::AlignHCenter);
    layout->addWidget(icon);

    auto* name = new QLabel("<b style='font-size:18pt'>Corvetta</b>");
    name->setAlignment(Qt::AlignHCenter);
    layout->addWidget(name);

    auto* details = new QLabel(version.toHtmlEscaped() +
                               "<br>Moves and arranges windows from shortcuts, a command palette "
                               "and a local socket.");
    details->setAlignment(Qt::AlignHCenter);
    details->setWordWrap(true);
    layout->addWidget(details);

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::hide);
    layout->addWidget(buttons);
    setFixedWidth(360);
}

}  // namespace corvetta
