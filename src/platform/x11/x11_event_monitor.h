// x11_event_monitor.h: The event monitor port on X11, over XInput 2 raw events on the root window.
#pragma once

#include <bitset>
#include <cstdint>
#include <memory>
#include <optional>

#include <xcb/xcb.h>

#include "foundation/main_queue.h"
#include "platform/input_events.h"
#include "platform/x11/x11_input.h"
#include "platform/x11/x11_key_codes.h"

namespace corvetta {

// Global monitors over XInput 2 raw events on the root window, which arrive whatever window has
// the pointer or the keyboard and even while another client holds a grab. Mouse buttons become
// the mouse-down and mouse-up kinds (scroll-wheel buttons are left out); key presses and releases
// that change Shift, Control, Option or Command become flagsChanged, delivered to the monitors
// present when the queue gets to them. Raw events carry neither
// position nor modifier state: the modifiers follow from the keys held and the modifier mapping
// (asking the server would answer for a later moment when events come in a batch), the position
// is asked of the server when an event is wanted. Local monitors are kept but never called: this
// program has no windows of its own on X11 yet.
class X11EventMonitor final : public EventMonitorPort {
public:
    // Selects the raw events; without XInput 2.2 the monitors hear nothing.
    X11EventMonitor(xcb_connection_t* connection, xcb_window_t root, MainQueue& queue,
                    PrimaryMonitorInRoot primaryMonitorInRoot, RepliesRead repliesRead = {});

    Registration addGlobalMonitor(EventTypeMask mask, EventHandler handler) override;
    Registration addLocalMonitor(EventTypeMask mask, EventHandler handler) override;

    bool isAvailable() const { return extensionOpcode_.has_value(); }
    // True when the event was one of the raw input events. Modifier mapping changes are read but
    // left for others to see too.
    bool handleEvent(const xcb_generic_event_t& event);

private:
    struct Monitor {
        EventTypeMask mask = 0;
        EventHandler handler;
    };
    bool wanted(EventType type) const;
    std::optional<Point> queryPointer() const;
    void readModifierMapping();
    void readHeldKeys();
    std::uint64_t modifierFlags() const;
    void handleButton(std::uint32_t button, bool pressed);
    void handleKey(std::uint32_t keyCode, bool pressed);
    void deliver(const InputEvent& event);

    xcb_connection_t* connection_;
    xcb_window_t root_;
    MainQueue& queue_;
    PrimaryMonitorInRoot primaryMonitorInRoot_;
    RepliesRead repliesRead_;
    std::optional<std::uint8_t> extensionOpcode_;
    // The modifier bit of each key code, and the keys held now.
    ModifierMasksOfKeys modifierOfKey_{};
    std::bitset<256> heldKeys_;
    InputHandlerList<Monitor> globalMonitors_;
    InputHandlerList<Monitor> localMonitors_;
    // Work posted to the queue finds the monitor gone through it.
    std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);
};

}  // namespace corvetta
