// x11_frame_watch.h: A bare X client for the benchmarks: sends moves and waits on the server.
#pragma once

#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <stdexcept>
#include <string>

#include <poll.h>
#include <xcb/xcb.h>

#include "x_probe.h"

namespace corvetta::testing {

// Wakes on whatever the X server announces about the window: its frame moving (a ConfigureNotify
// of a child of the root), its own ConfigureNotify, real or synthetic, and its properties. The
// probe's separate connection reads the frame back after each wake-up.
class FrameWatch {
public:
    FrameWatch(const std::string& displayName, uint32_t window)
        : connection_(xcb_connect(displayName.c_str(), nullptr)) {
        if (xcb_connection_has_error(connection_)) {
            xcb_disconnect(connection_);
            throw std::runtime_error("cannot connect to X display " + displayName);
        }
        const uint32_t root = xcb_setup_roots_iterator(xcb_get_setup(connection_)).data->root;
        const uint32_t rootMask = XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;
        xcb_change_window_attributes(connection_, root, XCB_CW_EVENT_MASK, &rootMask);
        watch(window);
        const char name[] = "_NET_MOVERESIZE_WINDOW";
        auto* atom = xcb_intern_atom_reply(
            connection_, xcb_intern_atom(connection_, 0, sizeof name - 1, name), nullptr);
        moveResizeAtom_ = atom ? atom->atom : xcb_atom_t{XCB_ATOM_NONE};
        std::free(atom);
        // Selected before the first press (the atom's round trip saw to it), so no change can
        // slip by unannounced.
    }
    ~FrameWatch() { xcb_disconnect(connection_); }

    // Wakes on this window's own changes too.
    void watch(uint32_t window) {
        const uint32_t windowMask =
            XCB_EVENT_MASK_STRUCTURE_NOTIFY | XCB_EVENT_MASK_PROPERTY_CHANGE;
        xcb_change_window_attributes(connection_, window, XCB_CW_EVENT_MASK, &windowMask);
    }
    FrameWatch(const FrameWatch&) = delete;
    FrameWatch& operator=(const FrameWatch&) = delete;

    // The request Corvetta's accessibility emulation sends for a frame: NorthWest gravity, x, y,
    // width and height given, source 2; the size is the client's, the frame's extents left out.
    void moveResize(uint32_t window, const XFrame& frame, int extraWidth, int extraHeight) {
        xcb_client_message_event_t message{};
        message.response_type = XCB_CLIENT_MESSAGE;
        message.format = 32;
        message.window = window;
        message.type = moveResizeAtom_;
        message.data.data32[0] = 1 | (0xfu << 8) | (2u << 12);
        message.data.data32[1] = static_cast<uint32_t>(frame.x);
        message.data.data32[2] = static_cast<uint32_t>(frame.y);
        message.data.data32[3] = static_cast<uint32_t>(frame.width - extraWidth);
        message.data.data32[4] = static_cast<uint32_t>(frame.height - extraHeight);
        const uint32_t root = xcb_setup_roots_iterator(xcb_get_setup(connection_)).data->root;
        xcb_send_event(connection_, 0, root,
                       XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY,
                       reinterpret_cast<const char*>(&message));
        xcb_flush(connection_);
    }

    // True once `reached` holds; it is asked again after every batch of events.
    bool waitUntil(const std::function<bool()>& reached,
                   std::chrono::steady_clock::time_point deadline) {
        for (;;) {
            while (auto* event = xcb_poll_for_event(connection_)) {
                std::free(event);
            }
            if (reached()) {
                return true;
            }
            const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
                deadline - std::chrono::steady_clock::now());
            if (left.count() <= 0 || xcb_connection_has_error(connection_)) {
                return false;
            }
            pollfd polled = {xcb_get_file_descriptor(connection_), POLLIN, 0};
            poll(&polled, 1, static_cast<int>(left.count()));
        }
    }

private:
    xcb_connection_t* connection_;
    xcb_atom_t moveResizeAtom_ = XCB_ATOM_NONE;
};

}  // namespace corvetta::testing
