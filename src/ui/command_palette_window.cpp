#include "ui/command_palette_window.h"

#include <QCursor>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPainter>
#include <QScreen>
#include <QVBoxLayout>

#include "ui/palette_item_actions_view.h"
#include "ui/palette_list_view.h"
#include "ui/panel_painter.h"

namespace corvetta {

namespace {
constexpr double kCornerRadius = 12;
}

CommandPaletteWindow::CommandPaletteWindow(CommandPaletteController& controller,
                                           NotificationCenter& notifications,
                                           const ViewColors& colors, QWidget* parent)
    : QWidget(parent, Qt::FramelessWindowHint | Qt::Tool | Qt::WindowStaysOnTopHint),
      controller_(controller),
      model_(controller.model()),
      notifications_(notifications),
      colors_(colors),
      search_(new QLineEdit(this)),
      list_(new PaletteListView(model_, this)),
      panel_(new PaletteItemActionsView(model_, list_)),
      hints_(new QLabel(this)) {
    setObjectName("commandPalette");
    // What the window manager, screen readers and our end-to-end tests know it by.
    setWindowTitle("Command Palette");
    setAttribute(Qt::WA_TranslucentBackground);
    setFixedSize(kWidth, kHeight);
    search_->setObjectName("paletteSearch");
    search_->setPlaceholderText(QString::fromUtf8(CommandPaletteModel::kPlaceholder));
    search_->setFrame(false);
    QFont searchFont = search_->font();
    searchFont.setPointSizeF(searchFont.pointSizeF() * 1.3);
    search_->setFont(searchFont);
    search_->installEventFilter(this);
    hints_->setObjectName("paletteHints");
    hints_->setTextFormat(Qt::RichText);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(14, 14, 14, 10);
    layout->setSpacing(8);
    layout->addWidget(search_);
    layout->addWidget(list_, 1);
    layout->addWidget(hints_);

    connect(search_, &QLineEdit::textEdited, this,
            [this](const QString& text) { model_.setSearchText(text.toStdString()); });
    changes_ = notifications_.addObserver(CommandPaletteModel::kDidChange,
                                          [this](const Notification&) { refresh(); });
    setColors(colors);
    attachment_ = controller_.attach(*this);
}

CommandPaletteWindow::~CommandPaletteWindow() = default;

void CommandPaletteWindow::setColors(const ViewColors& colors) {
    colors_ = colors;
    QPalette palette = search_->palette();
    palette.setColor(QPalette::Text, colors.textPrimary);
    palette.setColor(QPalette::PlaceholderText, colors.textSecondary);
    palette.setColor(QPalette::Base, Qt::transparent);
    palette.setColor(QPalette::Highlight, colors.accent);
    search_->setPalette(palette);
    list_->setColors(colors);
    panel_->setColors(colors);
    refresh();
    update();
}

void CommandPaletteWindow::presentOn(const QRect& area) {
    move(area.x() + (area.width() - width()) / 2, area.y() + area.height() / 5);
    refresh();
    show();
    raise();
    activateWindow();
    search_->setFocus(Qt::ActiveWindowFocusReason);
}

void CommandPaletteWindow::dismiss() {
    controller_.dismiss();
}

bool CommandPaletteWindow::isPaletteVisible() const {
    return isVisible();
}

void CommandPaletteWindow::presentPalette() {
    auto* screen = QGuiApplication::screenAt(QCursor::pos());
    if (!screen) {
        screen = QGuiApplication::primaryScreen();
    }
    presentOn(screen ? screen->availableGeometry() : QRect(0, 0, kWidth, kHeight));
}

void CommandPaletteWindow::hidePalette() {
    hide();
}

void CommandPaletteWindow::refresh() {
    const auto text = QString::fromStdString(model_.searchText());
    if (search_->text() != text) {
        search_->setText(text);
    }
    list_->refresh();
    panel_->refresh();
    QString hints;
    const auto key = colors_.textPrimary.name();
    const auto label = colors_.textSecondary.name();
    for (const auto& hint : model_.hints()) {
        hints += QString(
                     "<span style='color:%1; font-weight:bold'>%2</span>"
                     "<span style='color:%3'>&nbsp;%4</span>&nbsp;&nbsp;&nbsp;&nbsp;")
                     .arg(key, QString::fromStdString(hint.key).toHtmlEscaped(), label,
                          QString::fromStdString(hint.label).toHtmlEscaped());
    }
    hints_->setText(hints);
    // With the panel open the keys belong to it: typing must not change the search.
    if (isVisible()) {
        if (model_.searchFocused()) {
            search_->setFocus();
        } else {
            setFocus();
        }
    }
}

const char* CommandPaletteWindow::keyNotification(const QKeyEvent& key) {
    const bool control = key.modifiers().testFlag(Qt::ControlModifier);
    switch (key.key()) {
        case Qt::Key_Down:
            return CommandPaletteModel::kNavigateDown;
        case Qt::Key_Up:
            return CommandPaletteModel::kNavigateUp;
        case Qt::Key_Return:
        case Qt::Key_Enter:
            return CommandPaletteModel::kConfirm;
        case Qt::Key_Escape:
            return CommandPaletteModel::kEscape;
        case Qt::Key_K:
            return control ? CommandPaletteModel::kOpenItemActions : nullptr;
        default:
            return nullptr;
    }
}

bool CommandPaletteWindow::eventFilter(QObject* watched, QEvent* event) {
    if (watched == search_ && event->type() == QEvent::KeyPress) {
        if (const char* name = keyNotification(*static_cast<QKeyEvent*>(event))) {
            notifications_.post(name);
            return true;
        }
    }
    return QWidget::eventFilter(watched, event);
}

void CommandPaletteWindow::keyPressEvent(QKeyEvent* event) {
    if (const char* name = keyNotification(*event)) {
        notifications_.post(name);
        return;
    }
    QWidget::keyPressEvent(event);
}

bool CommandPaletteWindow::event(QEvent* event) {
    // Clicking elsewhere closes the palette, as a menu closes.
    if (event->type() == QEvent::WindowDeactivate && isVisible()) {
        controller_.dismiss();
    }
    return QWidget::event(event);
}

void CommandPaletteWindow::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    // Without a compositor the translucent corners show black; the opaque card colour keeps the
    // window readable either way.
    paintPanel(painter, rect(), kCornerRadius, colors_.windowBackground(), colors_.borderPanel);
    // A line under the search field.
    const int y = search_->geometry().bottom() + 4;
    painter.setPen(colors_.borderCard);
    painter.drawLine(14, y, width() - 14, y);
}

}  // namespace corvetta
