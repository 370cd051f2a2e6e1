// toast_views.h: The toast's window and what it draws: a style's icon and the message.
#pragma once

#include <QTimer>
#include <QWidget>

#include "appearance/toast.h"
#include "ui/view_colors.h"

namespace corvetta {

// The icon of the toast's style and its message on one line. A loading toast's icon turns while
// it is shown; nothing else animates, so a toast at rest costs nothing.
class ToastContentView final : public QWidget {
    Q_OBJECT
public:
    explicit ToastContentView(const ViewColors& colors, QWidget* parent = nullptr);

    void setToast(const ToastData& toast);
    void setColors(const ViewColors& colors);
    const QString& message() const { return message_; }
    ToastStyle style() const { return style_; }
    bool isSpinning() const { return spinner_.isActive(); }
    // The icon's colour for a style, from the theme.
    QColor iconColor(ToastStyle style) const;

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    void paintIcon(QPainter& painter, const QRectF& box) const;
    void updateSpinner();

    ViewColors colors_;
    QString message_;
    ToastStyle style_ = ToastStyle::info;
    int spinnerAngle_ = 0;
    QTimer spinner_;
};

// The borderless, non-activating window around the content: a rounded card in the theme's
// window colour, translucent where the theme asks for vibrancy.
class ToastContainerView final : public QWidget {
    Q_OBJECT
public:
    explicit ToastContainerView(const ViewColors& colors);

    ToastContentView& content() { return *content_; }
    void setColors(const ViewColors& colors);
    // Takes the size the content asks for, after its toast changed.
    void fitContent();
    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    ViewColors colors_;
    ToastContentView* content_;
};

}  // namespace corvetta
