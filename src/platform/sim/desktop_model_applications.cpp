// Running applications on the simulated desktop: launching, activating, hiding, the front one.

#include <algorithm>

#include "platform/sim/desktop_model.h"

namespace corvetta::sim {

bool DesktopModel::activate(ProcessId pid) {
    auto* app = application(pid);
    if (app == nullptr || app->activationPolicy == ActivationPolicy::prohibited) {
        return false;
    }
    app->hidden = false;
    bringApplicationToFront(pid);
    windowsChanged();
    setFrontmost(pid);
    return true;
}

bool DesktopModel::hide(ProcessId pid) {
    auto* app = application(pid);
    if (app == nullptr) {
        return false;
    }
    app->hidden = true;
    if (frontmost_ == pid) {
        frontNextApplication(pid);
    }
    windowsChanged();
    return true;
}

void DesktopModel::activateSelf() {
    if (auto* self = application(selfPid_)) {
        self->hidden = false;
        windowsChanged();
        setFrontmost(selfPid_);
    }
}

Registration DesktopModel::observeActivation(
    std::function<void(const RunningApplication&)> handler) {
    const auto id = activationObservers_.add(std::move(handler));
    return undoWhileAlive(
        [id](DesktopModel& model) { model.activationObservers_.handlers.erase(id); });
}

void DesktopModel::launch(const std::string& bundleIdentifier, LaunchCompletion completion) {
    std::weak_ptr<DesktopModel> weak = weak_from_this();
    const auto* installed = installedApplication(bundleIdentifier);
    if (installed == nullptr || runningApplication(bundleIdentifier) != nullptr) {
        queue_.post([weak, bundleIdentifier, completion = std::move(completion)] {
            if (const auto model = weak.lock()) {
                completion(model->startOrFront(bundleIdentifier));
            }
        });
        return;
    }
    auto& waiting = launching_[bundleIdentifier];
    waiting.push_back(std::move(completion));
    if (waiting.size() > 1) {
        return;
    }
    const auto started = [weak, bundleIdentifier] {
        const auto model = weak.lock();
        if (!model) {
            return;
        }
        const auto completions = std::move(model->launching_[bundleIdentifier]);
        model->launching_.erase(bundleIdentifier);
        const auto result = model->startOrFront(bundleIdentifier);
        for (const auto& completion : completions) {
            completion(result);
        }
    };
    if (installed->launchDelay > Duration::zero()) {
        queue_.postDelayed(installed->launchDelay, started);
    } else {
        queue_.post(started);
    }
}

Expected<RunningApplication, LaunchError> DesktopModel::startOrFront(
    const std::string& bundleIdentifier) {
    const auto* running = runningApplication(bundleIdentifier);
    if (running == nullptr) {
        const auto* installed = installedApplication(bundleIdentifier);
        if (installed == nullptr) {
            return unexpected(
                LaunchError{LaunchError::Kind::notFound,
                            "No application with bundle identifier " + bundleIdentifier});
        }
        try {
            start(*installed);
        } catch (const std::invalid_argument& error) {
            return unexpected(LaunchError{LaunchError::Kind::failed, error.what()});
        }
        running = runningApplication(bundleIdentifier);
    }
    const auto pid = running->pid;
    activate(pid);
    return describe(*application(pid));
}

void DesktopModel::start(SimulatedApplication app) {
    std::vector<SimulatedWindow> late;
    for (const auto& window : app.windows) {
        if (window.appearsAfter > Duration::zero()) {
            if (window.number == 0 || ownerOf(window.number)) {
                throw std::invalid_argument("window number " + std::to_string(window.number) +
                                            " is not free");
            }
            late.push_back(window);
        }
    }
    std::erase_if(app.windows,
                  [](const SimulatedWindow& w) { return w.appearsAfter > Duration::zero(); });
    const auto pid = app.pid;
    addApplication(std::move(app));
    std::erase_if(appearing_, [](const auto& entry) { return !entry.second.isPending(); });
    std::weak_ptr<DesktopModel> weak = weak_from_this();
    for (auto& window : late) {
        const auto after = window.appearsAfter;
        appearing_.emplace(pid, queue_.postDelayed(after, [weak, pid, window = std::move(window)] {
            const auto model = weak.lock();
            // A test may have given the number to a window of its own meanwhile.
            if (model && model->application(pid) != nullptr && !model->ownerOf(window.number)) {
                model->addWindow(pid, window);
            }
        }));
    }
}

RunningApplication DesktopModel::describe(const SimulatedApplication& app) const {
    return RunningApplication{app.pid, app.bundleIdentifier, app.name, app.activationPolicy,
                              app.hidden};
}

void DesktopModel::bringApplicationToFront(ProcessId pid) {
    const auto* app = application(pid);
    if (app == nullptr) {
        return;
    }
    std::vector<WindowNumber> front;
    for (const auto& window : app->windows) {
        front.push_back(window.number);
        removeFromStack(window.number);
    }
    stack_.insert(stack_.begin(), front.begin(), front.end());
}

void DesktopModel::moveToFrontOfApplication(WindowNumber number) {
    const auto owner = ownerOf(number);
    if (!owner) {
        return;
    }
    auto& windows = application(*owner)->windows;
    const auto found = std::find_if(windows.begin(), windows.end(),
                                    [&](const SimulatedWindow& w) { return w.number == number; });
    std::rotate(windows.begin(), found, found + 1);
}

void DesktopModel::removeFromStack(WindowNumber number) {
    std::erase(stack_, number);
}

void DesktopModel::frontNextApplication(ProcessId leaving) {
    for (const auto* window : onScreenWindows()) {
        const auto owner = ownerOf(window->number);
        const auto* app = application(*owner);
        if (*owner != leaving && app->activationPolicy == ActivationPolicy::regular) {
            setFrontmost(*owner);
            return;
        }
    }
    frontmost_.reset();
}

void DesktopModel::setFrontmost(ProcessId pid) {
    if (frontmost_ == pid) {
        return;
    }
    frontmost_ = pid;
    windowsChanged();
    const auto activated = describe(*application(pid));
    activationObservers_.forEach([&](const auto& handler) { handler(activated); });
}

}  // namespace corvetta::sim
