#include "platform/x11/x11_event_monitor.h"

#include <cstdlib>
#include <memory>
#include <utility>

#include <xcb/xinput.h>

#include "platform/x11/x11_key_codes.h"

namespace corvetta {

namespace {

struct FreeMemory {
    void operator()(void* memory) const { std::free(memory); }
};

constexpr std::uint32_t kLeftButton = 1;
constexpr std::uint32_t kMiddleButton = 2;
constexpr std::uint32_t kRightButton = 3;
// Buttons 4 to 7 are the wheel's steps, not clicks.
constexpr std::uint32_t kFirstWheelButton = 4;
constexpr std::uint32_t kLastWheelButton = 7;

std::optional<std::uint8_t> selectRawEvents(xcb_connection_t* connection, xcb_window_t root) {
    const xcb_query_extension_reply_t* extension =
        xcb_get_extension_data(connection, &xcb_input_id);
    if (!extension || !extension->present) {
        return std::nullopt;
    }
    // Raw events reach the root window regardless of grabs from version 2.1 on.
    std::unique_ptr<xcb_input_xi_query_version_reply_t, FreeMemory> version(
        xcb_input_xi_query_version_reply(connection, xcb_input_xi_query_version(connection, 2, 2),
                                         nullptr));
    if (!version || version->major_version < 2 ||
        (version->major_version == 2 && version->minor_version < 1)) {
        return std::nullopt;
    }
    struct {
        xcb_input_event_mask_t head;
        std::uint32_t bits;
    } mask{{XCB_INPUT_DEVICE_ALL_MASTER, 1},
           XCB_INPUT_XI_EVENT_MASK_RAW_KEY_PRESS | XCB_INPUT_XI_EVENT_MASK_RAW_KEY_RELEASE |
               XCB_INPUT_XI_EVENT_MASK_RAW_BUTTON_PRESS |
               XCB_INPUT_XI_EVENT_MASK_RAW_BUTTON_RELEASE};
    std::unique_ptr<xcb_generic_error_t, FreeMemory> error(xcb_request_check(
        connection, xcb_input_xi_select_events_checked(connection, root, 1, &mask.head)));
    if (error) {
        return std::nullopt;
    }
    return extension->major_opcode;
}

std::optional<EventType> buttonEventType(std::uint32_t button, bool pressed) {
    if (button >= kFirstWheelButton && button <= kLastWheelButton) {
        return std::nullopt;
    }
    switch (button) {
        case kLeftButton:
            return pressed ? EventType::leftMouseDown : EventType::leftMouseUp;
        case kRightButton:
            return pressed ? EventType::rightMouseDown : EventType::rightMouseUp;
        case kMiddleButton:
        default:
            return pressed ? EventType::otherMouseDown : EventType::otherMouseUp;
    }
}

}  // namespace

X11EventMonitor::X11EventMonitor(xcb_connection_t* connection, xcb_window_t root, MainQueue& queue,
                                 PrimaryMonitorInRoot primaryMonitorInRoot, RepliesRead repliesRead)
    : connection_(connection),
      root_(root),
      queue_(queue),
      primaryMonitorInRoot_(std::move(primaryMonitorInRoot)),
      repliesRead_(std::move(repliesRead)),
      extensionOpcode_(selectRawEvents(connection, root)) {
    readModifierMapping();
    readHeldKeys();
}

Registration X11EventMonitor::addGlobalMonitor(EventTypeMask mask, EventHandler handler) {
    return globalMonitors_.add({mask, std::move(handler)});
}

Registration X11EventMonitor::addLocalMonitor(EventTypeMask mask, EventHandler handler) {
    return localMonitors_.add({mask, std::move(handler)});
}

bool X11EventMonitor::handleEvent(const xcb_generic_event_t& event) {
    const auto type = event.response_type & ~0x80;
    if (type == XCB_MAPPING_NOTIFY) {
        if (reinterpret_cast<const xcb_mapping_notify_event_t&>(event).request ==
            XCB_MAPPING_MODIFIER) {
            readModifierMapping();
        }
        return false;
    }
    if (type != XCB_GE_GENERIC || !extensionOpcode_) {
        return false;
    }
    const auto& generic = reinterpret_cast<const xcb_ge_generic_event_t&>(event);
    if (generic.extension != *extensionOpcode_) {
        return false;
    }
    const auto& raw = reinterpret_cast<const xcb_input_raw_button_press_event_t&>(event);
    switch (generic.event_type) {
        case XCB_INPUT_RAW_BUTTON_PRESS:
        case XCB_INPUT_RAW_BUTTON_RELEASE:
            handleButton(raw.detail, generic.event_type == XCB_INPUT_RAW_BUTTON_PRESS);
            return true;
        case XCB_INPUT_RAW_KEY_PRESS:
        case XCB_INPUT_RAW_KEY_RELEASE:
            handleKey(raw.detail, generic.event_type == XCB_INPUT_RAW_KEY_PRESS);
            return true;
        default:
            return false;
    }
}

bool X11EventMonitor::wanted(EventType type) const {
    return globalMonitors_.any(
        [&](const Monitor& monitor) { return (monitor.mask & eventMask(type)) != 0; });
}

std::optional<Point> X11EventMonitor::queryPointer() const {
    std::unique_ptr<xcb_query_pointer_reply_t, FreeMemory> reply(
        xcb_query_pointer_reply(connection_, xcb_query_pointer(connection_, root_), nullptr));
    noteRepliesRead(repliesRead_);
    if (!reply) {
        return std::nullopt;
    }
    const Point root{static_cast<double>(reply->root_x), static_cast<double>(reply->root_y)};
    return screenPointFromRoot(root, primaryMonitorInRoot_());
}

void X11EventMonitor::readModifierMapping() {
    modifierOfKey_ = readModifierMasksOfKeys(connection_);
    noteRepliesRead(repliesRead_);
}

void X11EventMonitor::readHeldKeys() {
    std::unique_ptr<xcb_query_keymap_reply_t, FreeMemory> keymap(
        xcb_query_keymap_reply(connection_, xcb_query_keymap(connection_), nullptr));
    noteRepliesRead(repliesRead_);
    if (!keymap) {
        return;
    }
    for (std::size_t keyCode = 0; keyCode < heldKeys_.size(); ++keyCode) {
        heldKeys_[keyCode] = (keymap->keys[keyCode / 8] & (1u << (keyCode % 8))) != 0;
    }
}

std::uint64_t X11EventMonitor::modifierFlags() const {
    std::uint16_t state = 0;
    for (std::size_t keyCode = 0; keyCode < heldKeys_.size(); ++keyCode) {
        if (heldKeys_[keyCode]) {
            state |= modifierOfKey_[keyCode];
        }
    }
    return eventFlagsFromX11Modifiers(state);
}

void X11EventMonitor::handleButton(std::uint32_t button, bool pressed) {
    const auto type = buttonEventType(button, pressed);
    if (!type || !wanted(*type)) {
        return;
    }
    if (const auto location = queryPointer()) {
        deliver({*type, *location, modifierFlags(), 0});
    }
}

void X11EventMonitor::handleKey(std::uint32_t keyCode, bool pressed) {
    if (keyCode >= heldKeys_.size()) {
        return;
    }
    const auto before = modifierFlags();
    heldKeys_[keyCode] = pressed;
    const auto now = modifierFlags();
    if (now == before) {
        return;
    }
    // Whether anyone listens is asked on the queue, not now: a hot key read in the same batch
    // just before this key is handled on the queue too, and the monitor it installs (a cycle
    // waiting for Control's release) must hear the modifiers let go right after it.
    queue_.post([this, alive = std::weak_ptr<bool>(alive_), now] {
        if (!alive.lock() || !wanted(EventType::flagsChanged)) {
            return;
        }
        if (const auto location = queryPointer()) {
            deliver({EventType::flagsChanged, *location, now, 0});
        }
    });
}

void X11EventMonitor::deliver(const InputEvent& event) {
    globalMonitors_.postToEach(queue_, [event](const Monitor& monitor) {
        if ((monitor.mask & eventMask(event.type)) != 0) {
            monitor.handler(event);
        }
    });
}

}  // namespace corvetta
