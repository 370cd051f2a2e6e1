// x11_window_list.h: The window list port on X11, from the window manager's stacking list.
#pragma once

#include "platform/window_list.h"
#include "platform/x11/x11_connection.h"
#include "platform/x11/x11_properties.h"
#include "platform/x11/x11_screens.h"

namespace corvetta {

// The window list from _NET_CLIENT_LIST_STACKING, front to back. A window's number is its client
// window's id (what "_AXWindowID" gives for it), its bounds the outer frame in accessibility
// space. Minimized (hidden), unmapped and desktop windows are not on screen; docks sit on the
// Dock's layer and keep-above windows on the floating layer.
class X11WindowList final : public WindowListPort {
public:
    static constexpr int kFloatingLayer = 3;
    static constexpr int kDockLayer = 20;

    X11WindowList(X11Connection& connection, const X11Screens& screens)
        : connection_(connection), screens_(screens), properties_(connection) {}

    std::vector<WindowListEntry> onScreenWindows() const override;
    // The stacking list alone, one round trip; minimized windows are in it too.
    std::vector<WindowNumber> windowNumbersFrontToBack() const override;

private:
    // One window's reads, asked together and answered later.
    struct EntryRequest {
        xcb_window_t window;
        xcb_get_window_attributes_cookie_t attributes;
        xcb_get_property_cookie_t states;
        xcb_get_property_cookie_t types;
        xcb_get_property_cookie_t pid;
        xcb_get_property_cookie_t windowClass;
        X11Properties::OuterFrameRequest frame;
        X11Properties::TitleRequest title;
    };
    EntryRequest requestEntry(xcb_window_t window) const;
    std::optional<WindowListEntry> entryOf(const EntryRequest& request,
                                           const X11Coordinates& coordinates) const;

    X11Connection& connection_;
    const X11Screens& screens_;
    mutable X11Properties properties_;
};

}  // namespace corvetta
