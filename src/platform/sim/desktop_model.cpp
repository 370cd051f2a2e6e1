#include "platform/sim/desktop_model.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace corvetta::sim {

namespace {

// Sizes as applications enforce them: the limits first, then whole steps above the minimum,
// rounding down so the step never takes the window below its minimum or above its maximum.
Size takenSize(const SimulatedWindow& window, Size requested) {
    Size size = requested;
    if (window.maxSize) {
        size.width = std::min(size.width, window.maxSize->width);
        size.height = std::min(size.height, window.maxSize->height);
    }
    const Size floorSize = window.minSize.value_or(Size{0, 0});
    size.width = std::max(size.width, floorSize.width);
    size.height = std::max(size.height, floorSize.height);
    if (window.resizeIncrements) {
        const auto step = [](double value, double base, double increment) {
            return increment > 0 ? base + std::floor((value - base) / increment) * increment
                                 : value;
        };
        size.width = step(size.width, floorSize.width, window.resizeIncrements->width);
        size.height = step(size.height, floorSize.height, window.resizeIncrements->height);
    }
    return size;
}

const SimulatedApplication* withBundleIdentifier(const std::vector<SimulatedApplication>& apps,
                                                 const std::string& bundleIdentifier) {
    const auto found = std::find_if(apps.begin(), apps.end(), [&](const SimulatedApplication& a) {
        return a.bundleIdentifier == bundleIdentifier;
    });
    return found == apps.end() ? nullptr : &*found;
}

}  // namespace

DesktopModel::DesktopModel(SimulatedDesktopSetup setup, MainQueue& queue)
    : queue_(queue),
      displays_(std::move(setup.displays)),
      dock_(setup.dock),
      applications_(std::move(setup.applications)),
      installed_(std::move(setup.installed)),
      selfPid_(setup.self.pid),
      trusted_(setup.accessibilityTrusted),
      mouseLocation_(setup.mouseLocation) {
    reindex();
    if (application(selfPid_) == nullptr) {
        applications_.push_back(std::move(setup.self));
        indexApplication(applications_.size() - 1);
    }
    if (setup.frontmost && application(*setup.frontmost) != nullptr) {
        frontmost_ = setup.frontmost;
    }
    // The front application's windows lie on top, the others follow in the order given.
    for (const auto& app : applications_) {
        for (const auto& window : app.windows) {
            stack_.push_back(window.number);
            histories_[window.number] = {};
        }
    }
    if (frontmost_) {
        bringApplicationToFront(*frontmost_);
    }
    screens_.setScreens(currentScreens());
    windowsChanged();
}

void DesktopModel::reindex() {
    applicationIndex_.clear();
    windowOwners_.clear();
    for (std::size_t i = 0; i < applications_.size(); ++i) {
        indexApplication(i);
    }
}

void DesktopModel::indexApplication(std::size_t index) {
    const auto& app = applications_[index];
    applicationIndex_[app.pid] = index;
    for (const auto& window : app.windows) {
        windowOwners_[window.number] = app.pid;
    }
}

SimulatedApplication* DesktopModel::application(ProcessId pid) {
    const auto found = applicationIndex_.find(pid);
    return found == applicationIndex_.end() ? nullptr : &applications_[found->second];
}

const SimulatedApplication* DesktopModel::application(ProcessId pid) const {
    return const_cast<DesktopModel*>(this)->application(pid);
}

const SimulatedApplication* DesktopModel::installedApplication(
    const std::string& bundleIdentifier) const {
    return withBundleIdentifier(installed_, bundleIdentifier);
}

const SimulatedApplication* DesktopModel::runningApplication(
    const std::string& bundleIdentifier) const {
    return withBundleIdentifier(applications_, bundleIdentifier);
}

SimulatedWindow* DesktopModel::window(WindowNumber number) {
    const auto owner = ownerOf(number);
    if (!owner) {
        return nullptr;
    }
    auto& windows = application(*owner)->windows;
    const auto found = std::find_if(windows.begin(), windows.end(),
                                    [&](const SimulatedWindow& w) { return w.number == number; });
    return found == windows.end() ? nullptr : &*found;
}

const SimulatedWindow* DesktopModel::window(WindowNumber number) const {
    return const_cast<DesktopModel*>(this)->window(number);
}

std::optional<ProcessId> DesktopModel::ownerOf(WindowNumber number) const {
    const auto found = windowOwners_.find(number);
    return found == windowOwners_.end() ? std::nullopt : std::optional(found->second);
}

int DesktopModel::frameWriteCount(WindowNumber number) const {
    const auto found = histories_.find(number);
    return found == histories_.end() ? 0 : found->second.frameWrites;
}

const SimulatedWindow* DesktopModel::focusedWindow(ProcessId pid) const {
    const auto* app = application(pid);
    if (app == nullptr) {
        return nullptr;
    }
    const auto found = std::find_if(app->windows.begin(), app->windows.end(),
                                    [](const SimulatedWindow& w) { return !w.minimized; });
    return found == app->windows.end() ? nullptr : &*found;
}

std::vector<const SimulatedWindow*> DesktopModel::onScreenWindows() const {
    std::vector<const SimulatedWindow*> result;
    for (const auto number : stack_) {
        const auto owner = ownerOf(number);
        const auto* window = this->window(number);
        if (owner && window != nullptr && !application(*owner)->hidden && !window->minimized) {
            result.push_back(window);
        }
    }
    return result;
}

void DesktopModel::addApplication(SimulatedApplication app) {
    if (application(app.pid) != nullptr) {
        throw std::invalid_argument("pid " + std::to_string(app.pid) + " is already running");
    }
    for (const auto& window : app.windows) {
        if (window.number == 0 || ownerOf(window.number)) {
            throw std::invalid_argument("window number " + std::to_string(window.number) +
                                        " is not free");
        }
    }
    // A started application lies behind everything until it is activated.
    for (const auto& window : app.windows) {
        stack_.push_back(window.number);
        histories_[window.number] = {};
    }
    applications_.push_back(std::move(app));
    indexApplication(applications_.size() - 1);
    windowsChanged();
}

void DesktopModel::quitApplication(ProcessId pid) {
    auto* app = application(pid);
    if (app == nullptr || pid == selfPid_) {
        return;
    }
    // A window still to appear belongs to this run of the application, not to a later launch.
    const auto [first, last] = appearing_.equal_range(pid);
    for (auto late = first; late != last; ++late) {
        late->second.cancel();
    }
    appearing_.erase(pid);
    for (const auto& window : app->windows) {
        removeFromStack(window.number);
        histories_.erase(window.number);
    }
    std::erase_if(applications_, [&](const SimulatedApplication& a) { return a.pid == pid; });
    reindex();
    if (frontmost_ == pid) {
        frontNextApplication(pid);
    }
    windowsChanged();
}

void DesktopModel::addWindow(ProcessId pid, SimulatedWindow window) {
    auto* app = application(pid);
    if (app == nullptr) {
        throw std::invalid_argument("no application with pid " + std::to_string(pid));
    }
    if (window.number == 0 || ownerOf(window.number)) {
        throw std::invalid_argument("window number " + std::to_string(window.number) +
                                    " is not free");
    }
    // In front of the application's other windows; in front of everything when the application
    // is in front or had no window yet.
    const auto firstOfApp = std::find_if(stack_.begin(), stack_.end(),
                                         [&](WindowNumber n) { return ownerOf(n) == pid; });
    const bool onTop = frontmost_ == pid || firstOfApp == stack_.end();
    stack_.insert(onTop ? stack_.begin() : firstOfApp, window.number);
    histories_[window.number] = {};
    windowOwners_[window.number] = pid;
    app->windows.insert(app->windows.begin(), std::move(window));
    windowsChanged();
}

void DesktopModel::closeWindow(WindowNumber number) {
    const auto owner = ownerOf(number);
    if (!owner) {
        return;
    }
    std::erase_if(application(*owner)->windows,
                  [&](const SimulatedWindow& w) { return w.number == number; });
    windowOwners_.erase(number);
    removeFromStack(number);
    histories_.erase(number);
    windowsChanged();
}

void DesktopModel::openWindow(ProcessId pid, SimulatedWindow window, Duration after) {
    const auto open = [pid, window = std::move(window)](DesktopModel& model) {
        if (model.application(pid) == nullptr) {
            return;
        }
        SimulatedWindow opened = window;
        opened.number = model.unusedWindowNumber();
        model.addWindow(pid, std::move(opened));
    };
    if (after <= Duration::zero()) {
        open(*this);
        return;
    }
    std::weak_ptr<DesktopModel> weak = weak_from_this();
    queue_.postDelayed(after, [weak, open] {
        if (const auto model = weak.lock()) {
            open(*model);
        }
    });
}

WindowNumber DesktopModel::unusedWindowNumber() const {
    WindowNumber highest = 0;
    for (const auto* list : {&applications_, &installed_}) {
        for (const auto& app : *list) {
            for (const auto& window : app.windows) {
                highest = std::max(highest, window.number);
            }
        }
    }
    return highest + 1;
}

void DesktopModel::setUnresponsive(ProcessId pid, bool unresponsive) {
    if (auto* app = application(pid)) {
        app->unresponsive = unresponsive;
    }
}

void DesktopModel::writePosition(WindowNumber number, Point position) {
    ++history(number).frameWrites;
    applyWhenWindowIsReady(
        number, [number, position](DesktopModel& m) { m.applyPosition(number, position); });
}

void DesktopModel::writeSize(WindowNumber number, Size size) {
    ++history(number).frameWrites;
    applyWhenWindowIsReady(number, [number, size](DesktopModel& m) { m.applySize(number, size); });
}

void DesktopModel::applyWhenWindowIsReady(WindowNumber number,
                                          std::function<void(DesktopModel&)> change) {
    const auto* window = this->window(number);
    if (window == nullptr) {
        return;
    }
    if (window->applyDelay <= Duration::zero()) {
        change(*this);
        return;
    }
    // The desktop may be gone by the time the window gets to it.
    std::weak_ptr<DesktopModel> weak = weak_from_this();
    queue_.postDelayed(window->applyDelay, [weak, change = std::move(change)] {
        if (const auto model = weak.lock()) {
            change(*model);
        }
    });
}

// The window's rules are read when it takes the write, as an application applies them then.
void DesktopModel::applyPosition(WindowNumber number, Point position) {
    auto* window = this->window(number);
    if (window == nullptr || window->fullScreen || !window->movable) {
        return;
    }
    window->frame.origin = position;
    windowsChanged();
}

void DesktopModel::applySize(WindowNumber number, Size size) {
    auto* window = this->window(number);
    if (window == nullptr || window->fullScreen || !window->resizable) {
        return;
    }
    window->frame.size = takenSize(*window, size);
    windowsChanged();
}

void DesktopModel::dragWindow(WindowNumber number, const Rect& frame) {
    auto* window = this->window(number);
    if (window == nullptr || window->fullScreen || window->minimized) {
        return;
    }
    const Rect before = window->frame;
    window->frame.origin = frame.origin;
    if (window->resizable) {
        window->frame.size = takenSize(*window, frame.size);
        // A window resized by its left or top edge keeps its other edge where it was when it
        // refuses the size asked, as the window manager anchors the edge the user did not hold.
        const auto kept = [](double a, double b) { return std::abs(a - b) < 0.5; };
        if (!kept(frame.minX(), before.minX()) && kept(frame.maxX(), before.maxX())) {
            window->frame.origin.x = before.maxX() - window->frame.size.width;
        }
        if (!kept(frame.minY(), before.minY()) && kept(frame.maxY(), before.maxY())) {
            window->frame.origin.y = before.maxY() - window->frame.size.height;
        }
    }
    windowsChanged();
}

void DesktopModel::setFullScreen(WindowNumber number, bool fullScreen) {
    auto* window = this->window(number);
    if (window == nullptr || window->fullScreen == fullScreen) {
        return;
    }
    auto& history = this->history(number);
    if (fullScreen) {
        history.frameBeforeFullScreen = window->frame;
        const auto display = displayOf(window->frame);
        if (display) {
            window->frame = toAccessibilitySpace(display->frame);
        } else if (!displays_.empty()) {
            window->frame = toAccessibilitySpace(displays_.front().frame);
        }
    } else if (history.frameBeforeFullScreen) {
        window->frame = *history.frameBeforeFullScreen;
        history.frameBeforeFullScreen.reset();
    }
    window->fullScreen = fullScreen;
    windowsChanged();
}

void DesktopModel::setMinimized(WindowNumber number, bool minimized) {
    auto* window = this->window(number);
    if (window == nullptr || window->minimized == minimized) {
        return;
    }
    window->minimized = minimized;
    if (!minimized) {
        raise(number);
    }
    windowsChanged();
}

void DesktopModel::editWindow(WindowNumber number,
                              const std::function<void(SimulatedWindow&)>& edit) {
    auto* window = this->window(number);
    if (window == nullptr) {
        return;
    }
    SimulatedWindow edited = *window;
    edit(edited);
    edited.number = window->number;
    edited.frame = window->frame;
    edited.fullScreen = window->fullScreen;
    edited.minimized = window->minimized;
    *window = std::move(edited);
    windowsChanged();
}

void DesktopModel::raise(WindowNumber number) {
    if (!ownerOf(number)) {
        return;
    }
    moveToFrontOfApplication(number);
    removeFromStack(number);
    stack_.insert(stack_.begin(), number);
    windowsChanged();
}

Registration DesktopModel::addMonitor(EventMonitor monitor) {
    const auto id = monitors_.add(std::move(monitor));
    return undoWhileAlive([id](DesktopModel& model) { model.monitors_.handlers.erase(id); });
}

Registration DesktopModel::undoWhileAlive(std::function<void(DesktopModel&)> undo) {
    std::weak_ptr<DesktopModel> weak = weak_from_this();
    return Registration([weak, undo = std::move(undo)] {
        if (const auto model = weak.lock()) {
            undo(*model);
        }
    });
}

void DesktopModel::postEvent(const InputEvent& event, bool toThisApplication) {
    const bool isKeyEvent = event.type == EventType::keyDown || event.type == EventType::keyUp ||
                            event.type == EventType::flagsChanged;
    if (!isKeyEvent) {
        // Mouse events happen where the pointer is.
        mouseLocation_ = event.location;
    }
    if (event.type == EventType::flagsChanged) {
        modifierFlags_ = event.modifierFlags;
    }
    monitors_.forEach([&](const EventMonitor& monitor) {
        if (monitor.local == toThisApplication && (monitor.mask & eventMask(event.type)) != 0) {
            monitor.handler(event);
        }
    });
}

Registration DesktopModel::observeSleep(std::function<void()> handler) {
    const auto id = sleepObservers_.add(std::move(handler));
    return undoWhileAlive([id](DesktopModel& model) { model.sleepObservers_.handlers.erase(id); });
}

Registration DesktopModel::observeWake(std::function<void()> handler) {
    const auto id = wakeObservers_.add(std::move(handler));
    return undoWhileAlive([id](DesktopModel& model) { model.wakeObservers_.handlers.erase(id); });
}

void DesktopModel::sleepAndWake() {
    sleepObservers_.forEach([](const auto& handler) { handler(); });
    wakeObservers_.forEach([](const auto& handler) { handler(); });
}

}  // namespace corvetta::sim
