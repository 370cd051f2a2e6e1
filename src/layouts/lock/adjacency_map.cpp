#include "layouts/lock/adjacency_map.h"

#include <cmath>
#include <utility>

namespace corvetta {

std::string_view edgeName(Edge edge) {
    switch (edge) {
        case Edge::left:
            return "left";
        case Edge::right:
            return "right";
        case Edge::top:
            return "top";
        case Edge::bottom:
            return "bottom";
    }
    return "left";
}

std::vector<AXWindowRef>& Neighbors::on(Edge edge) {
    return const_cast<std::vector<AXWindowRef>&>(std::as_const(*this).on(edge));
}

const std::vector<AXWindowRef>& Neighbors::on(Edge edge) const {
    switch (edge) {
        case Edge::left:
            return left;
        case Edge::right:
            return right;
        case Edge::top:
            return top;
        case Edge::bottom:
            return bottom;
    }
    return left;
}

TiledWindow* AdjacencyMap::find(const AXWindowRef& ref) {
    return const_cast<TiledWindow*>(std::as_const(*this).find(ref));
}

const TiledWindow* AdjacencyMap::find(const AXWindowRef& ref) const {
    for (const auto& window : windows) {
        if (window.ref == ref) {
            return &window;
        }
    }
    return nullptr;
}

const Neighbors& AdjacencyMap::neighborsOf(const AXWindowRef& ref) const {
    static const Neighbors kNone;
    const auto found = neighbors.find(ref);
    return found == neighbors.end() ? kNone : found->second;
}

AdjacencyMap buildAdjacencyMap(std::vector<TiledWindow> windows) {
    AdjacencyMap map{std::move(windows), {}};
    const auto near = [](double a, double b) { return std::abs(a - b) < kAdjacencyTolerance; };
    for (const auto& window : map.windows) {
        map.neighbors[window.ref];
    }
    for (std::size_t i = 0; i < map.windows.size(); ++i) {
        for (std::size_t j = i + 1; j < map.windows.size(); ++j) {
            const auto& a = map.windows[i];
            const auto& b = map.windows[j];
            auto& ofA = map.neighbors[a.ref];
            auto& ofB = map.neighbors[b.ref];
            if (near(a.frame.maxX(), b.frame.minX())) {
                ofA.right.push_back(b.ref);
                ofB.left.push_back(a.ref);
            }
            if (near(b.frame.maxX(), a.frame.minX())) {
                ofA.left.push_back(b.ref);
                ofB.right.push_back(a.ref);
            }
            if (near(a.frame.maxY(), b.frame.minY())) {
                ofA.bottom.push_back(b.ref);
                ofB.top.push_back(a.ref);
            } else if (near(b.frame.maxY(), a.frame.minY())) {
                ofA.top.push_back(b.ref);
                ofB.bottom.push_back(a.ref);
            }
        }
    }
    return map;
}

double edgeCoordinate(const Rect& frame, Edge edge) {
    switch (edge) {
        case Edge::left:
            return frame.minX();
        case Edge::right:
            return frame.maxX();
        case Edge::top:
            return frame.minY();
        case Edge::bottom:
            return frame.maxY();
    }
    return frame.minX();
}

Rect movingEdge(const Rect& frame, Edge edge, double delta) {
    Rect moved = frame.standardized();
    switch (edge) {
        case Edge::left:
            moved.origin.x += delta;
            moved.size.width -= delta;
            break;
        case Edge::right:
            moved.size.width += delta;
            break;
        case Edge::top:
            moved.origin.y += delta;
            moved.size.height -= delta;
            break;
        case Edge::bottom:
            moved.size.height += delta;
            break;
    }
    return moved;
}

}  // namespace corvetta
