#include "ui/form_window.h"

#include <QGuiApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPalette>
#include <QPushButton>
#include <QVBoxLayout>

namespace corvetta {

void applyDialogColors(QWidget& widget, const ViewColors& colors) {
    QPalette palette = widget.palette();
    const auto both = [&](QPalette::ColorRole role, const QColor& color) {
        palette.setColor(QPalette::Active, role, color);
        palette.setColor(QPalette::Inactive, role, color);
    };
    both(QPalette::Window, colors.backgroundWindow);
    both(QPalette::WindowText, colors.textPrimary);
    both(QPalette::Base, colors.backgroundCard);
    both(QPalette::AlternateBase, colors.backgroundWindow);
    both(QPalette::Text, colors.textPrimary);
    both(QPalette::PlaceholderText, colors.textSecondary);
    both(QPalette::Button, colors.backgroundCard);
    both(QPalette::ButtonText, colors.textPrimary);
    both(QPalette::Highlight, colors.accent);
    both(QPalette::HighlightedText, QColor(Qt::white));
    both(QPalette::ToolTipBase, colors.backgroundCard);
    both(QPalette::ToolTipText, colors.textPrimary);
    palette.setColor(QPalette::Disabled, QPalette::ButtonText, colors.textSecondary);
    palette.setColor(QPalette::Disabled, QPalette::Text, colors.textSecondary);
    palette.setColor(QPalette::Disabled, QPalette::WindowText, colors.textSecondary);
    palette.setColor(QPalette::Disabled, QPalette::Button, colors.backgroundWindow);
    widget.setPalette(palette);
}

QColor warningColor(const ViewColors& colors) {
    // Readable on light and dark backgrounds alike.
    return colors.backgroundWindow.lightnessF() > 0.5 ? QColor(0xc4, 0x2b, 0x1c)
                                                      : QColor(0xff, 0x7b, 0x6b);
}

FormWindow::FormWindow(NameForm& form, NotificationCenter& notifications, const char* didChange,
                       const QString& title, const QString& namePlaceholder,
                       const ViewColors& colors)
    : form_(form),
      colors_(colors),
      nameField_(new QLineEdit),
      nameMessage_(new QLabel),
      body_(new QVBoxLayout),
      failure_(new QLabel),
      saveButton_(new QPushButton("Save")) {
    setWindowTitle(title);
    setWindowFlag(Qt::WindowStaysOnTopHint);
    auto* layout = new QVBoxLayout(this);
    // The window follows its contents: a message that wraps onto a second line makes room.
    layout->setSizeConstraint(QLayout::SetFixedSize);
    layout->setContentsMargins(20, 18, 20, 16);
    layout->setSpacing(6);

    auto* nameLabel = new QLabel("Name");
    nameLabel->setBuddy(nameField_);
    layout->addWidget(nameLabel);
    nameField_->setPlaceholderText(namePlaceholder);
    nameField_->setMinimumWidth(320);
    layout->addWidget(nameField_);
    nameMessage_->setWordWrap(true);
    // Room for the message from the start, so the window does not jump as the user types.
    nameMessage_->setMinimumHeight(nameMessage_->fontMetrics().height());
    layout->addWidget(nameMessage_);
    body_->setSpacing(8);
    layout->addSpacing(6);
    layout->addLayout(body_);

    failure_->setWordWrap(true);
    layout->addSpacing(4);
    layout->addWidget(failure_);
    auto* buttons = new QHBoxLayout;
    auto* cancel = new QPushButton("Cancel");
    cancel->setAutoDefault(false);
    saveButton_->setDefault(true);
    buttons->addStretch();
    buttons->addWidget(cancel);
    buttons->addWidget(saveButton_);
    layout->addLayout(buttons);

    connect(nameField_, &QLineEdit::textEdited, this,
            [this](const QString& text) { form_.setName(text.toStdString()); });
    connect(cancel, &QPushButton::clicked, this, &QDialog::reject);
    connect(saveButton_, &QPushButton::clicked, this, [this] {
        if (form_.save()) {
            accept();
        }
    });
    formObserver_ = notifications.addObserver(didChange, [this](const Notification&) { sync(); });
    setColors(colors);
}

void FormWindow::setColors(const ViewColors& colors) {
    colors_ = colors;
    applyDialogColors(*this, colors_);
    for (QLabel* message : {nameMessage_, failure_}) {
        QPalette palette = message->palette();
        palette.setColor(QPalette::WindowText, warningColor(colors_));
        message->setPalette(palette);
    }
    syncFields();
}

void FormWindow::presentOn(const QRect& area) {
    // Asked again while open (the shortcut pressed twice): what the user typed stays.
    if (isVisible()) {
        raise();
        activateWindow();
        return;
    }
    openForm();
    sync();
    ensurePolished();
    adjustSize();
    move(area.center() - rect().center());
    show();
    raise();
    activateWindow();
    nameField_->setFocus(Qt::OtherFocusReason);
}

void FormWindow::dismiss() {
    reject();
}

void FormWindow::done(int result) {
    const bool wasVisible = isVisible();
    form_.close();
    QDialog::done(result);
    if (wasVisible && closedHandler_) {
        closedHandler_();
    }
}

void FormWindow::sync() {
    const QString name = QString::fromStdString(form_.name());
    if (nameField_->text() != name) {
        nameField_->setText(name);
    }
    nameField_->setReadOnly(form_.phase() != NameForm::Phase::editing);
    nameMessage_->setText(QString::fromStdString(form_.nameMessage()));
    failure_->setText(QString::fromStdString(form_.failure()));
    failure_->setVisible(!form_.failure().empty());
    saveButton_->setText(form_.phase() == NameForm::Phase::notWritten ? "Try Again" : "Save");
    saveButton_->setEnabled(form_.canSave());
    syncFields();
}

}  // namespace corvetta
