// adjacency_map.h: The tiled group of a layout lock and which windows touch which, per edge.
#pragma once

#include <array>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "foundation/geometry.h"
#include "layouts/ax_window_ref.h"

namespace corvetta {

// In this order, so code that walks every edge handles them alike everywhere.
enum class Edge { left, right, top, bottom };
inline constexpr std::array<Edge, 4> kAllEdges{Edge::left, Edge::right, Edge::top, Edge::bottom};

// "left", "right", "top", "bottom": how clients and logs name an edge.
std::string_view edgeName(Edge edge);

// The windows touching one window on each side.
struct Neighbors {
    std::vector<AXWindowRef> left;
    std::vector<AXWindowRef> right;
    std::vector<AXWindowRef> top;
    std::vector<AXWindowRef> bottom;

    std::vector<AXWindowRef>& on(Edge edge);
    const std::vector<AXWindowRef>& on(Edge edge) const;
};

// Frames are in accessibility space (top-left origin, y downward).
struct TiledWindow {
    AXWindowRef ref;
    Rect frame;
    // Where the layout put it: what "Reset" goes back to.
    Rect originalFrame;
    // False once the window has left the group.
    bool isTiled = true;
};

struct AdjacencyMap {
    // In the layout's placement order.
    std::vector<TiledWindow> windows;
    std::unordered_map<AXWindowRef, Neighbors> neighbors;

    TiledWindow* find(const AXWindowRef& ref);
    const TiledWindow* find(const AXWindowRef& ref) const;
    const Neighbors& neighborsOf(const AXWindowRef& ref) const;
};

// Edges closer than this are one line: it absorbs the layout spacing between panes.
inline constexpr double kAdjacencyTolerance = 12;

// Neighbours by edge line alone, with no test that the two windows face each other: in a 2x2 grid
// the upper-left window is a right-hand partner of the lower-right one, which is what lets one
// divider line move every window that shares it.
AdjacencyMap buildAdjacencyMap(std::vector<TiledWindow> windows);

// The coordinate of one edge of a frame, in accessibility space.
double edgeCoordinate(const Rect& frame, Edge edge);
// The frame with one edge moved by `delta`, the opposite edge staying where it was.
Rect movingEdge(const Rect& frame, Edge edge, double delta);

}  // namespace corvetta
