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
    // An empty frame (the size cycle's) has no edges to keep apart; insetting it would turn it
    // inside out into a size no window can take.
    if (!(spacing > 0) || frame.isEmpty()) {
        return frame;
    }
    const double half = spacing / 2;
    double left = insetUnlessOnEdge(frame.minX(), visibleFrame.minX(), half);
    double right = insetUnlessOnEdge(frame.maxX(), visibleFrame.maxX(), half);
    double bottom = insetUnlessOnEdge(frame.minY(), visibleFrame.minY(), half);
    double top = insetUnlessOnEdge(frame.maxY(), visibleFrame.maxY(), half);
    // A gap wider than the window would turn it inside out: that direction keeps its size.
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
