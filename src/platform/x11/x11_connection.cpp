#include "platform/x11/x11_connection.h"

#include <map>
#include <vector>

#include <poll.h>

namespace corvetta {

struct X11Connection::Handlers {
    std::uint64_t nextId = 1;
    std::map<std::uint64_t, std::shared_ptr<EventHandler>> byId;
};

Expected<std::unique_ptr<X11Connection>, std::string> X11Connection::open(
    const std::string& display, MainQueue& queue) {
    int screenNumber = 0;
    xcb_connection_t* connection =
        xcb_connect(display.empty() ? nullptr : display.c_str(), &screenNumber);
    if (const int error = xcb_connection_has_error(connection)) {
        xcb_disconnect(connection);
        const std::string name = display.empty() ? "$DISPLAY" : display;
        return unexpected("cannot connect to the X display " + name + " (xcb error " +
                          std::to_string(error) + ")");
    }
    return std::unique_ptr<X11Connection>(new X11Connection(connection, screenNumber, queue));
}

X11Connection::X11Connection(xcb_connection_t* connection, int screenNumber, MainQueue& queue)
    : connection_(connection),
      queue_(queue),
      handlers_(std::make_shared<Handlers>()),
      self_(std::make_shared<X11Connection*>(this)) {
    auto iterator = xcb_setup_roots_iterator(xcb_get_setup(connection_));
    for (int index = 0; index < screenNumber && iterator.rem > 0; ++index) {
        xcb_screen_next(&iterator);
    }
    screen_ = iterator.data;
    watch_ =
        queue_.watch(xcb_get_file_descriptor(connection_), static_cast<unsigned>(FdEvent::readable),
                     [this](unsigned) { readEvents(); });
}

X11Connection::~X11Connection() {
    watch_.reset();
    *self_ = nullptr;
    xcb_disconnect(connection_);
}

xcb_atom_t X11Connection::atom(std::string_view name) {
    const std::string key(name);
    if (auto found = atoms_.find(key); found != atoms_.end()) {
        return found->second;
    }
    auto interned =
        reply(xcb_intern_atom_reply,
              xcb_intern_atom(connection_, 0, static_cast<std::uint16_t>(key.size()), key.data()));
    const xcb_atom_t value = interned ? (*interned)->atom : static_cast<xcb_atom_t>(XCB_ATOM_NONE);
    if (interned) {
        atoms_.emplace(key, value);
    }
    return value;
}

std::string X11Connection::atomName(xcb_atom_t atom) {
    if (atom == XCB_ATOM_NONE) {
        return {};
    }
    if (auto found = atomNames_.find(atom); found != atomNames_.end()) {
        return found->second;
    }
    auto name = reply(xcb_get_atom_name_reply, xcb_get_atom_name(connection_, atom));
    if (!name) {
        return {};
    }
    // An atom keeps its name while the server runs.
    return atomNames_
        .emplace(atom,
                 std::string(xcb_get_atom_name_name(name->get()),
                             static_cast<std::size_t>(xcb_get_atom_name_name_length(name->get()))))
        .first->second;
}

Registration X11Connection::addEventHandler(EventHandler handler) {
    const std::uint64_t id = handlers_->nextId++;
    handlers_->byId.emplace(id, std::make_shared<EventHandler>(std::move(handler)));
    return Registration([weak = std::weak_ptr<Handlers>(handlers_), id] {
        if (auto handlers = weak.lock()) {
            handlers->byId.erase(id);
        }
    });
}

void X11Connection::selectRootEvents(std::uint32_t mask) {
    rootEventMask_ |= mask;
    const std::uint32_t values[] = {rootEventMask_};
    xcb_change_window_attributes(connection_, root(), XCB_CW_EVENT_MASK, values);
    flush();
}

void X11Connection::watchClient(xcb_window_t window) {
    const std::uint32_t values[] = {kClientEventMask};
    xcb_change_window_attributes(connection_, window, XCB_CW_EVENT_MASK, values);
}

void X11Connection::flush() {
    xcb_flush(connection_);
}

Expected<void, X11Error> X11Connection::check(xcb_void_cookie_t cookie) {
    ++roundTrips_;
    xcb_generic_error_t* error = xcb_request_check(connection_, cookie);
    readEventsSoon();
    if (error) {
        return unexpected(takeError(error));
    }
    if (hasFailed()) {
        return unexpected(X11Error{});
    }
    return {};
}

void X11Connection::synchronize(std::function<void()> done) {
    // Any request with a reply works as a barrier: the server answers in order.
    auto focus = reply(xcb_get_input_focus_reply, xcb_get_input_focus(connection_));
    (void)focus;
    readEvents();
    queue_.post(std::move(done));
}

bool X11Connection::waitForEvent(const std::function<bool(const xcb_generic_event_t&)>& wanted,
                                 std::chrono::milliseconds patience) {
    const auto deadline = std::chrono::steady_clock::now() + patience;
    ++roundTrips_;
    flush();
    // Whatever stays queued when this returns must not wait for the socket to wake again.
    readEventsSoon();
    while (!hasFailed()) {
        while (xcb_generic_event_t* raw = xcb_poll_for_event(connection_)) {
            XcbPointer<xcb_generic_event_t> event(raw);
            dispatch(*event);
            if (wanted(*event)) {
                return true;
            }
        }
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
            deadline - std::chrono::steady_clock::now());
        if (left.count() <= 0) {
            return false;
        }
        pollfd descriptor{xcb_get_file_descriptor(connection_), POLLIN, 0};
        poll(&descriptor, 1, static_cast<int>(left.count()) + 1);
    }
    return false;
}

void X11Connection::readEvents() {
    while (xcb_generic_event_t* raw = xcb_poll_for_event(connection_)) {
        XcbPointer<xcb_generic_event_t> event(raw);
        dispatch(*event);
    }
}

void X11Connection::countWaitFor(unsigned int sequence) {
    if (sequence <= sentBeforeLastWait_) {
        return;
    }
    ++roundTrips_;
    // The server ignores a NoOperation; its number tells which requests were already sent.
    sentBeforeLastWait_ = xcb_no_operation(connection_).sequence;
}

void X11Connection::countRoundTrip() {
    ++roundTrips_;
    readEventsSoon();
}

bool X11Connection::hasFailed() const {
    return xcb_connection_has_error(connection_) != 0;
}

X11Error X11Connection::takeError(xcb_generic_error_t* error) {
    X11Error result;
    if (error) {
        result.code = error->error_code;
        result.resource = error->resource_id;
        std::free(error);
    }
    return result;
}

void X11Connection::readEventsSoon() {
    if (readPosted_) {
        return;
    }
    readPosted_ = true;
    queue_.post([weak = std::weak_ptr<X11Connection*>(self_)] {
        auto self = weak.lock();
        if (self && *self) {
            (*self)->readPosted_ = false;
            (*self)->readEvents();
        }
    });
}

void X11Connection::dispatch(const xcb_generic_event_t& event) {
    std::vector<std::pair<std::uint64_t, std::shared_ptr<EventHandler>>> snapshot(
        handlers_->byId.begin(), handlers_->byId.end());
    for (const auto& [id, handler] : snapshot) {
        // A handler may drop another's registration while the event is being handed out.
        if (!handlers_->byId.contains(id)) {
            continue;
        }
        if ((*handler)(event)) {
            return;
        }
    }
}

}  // namespace corvetta
