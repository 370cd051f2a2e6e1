#include "platform/sim/simulated_opening.h"

#include "platform/sim/desktop_model.h"

namespace corvetta {

namespace {

// Where a new window opens when its application shows none yet.
constexpr Rect kFirstWindowFrame{{100, 100}, {800, 600}};
// Each further window cascades from the application's front one, as applications place them.
constexpr double kCascade = 24;

}  // namespace

SimulatedOpening::SimulatedOpening(std::shared_ptr<sim::DesktopModel> model)
    : model_(std::move(model)) {}

Expected<void, std::string> SimulatedOpening::openWindow(SimulatedOpeningRequest request) {
    const auto& bundle = request.bundleIdentifier;
    if (!model_->runningApplication(bundle) && !model_->installedApplication(bundle)) {
        return unexpected("No application with bundle identifier " + bundle);
    }
    const std::weak_ptr<sim::DesktopModel> weak = model_;
    model_->launch(bundle, [weak, title = request.target](const auto& launched) {
        const auto model = weak.lock();
        if (!model || !launched) {
            return;
        }
        const auto* app = model->application(launched->processIdentifier);
        SimulatedWindow window;
        window.title = title;
        window.frame = kFirstWindowFrame;
        if (app != nullptr && !app->windows.empty()) {
            window.frame = app->windows.front().frame;
            window.frame.origin.x += kCascade;
            window.frame.origin.y += kCascade;
        }
        model->openWindow(launched->processIdentifier, std::move(window), Duration::zero());
    });
    requests_.push_back(std::move(request));
    return {};
}

Expected<void, std::string> SimulatedOpening::open(const std::string& bundleIdentifier,
                                                   const std::string& target) {
    return openWindow({SimulatedOpeningRequest::Kind::open, bundleIdentifier, target, {}});
}

Expected<void, std::string> SimulatedOpening::openTerminal(const std::string& bundleIdentifier,
                                                           const std::string& directory) {
    return openWindow({SimulatedOpeningRequest::Kind::terminal, bundleIdentifier, directory, {}});
}

Expected<void, std::string> SimulatedOpening::typeText(const std::string& text) {
    const auto front = model_->frontmost();
    const auto* focused = front ? model_->focusedWindow(*front) : nullptr;
    if (focused == nullptr) {
        return unexpected(std::string("No window has the keyboard focus"));
    }
    requests_.push_back({SimulatedOpeningRequest::Kind::typed, {}, text, focused->number});
    return {};
}

Expected<void, std::string> SimulatedOpening::runApplicationProgram(
    const std::string& bundleIdentifier, const std::vector<std::string>& arguments) {
    if (!model_->runningApplication(bundleIdentifier) &&
        !model_->installedApplication(bundleIdentifier)) {
        return unexpected("No application with bundle identifier " + bundleIdentifier);
    }
    std::string joined;
    for (const auto& argument : arguments) {
        joined += (joined.empty() ? "" : " ") + argument;
    }
    requests_.push_back(
        {SimulatedOpeningRequest::Kind::program, bundleIdentifier, std::move(joined), {}});
    return {};
}

}  // namespace corvetta
