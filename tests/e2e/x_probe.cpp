#include "x_probe.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <memory>
#include <stdexcept>

#include <poll.h>
#include <xcb/xcb.h>

#include "support/child_process.h"

namespace corvetta::testing {
namespace {

using Clock = std::chrono::steady_clock;

template <typename Reply>
using Owned = std::unique_ptr<Reply, decltype(&std::free)>;

template <typename Reply>
Owned<Reply> owned(Reply* reply) {
    return Owned<Reply>(reply, &std::free);
}

std::vector<uint32_t> cardinals(const xcb_get_property_reply_t* reply) {
    if (!reply || reply->format != 32) {
        return {};
    }
    const auto* values = static_cast<const uint32_t*>(xcb_get_property_value(reply));
    return {values, values + xcb_get_property_value_length(reply) / 4};
}

}  // namespace

std::ostream& operator<<(std::ostream& out, const XFrame& frame) {
    return out << "{" << frame.x << ", " << frame.y << ", " << frame.width << ", " << frame.height
               << "}";
}

XProbe::XProbe(const std::string& displayName)
    : client_(displayName), connection_(client_.raw()), root_(client_.root()) {
    // Root properties for the window manager's lists, substructure for overlays it never lists.
    const uint32_t mask = XCB_EVENT_MASK_PROPERTY_CHANGE | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;
    xcb_change_window_attributes(connection_, root_, XCB_CW_EVENT_MASK, &mask);
    xcb_flush(connection_);
}

uint32_t XProbe::atom(const char* name) {
    return client_.atom(name);
}

std::unique_ptr<xcb_get_property_reply_t, decltype(&std::free)> XProbe::property(uint32_t window,
                                                                                 uint32_t name,
                                                                                 uint32_t type,
                                                                                 uint32_t length) {
    return owned(xcb_get_property_reply(
        connection_, xcb_get_property(connection_, 0, window, name, type, 0, length), nullptr));
}

std::vector<uint32_t> XProbe::rootWindows(uint32_t name) {
    return cardinals(property(root_, name, XCB_ATOM_WINDOW, 4096).get());
}

std::optional<XFrame> XProbe::outerFrame(uint32_t window) {
    auto* c = connection_;
    auto geometry = owned(xcb_get_geometry_reply(c, xcb_get_geometry(c, window), nullptr));
    auto origin = owned(xcb_translate_coordinates_reply(
        c, xcb_translate_coordinates(c, window, root_, 0, 0), nullptr));
    auto extents = property(window, atom("_NET_FRAME_EXTENTS"), XCB_ATOM_CARDINAL, 4);
    if (!geometry || !origin) {
        return std::nullopt;
    }
    auto sides = cardinals(extents.get());  // left, right, top, bottom
    sides.resize(4, 0);
    const int left = static_cast<int>(sides[0]), right = static_cast<int>(sides[1]);
    const int top = static_cast<int>(sides[2]), bottom = static_cast<int>(sides[3]);
    return XFrame{origin->dst_x - left, origin->dst_y - top, geometry->width + left + right,
                  geometry->height + top + bottom};
}

std::vector<uint32_t> XProbe::managedWindows() {
    return rootWindows(atom("_NET_CLIENT_LIST"));
}

std::optional<uint32_t> XProbe::activeWindow() {
    const auto windows = rootWindows(atom("_NET_ACTIVE_WINDOW"));
    if (windows.empty()) {
        return std::nullopt;
    }
    return windows.front();
}

template <typename Done>
bool XProbe::waitForRootChange(Done done) {
    const auto deadline = Clock::now() + kDeadline;
    while (!done()) {
        // Events read while waiting for replies are already off the socket: look at them first.
        bool sawEvent = false;
        while (auto* event = xcb_poll_for_event(connection_)) {
            sawEvent = true;
            std::free(event);
        }
        if (sawEvent) {
            continue;
        }
        pollfd polled = {xcb_get_file_descriptor(connection_), POLLIN, 0};
        const int ready = poll(&polled, 1, millisecondsUntil(deadline));
        if (ready == 0 || (ready < 0 && errno != EINTR) || xcb_connection_has_error(connection_)) {
            return done();
        }
    }
    return true;
}

bool XProbe::activate(uint32_t window) {
    xcb_client_message_event_t message = {};
    message.response_type = XCB_CLIENT_MESSAGE;
    message.format = 32;
    message.window = window;
    message.type = atom("_NET_ACTIVE_WINDOW");
    message.data.data32[0] = 2;  // a pager: the window manager obeys without second thoughts
    message.data.data32[1] = XCB_CURRENT_TIME;
    xcb_send_event(connection_, 0, root_,
                   XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
                   reinterpret_cast<const char*>(&message));
    xcb_flush(connection_);
    return waitForRootChange([&] { return activeWindow() == window; });
}

bool XProbe::waitUntilUnmanaged(uint32_t window) {
    return waitForRootChange([&] {
        const auto windows = managedWindows();
        return std::find(windows.begin(), windows.end(), window) == windows.end();
    });
}

std::optional<uint32_t> XProbe::waitForWindowTitled(const std::string& title) {
    std::optional<uint32_t> found;
    waitForRootChange([&] {
        for (const uint32_t window : managedWindows()) {
            auto name = property(window, XCB_ATOM_WM_NAME, XCB_ATOM_ANY, 256);
            auto extents = property(window, atom("_NET_FRAME_EXTENTS"), XCB_ATOM_CARDINAL, 4);
            if (name && extents && cardinals(extents.get()).size() == 4 &&
                std::string(static_cast<const char*>(xcb_get_property_value(name.get())),
                            static_cast<std::size_t>(xcb_get_property_value_length(name.get()))) ==
                    title) {
                found = window;
                return true;
            }
        }
        return false;
    });
    return found;
}

std::optional<uint32_t> XProbe::waitForOverlayTitled(const std::string& title) {
    std::optional<uint32_t> found;
    waitForRootChange([&] {
        auto tree =
            owned(xcb_query_tree_reply(connection_, xcb_query_tree(connection_, root_), nullptr));
        if (!tree) {
            return false;
        }
        const xcb_window_t* children = xcb_query_tree_children(tree.get());
        for (int i = 0; i < xcb_query_tree_children_length(tree.get()); ++i) {
            auto attributes = owned(xcb_get_window_attributes_reply(
                connection_, xcb_get_window_attributes(connection_, children[i]), nullptr));
            if (!attributes || !attributes->override_redirect ||
                attributes->map_state != XCB_MAP_STATE_VIEWABLE) {
                continue;
            }
            auto name = property(children[i], XCB_ATOM_WM_NAME, XCB_ATOM_ANY, 256);
            if (name && std::string(static_cast<const char*>(xcb_get_property_value(name.get())),
                                    static_cast<std::size_t>(
                                        xcb_get_property_value_length(name.get()))) == title) {
                found = children[i];
                return true;
            }
        }
        return false;
    });
    return found;
}

bool XProbe::waitUntilUnmapped(uint32_t window) {
    return waitForRootChange([&] {
        auto attributes = owned(xcb_get_window_attributes_reply(
            connection_, xcb_get_window_attributes(connection_, window), nullptr));
        return !attributes || attributes->map_state != XCB_MAP_STATE_VIEWABLE;
    });
}

std::optional<XProbe::Steps> XProbe::resizeSteps(uint32_t window) {
    // WM_SIZE_HINTS: flags, 4 obsolete fields, min, max, increments, aspects, base, gravity.
    constexpr uint32_t kResizeIncrements = 1u << 6;
    const auto hints =
        cardinals(property(window, XCB_ATOM_WM_NORMAL_HINTS, XCB_ATOM_WM_SIZE_HINTS, 18).get());
    if (hints.size() < 11 || (hints[0] & kResizeIncrements) == 0) {
        return std::nullopt;
    }
    return Steps{static_cast<int>(hints[9]), static_cast<int>(hints[10])};
}

bool XProbe::pressKeys(const std::vector<uint32_t>& keysyms) {
    std::vector<xcb_keycode_t> keys;
    try {
        for (const uint32_t keysym : keysyms) {
            keys.push_back(client_.keyCode(keysym));
        }
    } catch (const std::runtime_error&) {
        return false;
    }
    for (const auto key : keys) {
        client_.fake(XCB_KEY_PRESS, key);
    }
    for (auto key = keys.rbegin(); key != keys.rend(); ++key) {
        client_.fake(XCB_KEY_RELEASE, *key);
    }
    // A reply comes after the server has handled every request before it.
    client_.sync();
    return true;
}

void XProbe::drag(int fromX, int fromY, int toX, int toY, uint32_t resizing) {
    const auto at = [](int from, int to, int step) {
        return static_cast<std::int16_t>(from + (to - from) * step / 4);
    };
    client_.moveTo(static_cast<std::int16_t>(fromX), static_cast<std::int16_t>(fromY));
    client_.fake(XCB_BUTTON_PRESS, 1);
    if (resizing != 0) {
        constexpr uint32_t kSizeRight = 3, kLeftButton = 1, kSourceApplication = 1;
        xcb_client_message_event_t message{};
        message.response_type = XCB_CLIENT_MESSAGE;
        message.format = 32;
        message.window = resizing;
        message.type = client_.atom("_NET_WM_MOVERESIZE");
        message.data.data32[0] = static_cast<uint32_t>(fromX);
        message.data.data32[1] = static_cast<uint32_t>(fromY);
        message.data.data32[2] = kSizeRight;
        message.data.data32[3] = kLeftButton;
        message.data.data32[4] = kSourceApplication;
        xcb_send_event(client_.raw(), 0, client_.root(),
                       XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY,
                       reinterpret_cast<const char*>(&message));
        client_.sync();
    }
    for (int step = 1; step <= 4; ++step) {
        client_.moveTo(at(fromX, toX, step), at(fromY, toY, step));
        // Each step reaches the window manager before the next, as a hand's motion does.
        client_.sync();
    }
    client_.fake(XCB_BUTTON_RELEASE, 1);
    client_.sync();
}

}  // namespace corvetta::testing
