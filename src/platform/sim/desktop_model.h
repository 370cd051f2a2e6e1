// desktop_model.h: The simulated desktop's world and rules, behind SimulatedDesktop's ports.
#pragma once

// The simulated desktop's world: displays, the Dock, running applications with their windows, the
// stacking order and the front application. SimulatedDesktop translates the ports onto it; this
// header is private to the simulated-desktop library.

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <unordered_map>
#include <vector>

#include "foundation/main_queue.h"
#include "platform/in_memory_screens.h"
#include "platform/input_events.h"
#include "platform/sim/simulated_desktop_setup.h"

namespace corvetta::sim {

// What a window has beyond its description: how it got where it is.
struct WindowHistory {
    int frameWrites = 0;
    // Where the window was before it went full screen, to go back there when it leaves.
    std::optional<Rect> frameBeforeFullScreen;
};

// Handlers keyed by registration, called from a copy so a handler may drop registrations.
template <class Handler>
struct HandlerList {
    std::map<std::uint64_t, Handler> handlers;
    std::uint64_t nextId = 1;

    std::uint64_t add(Handler handler) {
        handlers.emplace(nextId, std::move(handler));
        return nextId++;
    }
    template <class Call>
    void forEach(Call&& call) {
        const auto snapshot = handlers;
        for (const auto& [id, handler] : snapshot) {
            if (handlers.count(id) > 0) {
                call(handler);
            }
        }
    }
};

struct EventMonitor {
    EventTypeMask mask = 0;
    bool local = false;
    EventHandler handler;
};

class DesktopModel : public std::enable_shared_from_this<DesktopModel> {
public:
    DesktopModel(SimulatedDesktopSetup setup, MainQueue& queue);
    virtual ~DesktopModel() = default;
    DesktopModel(const DesktopModel&) = delete;
    DesktopModel& operator=(const DesktopModel&) = delete;

    // Applications and windows.

    SimulatedApplication* application(ProcessId pid);
    const SimulatedApplication* application(ProcessId pid) const;
    const std::vector<SimulatedApplication>& applications() const { return applications_; }
    const SimulatedApplication* installedApplication(const std::string& bundleIdentifier) const;
    const SimulatedApplication* runningApplication(const std::string& bundleIdentifier) const;
    ProcessId selfPid() const { return selfPid_; }

    SimulatedWindow* window(WindowNumber number);
    const SimulatedWindow* window(WindowNumber number) const;
    std::optional<ProcessId> ownerOf(WindowNumber number) const;
    WindowHistory& history(WindowNumber number) { return histories_[number]; }
    int frameWriteCount(WindowNumber number) const;
    // The first window of the application that is not minimized.
    const SimulatedWindow* focusedWindow(ProcessId pid) const;
    // On-screen windows, front to back, across all applications.
    std::vector<const SimulatedWindow*> onScreenWindows() const;

    // Throws std::invalid_argument for a pid or window number already in use.
    void addApplication(SimulatedApplication application);
    void quitApplication(ProcessId pid);
    // Throws std::invalid_argument for an unknown application or a number already in use.
    void addWindow(ProcessId pid, SimulatedWindow window);
    void closeWindow(WindowNumber number);
    // Adds the window `after` from now (at once for zero) under the next free number, as an
    // application opens one when asked through its menu; nothing happens if the application has
    // quit by then.
    void openWindow(ProcessId pid, SimulatedWindow window, Duration after);
    void setUnresponsive(ProcessId pid, bool unresponsive);

    // Frames, in accessibility space. Both go through the window's rules (movable, resizable,
    // size limits, delay, full screen) and count as writes.
    void writePosition(WindowNumber number, Point position);
    void writeSize(WindowNumber number, Size size);
    void setFullScreen(WindowNumber number, bool fullScreen);
    void setMinimized(WindowNumber number, bool minimized);
    // The user drags the window to `frame`: it takes it at once, within its size limits, without
    // counting a write; a window that refuses moves from other programs still follows the user,
    // a fixed-size one keeps its size, and a full-screen or minimized one cannot be dragged.
    void dragWindow(WindowNumber number, const Rect& frame);
    // Keeps the number, frame and full-screen and minimized states.
    void editWindow(WindowNumber number, const std::function<void(SimulatedWindow&)>& edit);

    // Stacking and activation.

    // The window goes in front of its application's others and of every other window.
    void raise(WindowNumber number);
    std::optional<ProcessId> frontmost() const { return frontmost_; }
    // false for an application that is not running or may not come to the front.
    bool activate(ProcessId pid);
    bool hide(ProcessId pid);
    void activateSelf();
    // The registrations may outlive the model.
    Registration observeActivation(std::function<void(const RunningApplication&)> handler);
    // Starts an installed application (or fronts the running copy) on the next queue turn, or
    // after the application's launch delay; asked again meanwhile, it starts once and every
    // completion runs then. Its late windows appear at their times unless it quit meanwhile.
    void launch(const std::string& bundleIdentifier, LaunchCompletion completion);

    // Displays and the Dock.

    InMemoryScreens& screens() { return screens_; }
    void setDisplays(std::vector<SimulatedDisplay> displays);
    void setDockHidden(bool hidden);
    bool dockHidden() const { return dock_ && dock_->hidden; }

    // Trust, pointer, events.

    // Runs `done` once everything already posted to the queue has run.
    void synchronize(std::function<void()> done) { queue_.post(std::move(done)); }

    bool trusted() const { return trusted_; }
    void setTrusted(bool trusted) { trusted_ = trusted; }
    Point mouseLocation() const { return mouseLocation_; }
    void setMouseLocation(Point location) { mouseLocation_ = location; }
    Registration addMonitor(EventMonitor monitor);
    // A modifier-change event sets the modifiers held from then on.
    void postEvent(const InputEvent& event, bool toThisApplication);
    std::uint64_t modifierFlags() const { return modifierFlags_; }

    // Sleep and wake. The registrations may outlive the model.

    Registration observeSleep(std::function<void()> handler);
    Registration observeWake(std::function<void()> handler);
    // Announces the sleep, then the wake, as a machine that slept and woke up does.
    void sleepAndWake();

    RunningApplication describe(const SimulatedApplication& application) const;

private:
    // The launch itself: the running copy fronted, else the installed one started and fronted.
    Expected<RunningApplication, LaunchError> startOrFront(const std::string& bundleIdentifier);
    // Adds the application with the windows it opens at once and schedules the others. Throws
    // std::invalid_argument, as addApplication does, for a pid or window number in use.
    void start(SimulatedApplication application);
    void applyPosition(WindowNumber number, Point position);
    void applySize(WindowNumber number, Size size);
    // Runs the change now or, for a window that takes frames late, after its delay.
    void applyWhenWindowIsReady(WindowNumber number, std::function<void(DesktopModel&)> change);
    // Undoes a registration for as long as the model lives.
    Registration undoWhileAlive(std::function<void(DesktopModel&)> undo);
    // Above every number in use, installed applications' included, so a later launch never
    // finds its numbers taken.
    WindowNumber unusedWindowNumber() const;
    void bringStrandedWindowsBack();
    void bringApplicationToFront(ProcessId pid);
    void moveToFrontOfApplication(WindowNumber number);
    void removeFromStack(WindowNumber number);
    // After a change to what is on screen: the Dock's intelligent hiding and the main display.
    void windowsChanged();
    // The application whose window is frontmost on screen, for when the front one goes away.
    void frontNextApplication(ProcessId leaving);
    // Announces the change to the activation observers.
    void setFrontmost(ProcessId pid);
    void publishScreens(bool announceEvenIfUnchanged);
    // Rebuilds the lookups after applications went away.
    void reindex();
    void indexApplication(std::size_t index);
    std::vector<Screen> currentScreens() const;
    std::optional<SimulatedDisplay> displayOf(const Rect& axFrame) const;
    Rect toScreenSpace(const Rect& axFrame) const;
    Rect toAccessibilitySpace(const Rect& screenFrame) const;

    MainQueue& queue_;
    std::vector<SimulatedDisplay> displays_;
    std::optional<SimulatedDock> dock_;
    InMemoryScreens screens_;
    // Running applications, this program included.
    std::vector<SimulatedApplication> applications_;
    std::vector<SimulatedApplication> installed_;
    // Lookups for the running applications, so listing every window of every application reads
    // each in constant time: pid to its index in applications_, window number to its owner.
    std::unordered_map<ProcessId, std::size_t> applicationIndex_;
    std::unordered_map<WindowNumber, ProcessId> windowOwners_;
    ProcessId selfPid_ = 0;
    // Every window number, front to back.
    std::vector<WindowNumber> stack_;
    std::map<WindowNumber, WindowHistory> histories_;
    std::optional<ProcessId> frontmost_;
    bool trusted_ = true;
    Point mouseLocation_;
    std::uint64_t modifierFlags_ = 0;
    HandlerList<std::function<void(const RunningApplication&)>> activationObservers_;
    HandlerList<EventMonitor> monitors_;
    HandlerList<std::function<void()>> sleepObservers_;
    HandlerList<std::function<void()>> wakeObservers_;
    // Completions of launches whose application has not started yet, by bundle identifier.
    std::map<std::string, std::vector<LaunchCompletion>> launching_;
    // Windows of started applications still to appear; cancelled when the application quits.
    std::multimap<ProcessId, WorkItem> appearing_;
};

}  // namespace corvetta::sim
