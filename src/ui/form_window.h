// form_window.h: A small themed dialog over a name form: the name, its message, Save and Cancel.
#pragma once

#include <QDialog>
#include <QRect>
#include <functional>

#include "foundation/notification_center.h"
#include "ui/view_colors.h"
#include "workspaces/name_form.h"

class QLabel;
class QLineEdit;
class QPushButton;
class QVBoxLayout;

namespace corvetta {

// The part the save-workspace and add-space windows share. It draws the form and forwards what
// the user does to it: typing goes to the form's name and the form's message appears below it,
// Save (also Return) asks the form to save and closes once it is done, Cancel (also Escape)
// closes leaving the stores as they are. A real dialog: it takes the keyboard when presented and,
// once closed, calls the handler that gives it back to the window that had it.
class FormWindow : public QDialog {
    Q_OBJECT
public:
    // Empties the form and shows the window centred in `area` (a display's available geometry);
    // brings it to the front as it is when it is already open.
    void presentOn(const QRect& area);
    void dismiss();
    void setColors(const ViewColors& colors);
    void setClosedHandler(std::function<void()> handler) { closedHandler_ = std::move(handler); }

    QLineEdit* nameField() const { return nameField_; }
    QLabel* nameMessage() const { return nameMessage_; }
    QLabel* failureMessage() const { return failure_; }
    QPushButton* saveButton() const { return saveButton_; }

protected:
    FormWindow(NameForm& form, NotificationCenter& notifications, const char* didChange,
               const QString& title, const QString& namePlaceholder, const ViewColors& colors);

    // Between the name and the buttons: the subclass's own fields.
    QVBoxLayout* body() const { return body_; }
    const ViewColors& colors() const { return colors_; }
    // Redraws the subclass's fields from the form; called on every change of it.
    virtual void syncFields() {}
    // Resets the form for a new showing.
    virtual void openForm() = 0;
    void done(int result) override;

private:
    void sync();

    NameForm& form_;
    ViewColors colors_;
    ObserverToken formObserver_;
    QLineEdit* nameField_;
    QLabel* nameMessage_;
    QVBoxLayout* body_;
    QLabel* failure_;
    QPushButton* saveButton_;
    std::function<void()> closedHandler_;
};

// Gives a dialog the theme's colours through its palette, so Qt's own controls follow them.
void applyDialogColors(QWidget& widget, const ViewColors& colors);
// The colour of a message that says something is wrong; the themes name none, so it is ours.
QColor warningColor(const ViewColors& colors);

}  // namespace corvetta
