#include "platform/x11/x11_pointer.h"

#include <cstdlib>
#include <memory>
#include <utility>

namespace corvetta {

X11Pointer::X11Pointer(xcb_connection_t* connection, xcb_window_t root,
                       PrimaryMonitorInRoot primaryMonitorInRoot, RepliesRead repliesRead)
    : connection_(connection),
      root_(root),
      primaryMonitorInRoot_(std::move(primaryMonitorInRoot)),
      repliesRead_(std::move(repliesRead)) {}

Point X11Pointer::mouseLocation() const {
    const std::unique_ptr<xcb_query_pointer_reply_t, decltype(&std::free)> reply(
        xcb_query_pointer_reply(connection_, xcb_query_pointer(connection_, root_), nullptr),
        &std::free);
    noteRepliesRead(repliesRead_);
    if (reply) {
        lastLocation_ = screenPointFromRoot(
            {static_cast<double>(reply->root_x), static_cast<double>(reply->root_y)},
            primaryMonitorInRoot_());
    }
    return lastLocation_;
}

}  // namespace corvetta
