#include "platform/sim/simulated_desktop.h"

#include <cmath>
#include <limits>

#include "platform/accessibility_menus.h"
#include "platform/sim/desktop_model.h"
#include "platform/sim/simulated_menus.h"

namespace corvetta {

namespace {

// A window's close button shares the window's number, told apart by the top bit of the token.
constexpr std::uint64_t kCloseButtonBit = std::uint64_t{1} << 63;
constexpr std::string_view kRole = "AXRole";

enum class ElementKind { application, window, closeButton, menu };

struct ResolvedElement {
    ElementKind kind = ElementKind::application;
    SimulatedApplication* application = nullptr;
    SimulatedWindow* window = nullptr;
    sim::MenuElement menu{};
};

bool isFinite(Point p) {
    return std::isfinite(p.x) && std::isfinite(p.y);
}

bool isFinite(Size s) {
    return std::isfinite(s.width) && std::isfinite(s.height);
}

}  // namespace

struct SimulatedDesktop::State : sim::DesktopModel {
    using DesktopModel::DesktopModel;

    // The checks every call makes, in the order the platform makes them: permission, the handle,
    // whether the process is still there, whether it answers, and whether the window still is.
    Expected<ResolvedElement, AXErrorCode> resolve(const AXElement& element) {
        if (!trusted()) {
            return unexpected(AXErrorCode::apiDisabled);
        }
        if (!element.isValid()) {
            return unexpected(AXErrorCode::illegalArgument);
        }
        auto* app = application(element.process());
        if (app == nullptr) {
            return unexpected(AXErrorCode::invalidUIElement);
        }
        if (app->unresponsive) {
            return unexpected(AXErrorCode::cannotComplete);
        }
        if (element.token() == 0) {
            return ResolvedElement{ElementKind::application, app, nullptr};
        }
        if (sim::isMenuToken(element.token())) {
            const auto menu = sim::findMenuElement(*app, element.token());
            if (!menu) {
                return unexpected(AXErrorCode::invalidUIElement);
            }
            return ResolvedElement{ElementKind::menu, app, nullptr, *menu};
        }
        const auto number = element.token() & ~kCloseButtonBit;
        if (number > std::numeric_limits<WindowNumber>::max()) {
            return unexpected(AXErrorCode::invalidUIElement);
        }
        auto* found = window(static_cast<WindowNumber>(number));
        if (found == nullptr || ownerOf(found->number) != app->pid) {
            return unexpected(AXErrorCode::invalidUIElement);
        }
        const auto kind = (element.token() & kCloseButtonBit) != 0 ? ElementKind::closeButton
                                                                   : ElementKind::window;
        return ResolvedElement{kind, app, found};
    }

    Expected<AXValue, AXErrorCode> applicationAttribute(const SimulatedApplication& app,
                                                        std::string_view attribute) {
        if (attribute == AXAttribute::kWindows) {
            std::vector<AXElement> windows;
            for (const auto& w : app.windows) {
                windows.emplace_back(app.pid, w.number);
            }
            return AXValue(std::move(windows));
        }
        if (attribute == AXAttribute::kFocusedWindow) {
            const auto* focused = focusedWindow(app.pid);
            if (focused == nullptr) {
                return unexpected(AXErrorCode::noValue);
            }
            return AXValue(AXElement(app.pid, focused->number));
        }
        if (attribute == AXAttribute::kTitle) {
            return AXValue(app.name);
        }
        if (attribute == kRole) {
            return AXValue(std::string("AXApplication"));
        }
        if (attribute == AXMenuAttribute::kMenuBar) {
            return sim::menuBarOf(app);
        }
        return unexpected(AXErrorCode::attributeUnsupported);
    }

    Expected<AXValue, AXErrorCode> windowAttribute(ProcessId pid, const SimulatedWindow& w,
                                                   std::string_view attribute) {
        if (attribute == AXAttribute::kPosition) {
            return AXValue(w.frame.origin);
        }
        if (attribute == AXAttribute::kSize) {
            return AXValue(w.frame.size);
        }
        if (attribute == AXAttribute::kFullScreen) {
            return AXValue(w.fullScreen);
        }
        if (attribute == AXAttribute::kMinimized) {
            return AXValue(w.minimized);
        }
        if (attribute == AXAttribute::kMinSize) {
            if (!w.minSize || !w.reportsMinSize) {
                return unexpected(AXErrorCode::attributeUnsupported);
            }
            return AXValue(*w.minSize);
        }
        if (attribute == AXAttribute::kTitle) {
            return AXValue(w.title);
        }
        if (attribute == AXAttribute::kSubrole) {
            return AXValue(w.subrole);
        }
        if (attribute == AXAttribute::kCloseButton) {
            return AXValue(AXElement(pid, w.number | kCloseButtonBit));
        }
        if (attribute == AXAttribute::kWindowId) {
            if (!w.reportsWindowNumber) {
                return unexpected(AXErrorCode::attributeUnsupported);
            }
            return AXValue(static_cast<std::int64_t>(w.number));
        }
        if (attribute == kRole) {
            return AXValue(std::string("AXWindow"));
        }
        return unexpected(AXErrorCode::attributeUnsupported);
    }

    AXErrorCode setWindowAttribute(WindowNumber number, std::string_view attribute,
                                   const AXValue& value) {
        if (attribute == AXAttribute::kPosition) {
            const auto* position = std::get_if<Point>(&value);
            if (position == nullptr || !isFinite(*position)) {
                return AXErrorCode::illegalArgument;
            }
            writePosition(number, *position);
            return AXErrorCode::success;
        }
        if (attribute == AXAttribute::kSize) {
            const auto* size = std::get_if<Size>(&value);
            if (size == nullptr || !isFinite(*size)) {
                return AXErrorCode::illegalArgument;
            }
            writeSize(number, *size);
            return AXErrorCode::success;
        }
        if (attribute == AXAttribute::kFullScreen || attribute == AXAttribute::kMinimized) {
            const auto* flag = std::get_if<bool>(&value);
            if (flag == nullptr) {
                return AXErrorCode::illegalArgument;
            }
            if (attribute == AXAttribute::kFullScreen) {
                setFullScreen(number, *flag);
            } else {
                setMinimized(number, *flag);
            }
            return AXErrorCode::success;
        }
        // Read-only and unknown attributes alike: the window offers nothing to set under the name.
        return AXErrorCode::attributeUnsupported;
    }
};

SimulatedDesktop::SimulatedDesktop(SimulatedDesktopSetup setup, MainQueue& queue)
    : hotKeys_(setup.reservedHotKeys),
      state_(std::make_shared<State>(std::move(setup), queue)),
      alerts_(queue),
      opening_(std::make_unique<SimulatedOpening>(state_)) {}

SimulatedDesktop::~SimulatedDesktop() = default;

ScreenPort& SimulatedDesktop::screenPort() {
    return state_->screens();
}

void SimulatedDesktop::synchronize(std::function<void()> done) {
    state_->synchronize(std::move(done));
}

void SimulatedDesktop::setDisplays(std::vector<SimulatedDisplay> displays) {
    state_->setDisplays(std::move(displays));
}

void SimulatedDesktop::setDockHidden(bool hidden) {
    state_->setDockHidden(hidden);
}

void SimulatedDesktop::addApplication(SimulatedApplication application) {
    state_->addApplication(std::move(application));
}

void SimulatedDesktop::quitApplication(ProcessId pid) {
    state_->quitApplication(pid);
}

void SimulatedDesktop::setApplicationUnresponsive(ProcessId pid, bool unresponsive) {
    state_->setUnresponsive(pid, unresponsive);
}

void SimulatedDesktop::addWindow(ProcessId pid, SimulatedWindow window) {
    state_->addWindow(pid, std::move(window));
}

void SimulatedDesktop::closeWindow(WindowNumber number) {
    state_->closeWindow(number);
}

void SimulatedDesktop::dragWindow(WindowNumber number, const Rect& frame) {
    state_->dragWindow(number, frame);
}

void SimulatedDesktop::focusWindow(WindowNumber number) {
    const auto owner = state_->ownerOf(number);
    if (!owner) {
        return;
    }
    // Clicking a minimized window's Dock tile brings it back first.
    state_->setMinimized(number, false);
    state_->raise(number);
    state_->activate(*owner);
}

void SimulatedDesktop::setWindowBehaviour(WindowNumber number,
                                          const std::function<void(SimulatedWindow&)>& edit) {
    state_->editWindow(number, edit);
}

void SimulatedDesktop::setAccessibilityTrusted(bool trusted) {
    state_->setTrusted(trusted);
}

void SimulatedDesktop::setMouseLocation(Point location) {
    state_->setMouseLocation(location);
}

void SimulatedDesktop::postEvent(const InputEvent& event, bool toThisApplication) {
    state_->postEvent(event, toThisApplication);
}

void SimulatedDesktop::sleepAndWake() {
    state_->sleepAndWake();
}

void SimulatedDesktop::activateThisApplication() {
    state_->activateSelf();
}

std::optional<Rect> SimulatedDesktop::windowFrame(WindowNumber number) const {
    const auto* w = state_->window(number);
    return w == nullptr ? std::nullopt : std::optional(w->frame);
}

std::optional<SimulatedWindow> SimulatedDesktop::window(WindowNumber number) const {
    const auto* w = state_->window(number);
    return w == nullptr ? std::nullopt : std::optional(*w);
}

int SimulatedDesktop::frameWriteCount(WindowNumber number) const {
    return state_->frameWriteCount(number);
}

std::optional<AXElement> SimulatedDesktop::windowElement(WindowNumber number) const {
    const auto owner = state_->ownerOf(number);
    return owner ? std::optional(AXElement(*owner, number)) : std::nullopt;
}

bool SimulatedDesktop::dockHidden() const {
    return state_->dockHidden();
}

std::uint64_t SimulatedDesktop::modifierFlags() const {
    return state_->modifierFlags();
}

bool SimulatedDesktop::isProcessTrusted() const {
    return state_->trusted();
}

AXElement SimulatedDesktop::applicationElement(ProcessId process) {
    return AXElement(process, 0);
}

Expected<AXValue, AXErrorCode> SimulatedDesktop::copyAttributeValue(const AXElement& element,
                                                                    std::string_view attribute) {
    const auto resolved = state_->resolve(element);
    if (!resolved) {
        return unexpected(resolved.error());
    }
    switch (resolved->kind) {
        case ElementKind::application:
            return state_->applicationAttribute(*resolved->application, attribute);
        case ElementKind::window:
            return state_->windowAttribute(resolved->application->pid, *resolved->window,
                                           attribute);
        case ElementKind::closeButton:
            if (attribute == kRole) {
                return AXValue(std::string("AXButton"));
            }
            if (attribute == AXAttribute::kSubrole) {
                return AXValue(std::string(AXAttribute::kCloseButton));
            }
            return unexpected(AXErrorCode::attributeUnsupported);
        case ElementKind::menu:
            return sim::menuAttribute(*resolved->application, resolved->menu, attribute);
    }
    return unexpected(AXErrorCode::failure);
}

AXErrorCode SimulatedDesktop::setAttributeValue(const AXElement& element,
                                                std::string_view attribute, const AXValue& value) {
    const auto resolved = state_->resolve(element);
    if (!resolved) {
        return resolved.error();
    }
    if (resolved->kind != ElementKind::window) {
        return AXErrorCode::attributeUnsupported;
    }
    return state_->setWindowAttribute(resolved->window->number, attribute, value);
}

AXErrorCode SimulatedDesktop::performAction(const AXElement& element, std::string_view action) {
    const auto resolved = state_->resolve(element);
    if (!resolved) {
        return resolved.error();
    }
    if (resolved->kind == ElementKind::window && action == AXAction::kRaise) {
        state_->raise(resolved->window->number);
        return AXErrorCode::success;
    }
    if (resolved->kind == ElementKind::closeButton && action == AXAction::kPress) {
        state_->closeWindow(resolved->window->number);
        return AXErrorCode::success;
    }
    if (resolved->kind == ElementKind::menu) {
        const auto chosen = sim::menuAction(*resolved->application, resolved->menu, action);
        if (!chosen) {
            return chosen.error();
        }
        if (*chosen != nullptr && (*chosen)->opensWindow) {
            state_->openWindow(resolved->application->pid, *(*chosen)->opensWindow,
                               (*chosen)->opensAfter);
        }
        return AXErrorCode::success;
    }
    return AXErrorCode::actionUnsupported;
}

Expected<ProcessId, AXErrorCode> SimulatedDesktop::processOf(const AXElement& element) {
    const auto resolved = state_->resolve(element);
    if (!resolved) {
        return unexpected(resolved.error());
    }
    return resolved->application->pid;
}

std::vector<WindowListEntry> SimulatedDesktop::onScreenWindows() const {
    std::vector<WindowListEntry> entries;
    for (const auto* w : state_->onScreenWindows()) {
        const auto owner = *state_->ownerOf(w->number);
        entries.push_back(WindowListEntry{w->number, w->layer, owner, w->frame,
                                          state_->application(owner)->name, w->title});
    }
    return entries;
}

RunningApplication SimulatedDesktop::currentApplication() const {
    return state_->describe(*state_->application(state_->selfPid()));
}

std::vector<RunningApplication> SimulatedDesktop::runningApplications() const {
    std::vector<RunningApplication> result;
    for (const auto& app : state_->applications()) {
        result.push_back(state_->describe(app));
    }
    return result;
}

std::optional<RunningApplication> SimulatedDesktop::runningApplication(ProcessId process) const {
    const auto* app = state_->application(process);
    return app == nullptr ? std::nullopt : std::optional(state_->describe(*app));
}

std::optional<RunningApplication> SimulatedDesktop::frontmostApplication() const {
    const auto pid = state_->frontmost();
    return pid ? runningApplication(*pid) : std::nullopt;
}

Registration SimulatedDesktop::observeDidActivateApplication(
    std::function<void(const RunningApplication&)> handler) {
    return state_->observeActivation(std::move(handler));
}

bool SimulatedDesktop::canLaunchApplication(const std::string& bundleIdentifier) const {
    return state_->installedApplication(bundleIdentifier) != nullptr ||
           state_->runningApplication(bundleIdentifier) != nullptr;
}

void SimulatedDesktop::launchApplication(const std::string& bundleIdentifier,
                                         LaunchCompletion completion) {
    state_->launch(bundleIdentifier, std::move(completion));
}

bool SimulatedDesktop::activate(ProcessId process) {
    return state_->activate(process);
}

bool SimulatedDesktop::hide(ProcessId process) {
    return state_->hide(process);
}

void SimulatedDesktop::setActivationPolicy(ActivationPolicy policy) {
    state_->application(state_->selfPid())->activationPolicy = policy;
}

Point SimulatedDesktop::mouseLocation() const {
    return state_->mouseLocation();
}

Registration SimulatedDesktop::addGlobalMonitor(EventTypeMask mask, EventHandler handler) {
    return state_->addMonitor(sim::EventMonitor{mask, false, std::move(handler)});
}

Registration SimulatedDesktop::addLocalMonitor(EventTypeMask mask, EventHandler handler) {
    return state_->addMonitor(sim::EventMonitor{mask, true, std::move(handler)});
}

Registration SimulatedDesktop::observeWillSleep(std::function<void()> handler) {
    return state_->observeSleep(std::move(handler));
}

Registration SimulatedDesktop::observeDidWake(std::function<void()> handler) {
    return state_->observeWake(std::move(handler));
}

}  // namespace corvetta
