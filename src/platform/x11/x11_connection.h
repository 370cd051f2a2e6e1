// x11_connection.h: The X server connection the backend shares: requests, atoms, events.
#pragma once

#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

#include <xcb/xcb.h>
#include <xcb/xcbext.h>

#include "foundation/expected.h"
#include "foundation/main_queue.h"
#include "foundation/registration.h"

namespace corvetta {

// An X protocol error, as the server reported it for one request.
struct X11Error {
    // BadWindow (3), BadAccess (10), ... as the core protocol numbers them; 0 when the connection
    // itself failed.
    std::uint8_t code = 0;
    std::uint32_t resource = 0;

    static constexpr std::uint8_t kBadWindow = 3;
    static constexpr std::uint8_t kBadAccess = 10;
};

struct FreeDeleter {
    void operator()(void* memory) const { std::free(memory); }
};
// A reply (or event) that xcb allocated for us.
template <class T>
using XcbPointer = std::unique_ptr<T, FreeDeleter>;

// The one connection to the X server the backend shares: the other X11 classes use it for their
// requests, receive the events it reads, and never touch the socket themselves. Events are read
// on the main queue as the socket becomes readable, and also after any request waited for its
// reply, because xcb queues the events that arrive meanwhile without the socket waking again.
class X11Connection {
public:
    using EventHandler = std::function<bool(const xcb_generic_event_t&)>;

    // The display named, or $DISPLAY when the name is empty. The error text says why not.
    static Expected<std::unique_ptr<X11Connection>, std::string> open(const std::string& display,
                                                                      MainQueue& queue);
    ~X11Connection();
    X11Connection(const X11Connection&) = delete;
    X11Connection& operator=(const X11Connection&) = delete;

    xcb_connection_t* raw() const { return connection_; }
    xcb_window_t root() const { return screen_->root; }
    const xcb_screen_t& screen() const { return *screen_; }
    MainQueue& queue() const { return queue_; }

    // The atom of the name, interned once and remembered.
    xcb_atom_t atom(std::string_view name);
    // The name of an atom; empty for None or an unknown atom.
    std::string atomName(xcb_atom_t atom);

    // Each event read goes to the handlers in the order they were added, until one returns true
    // (it consumed the event). Events of no interest are simply passed on.
    [[nodiscard]] Registration addEventHandler(EventHandler handler);
    // Adds to the event mask selected on the root window (what each part needs is or-ed in).
    void selectRootEvents(std::uint32_t mask);
    // What every part hears of a client window: its geometry (StructureNotify) and its
    // properties. One mask for all, because selecting replaces what this connection selected.
    static constexpr std::uint32_t kClientEventMask =
        XCB_EVENT_MASK_STRUCTURE_NOTIFY | XCB_EVENT_MASK_PROPERTY_CHANGE;
    void watchClient(xcb_window_t window);

    // Sends the requests made so far.
    void flush();
    // Waits for a request's reply; the error the server gave for it otherwise.
    template <class Reply, class Cookie>
    Expected<XcbPointer<Reply>, X11Error> reply(Reply* (*fetch)(xcb_connection_t*, Cookie,
                                                                xcb_generic_error_t**),
                                                Cookie cookie) {
        xcb_generic_error_t* error = nullptr;
        void* ready = nullptr;
        XcbPointer<Reply> result;
        // A reply already read (one of a batch asked for together) costs no wait of its own.
        if (xcb_poll_for_reply(connection_, cookie.sequence, &ready, &error) != 0) {
            result.reset(static_cast<Reply*>(ready));
        } else {
            countWaitFor(cookie.sequence);
            result.reset(fetch(connection_, cookie, &error));
        }
        readEventsSoon();
        if (!result) {
            return unexpected(takeError(error));
        }
        return result;
    }
    // Waits for the outcome of a checked request that has no reply.
    Expected<void, X11Error> check(xcb_void_cookie_t cookie);
    // Runs `done` on the main queue once the server has processed every request made before, and
    // the events it sent until then have been handed out.
    void synchronize(std::function<void()> done);

    // Blocks until an event `wanted` accepts has been read, or `patience` has passed (false then).
    // Every event read meanwhile is handed out as usual. For the few requests whose effect the
    // caller must see before it returns, such as a window manager applying a move.
    bool waitForEvent(const std::function<bool(const xcb_generic_event_t&)>& wanted,
                      std::chrono::milliseconds patience);

    // How often this program waited for the server so far: for replies to requests sent since
    // the last such wait began (the rest of a batch was on its way already, however the server
    // split its answers), checked requests, waits for an event, and those `countRoundTrip`
    // reports. Benchmarks count it per action; nothing decides on it.
    std::uint64_t roundTrips() const { return roundTrips_; }
    // For the parts that wait for replies on the raw connection themselves.
    void countRoundTrip();

    // Reads and hands out the events that have arrived.
    void readEvents();
    // Reads them on the queue's next turn: for those who waited for a reply on this connection
    // without it, as xcb then keeps the events it read meanwhile where no wake-up shows them.
    void readEventsSoon();
    bool hasFailed() const;

private:
    X11Connection(xcb_connection_t* connection, int screenNumber, MainQueue& queue);
    X11Error takeError(xcb_generic_error_t* error);
    void countWaitFor(unsigned int sequence);
    void dispatch(const xcb_generic_event_t& event);

    struct Handlers;
    xcb_connection_t* connection_;
    xcb_screen_t* screen_ = nullptr;
    MainQueue& queue_;
    std::unordered_map<std::string, xcb_atom_t> atoms_;
    std::unordered_map<xcb_atom_t, std::string> atomNames_;
    std::uint32_t rootEventMask_ = 0;
    std::shared_ptr<Handlers> handlers_;
    bool readPosted_ = false;
    std::uint64_t roundTrips_ = 0;
    // The last request sent when the last counted wait for a reply began.
    unsigned int sentBeforeLastWait_ = 0;
    FdWatch watch_;
    // Work posted to the queue checks it is still alive.
    std::shared_ptr<X11Connection*> self_;
};

}  // namespace corvetta
