// ui_shell.h: The interface once the services run: the status item and the windows it opens.
#pragma once

#include <memory>

#include "app/app_delegate.h"
#include "shortcuts/window_presenter.h"

namespace corvetta {

class StatusItem;
class AboutWindow;
class CommandPaletteWindow;

// Builds every surface of the interface over the launched services and opens the windows the
// shortcuts and the menu ask for. Lives between the launch and the end of the loop.
class UiShell final : public WindowPresenter {
public:
    explicit UiShell(AppDelegate& delegate);
    ~UiShell() override;

    void showSaveWorkspaceWindow() override;
    void showAddSpaceWindow() override;
    void showNewLayoutWindow() override;
    void toggleCommandPalette() override;
    void showAboutWindow() override;
    void showHelp() override;

private:
    AppDelegate& delegate_;
    Logger logger_;
    std::unique_ptr<StatusItem> statusItem_;
    std::unique_ptr<CommandPaletteWindow> paletteWindow_;
    std::unique_ptr<AboutWindow> aboutWindow_;
};

}  // namespace corvetta
