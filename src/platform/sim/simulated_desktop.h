// simulated_desktop.h: An in-memory desktop of realistic windows for tests, black-box runs, demos.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <vector>

#include "foundation/main_queue.h"
#include "platform/desktop.h"
#include "platform/in_memory_screens.h"
#include "platform/settable_system_appearance.h"
#include "platform/sim/simulated_alerts.h"
#include "platform/sim/simulated_desktop_setup.h"
#include "platform/sim/simulated_hot_keys.h"
#include "platform/sim/simulated_opening.h"

namespace corvetta {

// A desktop held in memory that behaves like real applications do: windows clamp to their
// minimum size, size themselves in steps, take frames late or not at all, go full screen or
// minimized, and a Dock changes a display's visible frame. Tests change it while it runs; every
// change is announced the way the platform would announce it (screen-parameter observers,
// activation observers), synchronously on the calling (main) thread.
class SimulatedDesktop final : public Desktop,
                               private AccessibilityPort,
                               private WindowListPort,
                               private ApplicationsPort,
                               private PointerPort,
                               private EventMonitorPort,
                               private SleepWakePort {
public:
    // Delayed frames and launches run on the queue.
    SimulatedDesktop(SimulatedDesktopSetup setup, MainQueue& queue);
    ~SimulatedDesktop() override;
    SimulatedDesktop(const SimulatedDesktop&) = delete;
    SimulatedDesktop& operator=(const SimulatedDesktop&) = delete;

    std::string kind() const override { return "sim"; }
    ScreenPort& screenPort() override;
    AccessibilityPort& accessibilityPort() override { return *this; }
    WindowListPort& windowListPort() override { return *this; }
    ApplicationsPort& applicationsPort() override { return *this; }
    PointerPort& pointerPort() override { return *this; }
    EventMonitorPort& eventMonitorPort() override { return *this; }
    AlertPort& alertPort() override { return alerts_; }
    HotKeyPort& hotKeyPort() override { return hotKeys_; }
    SleepWakePort& sleepWakePort() override { return *this; }
    OpeningPort& openingPort() override { return *opening_; }
    SystemAppearancePort& systemAppearancePort() override { return appearance_; }
    // Nothing lags behind the model itself: `done` runs on the next queue turn.
    void synchronize(std::function<void()> done) override;

    // Changes made by tests and tools.

    void setDisplays(std::vector<SimulatedDisplay> displays);
    void setDockHidden(bool hidden);
    void addApplication(SimulatedApplication application);
    // The application and its windows go away; its elements turn invalid.
    void quitApplication(ProcessId pid);
    // An application that stops answering fails every accessibility call with cannotComplete,
    // until it answers again.
    void setApplicationUnresponsive(ProcessId pid, bool unresponsive);
    // Adds the window in front of the application's others.
    void addWindow(ProcessId pid, SimulatedWindow window);
    void closeWindow(WindowNumber number);
    // The user drags the window to `frame` (accessibility space): it takes it at once, within its
    // size limits, without counting a write. Fixed-size windows keep their size; full-screen and
    // minimized ones cannot be dragged.
    void dragWindow(WindowNumber number, const Rect& frame);
    // Brings the window's application to the front with the window focused.
    void focusWindow(WindowNumber number);
    // Changes how a window takes frames, keeping where it is.
    void setWindowBehaviour(WindowNumber number, const std::function<void(SimulatedWindow&)>& edit);
    void setAccessibilityTrusted(bool trusted);
    void setMouseLocation(Point location);
    // Delivers an event to the global monitors, or to the local ones when it is meant for this
    // program. Mouse events move the pointer; a modifier-change event sets the modifiers held.
    void postEvent(const InputEvent& event, bool toThisApplication = false);
    // The system sleeps and wakes: the sleep observers, then the wake observers, are called.
    void sleepAndWake();
    // The desktop switches to light or dark, or stops saying which.
    void setSystemAppearance(SystemAppearance appearance) { appearance_.set(appearance); }
    // This program comes to the front, as when its menu or palette opens.
    void activateThisApplication();

    // What tests look at.

    // The window's frame now, in accessibility space; none for an unknown window.
    std::optional<Rect> windowFrame(WindowNumber number) const;
    std::optional<SimulatedWindow> window(WindowNumber number) const;
    // How many position and size writes the window received.
    int frameWriteCount(WindowNumber number) const;
    // The element for a window, as "AXWindows" would hand it out.
    std::optional<AXElement> windowElement(WindowNumber number) const;
    bool dockHidden() const;
    // The event modifier flags held, as the last modifier-change event left them.
    std::uint64_t modifierFlags() const;
    // The alerts shown and the settings opened, and the user's answers to them.
    SimulatedAlerts& alerts() { return alerts_; }
    // The hot keys registered, presses of them, and combinations other applications hold.
    SimulatedHotKeys& hotKeys() { return hotKeys_; }
    // The links, files and terminals opened and the text typed, in order.
    const std::vector<SimulatedOpeningRequest>& openingRequests() const {
        return opening_->requests();
    }

    // The ports.

    bool isProcessTrusted() const override;
    AXElement applicationElement(ProcessId process) override;
    Expected<AXValue, AXErrorCode> copyAttributeValue(const AXElement& element,
                                                      std::string_view attribute) override;
    AXErrorCode setAttributeValue(const AXElement& element, std::string_view attribute,
                                  const AXValue& value) override;
    AXErrorCode performAction(const AXElement& element, std::string_view action) override;
    Expected<ProcessId, AXErrorCode> processOf(const AXElement& element) override;

    std::vector<WindowListEntry> onScreenWindows() const override;

    RunningApplication currentApplication() const override;
    std::vector<RunningApplication> runningApplications() const override;
    std::optional<RunningApplication> runningApplication(ProcessId process) const override;
    std::optional<RunningApplication> frontmostApplication() const override;
    Registration observeDidActivateApplication(
        std::function<void(const RunningApplication&)> handler) override;
    bool canLaunchApplication(const std::string& bundleIdentifier) const override;
    void launchApplication(const std::string& bundleIdentifier,
                           LaunchCompletion completion) override;
    bool activate(ProcessId process) override;
    bool hide(ProcessId process) override;
    void setActivationPolicy(ActivationPolicy policy) override;

    Point mouseLocation() const override;

    Registration addGlobalMonitor(EventTypeMask mask, EventHandler handler) override;
    Registration addLocalMonitor(EventTypeMask mask, EventHandler handler) override;

    Registration observeWillSleep(std::function<void()> handler) override;
    Registration observeDidWake(std::function<void()> handler) override;

private:
    struct State;
    // Before the state, which takes the setup.
    SimulatedHotKeys hotKeys_;
    std::shared_ptr<State> state_;
    SimulatedAlerts alerts_;
    std::unique_ptr<SimulatedOpening> opening_;
    SettableSystemAppearance appearance_;
};

}  // namespace corvetta
