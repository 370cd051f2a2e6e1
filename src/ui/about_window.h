// about_window.h: The About window: the icon, the name, the version and where the docs are.
#pragma once

#include <QDialog>
#include <QString>

namespace corvetta {

class AboutWindow final : public QDialog {
    Q_OBJECT
public:
    explicit AboutWindow(const QString& version);
};

}  // namespace corvetta
