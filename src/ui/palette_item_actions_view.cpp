#include "ui/palette_item_actions_view.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <QPushButton>
#include <QVBoxLayout>

#include "palette/command_palette_model.h"
#include "ui/panel_painter.h"

namespace corvetta {

namespace {
// No theme role names danger; this red reads on light and dark backgrounds alike.
const QColor kDestructive(0xe5, 0x48, 0x4d);
}  // namespace

PaletteItemActionsView::PaletteItemActionsView(CommandPaletteModel& model, QWidget* parent)
    : QFrame(parent),
      model_(model),
      colors_(ViewColors::fallback()),
      confirmation_(new QFrame(this)),
      title_(new QLabel(confirmation_)),
      message_(new QLabel(confirmation_)),
      deleteButton_(
          new QPushButton(QString::fromUtf8(CommandPaletteModel::kDeleteButton), confirmation_)),
      cancelButton_(
          new QPushButton(QString::fromUtf8(CommandPaletteModel::kCancelButton), confirmation_)) {
    setObjectName("paletteItemActions");
    confirmation_->setObjectName("paletteDeleteConfirmation");
    deleteButton_->setObjectName("paletteDeleteButton");
    cancelButton_->setObjectName("paletteCancelButton");
    // The keyboard stays with the window, which forwards Return and Escape to the model.
    deleteButton_->setFocusPolicy(Qt::NoFocus);
    cancelButton_->setFocusPolicy(Qt::NoFocus);
    title_->setWordWrap(true);
    message_->setWordWrap(true);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(cancelButton_);
    buttons->addWidget(deleteButton_);
    auto* layout = new QVBoxLayout(confirmation_);
    layout->setContentsMargins(14, 12, 14, 12);
    layout->addWidget(title_);
    layout->addWidget(message_);
    layout->addLayout(buttons);
    connect(deleteButton_, &QPushButton::clicked, this, [this] { model_.confirmDelete(); });
    connect(cancelButton_, &QPushButton::clicked, this, [this] { model_.cancelDelete(); });
    hide();
}

void PaletteItemActionsView::setColors(const ViewColors& colors) {
    colors_ = colors;
    const auto name = [](const QColor& c) { return c.name(QColor::HexArgb); };
    title_->setStyleSheet(QString("color: %1; font-weight: bold;").arg(name(colors.textPrimary)));
    message_->setStyleSheet(QString("color: %1;").arg(name(colors.textSecondary)));
    const QString button =
        "QPushButton { color: %1; background: %2; border: 1px solid %3; border-radius: 6px;"
        " padding: 5px 14px; }";
    cancelButton_->setStyleSheet(
        button.arg(name(colors.textPrimary), name(colors.backgroundCard), name(colors.borderCard)));
    deleteButton_->setStyleSheet(
        button.arg(QColor(Qt::white).name(), kDestructive.name(), kDestructive.name()));
    update();
}

void PaletteItemActionsView::refresh() {
    const auto confirmation = model_.deleteConfirmation();
    if (!model_.showingItemActions() && !confirmation) {
        hide();
        return;
    }
    auto* area = parentWidget();
    if (confirmation) {
        title_->setText(QString::fromStdString(confirmation->title));
        message_->setText(QString::fromStdString(confirmation->message));
        confirmation_->setFixedWidth(kWidth + 60);
        confirmation_->adjustSize();
        resize(confirmation_->size());
        confirmation_->move(0, 0);
        confirmation_->show();
        move((area->width() - width()) / 2, (area->height() - height()) / 2);
    } else {
        confirmation_->hide();
        const int rows = static_cast<int>(model_.itemActions().size());
        resize(kWidth, rows * kRowHeight + 12);
        move(area->width() - width() - 12, area->height() - height() - 12);
    }
    show();
    raise();
    update();
}

void PaletteItemActionsView::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    paintPanel(painter, rect(), 10, colors_.backgroundCard, colors_.borderPanel);
    if (confirmation_->isVisible()) {
        return;
    }
    const auto& actions = model_.itemActions();
    for (std::size_t i = 0; i < actions.size(); ++i) {
        const QRect row(6, 6 + static_cast<int>(i) * kRowHeight, width() - 12, kRowHeight);
        if (static_cast<int>(i) == model_.itemActionIndex()) {
            QColor selection = colors_.accent;
            selection.setAlphaF(0.28F);
            QPainterPath path;
            path.addRoundedRect(row, 6, 6);
            painter.fillPath(path, selection);
        }
        painter.setPen(actions[i].color == "destructive" ? kDestructive : colors_.textPrimary);
        painter.drawText(row.adjusted(12, 0, 0, 0), Qt::AlignVCenter,
                         QString::fromStdString(actions[i].name));
    }
}

void PaletteItemActionsView::mousePressEvent(QMouseEvent* event) {
    if (!confirmation_->isVisible()) {
        model_.chooseItemAction((static_cast<int>(event->position().y()) - 6) / kRowHeight);
    }
}

}  // namespace corvetta
