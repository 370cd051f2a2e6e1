#include "platform/x11/x11_size_hints.h"

#include <algorithm>

namespace corvetta {

namespace {

int fitOne(int requested, int base, int step, int minimum) {
    const int floor = std::max(minimum, 1);
    int size = std::max(requested, floor);
    if (step > 1 && size > base) {
        size = base + (size - base) / step * step;
        // A minimum between two steps: the next step up honours both.
        if (size < floor) {
            size += step;
        }
    }
    return size;
}

}  // namespace

X11SizeHints X11SizeHints::from(const xcb_size_hints_t& hints) {
    X11SizeHints result;
    const bool hasBase = (hints.flags & XCB_ICCCM_SIZE_HINT_BASE_SIZE) != 0;
    result.hasMinimum = (hints.flags & XCB_ICCCM_SIZE_HINT_P_MIN_SIZE) != 0;
    if (result.hasMinimum) {
        result.minWidth = std::max(1, hints.min_width);
        result.minHeight = std::max(1, hints.min_height);
    }
    // Without a base size the minimum stands in for it, as the conventions for clients say.
    if (hasBase) {
        result.baseWidth = std::max(0, hints.base_width);
        result.baseHeight = std::max(0, hints.base_height);
    } else if (result.hasMinimum) {
        result.baseWidth = result.minWidth;
        result.baseHeight = result.minHeight;
    }
    if ((hints.flags & XCB_ICCCM_SIZE_HINT_P_RESIZE_INC) != 0) {
        result.widthStep = std::max(1, hints.width_inc);
        result.heightStep = std::max(1, hints.height_inc);
    }
    return result;
}

X11SizeHints::ClientSize X11SizeHints::fit(int width, int height) const {
    return {fitOne(width, baseWidth, widthStep, hasMinimum ? minWidth : 1),
            fitOne(height, baseHeight, heightStep, hasMinimum ? minHeight : 1)};
}

}  // namespace corvetta
