#include "ui/save_workspace_window.h"

#include <QCheckBox>
#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QSignalBlocker>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace corvetta {

SaveWorkspaceWindow::SaveWorkspaceWindow(SaveWorkspaceForm& form, NotificationCenter& notifications,
                                         const ViewColors& colors)
    : FormWindow(form, notifications, SaveWorkspaceForm::kDidChange, "Save Workspace",
                 "Workspace name", colors),
      form_(form),
      closeOthers_(new QCheckBox("Close windows of other apps when restoring")),
      skipLaunch_(new QCheckBox("Don't launch apps that aren't running")),
      spaces_(new QComboBox),
      windowsTitle_(new QLabel),
      windows_(new QTreeWidget) {
    auto* spaceRow = new QHBoxLayout;
    auto* spaceLabel = new QLabel("Space");
    spaceLabel->setBuddy(spaces_);
    spaceRow->addWidget(spaceLabel);
    spaceRow->addWidget(spaces_, 1);
    body()->addLayout(spaceRow);
    body()->addWidget(closeOthers_);
    body()->addWidget(skipLaunch_);

    auto* listRow = new QHBoxLayout;
    auto* refresh = new QPushButton("Refresh");
    refresh->setAutoDefault(false);
    refresh->setToolTip("Read the windows on screen again");
    listRow->addWidget(windowsTitle_, 1);
    listRow->addWidget(refresh);
    body()->addSpacing(4);
    body()->addLayout(listRow);
    windows_->setHeaderLabels({"Application", "Window"});
    windows_->setRootIsDecorated(false);
    windows_->setColumnWidth(0, 130);
    windows_->setSelectionMode(QAbstractItemView::NoSelection);
    windows_->setFocusPolicy(Qt::NoFocus);
    windows_->setMinimumHeight(150);
    body()->addWidget(windows_);

    connect(closeOthers_, &QCheckBox::toggled, this,
            [this](bool on) { form_.setCloseNonWorkspaceWindows(on); });
    connect(skipLaunch_, &QCheckBox::toggled, this,
            [this](bool on) { form_.setSkipLaunchMissingApps(on); });
    connect(spaces_, &QComboBox::activated, this, [this](int index) {
        const auto& choices = form_.spaceChoices();
        if (index >= 0 && static_cast<std::size_t>(index) < choices.size()) {
            form_.chooseSpace(choices[static_cast<std::size_t>(index)].id);
        }
    });
    connect(refresh, &QPushButton::clicked, this, [this] { form_.refreshWindows(); });
    syncFields();
}

void SaveWorkspaceWindow::syncFields() {
    const bool editing = form_.phase() == NameForm::Phase::editing;
    {
        const QSignalBlocker blockClose(closeOthers_);
        const QSignalBlocker blockSkip(skipLaunch_);
        closeOthers_->setChecked(form_.closeNonWorkspaceWindows());
        skipLaunch_->setChecked(form_.skipLaunchMissingApps());
    }
    for (QWidget* field : {static_cast<QWidget*>(closeOthers_), static_cast<QWidget*>(skipLaunch_),
                           static_cast<QWidget*>(spaces_)}) {
        field->setEnabled(editing);
    }
    const auto& choices = form_.spaceChoices();
    if (choices != shownChoices_) {
        shownChoices_ = choices;
        spaces_->clear();
        for (const auto& choice : choices) {
            spaces_->addItem(QString::fromStdString(choice.name));
        }
    }
    for (std::size_t i = 0; i < choices.size(); ++i) {
        if (choices[i].id == form_.spaceId()) {
            spaces_->setCurrentIndex(static_cast<int>(i));
        }
    }

    const auto& rows = form_.windowRows();
    windowsTitle_->setText(rows.empty() ? QString::fromUtf8(WorkspaceCapture::kNothingToCapture)
                                        : QString("Windows to save (%1)").arg(rows.size()));
    if (rows == shownRows_ && shownSecondary_ == colors().textSecondary &&
        windows_->topLevelItemCount() == static_cast<int>(rows.size())) {
        return;
    }
    shownRows_ = rows;
    shownSecondary_ = colors().textSecondary;
    windows_->clear();
    for (const auto& row : rows) {
        const QString title =
            row.title.empty() ? QString("Untitled") : QString::fromStdString(row.title);
        auto* item = new QTreeWidgetItem({QString::fromStdString(row.application), title});
        item->setToolTip(1, title);
        item->setForeground(0, colors().textSecondary);
        windows_->addTopLevelItem(item);
    }
}

}  // namespace corvetta
