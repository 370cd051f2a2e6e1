#include "platform/x11/x11_screens.h"

#include <algorithm>
#include <map>

#include <xcb/randr.h>

#include "platform/edid.h"

namespace corvetta {

namespace {

enum class Edge { left, right, top, bottom };

struct Reservation {
    Edge edge;
    RootRect area;
};

bool overlaps(const RootRect& a, const RootRect& b) {
    return a.x < b.x + b.width && b.x < a.x + a.width && a.y < b.y + b.height &&
           b.y < a.y + a.height;
}

RootRect intersection(const RootRect& a, const RootRect& b) {
    const int left = std::max(a.x, b.x);
    const int top = std::max(a.y, b.y);
    const int right = std::min(a.x + a.width, b.x + b.width);
    const int bottom = std::min(a.y + a.height, b.y + b.height);
    return {left, top, std::max(0, right - left), std::max(0, bottom - top)};
}

// The struts of one client as the areas they reserve along the root window's edges.
std::vector<Reservation> reservationsOf(const std::vector<std::uint32_t>& strut, int rootWidth,
                                        int rootHeight) {
    auto value = [&](std::size_t index) { return static_cast<int>(strut[index]); };
    const bool partial = strut.size() >= 12;
    auto span = [&](std::size_t start, int whole) {
        return partial ? std::pair{value(start), value(start + 1) - value(start) + 1}
                       : std::pair{0, whole};
    };
    std::vector<Reservation> result;
    if (value(0) > 0) {
        const auto [y, height] = span(4, rootHeight);
        result.push_back({Edge::left, {0, y, value(0), height}});
    }
    if (value(1) > 0) {
        const auto [y, height] = span(6, rootHeight);
        result.push_back({Edge::right, {rootWidth - value(1), y, value(1), height}});
    }
    if (value(2) > 0) {
        const auto [x, width] = span(8, rootWidth);
        result.push_back({Edge::top, {x, 0, width, value(2)}});
    }
    if (value(3) > 0) {
        const auto [x, width] = span(10, rootWidth);
        result.push_back({Edge::bottom, {x, rootHeight - value(3), width, value(3)}});
    }
    return result;
}

// Cuts a reservation off the monitor's visible area when the reserved edge falls inside the
// monitor; a reservation that spans the whole monitor belongs to a neighbour's edge.
void applyReservation(const Reservation& reservation, const RootRect& monitor, RootRect& visible) {
    if (!overlaps(reservation.area, monitor)) {
        return;
    }
    int left = visible.x;
    int top = visible.y;
    int right = visible.x + visible.width;
    int bottom = visible.y + visible.height;
    const RootRect& area = reservation.area;
    switch (reservation.edge) {
        case Edge::left:
            if (area.x + area.width < monitor.x + monitor.width) {
                left = std::max(left, area.x + area.width);
            }
            break;
        case Edge::right:
            if (area.x > monitor.x) {
                right = std::min(right, area.x);
            }
            break;
        case Edge::top:
            if (area.y + area.height < monitor.y + monitor.height) {
                top = std::max(top, area.y + area.height);
            }
            break;
        case Edge::bottom:
            if (area.y > monitor.y) {
                bottom = std::min(bottom, area.y);
            }
            break;
    }
    visible = {left, top, std::max(0, right - left), std::max(0, bottom - top)};
}

// What every client's struts reserve along the root window's edges.
std::vector<Reservation> readReservations(X11Connection& connection, X11Properties& properties) {
    const auto& root = connection.screen();
    std::vector<Reservation> result;
    auto clients = properties.values(connection.root(), "_NET_CLIENT_LIST", XCB_ATOM_WINDOW);
    if (!clients) {
        return result;
    }
    // Asked all at once; a client's struts can change while it runs, which its property change
    // announces.
    std::vector<std::pair<xcb_get_property_cookie_t, xcb_get_property_cookie_t>> cookies;
    for (const auto window : *clients) {
        connection.watchClient(window);
        cookies.emplace_back(properties.request(window, "_NET_WM_STRUT_PARTIAL", XCB_ATOM_CARDINAL),
                             properties.request(window, "_NET_WM_STRUT", XCB_ATOM_CARDINAL));
    }
    for (const auto& [partialCookie, wholeCookie] : cookies) {
        auto strut = properties.valuesOf(partialCookie, XCB_ATOM_CARDINAL);
        auto whole = properties.valuesOf(wholeCookie, XCB_ATOM_CARDINAL);
        if (!strut || strut->size() < 12) {
            strut = std::move(whole);
        }
        if (!strut || strut->size() < 4) {
            continue;
        }
        for (const auto& reservation :
             reservationsOf(*strut, root.width_in_pixels, root.height_in_pixels)) {
            result.push_back(reservation);
        }
    }
    return result;
}

// Laptop panels are the outputs the kernel names after the embedded display port, LVDS or the
// display serial interface of phones and tablets.
bool isPanelName(std::string_view name) {
    return name.starts_with("eDP") || name.starts_with("LVDS") || name.starts_with("DSI");
}

Screen screenOf(X11Connection& connection, const X11Monitor& monitor, const X11DisplayInfo& info,
                const X11Coordinates& coordinates, const std::vector<Reservation>& reservations,
                const std::optional<RootRect>& area) {
    RootRect visible = area ? intersection(monitor.rect, *area) : monitor.rect;
    if (visible.width == 0 || visible.height == 0) {
        visible = monitor.rect;
    }
    for (const auto& reservation : reservations) {
        applyReservation(reservation, monitor.rect, visible);
    }
    Screen screen;
    screen.number = monitor.name;
    screen.frame = coordinates.toScreen(monitor.rect);
    screen.visibleFrame = coordinates.toScreen(visible);
    // RandR names the monitors it makes itself after their outputs; a monitor the user defined
    // keeps the name the user gave it.
    const std::string monitorName = connection.atomName(monitor.name);
    screen.localizedName = info.productName.value_or(monitorName);
    if (screen.localizedName.empty()) {
        screen.localizedName = "Display " + std::to_string(monitor.name);
    }
    screen.isBuiltIn = info.builtIn || isPanelName(monitorName);
    screen.identity = info.identity;
    return screen;
}

// The properties of every monitor's output, asked for all at once.
std::vector<X11DisplayInfo> readDisplayInfo(X11Connection& connection,
                                            const std::vector<X11Monitor>& monitors) {
    struct Cookies {
        xcb_randr_get_output_info_cookie_t info;
        xcb_randr_get_output_property_cookie_t edid;
        xcb_randr_get_output_property_cookie_t connector;
    };
    const xcb_atom_t edidAtom = connection.atom("EDID");
    const xcb_atom_t connectorAtom = connection.atom("ConnectorType");
    std::vector<std::optional<Cookies>> cookies;
    for (const auto& monitor : monitors) {
        if (monitor.output == XCB_NONE) {
            cookies.emplace_back();
            continue;
        }
        // EDIDs are 128 bytes a block; 1 KiB holds the base block and up to seven extensions.
        cookies.push_back(
            Cookies{xcb_randr_get_output_info(connection.raw(), monitor.output, XCB_CURRENT_TIME),
                    xcb_randr_get_output_property(connection.raw(), monitor.output, edidAtom,
                                                  XCB_ATOM_ANY, 0, 256, 0, 0),
                    xcb_randr_get_output_property(connection.raw(), monitor.output, connectorAtom,
                                                  XCB_ATOM_ANY, 0, 1, 0, 0)});
    }
    std::vector<X11DisplayInfo> result;
    for (std::size_t index = 0; index < monitors.size(); ++index) {
        const auto& monitor = monitors[index];
        X11DisplayInfo info;
        int widthMillimetres = monitor.widthMillimetres;
        int heightMillimetres = monitor.heightMillimetres;
        if (const auto& asked = cookies[index]) {
            if (auto output = connection.reply(xcb_randr_get_output_info_reply, asked->info)) {
                widthMillimetres = static_cast<int>((*output)->mm_width);
                heightMillimetres = static_cast<int>((*output)->mm_height);
                const auto* name =
                    reinterpret_cast<const char*>(xcb_randr_get_output_info_name(output->get()));
                info.builtIn = isPanelName(
                    std::string(name, xcb_randr_get_output_info_name_length(output->get())));
            }
            if (auto edid = connection.reply(xcb_randr_get_output_property_reply, asked->edid);
                edid && (*edid)->format == 8) {
                const auto* bytes = xcb_randr_get_output_property_data(edid->get());
                info.identity.edid.assign(bytes, bytes + (*edid)->num_items);
            }
            if (auto connector =
                    connection.reply(xcb_randr_get_output_property_reply, asked->connector);
                connector && (*connector)->format == 32 && (*connector)->num_items == 1) {
                const auto* atoms = reinterpret_cast<const xcb_atom_t*>(
                    xcb_randr_get_output_property_data(connector->get()));
                info.builtIn = info.builtIn || connection.atomName(atoms[0]) == "Panel";
            }
        }
        // 0 is how RandR says it does not know (projectors, virtual outputs).
        if (widthMillimetres > 0 && heightMillimetres > 0) {
            info.identity.physicalSize =
                Size{static_cast<double>(widthMillimetres), static_cast<double>(heightMillimetres)};
        }
        if (const auto edid = parseEdid(info.identity.edid)) {
            info.productName = edid->monitorName;
            info.identity.serial = edid->serial();
            info.identity.persistentUUID = edid->persistentUuid().string();
        }
        result.push_back(std::move(info));
    }
    return result;
}

}  // namespace

struct X11Screens::Observers {
    std::uint64_t nextId = 1;
    std::vector<Screen> known;
    std::map<std::uint64_t, std::function<void()>> handlers;
    bool announcementPosted = false;
};

X11Screens::X11Screens(X11Connection& connection)
    : connection_(connection), properties_(connection), observers_(std::make_shared<Observers>()) {
    const auto* extension = xcb_get_extension_data(connection_.raw(), &xcb_randr_id);
    if (extension && extension->present) {
        auto version = connection_.reply(xcb_randr_query_version_reply,
                                         xcb_randr_query_version(connection_.raw(), 1, 5));
        hasRandr_ = version && ((*version)->major_version > 1 || (*version)->minor_version >= 5);
        randrFirstEvent_ = extension->first_event;
    }
    if (hasRandr_) {
        xcb_randr_select_input(
            connection_.raw(), connection_.root(),
            XCB_RANDR_NOTIFY_MASK_SCREEN_CHANGE | XCB_RANDR_NOTIFY_MASK_CRTC_CHANGE |
                XCB_RANDR_NOTIFY_MASK_OUTPUT_CHANGE | XCB_RANDR_NOTIFY_MASK_OUTPUT_PROPERTY);
    }
    connection_.selectRootEvents(XCB_EVENT_MASK_PROPERTY_CHANGE | XCB_EVENT_MASK_STRUCTURE_NOTIFY);
    events_ = connection_.addEventHandler(
        [this](const xcb_generic_event_t& event) { return handleEvent(event); });
    observers_->known = screens();
}

X11Screens::~X11Screens() = default;

std::vector<X11Monitor> X11Screens::monitors() const {
    if (!monitors_) {
        monitors_ = readMonitors();
        displayInfo_.reset();
    }
    return *monitors_;
}

std::vector<X11Monitor> X11Screens::readMonitors() const {
    std::vector<X11Monitor> result;
    if (hasRandr_) {
        auto answer =
            connection_.reply(xcb_randr_get_monitors_reply,
                              xcb_randr_get_monitors(connection_.raw(), connection_.root(), 1));
        if (answer) {
            auto iterator = xcb_randr_get_monitors_monitors_iterator(answer->get());
            for (; iterator.rem > 0; xcb_randr_monitor_info_next(&iterator)) {
                const auto& info = *iterator.data;
                const auto* outputs = xcb_randr_monitor_info_outputs(iterator.data);
                const int outputCount = xcb_randr_monitor_info_outputs_length(iterator.data);
                result.push_back({info.name,
                                  {info.x, info.y, info.width, info.height},
                                  info.primary != 0,
                                  outputCount > 0 ? outputs[0] : xcb_randr_output_t{XCB_NONE},
                                  static_cast<int>(info.width_in_millimeters),
                                  static_cast<int>(info.height_in_millimeters)});
            }
        }
    }
    if (result.empty()) {
        const auto& screen = connection_.screen();
        result.push_back(
            {XCB_ATOM_NONE, {0, 0, screen.width_in_pixels, screen.height_in_pixels}, true});
    }
    auto primary = std::ranges::find_if(result, [](const X11Monitor& m) { return m.primary; });
    if (primary != result.end()) {
        std::rotate(result.begin(), primary, primary + 1);
    }
    return result;
}

X11Coordinates X11Screens::coordinates() const {
    return {monitors().front().rect};
}

std::vector<Screen> X11Screens::screens() const {
    if (!screens_) {
        screens_ = readScreens();
    }
    return *screens_;
}

std::vector<Screen> X11Screens::readScreens() const {
    const auto all = monitors();
    const X11Coordinates coordinates{all.front().rect};
    const auto reserved = readReservations(connection_, properties_);
    // Openbox and its peers compute one work area over every monitor, which wrongly cuts a panel
    // off its neighbours; with several monitors the struts alone say what is reserved where.
    const auto area = all.size() == 1 ? workArea() : std::nullopt;
    const auto& info = displayInfo();
    std::vector<Screen> result;
    for (std::size_t index = 0; index < all.size(); ++index) {
        result.push_back(
            screenOf(connection_, all[index], info[index], coordinates, reserved, area));
    }
    return result;
}

const std::vector<X11DisplayInfo>& X11Screens::displayInfo() const {
    if (!displayInfo_) {
        displayInfo_ = readDisplayInfo(connection_, monitors());
    }
    return *displayInfo_;
}

std::optional<Screen> X11Screens::mainScreen() const {
    const auto all = screens();
    const auto monitorList = monitors();
    auto active = properties_.values(connection_.root(), "_NET_ACTIVE_WINDOW", XCB_ATOM_WINDOW);
    if (active && !active->empty() && active->front() != XCB_WINDOW_NONE) {
        if (auto frame = properties_.frameRect(active->front())) {
            const int centreX = frame->x + frame->width / 2;
            const int centreY = frame->y + frame->height / 2;
            for (std::size_t index = 0; index < monitorList.size() && index < all.size(); ++index) {
                if (monitorList[index].rect.contains(centreX, centreY)) {
                    return all[index];
                }
            }
        }
    }
    return all.front();
}

Registration X11Screens::observeScreenParameters(std::function<void()> handler) {
    const std::uint64_t id = observers_->nextId++;
    observers_->handlers.emplace(id, std::move(handler));
    return Registration([weak = std::weak_ptr<Observers>(observers_), id] {
        if (auto observers = weak.lock()) {
            observers->handlers.erase(id);
        }
    });
}

bool X11Screens::handleEvent(const xcb_generic_event_t& event) {
    const std::uint8_t type = event.response_type & 0x7f;
    if (hasRandr_ && type == randrFirstEvent_ + XCB_RANDR_NOTIFY &&
        reinterpret_cast<const xcb_randr_notify_event_t&>(event).subCode ==
            XCB_RANDR_NOTIFY_OUTPUT_PROPERTY) {
        // Drivers rewrite properties such as the backlight's often; only the identity matters.
        const auto atom = reinterpret_cast<const xcb_randr_notify_event_t&>(event).u.op.atom;
        if (atom == connection_.atom("EDID") || atom == connection_.atom("ConnectorType")) {
            monitors_.reset();
            announceSoon();
        }
    } else if (hasRandr_ && (type == randrFirstEvent_ + XCB_RANDR_SCREEN_CHANGE_NOTIFY ||
                             type == randrFirstEvent_ + XCB_RANDR_NOTIFY)) {
        monitors_.reset();
        announceSoon();
    } else if (type == XCB_PROPERTY_NOTIFY) {
        const auto& notify = reinterpret_cast<const xcb_property_notify_event_t&>(event);
        const bool rootChange = notify.window == connection_.root() &&
                                (notify.atom == connection_.atom("_NET_WORKAREA") ||
                                 notify.atom == connection_.atom("_NET_CURRENT_DESKTOP") ||
                                 notify.atom == connection_.atom("_NET_CLIENT_LIST"));
        const bool strutChange = notify.atom == connection_.atom("_NET_WM_STRUT_PARTIAL") ||
                                 notify.atom == connection_.atom("_NET_WM_STRUT");
        if (rootChange || strutChange) {
            announceSoon();
        }
    } else if (type == XCB_CONFIGURE_NOTIFY) {
        const auto& notify = reinterpret_cast<const xcb_configure_notify_event_t&>(event);
        if (notify.window == connection_.root()) {
            monitors_.reset();
            announceSoon();
        }
    }
    return false;
}

void X11Screens::announceSoon() {
    // Read again on first use: what the events said is known, not what came of it.
    screens_.reset();
    if (observers_->announcementPosted) {
        return;
    }
    observers_->announcementPosted = true;
    connection_.queue().post([this, weak = std::weak_ptr<Observers>(observers_)] {
        auto observers = weak.lock();
        if (!observers) {
            return;
        }
        observers->announcementPosted = false;
        // Windows come and go and work areas are rewritten far more often than the displays or
        // what panels reserve change; only a change of the displays is news.
        auto now = screens();
        if (now == observers->known) {
            return;
        }
        observers->known = std::move(now);
        std::vector<std::uint64_t> ids;
        for (const auto& entry : observers->handlers) {
            ids.push_back(entry.first);
        }
        for (const auto id : ids) {
            // An observer may drop its own or another's registration while being told.
            if (auto found = observers->handlers.find(id); found != observers->handlers.end()) {
                auto handler = found->second;
                handler();
            }
        }
    });
}

std::optional<RootRect> X11Screens::workArea() const {
    auto area = properties_.cardinals(connection_.root(), "_NET_WORKAREA");
    if (!area || area->size() < 4) {
        return std::nullopt;
    }
    auto desktop = properties_.cardinals(connection_.root(), "_NET_CURRENT_DESKTOP");
    std::size_t index = desktop && !desktop->empty() ? desktop->front() : 0;
    if ((index + 1) * 4 > area->size()) {
        index = 0;
    }
    const auto* values = area->data() + index * 4;
    return RootRect{static_cast<int>(values[0]), static_cast<int>(values[1]),
                    static_cast<int>(values[2]), static_cast<int>(values[3])};
}

}  // namespace corvetta
