// window_presenter.h: The windows a shortcut opens, as a port the user interface implements.
#pragma once

#include "diagnostics/logger.h"

namespace corvetta {

// Opens the program's own windows on request. The user interface implements it; without one, the
// logging stand-in says what would have opened.
class WindowPresenter {
public:
    virtual ~WindowPresenter() = default;
    virtual void showSaveWorkspaceWindow() = 0;
    virtual void showAddSpaceWindow() = 0;
    virtual void showNewLayoutWindow() = 0;
    // Opens the palette, or closes it when it is open.
    virtual void toggleCommandPalette() = 0;
    virtual void showAboutWindow() = 0;
    // Opens the documentation in the user's viewer.
    virtual void showHelp() = 0;
};

// Where no interface runs (--no-ui, the simulated desktop without a display): each request is
// only logged.
class LoggingWindowPresenter final : public WindowPresenter {
public:
    explicit LoggingWindowPresenter(LoggingService& logging)
        : logger_(logging, "WindowPresenter", LogCategory::shortcut()) {}

    void showSaveWorkspaceWindow() override { unavailable("save-workspace window"); }
    void showAddSpaceWindow() override { unavailable("add-space window"); }
    void showNewLayoutWindow() override { unavailable("new-layout window"); }
    void toggleCommandPalette() override { unavailable("command palette"); }
    void showAboutWindow() override { unavailable("about window"); }
    void showHelp() override { unavailable("documentation"); }

private:
    void unavailable(const char* what) const {
        logger_.info(std::string("No user interface to show the ") + what);
    }

    Logger logger_;
};

}  // namespace corvetta
