#include <string>

#include "automation/mcp_error.h"
#include "automation/method_groups.h"
#include "windowing/ax_reading.h"

namespace corvetta {

namespace {

Json rectJson(const Rect& rect) {
    return Json::array({rect.minX(), rect.minY(), rect.width(), rect.height()});
}

// Clients know windows by number, as list_windows gives them; a window that no longer says
// has none.
Json windowNumber(const AutomationContext& context, const AXWindowRef& window) {
    const auto number = readAttribute<std::int64_t>(context.desktop.accessibilityPort(),
                                                    window.element, AXAttribute::kWindowId);
    return number ? Json(*number) : Json();
}

Json windowEntry(const AutomationContext& context, const AdjacencyMap& map,
                 const TiledWindow& window) {
    Json neighbors = Json::object();
    for (const Edge edge : kAllEdges) {
        Json side = Json::array();
        for (const auto& ref : map.neighborsOf(window.ref).on(edge)) {
            const auto* other = map.find(ref);
            if (other != nullptr && other->isTiled) {
                side.push_back(windowNumber(context, ref));
            }
        }
        neighbors[std::string(edgeName(edge))] = std::move(side);
    }
    return Json{{"window", windowNumber(context, window.ref)},
                {"pid", window.ref.element.process()},
                {"frame", rectJson(window.frame)},
                {"originalFrame", rectJson(window.originalFrame)},
                {"drifted", LayoutLockManager::hasDrifted(window)},
                {"neighbors", std::move(neighbors)}};
}

Json layoutLock(const AutomationContext& context) {
    const auto& manager = context.layoutLock;
    Json windows = Json::array();
    if (const auto* map = manager.map()) {
        for (const auto& window : map->windows) {
            if (window.isTiled) {
                windows.push_back(windowEntry(context, *map, window));
            }
        }
    }
    return Json{{"active", manager.map() != nullptr},    {"settling", manager.isSettling()},
                {"adjusting", manager.isAdjusting()},    {"dividerMode", manager.dividerMode()},
                {"pillVisible", manager.pill().visible}, {"windows", std::move(windows)}};
}

LayoutLockManager& activeLock(const AutomationContext& context) {
    if (context.layoutLock.map() == nullptr) {
        throw MCPError::notFound("active layout lock");
    }
    return context.layoutLock;
}

}  // namespace

void addLayoutLockMethods(MethodTable& table, const SharedContext& context) {
    table["layout_lock"] =
        answeringAtOnce([context](const MethodParams&) { return layoutLock(*context); });
    table["layout_lock_reset"] = answeringAtOnce([context](const MethodParams&) {
        activeLock(*context).reset();
        return layoutLock(*context);
    });
    table["layout_lock_untile"] = answeringAtOnce([context](const MethodParams&) {
        activeLock(*context).untile();
        return Json{{"untiled", true}};
    });
}

}  // namespace corvetta
