// tiling_calculator.h: How a tiled group follows one window's resize: neighbours and siblings.
#pragma once

#include <unordered_map>
#include <vector>

#include "foundation/geometry.h"
#include "layouts/lock/adjacency_map.h"

namespace corvetta {

struct Adjustment {
    // The resized window's frame after clamping to what its neighbours can give.
    Rect draggedFrame;
    // Windows across a moved edge, keeping the gap they had to it.
    std::unordered_map<AXWindowRef, Rect> neighborFrames;
    // Windows whose same edge lay on the moved edge's line, moving with it.
    std::unordered_map<AXWindowRef, Rect> siblingFrames;
};

// Below this an edge or a size did not really change: window managers and applications round.
inline constexpr double kResizeTolerance = 2;
// Used when neither a learned nor the window's own minimum size is known.
inline constexpr double kFallbackMinimumSide = 100;

// Pure: no window is read or moved here.
class TilingCalculator {
public:
    // The edges the user dragged: a dimension counts when its size changed by more than the
    // tolerance and exactly one of its two edges moved by more than it (both moving is a move,
    // not a resize). Left and right first, then top and bottom.
    static std::vector<Edge> resizedEdges(const Rect& oldFrame, const Rect& newFrame);

    // `forcedEdges`, when not empty, names the dragged edges instead (a divider drag). Untiled
    // windows take no part; a window missing from `minSizes` may shrink to 100 points.
    static Adjustment adjust(const AdjacencyMap& map, const AXWindowRef& dragged,
                             const Rect& oldFrame, const Rect& newFrame,
                             const std::unordered_map<AXWindowRef, Size>& minSizes,
                             const std::vector<Edge>& forcedEdges = {});
};

}  // namespace corvetta
