#include "platform/x11/x11_window_manager_ping.h"

#include <algorithm>

#include "platform/x11/x11_properties.h"

namespace corvetta {

X11WindowManagerPing::X11WindowManagerPing(X11Connection& connection)
    : connection_(connection),
      window_(xcb_generate_id(connection.raw())),
      answerAtom_(connection.atom("_NET_FRAME_EXTENTS")) {
    const std::uint32_t mask = XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_create_window(connection_.raw(), 0, window_, connection_.root(), -1, -1, 1, 1, 0,
                      XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, XCB_CW_EVENT_MASK, &mask);
    connection_.selectRootEvents(XCB_EVENT_MASK_PROPERTY_CHANGE);
    events_ = connection_.addEventHandler(
        [this](const xcb_generic_event_t& event) { return handleEvent(event); });
}

X11WindowManagerPing::~X11WindowManagerPing() {
    events_.reset();
    xcb_destroy_window(connection_.raw(), window_);
    connection_.flush();
}

bool X11WindowManagerPing::isAvailable() {
    if (!available_) {
        X11Properties properties(connection_);
        auto check =
            properties.values(connection_.root(), "_NET_SUPPORTING_WM_CHECK", XCB_ATOM_WINDOW);
        auto supported = properties.values(connection_.root(), "_NET_SUPPORTED", XCB_ATOM_ATOM);
        available_ =
            check && !check->empty() && supported &&
            std::ranges::find(*supported, connection_.atom("_NET_REQUEST_FRAME_EXTENTS")) !=
                supported->end();
    }
    return *available_;
}

bool X11WindowManagerPing::roundTrip(std::chrono::milliseconds patience) {
    if (!isAvailable()) {
        return false;
    }
    const std::uint64_t mine = ++sent_;
    xcb_client_message_event_t message{};
    message.response_type = XCB_CLIENT_MESSAGE;
    message.format = 32;
    message.window = window_;
    message.type = connection_.atom("_NET_REQUEST_FRAME_EXTENTS");
    xcb_send_event(connection_.raw(), 0, connection_.root(),
                   XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY,
                   reinterpret_cast<const char*>(&message));
    // Answers come in order; one to an earlier ping that timed out only moves the count along.
    const auto deadline = std::chrono::steady_clock::now() + patience;
    while (answered_ < mine) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
            deadline - std::chrono::steady_clock::now());
        if (left.count() <= 0 ||
            !connection_.waitForEvent([&](const xcb_generic_event_t&) { return answered_ >= mine; },
                                      left)) {
            // The missing answer is written off, or every later ping would wait for one too many.
            answered_ = sent_;
            available_ = false;
            return false;
        }
    }
    return true;
}

bool X11WindowManagerPing::handleEvent(const xcb_generic_event_t& event) {
    if ((event.response_type & 0x7f) != XCB_PROPERTY_NOTIFY) {
        return false;
    }
    const auto& notify = reinterpret_cast<const xcb_property_notify_event_t&>(event);
    if (notify.window == window_ && notify.atom == answerAtom_) {
        ++answered_;
        return true;
    }
    if (notify.window == connection_.root() &&
        (notify.atom == connection_.atom("_NET_SUPPORTED") ||
         notify.atom == connection_.atom("_NET_SUPPORTING_WM_CHECK"))) {
        available_.reset();
    }
    return false;
}

}  // namespace corvetta
