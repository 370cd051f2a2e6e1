#include "ui/interface_frontend.h"

#include <QApplication>
#include <cstdlib>

#include <xcb/xcb.h>

#include "ui/qt_main_queue.h"
#include "ui/ui_shell.h"
#include "ui/ui_window_presenter.h"

namespace corvetta {

namespace {

// Qt ends the process when it cannot open its display; asking X first lets the program carry on
// without the interface instead.
bool displayAnswers(const std::string& display) {
    xcb_connection_t* connection = xcb_connect(display.c_str(), nullptr);
    const bool answers = connection && !xcb_connection_has_error(connection);
    if (connection) {
        xcb_disconnect(connection);
    }
    return answers;
}

class InterfaceFrontend final : public Frontend {
public:
    InterfaceFrontend(const std::string& display, const Clock& clock, FailureHandler onFailure)
        : application_(makeApplication(display)), queue_(clock, std::move(onFailure)) {}

    MainQueue& queue() override { return queue_; }
    WindowPresenter* windowPresenter() override { return &presenter_; }

    void servicesDidLaunch(AppDelegate& delegate) override {
        shell_ = std::make_unique<UiShell>(delegate);
        presenter_.attach(shell_.get());
    }

    void servicesWillStop() override {
        presenter_.attach(nullptr);
        shell_.reset();
    }

    void run() override { queue_.run(); }
    void stop() override { queue_.stop(); }

private:
    static std::unique_ptr<QApplication> makeApplication(const std::string& display) {
        // Qt reads the display from the environment; the programs a restore launches go to the
        // same one.
        setenv("DISPLAY", display.c_str(), 1);
        setenv("QT_QPA_PLATFORM", "xcb", 0);
        static int argc = 1;
        static char name[] = "corvetta";
        static char* argv[] = {name, nullptr};
        auto application = std::make_unique<QApplication>(argc, argv);
        QApplication::setApplicationName("Corvetta");
        // The installed desktop entry's name, so shells match these windows to it and its icon.
        QApplication::setDesktopFileName("com.corvetta.Corvetta");
        // A status-bar program: closing its last window must not end it.
        QApplication::setQuitOnLastWindowClosed(false);
        return application;
    }

    std::unique_ptr<QApplication> application_;
    QtMainQueue queue_;
    UiWindowPresenter presenter_;
    std::unique_ptr<UiShell> shell_;
};

}  // namespace

FrontendFactory interfaceFrontendFactory(std::string display) {
    return [display](const Clock& clock, FailureHandler onFailure,
                     const Logger& logger) -> std::unique_ptr<Frontend> {
        if (!displayAnswers(display)) {
            logger.warning("The X display '" + display +
                           "' does not answer: running without the interface");
            return makePollFrontend(clock, std::move(onFailure), logger);
        }
        return std::make_unique<InterfaceFrontend>(display, clock, std::move(onFailure));
    };
}

}  // namespace corvetta
