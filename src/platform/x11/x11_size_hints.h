// x11_size_hints.h: Fits sizes to WM_NORMAL_HINTS so the window manager takes them as given.
#pragma once

#include <xcb/xcb_icccm.h>

namespace corvetta {

// What WM_NORMAL_HINTS say about a window's client size: its minimum and the steps it grows in
// (terminals grow by character cells), counted from its base size.
struct X11SizeHints {
    int minWidth = 1;
    int minHeight = 1;
    int baseWidth = 0;
    int baseHeight = 0;
    int widthStep = 1;
    int heightStep = 1;
    bool hasMinimum = false;

    static X11SizeHints from(const xcb_size_hints_t& hints);

    struct ClientSize {
        int width = 0;
        int height = 0;
        bool operator==(const ClientSize&) const = default;
    };
    // The largest size on the window's steps that fits in the one asked for; below the minimum,
    // the smallest on the steps above it. Asked that way, a request is one the window manager
    // takes as it is.
    ClientSize fit(int width, int height) const;
};

}  // namespace corvetta
