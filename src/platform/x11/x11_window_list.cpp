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
    // Every window's reads are asked before any answer is awaited: the whole list costs one
    // round trip to the server, not several per window. The property lists bottom to top.
    std::vector<EntryRequest> requests;
    requests.reserve(stacking->size());
    for (auto window = stacking->rbegin(); window != stacking->rend(); ++window) {
        requests.push_back(requestEntry(*window));
    }
    for (const auto& request : requests) {
        if (auto entry = entryOf(request, coordinates)) {
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

X11WindowList::EntryRequest X11WindowList::requestEntry(xcb_window_t window) const {
    return EntryRequest{
        .window = window,
        .attributes = xcb_get_window_attributes(connection_.raw(), window),
        .states = properties_.requestStates(window),
        .types = properties_.request(window, "_NET_WM_WINDOW_TYPE", XCB_ATOM_ATOM),
        .pid = properties_.request(window, "_NET_WM_PID", XCB_ATOM_CARDINAL),
        .windowClass = properties_.request(window, XCB_ATOM_WM_CLASS, XCB_ATOM_STRING),
        .frame = properties_.requestOuterFrame(window),
        .title = properties_.requestTitle(window),
    };
}

std::optional<WindowListEntry> X11WindowList::entryOf(const EntryRequest& request,
                                                      const X11Coordinates& coordinates) const {
    // Every answer is taken, used or not, so none is left waiting on the connection.
    auto attributes = connection_.reply(xcb_get_window_attributes_reply, request.attributes);
    auto states = properties_.valuesOf(request.states, XCB_ATOM_ATOM);
    auto types = properties_.valuesOf(request.types, XCB_ATOM_ATOM);
    auto pid = properties_.valuesOf(request.pid, XCB_ATOM_CARDINAL);
    auto windowClass = parseWindowClass(properties_.bytesOf(request.windowClass));
    auto frame = properties_.outerFrameOf(request.frame);
    auto title = properties_.titleOf(request.title);
    // Any read failing means the window went away while we looked; it is simply not listed.
    if (!attributes || (*attributes)->map_state != XCB_MAP_STATE_VIEWABLE || !states || !types ||
        !pid || !frame || !title) {
        return std::nullopt;
    }
    auto has = [&](const std::vector<std::uint32_t>& atoms, std::string_view name) {
        return std::ranges::find(atoms, connection_.atom(name)) != atoms.end();
    };
    if (has(*states, "_NET_WM_STATE_HIDDEN") || has(*types, "_NET_WM_WINDOW_TYPE_DESKTOP")) {
        return std::nullopt;
    }
    WindowListEntry entry;
    entry.number = request.window;
    entry.layer = has(*types, "_NET_WM_WINDOW_TYPE_DOCK") ? kDockLayer
                  : has(*states, "_NET_WM_STATE_ABOVE")   ? kFloatingLayer
                                                          : 0;
    // _NET_WM_PID; a client that does not say, or says 0, has no known owner.
    entry.ownerPid = pid->empty() ? 0 : static_cast<ProcessId>(pid->front());
    entry.bounds = coordinates.toAccessibility(frame->rect);
    if (windowClass) {
        entry.ownerName = windowClass->className;
    }
    entry.title = *title;
    return entry;
}

}  // namespace corvetta
