// add_space_window.h: The add-space dialog: a name checked as it is typed, Save and Cancel.
#pragma once

#include "ui/form_window.h"
#include "workspaces/add_space_form.h"

class QLabel;

namespace corvetta {

class AddSpaceWindow final : public FormWindow {
    Q_OBJECT
public:
    AddSpaceWindow(AddSpaceForm& form, NotificationCenter& notifications,
                   const ViewColors& colors = ViewColors::fallback());

private:
    void openForm() override { form_.open(); }
    void syncFields() override;

    AddSpaceForm& form_;
    QLabel* hint_;
};

}  // namespace corvetta
