// x11_test_support.h: What X11 backend tests share: an X server, a connection, a fake client.
#pragma once

// What the X11 backend's tests share: a private X server, a queue the test drives, the backend's
// connection, and a plain client connection that plays the other applications (and, where a test
// runs without a window manager, the window manager's root properties).

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <xcb/xcb.h>

#include "foundation/clock.h"
#include "foundation/manual_queue.h"
#include "platform/x11/x11_connection.h"
#include "support/child_process.h"
#include "support/virtual_display.h"

namespace corvetta::testing {

// Another X client: creates windows and writes properties the way applications and window
// managers do.
class FakeClient {
public:
    explicit FakeClient(const std::string& display)
        : connection_(xcb_connect(display.c_str(), nullptr)) {
        if (xcb_connection_has_error(connection_)) {
            throw std::runtime_error("cannot connect to " + display);
        }
        root_ = xcb_setup_roots_iterator(xcb_get_setup(connection_)).data->root;
    }
    ~FakeClient() { xcb_disconnect(connection_); }
    FakeClient(const FakeClient&) = delete;
    FakeClient& operator=(const FakeClient&) = delete;

    xcb_connection_t* raw() const { return connection_; }
    xcb_window_t root() const { return root_; }

    xcb_atom_t atom(const std::string& name) {
        auto* reply = xcb_intern_atom_reply(
            connection_,
            xcb_intern_atom(connection_, 0, static_cast<std::uint16_t>(name.size()), name.data()),
            nullptr);
        const xcb_atom_t result = reply->atom;
        std::free(reply);
        return result;
    }
    xcb_window_t createWindow(int x, int y, int width, int height) {
        const xcb_window_t window = xcb_generate_id(connection_);
        xcb_create_window(connection_, XCB_COPY_FROM_PARENT, window, root_,
                          static_cast<std::int16_t>(x), static_cast<std::int16_t>(y),
                          static_cast<std::uint16_t>(width), static_cast<std::uint16_t>(height), 0,
                          XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, 0, nullptr);
        return window;
    }
    void setCardinals(xcb_window_t window, const std::string& property,
                      const std::vector<std::uint32_t>& values,
                      xcb_atom_t type = XCB_ATOM_CARDINAL) {
        xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, window, atom(property), type, 32,
                            static_cast<std::uint32_t>(values.size()), values.data());
    }
    void setText(xcb_window_t window, const std::string& property, const std::string& text,
                 xcb_atom_t type) {
        xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, window, atom(property), type, 8,
                            static_cast<std::uint32_t>(text.size()), text.data());
    }
    // A top-level window of an application: its process, WM_CLASS and title.
    xcb_window_t createClientWindow(int x, int y, int width, int height, std::uint32_t pid,
                                    const std::string& className, const std::string& title) {
        const auto window = createWindow(x, y, width, height);
        setCardinals(window, "_NET_WM_PID", {pid});
        setText(window, "WM_CLASS", className + std::string(1, '\0') + className + '\0',
                XCB_ATOM_STRING);
        setText(window, "WM_NAME", title, XCB_ATOM_STRING);
        xcb_map_window(connection_, window);
        xcb_flush(connection_);
        return window;
    }
    void destroy(xcb_window_t window) { xcb_destroy_window(connection_, window); }
    // Waits until the server has handled everything sent.
    void sync() {
        std::free(
            xcb_get_input_focus_reply(connection_, xcb_get_input_focus(connection_), nullptr));
    }

private:
    xcb_connection_t* connection_;
    xcb_window_t root_ = 0;
};

// Runs a command line to its end; the exit status.
inline int runProgram(std::vector<std::string> arguments, std::vector<std::string> environment) {
    auto argv = nullTerminated(arguments);
    auto envp = nullTerminated(environment);
    pid_t pid = 0;
    if (posix_spawnp(&pid, argv[0], nullptr, nullptr, argv.data(), envp.data()) != 0) {
        return -1;
    }
    int status = 0;
    waitpid(pid, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

// A private display with the backend connected to it on a manual queue.
class X11Fixture {
public:
    explicit X11Fixture(VirtualDisplayOptions options = {}) : display_(options), queue_(clock_) {
        auto opened = X11Connection::open(display_.displayName(), queue_);
        if (!opened) {
            throw std::runtime_error(opened.error());
        }
        connection_ = std::move(*opened);
        counting_ = connection_->addEventHandler([this](const xcb_generic_event_t&) {
            ++eventsSeen_;
            return false;
        });
        client_ = std::make_unique<FakeClient>(display_.displayName());
    }

    VirtualDisplay& display() { return display_; }
    ManualQueue& queue() { return queue_; }
    X11Connection& connection() { return *connection_; }
    FakeClient& client() { return *client_; }

    int xrandr(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), "xrandr");
        return runProgram(std::move(arguments), display_.environment());
    }

    // Runs the queue until `done` holds or the safety deadline passes. Between checks it blocks
    // on the connection, so `done` must depend on something the server announces: changes to
    // top-level windows and root properties are selected here for that.
    bool runUntil(const std::function<bool()>& done,
                  std::chrono::milliseconds patience = VirtualDisplay::kSafetyDeadline) {
        connection_->selectRootEvents(XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY |
                                      XCB_EVENT_MASK_PROPERTY_CHANGE);
        const auto deadline = std::chrono::steady_clock::now() + patience;
        while (true) {
            queue_.runUntilIdle();
            if (done()) {
                return true;
            }
            // The replies `done` waited for may have brought events along; only when none did is
            // there nothing new to look at until the socket speaks.
            const auto before = eventsSeen_;
            queue_.runUntilIdle();
            if (eventsSeen_ != before) {
                continue;
            }
            const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
                deadline - std::chrono::steady_clock::now());
            if (left.count() <= 0) {
                return false;
            }
            pollfd descriptor{xcb_get_file_descriptor(connection_->raw()), POLLIN, 0};
            poll(&descriptor, 1, static_cast<int>(left.count()));
            connection_->readEvents();
        }
    }
    // Lets the backend see everything the fake client has sent.
    void catchUp() {
        client_->sync();
        bool done = false;
        connection_->synchronize([&] { done = true; });
        queue_.runUntilIdle();
        if (!done) {
            throw std::runtime_error("synchronize did not finish");
        }
    }

private:
    VirtualDisplay display_;
    ManualClock clock_;
    ManualQueue queue_;
    std::unique_ptr<X11Connection> connection_;
    Registration counting_;
    std::uint64_t eventsSeen_ = 0;
    std::unique_ptr<FakeClient> client_;
};

}  // namespace corvetta::testing
