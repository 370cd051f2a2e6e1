// ui_shell.h: The interface once the services run: the status item and the windows it opens.
#pragma once

#include <QObject>
#include <memory>

#include "app/app_delegate.h"
#include "foundation/registration.h"
#include "shortcuts/window_presenter.h"

namespace corvetta {

class StatusItem;
class AboutWindow;
class CommandPaletteWindow;
class DriftPillWindow;
class CycleHudWindow;
class SaveWorkspaceWindow;
class AddSpaceWindow;
class ToastWindowController;

// Builds every surface of the interface over the launched services and opens the windows the
// shortcuts and the menu ask for. Lives between the launch and the end of the loop.
class UiShell final : public QObject, public WindowPresenter {
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
    // A dialog hands the keyboard back to the application the user was in.
    void giveFocusBack();
    // Every window draws with the theme in force, light or dark.
    void applyTheme();
    bool eventFilter(QObject* watched, QEvent* event) override;

    AppDelegate& delegate_;
    Logger logger_;
    std::unique_ptr<StatusItem> statusItem_;
    std::unique_ptr<CommandPaletteWindow> paletteWindow_;
    std::unique_ptr<DriftPillWindow> pillWindow_;
    std::unique_ptr<CycleHudWindow> cycleHudWindow_;
    std::unique_ptr<SaveWorkspaceWindow> saveWorkspaceWindow_;
    std::unique_ptr<AddSpaceWindow> addSpaceWindow_;
    // Before the toast window, so a toast's display is chosen before the window follows it.
    Registration toastDisplay_;
    std::unique_ptr<ToastWindowController> toastWindow_;
    Registration themeObservation_;
    std::unique_ptr<AboutWindow> aboutWindow_;
};

}  // namespace corvetta
