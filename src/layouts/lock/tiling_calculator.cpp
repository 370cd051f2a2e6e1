#include "layouts/lock/tiling_calculator.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace corvetta {

namespace {

Edge opposite(Edge edge) {
    switch (edge) {
        case Edge::left:
            return Edge::right;
        case Edge::right:
            return Edge::left;
        case Edge::top:
            return Edge::bottom;
        case Edge::bottom:
            return Edge::top;
    }
    return edge;
}

bool isHorizontal(Edge edge) {
    return edge == Edge::left || edge == Edge::right;
}

// Moving a left or top edge by +d shrinks the window; a right or bottom edge grows it.
double growthSign(Edge edge) {
    return edge == Edge::left || edge == Edge::top ? -1 : 1;
}

double extent(const Rect& frame, Edge edge) {
    return isHorizontal(edge) ? frame.width() : frame.height();
}

struct EdgeMove {
    AXWindowRef ref;
    Edge edge;
    bool isNeighbor;
};

// The interval of deltas that keeps every moving window at or above its minimum; it always holds
// 0, so a window already below its minimum only forbids shrinking it further.
struct DeltaRange {
    double low = -std::numeric_limits<double>::infinity();
    double high = std::numeric_limits<double>::infinity();

    void keepAtLeast(double currentExtent, double minimum, Edge movingEdge) {
        const double allowedShrink = std::min(0.0, minimum - currentExtent);
        if (growthSign(movingEdge) > 0) {
            low = std::max(low, allowedShrink);
        } else {
            high = std::min(high, -allowedShrink);
        }
    }
    double clamp(double delta) const { return std::clamp(delta, low, high); }
};

}  // namespace

std::vector<Edge> TilingCalculator::resizedEdges(const Rect& oldFrame, const Rect& newFrame) {
    std::vector<Edge> edges;
    const auto dimension = [&](Edge first, Edge second) {
        if (std::abs(extent(newFrame, first) - extent(oldFrame, first)) <= kResizeTolerance) {
            return;
        }
        const auto moved = [&](Edge edge) {
            return std::abs(edgeCoordinate(newFrame, edge) - edgeCoordinate(oldFrame, edge)) >
                   kResizeTolerance;
        };
        if (moved(first) != moved(second)) {
            edges.push_back(moved(first) ? first : second);
        }
    };
    dimension(Edge::left, Edge::right);
    dimension(Edge::top, Edge::bottom);
    return edges;
}

Adjustment TilingCalculator::adjust(const AdjacencyMap& map, const AXWindowRef& dragged,
                                    const Rect& oldFrame, const Rect& newFrame,
                                    const std::unordered_map<AXWindowRef, Size>& minSizes,
                                    const std::vector<Edge>& forcedEdges) {
    Adjustment adjustment{newFrame, {}, {}};
    std::unordered_map<AXWindowRef, Rect> frames;
    std::unordered_map<AXWindowRef, bool> isNeighbor;
    const auto currentFrame = [&](const AXWindowRef& ref) {
        const auto found = frames.find(ref);
        return found != frames.end() ? found->second : map.find(ref)->frame;
    };
    const auto minimum = [&](const AXWindowRef& ref, Edge edge) {
        const auto found = minSizes.find(ref);
        if (found == minSizes.end()) {
            return kFallbackMinimumSide;
        }
        return isHorizontal(edge) ? found->second.width : found->second.height;
    };
    const auto tiledOther = [&](const AXWindowRef& ref) {
        const auto* window = map.find(ref);
        return window != nullptr && window->isTiled && !(ref == dragged);
    };

    const auto edges = forcedEdges.empty() ? resizedEdges(oldFrame, newFrame) : forcedEdges;
    for (const Edge edge : kAllEdges) {
        if (std::find(edges.begin(), edges.end(), edge) == edges.end()) {
            continue;
        }
        const double oldLine = edgeCoordinate(oldFrame, edge);
        const double requested = edgeCoordinate(newFrame, edge) - oldLine;
        std::vector<EdgeMove> moves;
        for (const auto& ref : map.neighborsOf(dragged).on(edge)) {
            if (tiledOther(ref)) {
                moves.push_back({ref, opposite(edge), true});
            }
        }
        for (const auto& window : map.windows) {
            const bool alreadyMoving = std::any_of(
                moves.begin(), moves.end(), [&](const auto& m) { return m.ref == window.ref; });
            if (tiledOther(window.ref) && !alreadyMoving &&
                std::abs(edgeCoordinate(window.frame, edge) - oldLine) < kAdjacencyTolerance) {
                moves.push_back({window.ref, edge, false});
            }
        }
        DeltaRange range;
        for (const auto& move : moves) {
            range.keepAtLeast(extent(currentFrame(move.ref), edge), minimum(move.ref, edge),
                              move.edge);
        }
        const double delta = range.clamp(requested);
        for (const auto& move : moves) {
            frames[move.ref] = movingEdge(currentFrame(move.ref), move.edge, delta);
            isNeighbor.try_emplace(move.ref, move.isNeighbor);
        }
        adjustment.draggedFrame =
            movingEdge(adjustment.draggedFrame, edge,
                       oldLine + delta - edgeCoordinate(adjustment.draggedFrame, edge));
    }
    for (const auto& [ref, frame] : frames) {
        (isNeighbor[ref] ? adjustment.neighborFrames : adjustment.siblingFrames)[ref] = frame;
    }
    return adjustment;
}

}  // namespace corvetta
