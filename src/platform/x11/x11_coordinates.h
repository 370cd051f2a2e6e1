// x11_coordinates.h: Converts X root coordinates into screen and accessibility space.
#pragma once

#include <cmath>
#include <utility>

#include "foundation/geometry.h"
#include "platform/x11/x11_properties.h"

namespace corvetta {

// Root coordinates to the program's two spaces: accessibility space is root space shifted so the
// primary monitor's top-left is (0, 0); screen space then flips y about the primary's height.
struct X11Coordinates {
    RootRect primary;

    Rect toAccessibility(const RootRect& rect) const {
        return {static_cast<double>(rect.x - primary.x), static_cast<double>(rect.y - primary.y),
                static_cast<double>(rect.width), static_cast<double>(rect.height)};
    }
    Rect toScreen(const RootRect& rect) const {
        const Rect ax = toAccessibility(rect);
        return {ax.origin.x, primary.height - (ax.origin.y + ax.size.height), ax.size.width,
                ax.size.height};
    }
    // An accessibility-space point in root coordinates, rounded to whole pixels.
    std::pair<int, int> toRoot(const Point& point) const {
        return {static_cast<int>(std::lround(point.x)) + primary.x,
                static_cast<int>(std::lround(point.y)) + primary.y};
    }
};

}  // namespace corvetta
