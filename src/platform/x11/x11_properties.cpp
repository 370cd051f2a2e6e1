#include "platform/x11/x11_properties.h"

#include <algorithm>
#include <cstring>

namespace corvetta {

namespace {

// Long enough for every property the backend reads (client lists included), in 32-bit units.
constexpr std::uint32_t kMaximumLength = 1 << 20;

}  // namespace

xcb_get_property_cookie_t X11Properties::request(xcb_window_t window, std::string_view property,
                                                 xcb_atom_t type) {
    return request(window, connection_.atom(property), type);
}

Expected<std::vector<std::uint32_t>, X11Error> X11Properties::valuesOf(
    xcb_get_property_cookie_t cookie, xcb_atom_t type) {
    auto answer = connection_.reply(xcb_get_property_reply, cookie);
    if (!answer) {
        return unexpected(answer.error());
    }
    const auto* reply = answer->get();
    std::vector<std::uint32_t> result;
    if (reply->format != 32 || reply->type != type) {
        return result;
    }
    const auto count = static_cast<std::size_t>(xcb_get_property_value_length(reply)) / 4;
    if (count > 0) {
        result.resize(count);
        std::memcpy(result.data(), xcb_get_property_value(reply), count * 4);
    }
    return result;
}

Expected<std::vector<std::uint32_t>, X11Error> X11Properties::values(xcb_window_t window,
                                                                     std::string_view property,
                                                                     xcb_atom_t type) {
    return valuesOf(request(window, property, type), type);
}

xcb_get_property_cookie_t X11Properties::request(xcb_window_t window, xcb_atom_t property,
                                                 xcb_atom_t type) {
    return xcb_get_property(connection_.raw(), 0, window, property, type, 0, kMaximumLength);
}

Expected<std::string, X11Error> X11Properties::bytesOf(xcb_get_property_cookie_t cookie) {
    auto answer = connection_.reply(xcb_get_property_reply, cookie);
    if (!answer) {
        return unexpected(answer.error());
    }
    const auto* reply = answer->get();
    if (reply->format != 8) {
        return std::string();
    }
    return std::string(static_cast<const char*>(xcb_get_property_value(reply)),
                       static_cast<std::size_t>(xcb_get_property_value_length(reply)));
}

Expected<std::string, X11Error> X11Properties::bytes(xcb_window_t window, xcb_atom_t property,
                                                     xcb_atom_t type) {
    return bytesOf(request(window, property, type));
}

Expected<std::string, X11Error> X11Properties::title(xcb_window_t window) {
    return titleOf(requestTitle(window));
}

X11Properties::TitleRequest X11Properties::requestTitle(xcb_window_t window) {
    return {request(window, connection_.atom("_NET_WM_NAME"), connection_.atom("UTF8_STRING")),
            request(window, XCB_ATOM_WM_NAME, XCB_ATOM_ANY)};
}

Expected<std::string, X11Error> X11Properties::titleOf(const TitleRequest& asked) {
    // Both answers are taken, so neither is left behind in the connection.
    auto netName = bytesOf(asked.netName);
    auto name = bytesOf(asked.name);
    if (!netName || !netName->empty()) {
        return netName;
    }
    return name;
}

Expected<std::optional<std::int32_t>, X11Error> X11Properties::processOf(xcb_window_t window) {
    auto pid = cardinals(window, "_NET_WM_PID");
    if (!pid) {
        return unexpected(pid.error());
    }
    if (pid->empty() || pid->front() == 0) {
        return std::optional<std::int32_t>();
    }
    return std::optional<std::int32_t>(static_cast<std::int32_t>(pid->front()));
}

Expected<FrameExtents, X11Error> X11Properties::extentsOf(xcb_get_property_cookie_t cookie) {
    auto extents = valuesOf(cookie, XCB_ATOM_CARDINAL);
    if (!extents) {
        return unexpected(extents.error());
    }
    FrameExtents result;
    if (extents->size() >= 4) {
        result = {static_cast<int>((*extents)[0]), static_cast<int>((*extents)[1]),
                  static_cast<int>((*extents)[2]), static_cast<int>((*extents)[3])};
    }
    return result;
}

Expected<FrameExtents, X11Error> X11Properties::frameExtents(xcb_window_t window) {
    return extentsOf(request(window, "_NET_FRAME_EXTENTS", XCB_ATOM_CARDINAL));
}

Expected<RootRect, X11Error> X11Properties::clientRect(xcb_window_t window) {
    auto* raw = connection_.raw();
    const auto geometryCookie = xcb_get_geometry(raw, window);
    const auto translateCookie = xcb_translate_coordinates(raw, window, connection_.root(), 0, 0);
    return clientRectOf(geometryCookie, translateCookie);
}

Expected<RootRect, X11Error> X11Properties::clientRectOf(
    xcb_get_geometry_cookie_t geometryCookie, xcb_translate_coordinates_cookie_t translateCookie) {
    auto geometry = connection_.reply(xcb_get_geometry_reply, geometryCookie);
    auto translated = connection_.reply(xcb_translate_coordinates_reply, translateCookie);
    if (!geometry) {
        return unexpected(geometry.error());
    }
    if (!translated) {
        return unexpected(translated.error());
    }
    return RootRect{(*translated)->dst_x, (*translated)->dst_y, (*geometry)->width,
                    (*geometry)->height};
}

Expected<RootRect, X11Error> X11Properties::frameRect(xcb_window_t window) {
    auto frame = outerFrame(window);
    if (!frame) {
        return unexpected(frame.error());
    }
    return frame->rect;
}

Expected<X11Properties::OuterFrame, X11Error> X11Properties::outerFrame(xcb_window_t window) {
    // All three asked at once: one round trip to the server instead of three.
    return outerFrameOf(requestOuterFrame(window));
}

X11Properties::OuterFrameRequest X11Properties::requestOuterFrame(xcb_window_t window) {
    auto* raw = connection_.raw();
    return {xcb_get_geometry(raw, window),
            xcb_translate_coordinates(raw, window, connection_.root(), 0, 0),
            request(window, "_NET_FRAME_EXTENTS", XCB_ATOM_CARDINAL)};
}

Expected<X11Properties::OuterFrame, X11Error> X11Properties::outerFrameOf(
    const OuterFrameRequest& asked) {
    auto client = clientRectOf(asked.geometry, asked.translation);
    auto extents = extentsOf(asked.extents);
    if (!client) {
        return unexpected(client.error());
    }
    if (!extents) {
        return unexpected(extents.error());
    }
    return OuterFrame{{client->x - extents->left, client->y - extents->top,
                       client->width + extents->left + extents->right,
                       client->height + extents->top + extents->bottom},
                      *extents};
}

Expected<std::vector<xcb_atom_t>, X11Error> X11Properties::states(xcb_window_t window) {
    return valuesOf(requestStates(window), XCB_ATOM_ATOM);
}

xcb_get_property_cookie_t X11Properties::requestStates(xcb_window_t window) {
    return request(window, "_NET_WM_STATE", XCB_ATOM_ATOM);
}

Expected<bool, X11Error> X11Properties::hasState(xcb_window_t window, std::string_view state) {
    auto all = states(window);
    if (!all) {
        return unexpected(all.error());
    }
    return std::ranges::find(*all, connection_.atom(state)) != all->end();
}

}  // namespace corvetta
