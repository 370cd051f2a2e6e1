// x_probe.h: Reads and drives the X server directly, beside the program under test.
#pragma once

// What an end-to-end test reads from and does to the X server directly, next to the program under
// test: window frames as the server has them, the window manager's lists, and real key presses.

#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "support/fake_x_client.h"

namespace corvetta::testing {

// Root-window coordinates: top-left origin, y down.
struct XFrame {
    int x = 0, y = 0, width = 0, height = 0;
    bool operator==(const XFrame&) const = default;
};
std::ostream& operator<<(std::ostream& out, const XFrame& frame);

class XProbe {
public:
    // Throws std::runtime_error when the server cannot be reached.
    explicit XProbe(const std::string& displayName);

    // The window's outer frame, title bar and borders included: the client's origin translated to
    // the root, less the _NET_FRAME_EXTENTS the window manager publishes. Nothing once it is gone.
    std::optional<XFrame> outerFrame(uint32_t window);
    // _NET_CLIENT_LIST: the windows the window manager manages.
    std::vector<uint32_t> managedWindows();
    std::optional<uint32_t> activeWindow();

    // Asks the window manager to activate `window` and waits until _NET_ACTIVE_WINDOW says so.
    bool activate(uint32_t window);
    // Waits (on root property changes) until `window` is no longer managed.
    bool waitUntilUnmanaged(uint32_t window);
    // Waits until the window manager manages a window whose WM_NAME is `title` and has framed it
    // (its _NET_FRAME_EXTENTS are set); that window.
    std::optional<uint32_t> waitForWindowTitled(const std::string& title);
    // An overlay (a window the window manager leaves alone: a pill, a toast) titled `title`, once
    // it is mapped; none when none came within the deadline.
    std::optional<uint32_t> waitForOverlayTitled(const std::string& title);
    // Whether the window ended unmapped within the deadline.
    bool waitUntilUnmapped(uint32_t window);
    // WM_NORMAL_HINTS' resize increments, as terminals set them to their character cell; none
    // when the window sets none.
    struct Steps {
        int width = 1;
        int height = 1;
    };
    std::optional<Steps> resizeSteps(uint32_t window);

    // Presses the keys in order and releases them in reverse through XTest, like a person holding a
    // combination; `keysyms` are X key symbols (XK_Control_L, XK_Left, ...). Returns once the
    // server has processed the events; false when a symbol has no key in the layout.
    bool pressKeys(const std::vector<uint32_t>& keysyms);
    // A person's drag with the left button: pressed at (fromX, fromY), moved in a few steps to
    // (toX, toY), let go there; returns once the server has handled it all. With `resizing`, the
    // press starts a resize of that window's right edge the way an application with its own
    // decorations does it (_NET_WM_MOVERESIZE, as a border press would in the window manager).
    void drag(int fromX, int fromY, int toX, int toY, uint32_t resizing = 0);

    static constexpr std::chrono::seconds kDeadline{30};

private:
    uint32_t atom(const char* name);
    std::unique_ptr<xcb_get_property_reply_t, decltype(&std::free)> property(uint32_t window,
                                                                             uint32_t name,
                                                                             uint32_t type,
                                                                             uint32_t length);
    std::vector<uint32_t> rootWindows(uint32_t name);
    template <typename Done>
    bool waitForRootChange(Done done);

    FakeClient client_;
    xcb_connection_t* connection_;
    uint32_t root_;
};

}  // namespace corvetta::testing
