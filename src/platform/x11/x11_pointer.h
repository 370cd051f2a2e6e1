// x11_pointer.h: The pointer port on X11: where the pointer is, asked of the server.
#pragma once

#include <xcb/xcb.h>

#include "platform/pointer.h"
#include "platform/x11/x11_input.h"

namespace corvetta {

// Where the pointer is, asked of the server each time.
class X11Pointer final : public PointerPort {
public:
    X11Pointer(xcb_connection_t* connection, xcb_window_t root,
               PrimaryMonitorInRoot primaryMonitorInRoot, RepliesRead repliesRead = {});

    // The last location known when the server does not answer.
    Point mouseLocation() const override;

private:
    xcb_connection_t* connection_;
    xcb_window_t root_;
    PrimaryMonitorInRoot primaryMonitorInRoot_;
    RepliesRead repliesRead_;
    mutable Point lastLocation_;
};

}  // namespace corvetta
