#include "platform/x11/x11_window_list.h"

#include <algorithm>

#include "platform/x11/x11_window_class.h"

namespace corvetta {

std::vector<WindowListEntry> X11WindowList::onScreenWindows() const {
    const auto coordinates = screens_.coordinates();
    auto stacking =
        properties_.values(connection_.root(), "_NET_CLIENT_LIST_STACKING", XCB_ATOM_WINDOW);
    std::vector<WindowListEntry> result;
    if (!stacking) {
        return result;
    }
    // The property lists bottom to top.
    for (auto window = stacking->rbegin(); window != stacking->rend(); ++window) {
        if (auto entry = entryOf(*window, coordinates)) {
            result.push_back(std::move(*entry));
        }
    }
    return result;
}

std::vector<WindowNumber> X11WindowList::windowNumbersFrontToBack() const {
    auto stacking =
        properties_.values(connection_.root(), "_NET_CLIENT_LIST_STACKING", XCB_ATOM_WINDOW);
    if (!stacking) {
        return {};
    }
    return {stacking->rbegin(), stacking->rend()};
}

std::optional<WindowListEntry> X11WindowList::entryOf(xcb_window_t window,
                                                      const X11Coordinates& coordinates) const {
    // Any read failing means the window went away while we looked; it is simply not listed.
    auto attributes = connection_.reply(xcb_get_window_attributes_reply,
                                        xcb_get_window_attributes(connection_.raw(), window));
    if (!attributes || (*attributes)->map_state != XCB_MAP_STATE_VIEWABLE) {
        return std::nullopt;
    }
    auto hidden = properties_.hasState(window, "_NET_WM_STATE_HIDDEN");
    auto above = properties_.hasState(window, "_NET_WM_STATE_ABOVE");
    auto types = properties_.values(window, "_NET_WM_WINDOW_TYPE", XCB_ATOM_ATOM);
    auto frame = properties_.frameRect(window);
    auto pid = properties_.processOf(window);
    auto title = properties_.title(window);
    if (!hidden || *hidden || !above || !types || !frame || !pid || !title) {
        return std::nullopt;
    }
    auto isType = [&](std::string_view name) {
        return std::ranges::find(*types, connection_.atom(name)) != types->end();
    };
    if (isType("_NET_WM_WINDOW_TYPE_DESKTOP")) {
        return std::nullopt;
    }
    WindowListEntry entry;
    entry.number = window;
    entry.layer = isType("_NET_WM_WINDOW_TYPE_DOCK") ? kDockLayer : *above ? kFloatingLayer : 0;
    entry.ownerPid = pid->value_or(0);
    entry.bounds = coordinates.toAccessibility(*frame);
    if (auto windowClass = readWindowClass(properties_, window)) {
        entry.ownerName = windowClass->className;
    }
    entry.title = *title;
    return entry;
}

}  // namespace corvetta
