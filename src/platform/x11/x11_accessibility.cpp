#include "platform/x11/x11_accessibility.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>
#include <csignal>
#include <utility>

#include <xcb/xcb_icccm.h>

namespace corvetta {

namespace {

constexpr std::uint64_t kCloseButtonBit = std::uint64_t{1} << 63;
constexpr std::string_view kRole = "AXRole";

// _NET_MOVERESIZE_WINDOW flags: NorthWest gravity (x, y place the frame's outer corner), which of
// x, y, width, height are given, and source 2 (acting for the user, as a pager does).
constexpr std::uint32_t kNorthWestGravity = 1;
constexpr std::uint32_t kHasX = 1u << 8;
constexpr std::uint32_t kHasY = 1u << 9;
constexpr std::uint32_t kHasWidth = 1u << 10;
constexpr std::uint32_t kHasHeight = 1u << 11;
constexpr std::uint32_t kSourcePager = 2u << 12;

constexpr std::uint32_t kStateRemove = 0;
constexpr std::uint32_t kStateAdd = 1;

AXErrorCode errorOf(const X11Error& error) {
    // A window that went away is an element that no longer exists; anything else means the
    // server did not do what was asked.
    return error.code == X11Error::kBadWindow ? AXErrorCode::invalidUIElement
                                              : AXErrorCode::cannotComplete;
}

bool processExists(ProcessId process) {
    return process > 0 && (::kill(process, 0) == 0 || errno == EPERM);
}

bool isFinite(Point p) {
    return std::isfinite(p.x) && std::isfinite(p.y);
}

bool isFinite(Size s) {
    return std::isfinite(s.width) && std::isfinite(s.height);
}

}  // namespace

X11Accessibility::X11Accessibility(X11Connection& connection, const X11Screens& screens,
                                   X11Applications& applications)
    : connection_(connection),
      screens_(screens),
      applications_(applications),
      properties_(connection),
      ping_(connection) {
    // Key presses, pointer motion and raw input leave windows as they are; any other event may
    // say the window changed.
    events_ = connection_.addEventHandler([this](const xcb_generic_event_t& event) {
        const auto type = event.response_type & 0x7f;
        if (type != XCB_GE_GENERIC && (type < XCB_KEY_PRESS || type > XCB_MOTION_NOTIFY)) {
            forgetReading();
        }
        return false;
    });
}

const X11Accessibility::Reading& X11Accessibility::readingOf(xcb_window_t window) {
    if (const auto known = readings_.find(window); known != readings_.end()) {
        return known->second;
    }
    // Watched first: a change after the reading cannot go unannounced.
    connection_.watchClient(window);
    const auto frameCookies = properties_.requestOuterFrame(window);
    const auto statesCookie = properties_.requestStates(window);
    const auto hintsCookie =
        properties_.request(window, XCB_ATOM_WM_NORMAL_HINTS, XCB_ATOM_WM_SIZE_HINTS);
    const auto titleCookies = properties_.requestTitle(window);
    const auto typesCookie = properties_.request(window, "_NET_WM_WINDOW_TYPE", XCB_ATOM_ATOM);
    auto frame = properties_.outerFrameOf(frameCookies);
    auto states = properties_.valuesOf(statesCookie, XCB_ATOM_ATOM);
    auto hints = sizeHintsOf(hintsCookie);
    auto title = properties_.titleOf(titleCookies);
    auto types = properties_.valuesOf(typesCookie, XCB_ATOM_ATOM);
    return readings_
        .insert_or_assign(window, Reading{window, std::move(frame), std::move(states), hints,
                                          std::move(title), std::move(types)})
        .first->second;
}

Expected<X11Accessibility::Resolved, AXErrorCode> X11Accessibility::resolve(
    const AXElement& element) {
    if (!element.isValid()) {
        return unexpected(AXErrorCode::illegalArgument);
    }
    if (element.token() == 0) {
        if (!processExists(element.process())) {
            return unexpected(AXErrorCode::invalidUIElement);
        }
        return Resolved{Kind::application, XCB_WINDOW_NONE};
    }
    const auto id = element.token() & ~kCloseButtonBit;
    const auto window = static_cast<xcb_window_t>(id);
    if (id != window || !applications_.isClientOf(window, element.process())) {
        return unexpected(AXErrorCode::invalidUIElement);
    }
    return Resolved{(element.token() & kCloseButtonBit) != 0 ? Kind::closeButton : Kind::window,
                    window};
}

Expected<AXValue, AXErrorCode> X11Accessibility::copyAttributeValue(const AXElement& element,
                                                                    std::string_view attribute) {
    const auto resolved = resolve(element);
    if (!resolved) {
        return unexpected(resolved.error());
    }
    switch (resolved->kind) {
        case Kind::application:
            return applicationAttribute(element.process(), attribute);
        case Kind::window:
            return windowAttribute(element.process(), resolved->window, attribute);
        case Kind::closeButton:
            if (attribute == kRole) {
                return AXValue(std::string("AXButton"));
            }
            if (attribute == AXAttribute::kSubrole) {
                return AXValue(std::string(AXAttribute::kCloseButton));
            }
            return unexpected(AXErrorCode::attributeUnsupported);
    }
    return unexpected(AXErrorCode::failure);
}

Expected<AXValue, AXErrorCode> X11Accessibility::applicationAttribute(ProcessId process,
                                                                      std::string_view attribute) {
    if (attribute == AXAttribute::kWindows) {
        std::vector<AXElement> windows;
        for (const auto window : applications_.windowsOf(process)) {
            windows.emplace_back(process, window);
        }
        return AXValue(std::move(windows));
    }
    if (attribute == AXAttribute::kFocusedWindow) {
        const auto active = applications_.activeWindow();
        if (!active || !applications_.isClientOf(*active, process)) {
            return unexpected(AXErrorCode::noValue);
        }
        return AXValue(AXElement(process, *active));
    }
    if (attribute == AXAttribute::kTitle) {
        auto application = applications_.runningApplication(process);
        if (!application) {
            return unexpected(AXErrorCode::noValue);
        }
        return AXValue(application->localizedName);
    }
    if (attribute == kRole) {
        return AXValue(std::string("AXApplication"));
    }
    return unexpected(AXErrorCode::attributeUnsupported);
}

Expected<AXValue, AXErrorCode> X11Accessibility::windowAttribute(ProcessId process,
                                                                 xcb_window_t window,
                                                                 std::string_view attribute) {
    if (isFrameAttribute(attribute)) {
        return frameAttribute(readingOf(window).frame, attribute);
    }
    if (isStateAttribute(attribute)) {
        return stateAttribute(readingOf(window).states, attribute);
    }
    if (attribute == AXAttribute::kMinSize) {
        return minimumSize(readingOf(window));
    }
    if (attribute == AXAttribute::kTitle) {
        const auto& title = readingOf(window).title;
        if (!title) {
            return unexpected(errorOf(title.error()));
        }
        return AXValue(*title);
    }
    if (attribute == AXAttribute::kSubrole) {
        const auto& types = readingOf(window).types;
        if (!types) {
            return unexpected(errorOf(types.error()));
        }
        // Windows that name no type are normal ones, as the hints define.
        const bool standard =
            types->empty() || types->front() == connection_.atom("_NET_WM_WINDOW_TYPE_NORMAL");
        const bool dialog =
            !types->empty() && types->front() == connection_.atom("_NET_WM_WINDOW_TYPE_DIALOG");
        return AXValue(std::string(standard ? kStandardWindowSubrole
                                   : dialog ? std::string_view("AXDialog")
                                            : std::string_view("AXFloatingWindow")));
    }
    if (attribute == AXAttribute::kCloseButton) {
        return AXValue(AXElement(process, window | kCloseButtonBit));
    }
    if (attribute == AXAttribute::kWindowId) {
        return AXValue(static_cast<std::int64_t>(window));
    }
    if (attribute == kRole) {
        return AXValue(std::string("AXWindow"));
    }
    return unexpected(AXErrorCode::attributeUnsupported);
}

std::vector<Expected<AXValue, AXErrorCode>> X11Accessibility::copyMultipleAttributeValues(
    const AXElement& element, const std::vector<std::string_view>& attributes) {
    const auto resolved = resolve(element);
    if (!resolved || resolved->kind != Kind::window) {
        return AccessibilityPort::copyMultipleAttributeValues(element, attributes);
    }
    // The window's reading answers the frame, the states and the title alike.
    std::vector<Expected<AXValue, AXErrorCode>> values;
    values.reserve(attributes.size());
    for (const auto attribute : attributes) {
        values.push_back(windowAttribute(element.process(), resolved->window, attribute));
    }
    return values;
}

bool X11Accessibility::isFrameAttribute(std::string_view attribute) {
    return attribute == AXAttribute::kPosition || attribute == AXAttribute::kSize;
}

bool X11Accessibility::isStateAttribute(std::string_view attribute) {
    return attribute == AXAttribute::kMinimized || attribute == AXAttribute::kFullScreen;
}

Expected<AXValue, AXErrorCode> X11Accessibility::frameAttribute(
    const Expected<X11Properties::OuterFrame, X11Error>& frame, std::string_view attribute) {
    if (!frame) {
        return unexpected(errorOf(frame.error()));
    }
    const Rect rect = screens_.coordinates().toAccessibility(frame->rect);
    return attribute == AXAttribute::kPosition ? AXValue(rect.origin) : AXValue(rect.size);
}

Expected<AXValue, AXErrorCode> X11Accessibility::stateAttribute(
    const Expected<std::vector<xcb_atom_t>, X11Error>& states, std::string_view attribute) {
    if (!states) {
        return unexpected(errorOf(states.error()));
    }
    const xcb_atom_t state = connection_.atom(
        attribute == AXAttribute::kMinimized ? "_NET_WM_STATE_HIDDEN" : "_NET_WM_STATE_FULLSCREEN");
    return AXValue(std::ranges::find(*states, state) != states->end());
}

Expected<AXValue, AXErrorCode> X11Accessibility::minimumSize(const Reading& reading) {
    if (!reading.hints || !reading.hints->hasMinimum) {
        return unexpected(AXErrorCode::attributeUnsupported);
    }
    if (!reading.frame) {
        return unexpected(errorOf(reading.frame.error()));
    }
    const FrameExtents& extents = reading.frame->extents;
    return AXValue(
        Size{static_cast<double>(reading.hints->minWidth + extents.left + extents.right),
             static_cast<double>(reading.hints->minHeight + extents.top + extents.bottom)});
}

AXErrorCode X11Accessibility::setAttributeValue(const AXElement& element,
                                                std::string_view attribute, const AXValue& value) {
    const auto resolved = resolve(element);
    if (!resolved) {
        return resolved.error();
    }
    if (resolved->kind != Kind::window) {
        return AXErrorCode::attributeUnsupported;
    }
    const auto window = resolved->window;
    if (attribute == AXAttribute::kPosition) {
        const auto* position = std::get_if<Point>(&value);
        if (position == nullptr || !isFinite(*position)) {
            return AXErrorCode::illegalArgument;
        }
        return moveResize(window, *position, std::nullopt);
    }
    if (attribute == AXAttribute::kSize) {
        const auto* size = std::get_if<Size>(&value);
        if (size == nullptr || !isFinite(*size) || size->width < 1 || size->height < 1) {
            return AXErrorCode::illegalArgument;
        }
        return moveResize(window, std::nullopt, *size);
    }
    if (attribute == AXAttribute::kFullScreen || attribute == AXAttribute::kMinimized) {
        const auto* flag = std::get_if<bool>(&value);
        if (flag == nullptr) {
            return AXErrorCode::illegalArgument;
        }
        if (attribute == AXAttribute::kFullScreen) {
            return setState(window, "_NET_WM_STATE_FULLSCREEN", *flag);
        }
        if (*flag) {
            sendToRoot(window, "WM_CHANGE_STATE", {XCB_ICCCM_WM_STATE_ICONIC, 0, 0, 0, 0});
        } else {
            sendToRoot(window, "_NET_ACTIVE_WINDOW", {2, XCB_CURRENT_TIME, 0, 0, 0});
        }
        connection_.flush();
        return AXErrorCode::success;
    }
    return AXErrorCode::attributeUnsupported;
}

AXErrorCode X11Accessibility::performAction(const AXElement& element, std::string_view action) {
    const auto resolved = resolve(element);
    if (!resolved) {
        return resolved.error();
    }
    if (resolved->kind == Kind::closeButton && action == AXAction::kPress) {
        sendToRoot(resolved->window, "_NET_CLOSE_WINDOW", {XCB_CURRENT_TIME, 2, 0, 0, 0});
    } else if (resolved->kind == Kind::window && action == AXAction::kRaise) {
        sendToRoot(resolved->window, "_NET_ACTIVE_WINDOW", {2, XCB_CURRENT_TIME, 0, 0, 0});
    } else {
        return AXErrorCode::actionUnsupported;
    }
    connection_.flush();
    return AXErrorCode::success;
}

Expected<ProcessId, AXErrorCode> X11Accessibility::processOf(const AXElement& element) {
    const auto resolved = resolve(element);
    if (!resolved) {
        return unexpected(resolved.error());
    }
    return element.process();
}

AXErrorCode X11Accessibility::moveResize(xcb_window_t window, std::optional<Point> position,
                                         std::optional<Size> size) {
    // Everything the request is reckoned from, in the window's reading. Copies: asking the window
    // manager for anything forgets the reading.
    const Reading& reading = readingOf(window);
    const auto hints = reading.hints;
    auto outer = reading.frame;
    if (!reading.states) {
        return errorOf(reading.states.error());
    }
    if (isMaximized(*reading.states)) {
        unmaximize(window, outer);
        // The decorations changed with it, and the size asked is reckoned with the new ones.
        outer = readingOf(window).frame;
    }
    if (!outer) {
        return errorOf(outer.error());
    }
    const RootRect& frame = outer->rect;
    const FrameExtents& extents = outer->extents;
    std::uint32_t flags = kNorthWestGravity | kSourcePager;
    RootRect target = frame;
    if (position) {
        std::tie(target.x, target.y) = screens_.coordinates().toRoot(*position);
        flags |= kHasX | kHasY;
    }
    if (size) {
        // Asked on the window's own steps and above its minimum, the request is what the window
        // manager will make of it, and the frame can be compared with it exactly.
        const int horizontal = extents.left + extents.right;
        const int vertical = extents.top + extents.bottom;
        const auto client = hints.value_or(X11SizeHints{})
                                .fit(static_cast<int>(std::lround(size->width)) - horizontal,
                                     static_cast<int>(std::lround(size->height)) - vertical);
        target.width = client.width + horizontal;
        target.height = client.height + vertical;
        flags |= kHasWidth | kHasHeight;
    }
    if (target == frame) {
        return AXErrorCode::success;
    }
    // The request sizes the client; the frame's decorations come on top.
    const int clientWidth = target.width - extents.left - extents.right;
    const int clientHeight = target.height - extents.top - extents.bottom;
    sendToRoot(window, "_NET_MOVERESIZE_WINDOW",
               {flags, static_cast<std::uint32_t>(target.x), static_cast<std::uint32_t>(target.y),
                static_cast<std::uint32_t>(clientWidth), static_cast<std::uint32_t>(clientHeight)});
    // The window manager may round the size to the window's steps, keep it above its minimum or
    // refuse it: once it has answered the ping, the frame is whatever it made of the request.
    // Without the round trip, a frame that changed at all is taken as the answer.
    const RootRect before = frame;
    awaitWindowManager(window, [&] {
        auto now = properties_.frameRect(window);
        return !now || *now == target || *now != before;
    });
    return AXErrorCode::success;
}

std::optional<X11SizeHints> X11Accessibility::sizeHintsOf(xcb_get_property_cookie_t cookie) {
    auto answer = connection_.reply(xcb_get_property_reply, cookie);
    xcb_size_hints_t hints{};
    if (!answer || !xcb_icccm_get_wm_size_hints_from_reply(&hints, answer->get())) {
        return std::nullopt;
    }
    return X11SizeHints::from(hints);
}

bool X11Accessibility::isMaximized(const std::vector<xcb_atom_t>& states) {
    return std::ranges::find(states, connection_.atom("_NET_WM_STATE_MAXIMIZED_VERT")) !=
               states.end() ||
           std::ranges::find(states, connection_.atom("_NET_WM_STATE_MAXIMIZED_HORZ")) !=
               states.end();
}

void X11Accessibility::unmaximize(xcb_window_t window,
                                  const Expected<X11Properties::OuterFrame, X11Error>& maximized) {
    // A maximized window would take the request as the size to restore to later.
    sendToRoot(window, "_NET_WM_STATE",
               {kStateRemove, connection_.atom("_NET_WM_STATE_MAXIMIZED_VERT"),
                connection_.atom("_NET_WM_STATE_MAXIMIZED_HORZ"), 2, 0});
    awaitWindowManager(window, [&] {
        auto stillVertical = properties_.hasState(window, "_NET_WM_STATE_MAXIMIZED_VERT");
        auto stillHorizontal = properties_.hasState(window, "_NET_WM_STATE_MAXIMIZED_HORZ");
        // The decorations change too, and the size asked next is reckoned with them.
        auto now = properties_.outerFrame(window);
        return !stillVertical || !stillHorizontal || !now ||
               (!*stillVertical && !*stillHorizontal &&
                (!maximized ||
                 (now->rect != maximized->rect && (now->extents.top != maximized->extents.top ||
                                                   now->extents.left != maximized->extents.left))));
    });
}

AXErrorCode X11Accessibility::setState(xcb_window_t window, std::string_view state, bool on) {
    const auto& states = readingOf(window).states;
    if (!states) {
        return errorOf(states.error());
    }
    if ((std::ranges::find(*states, connection_.atom(state)) != states->end()) == on) {
        return AXErrorCode::success;
    }
    sendToRoot(window, "_NET_WM_STATE",
               {on ? kStateAdd : kStateRemove, connection_.atom(state), 0, 2, 0});
    awaitWindowManager(window, [&] {
        auto now = properties_.hasState(window, state);
        return !now || *now == on;
    });
    return AXErrorCode::success;
}

void X11Accessibility::sendToRoot(xcb_window_t window, std::string_view type,
                                  const std::array<std::uint32_t, 5>& data) {
    // Selected on the client window itself before asking, so the answer cannot come first: the
    // window manager answers a move with a synthetic ConfigureNotify there, a resize with a real
    // one, and a change of state by rewriting _NET_WM_STATE.
    connection_.watchClient(window);
    // Inside a batch the readings stay: each request carries only the fields it changes, so one
    // reckoned from a reading that predates the batch's earlier requests still asks for the right
    // thing, and the batch's end forgets them all.
    if (batchDepth_ == 0) {
        forgetReading();
    }
    xcb_client_message_event_t message{};
    message.response_type = XCB_CLIENT_MESSAGE;
    message.format = 32;
    message.window = window;
    message.type = connection_.atom(type);
    std::ranges::copy(data, message.data.data32);
    xcb_send_event(connection_.raw(), 0, connection_.root(),
                   XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY,
                   reinterpret_cast<const char*>(&message));
}

void X11Accessibility::awaitWindowManager(xcb_window_t window,
                                          const std::function<bool()>& appliedWithoutPing) {
    if (batchDepth_ > 0) {
        batchAwaitsWindowManager_ = true;
        return;
    }
    if (ping_.isAvailable()) {
        ping_.roundTrip(kApplyPatience);
    } else {
        waitUntil(window, appliedWithoutPing);
    }
}

void X11Accessibility::endWriteBatch() {
    if (batchDepth_ == 0 || --batchDepth_ > 0) {
        return;
    }
    forgetReading();
    if (!std::exchange(batchAwaitsWindowManager_, false)) {
        return;
    }
    // Without a ping there is no one wait for many windows; whoever verifies the writes reads
    // each window again and retries.
    if (ping_.isAvailable()) {
        ping_.roundTrip(kApplyPatience);
    }
}

bool X11Accessibility::waitUntil(xcb_window_t window, const std::function<bool()>& applied) {
    const auto deadline = std::chrono::steady_clock::now() + kApplyPatience;
    auto aboutWindow = [window](const xcb_generic_event_t& event) {
        switch (event.response_type & 0x7f) {
            case XCB_CONFIGURE_NOTIFY:
                return reinterpret_cast<const xcb_configure_notify_event_t&>(event).window ==
                       window;
            case XCB_PROPERTY_NOTIFY:
                return reinterpret_cast<const xcb_property_notify_event_t&>(event).window == window;
            default:
                return false;
        }
    };
    // Events already on their way may be answers to an earlier request: each is only a cue to
    // read the window again.
    while (true) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
            deadline - std::chrono::steady_clock::now());
        if (left.count() <= 0 || !connection_.waitForEvent(aboutWindow, left)) {
            return applied();
        }
        if (applied()) {
            return true;
        }
    }
}

}  // namespace corvetta
