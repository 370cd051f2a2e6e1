// ui_window_presenter.h: Opens our windows for the shortcuts and the menu, once the shell exists.
#pragma once

#include <functional>

#include "shortcuts/window_presenter.h"

namespace corvetta {

// Handed to the services before they exist, so it forwards to the shell that is built after
// them. No request can come before: keys and menus are served only once the loop runs.
class UiWindowPresenter final : public WindowPresenter {
public:
    void attach(WindowPresenter* shell) { shell_ = shell; }

    void showSaveWorkspaceWindow() override { forward(&WindowPresenter::showSaveWorkspaceWindow); }
    void showAddSpaceWindow() override { forward(&WindowPresenter::showAddSpaceWindow); }
    void showNewLayoutWindow() override { forward(&WindowPresenter::showNewLayoutWindow); }
    void toggleCommandPalette() override { forward(&WindowPresenter::toggleCommandPalette); }
    void showAboutWindow() override { forward(&WindowPresenter::showAboutWindow); }
    void showHelp() override { forward(&WindowPresenter::showHelp); }

private:
    void forward(void (WindowPresenter::*request)()) {
        if (shell_) {
            (shell_->*request)();
        }
    }

    WindowPresenter* shell_ = nullptr;
};

}  // namespace corvetta
