// save_workspace_window.h: The save-workspace dialog: name, options, space and the windows kept.
#pragma once

#include "ui/form_window.h"
#include "workspaces/save_workspace_form.h"

class QCheckBox;
class QComboBox;
class QLabel;
class QTreeWidget;

namespace corvetta {

// Draws a SaveWorkspaceForm: below the name, the two restore options as check boxes, the space
// the workspace goes into, and the windows it will hold (application and title) with a button
// that reads them again.
class SaveWorkspaceWindow final : public FormWindow {
    Q_OBJECT
public:
    SaveWorkspaceWindow(SaveWorkspaceForm& form, NotificationCenter& notifications,
                        const ViewColors& colors = ViewColors::fallback());

    QCheckBox* closeOthersBox() const { return closeOthers_; }
    QCheckBox* skipLaunchBox() const { return skipLaunch_; }
    QComboBox* spaceChooser() const { return spaces_; }
    QTreeWidget* windowList() const { return windows_; }

private:
    void syncFields() override;
    void openForm() override { form_.open(); }

    SaveWorkspaceForm& form_;
    QCheckBox* closeOthers_;
    QCheckBox* skipLaunch_;
    QComboBox* spaces_;
    QLabel* windowsTitle_;
    QTreeWidget* windows_;
    // What the lists show, so typing a name does not rebuild them.
    std::vector<SpaceChoice> shownChoices_;
    std::vector<CapturedWindowRow> shownRows_;
    QColor shownSecondary_;
};

}  // namespace corvetta
