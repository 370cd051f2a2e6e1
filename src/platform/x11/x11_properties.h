// x11_properties.h: Typed reads of X window properties and frames for the X11 ports.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <xcb/xcb.h>

#include "foundation/expected.h"
#include "platform/x11/x11_connection.h"

namespace corvetta {

// A rectangle in root-window coordinates (pixels, top-left origin of the X screen).
struct RootRect {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;

    bool contains(int px, int py) const {
        return px >= x && py >= y && px < x + width && py < y + height;
    }
    bool operator==(const RootRect&) const = default;
};

// _NET_FRAME_EXTENTS: what the window manager's decorations add on each side.
struct FrameExtents {
    int left = 0;
    int right = 0;
    int top = 0;
    int bottom = 0;
};

// Typed reads of window properties. A window that has gone gives BadWindow; a property that is
// absent or of another type gives an empty answer.
class X11Properties {
public:
    explicit X11Properties(X11Connection& connection) : connection_(connection) {}

    // 32-bit values (CARDINAL, WINDOW, ATOM lists).
    Expected<std::vector<std::uint32_t>, X11Error> values(xcb_window_t window,
                                                          std::string_view property,
                                                          xcb_atom_t type);
    Expected<std::vector<std::uint32_t>, X11Error> cardinals(xcb_window_t window,
                                                             std::string_view property) {
        return values(window, property, XCB_ATOM_CARDINAL);
    }
    // The raw bytes of an 8-bit property of any type.
    Expected<std::string, X11Error> bytes(xcb_window_t window, xcb_atom_t property,
                                          xcb_atom_t type = XCB_ATOM_ANY);
    // _NET_WM_NAME, else WM_NAME; empty when neither is set.
    Expected<std::string, X11Error> title(xcb_window_t window);
    // The same split in asking and answering; both names are asked at once.
    struct TitleRequest {
        xcb_get_property_cookie_t netName;
        xcb_get_property_cookie_t name;
    };
    TitleRequest requestTitle(xcb_window_t window);
    Expected<std::string, X11Error> titleOf(const TitleRequest& request);
    // The client's process, _NET_WM_PID; none when it does not say.
    Expected<std::optional<std::int32_t>, X11Error> processOf(xcb_window_t window);
    // _NET_FRAME_EXTENTS, read anew each time (they change with maximizing); zero when absent.
    Expected<FrameExtents, X11Error> frameExtents(xcb_window_t window);
    // The client area in root coordinates.
    Expected<RootRect, X11Error> clientRect(xcb_window_t window);
    // The outer frame, decorations included, in root coordinates.
    Expected<RootRect, X11Error> frameRect(xcb_window_t window);
    struct OuterFrame {
        RootRect rect;
        FrameExtents extents;
    };
    // The same with the extents it was reckoned with.
    Expected<OuterFrame, X11Error> outerFrame(xcb_window_t window);
    // The outer frame split in asking and answering, to share a round trip with other reads.
    struct OuterFrameRequest {
        xcb_get_geometry_cookie_t geometry;
        xcb_translate_coordinates_cookie_t translation;
        xcb_get_property_cookie_t extents;
    };
    OuterFrameRequest requestOuterFrame(xcb_window_t window);
    Expected<OuterFrame, X11Error> outerFrameOf(const OuterFrameRequest& request);
    xcb_get_property_cookie_t requestStates(xcb_window_t window);
    // _NET_WM_STATE: the states the window is in.
    Expected<std::vector<xcb_atom_t>, X11Error> states(xcb_window_t window);
    // Whether _NET_WM_STATE holds the state atom.
    Expected<bool, X11Error> hasState(xcb_window_t window, std::string_view state);

    // Split in asking and answering, so several requests share one round trip.
    xcb_get_property_cookie_t request(xcb_window_t window, std::string_view property,
                                      xcb_atom_t type);
    xcb_get_property_cookie_t request(xcb_window_t window, xcb_atom_t property, xcb_atom_t type);
    Expected<std::vector<std::uint32_t>, X11Error> valuesOf(xcb_get_property_cookie_t cookie,
                                                            xcb_atom_t type);
    Expected<std::string, X11Error> bytesOf(xcb_get_property_cookie_t cookie);

private:
    Expected<FrameExtents, X11Error> extentsOf(xcb_get_property_cookie_t cookie);
    Expected<RootRect, X11Error> clientRectOf(xcb_get_geometry_cookie_t geometryCookie,
                                              xcb_translate_coordinates_cookie_t translateCookie);

    X11Connection& connection_;
};

}  // namespace corvetta
