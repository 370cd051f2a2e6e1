// frontend.h: What carries the main thread: the poll loop alone, or the interface with its loop.
#pragma once

#include <functional>
#include <memory>

#include "diagnostics/logger.h"
#include "foundation/event_loop.h"

namespace corvetta {

class AppDelegate;
class WindowPresenter;

// The main thread's owner. The program builds one before anything else (the desktop and every
// service run on its queue), lets it see the services once they are launched, and runs it until
// quit.
class Frontend {
public:
    virtual ~Frontend() = default;

    virtual MainQueue& queue() = 0;
    // The windows a shortcut or menu opens; none where nothing is drawn (the services then say in
    // the log what would have opened).
    virtual WindowPresenter* windowPresenter() { return nullptr; }
    // Once the services run, before the loop does: the status item and everything that follows
    // the models on screen.
    virtual void servicesDidLaunch(AppDelegate&) {}
    // After the loop ended, before any service goes: nothing drawn may outlive what it draws.
    virtual void servicesWillStop() {}
    // Until stop(); stop() is safe from any thread, signal handlers excepted.
    virtual void run() = 0;
    virtual void stop() = 0;
};

// No interface: the poll loop alone (--no-ui, no X display).
class PollFrontend final : public Frontend {
public:
    PollFrontend(const Clock& clock, FailureHandler onFailure)
        : loop_(clock, std::move(onFailure)) {}
    MainQueue& queue() override { return loop_; }
    void run() override { loop_.run(); }
    void stop() override { loop_.stop(); }

private:
    EventLoop loop_;
};

using FrontendFactory =
    std::function<std::unique_ptr<Frontend>(const Clock&, FailureHandler, const Logger&)>;

inline std::unique_ptr<Frontend> makePollFrontend(const Clock& clock, FailureHandler onFailure,
                                                  const Logger&) {
    return std::make_unique<PollFrontend>(clock, std::move(onFailure));
}

}  // namespace corvetta
