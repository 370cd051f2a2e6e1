// x11_window_manager_ping.h: Tells when the window manager has handled our requests.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>

#include "platform/x11/x11_connection.h"

namespace corvetta {

// A round trip through the window manager. It handles client messages one after another in the
// order they reach it, so once it has answered a _NET_REQUEST_FRAME_EXTENTS sent after other
// requests, it has handled those too, and the X server has already carried out what it asked for
// them. That tells a move it refused or rounded apart from one still on its way, which no wait for
// the window's own events can. The request is made for a window of ours that is never mapped, and
// the answer is the window manager writing its _NET_FRAME_EXTENTS.
class X11WindowManagerPing {
public:
    explicit X11WindowManagerPing(X11Connection& connection);
    ~X11WindowManagerPing();
    X11WindowManagerPing(const X11WindowManagerPing&) = delete;
    X11WindowManagerPing& operator=(const X11WindowManagerPing&) = delete;

    // Whether a window manager runs that promises to answer (_NET_SUPPORTED); asked again when
    // the window manager changes.
    bool isAvailable();
    // Sends a ping after every request made so far and waits for its answer, at most `patience`;
    // whether it came. A window manager that let one go unanswered is not asked again until
    // another announces itself.
    bool roundTrip(std::chrono::milliseconds patience);

private:
    bool handleEvent(const xcb_generic_event_t& event);

    X11Connection& connection_;
    xcb_window_t window_;
    xcb_atom_t answerAtom_;
    std::optional<bool> available_;
    std::uint64_t sent_ = 0;
    std::uint64_t answered_ = 0;
    Registration events_;
};

}  // namespace corvetta
