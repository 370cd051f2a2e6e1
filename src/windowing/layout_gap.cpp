#include "windowing/layout_gap.h"

#include <cmath>

namespace corvetta {

namespace {

// Edges closer than this to the visible frame's edge count as lying on it: calculated frames are
// floored, so an edge meant to touch the screen may miss it by a fraction of a point.
constexpr double kEdgeTolerance = 2;

double insetUnlessOnEdge(double edge, double screenEdge, double inset) {
    return std::fabs(edge - screenEdge) < kEdgeTolerance ? 0 : inset;
}

}  // namespace

Rect insetByLayoutGap(const Rect& frame, const Rect& visibleFrame, double spacing) {
    if (!(spacing > 0)) {
        return frame;
    }
    const double half = spacing / 2;
    double left = insetUnlessOnEdge(frame.minX(), visibleFrame.minX(), half);
    double right = insetUnlessOnEdge(frame.maxX(), visibleFrame.maxX(), half);
    double bottom = insetUnlessOnEdge(frame.minY(), visibleFrame.minY(), half);
    double top = insetUnlessOnEdge(frame.maxY(), visibleFrame.maxY(), half);
    // A gap wider than the window would turn it inside out into a size no window can take: that
    // direction keeps its size. This also leaves the size cycle's empty frame as it is.
    if (!(left + right < frame.size.width)) {
        left = right = 0;
    }
    if (!(bottom + top < frame.size.height)) {
        bottom = top = 0;
    }
    return Rect(frame.origin.x + left, frame.origin.y + bottom, frame.size.width - left - right,
                frame.size.height - bottom - top);
}

}  // namespace corvetta
