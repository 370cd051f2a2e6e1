// x11_test_support.h: What X11 backend tests share: an X server, a connection, a fake client.
#pragma once

// What the X11 backend's tests share: a private X server, a queue the test drives, the backend's
// connection, and plain client connections that play the other applications (and, where a test
// runs without a window manager, the window manager's root properties) or the user at the
// keyboard and mouse.

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>
#include <poll.h>
#include <xcb/xcb.h>
#include <xcb/xcb_keysyms.h>
#include <xcb/xtest.h>

#include "foundation/clock.h"
#include "foundation/manual_queue.h"
#include "platform/x11/x11_connection.h"
#include "support/running_process.h"
#include "support/virtual_display.h"

namespace corvetta::testing {

// Another X client: creates windows and writes properties the way applications and window
// managers do, and presses keys and buttons through XTest the way a user would.
class FakeClient {
public:
    explicit FakeClient(const std::string& display)
        : connection_(xcb_connect(display.c_str(), nullptr)) {
        if (xcb_connection_has_error(connection_)) {
            throw std::runtime_error("cannot connect to " + display);
        }
        root_ = xcb_setup_roots_iterator(xcb_get_setup(connection_)).data->root;
    }
    ~FakeClient() {
        if (symbols_) {
            xcb_key_symbols_free(symbols_);
        }
        xcb_disconnect(connection_);
    }
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

    xcb_keycode_t keyCode(xcb_keysym_t symbol) {
        if (!symbols_) {
            symbols_ = xcb_key_symbols_alloc(connection_);
        }
        std::unique_ptr<xcb_keycode_t, decltype(&std::free)> codes(
            xcb_key_symbols_get_keycode(symbols_, symbol), &std::free);
        if (!codes || *codes == XCB_NO_SYMBOL) {
            throw std::runtime_error("no key code for symbol " + std::to_string(symbol));
        }
        return *codes;
    }
    // After the keyboard mapping changed: key codes are looked up afresh.
    void forgetKeyCodes() { xcb_key_symbols_free(std::exchange(symbols_, nullptr)); }
    void fake(std::uint8_t type, std::uint8_t detail, std::int16_t x = 0, std::int16_t y = 0) {
        xcb_test_fake_input(connection_, type, detail, XCB_CURRENT_TIME, root_, x, y, XCB_NONE);
    }
    void press(xcb_keysym_t symbol) { fake(XCB_KEY_PRESS, keyCode(symbol)); }
    void release(xcb_keysym_t symbol) { fake(XCB_KEY_RELEASE, keyCode(symbol)); }
    // Presses the keys in order and releases them in reverse.
    void type(std::initializer_list<xcb_keysym_t> symbols) {
        for (const auto symbol : symbols) {
            press(symbol);
        }
        for (auto symbol = std::rbegin(symbols); symbol != std::rend(symbols); ++symbol) {
            release(*symbol);
        }
    }
    void moveTo(std::int16_t x, std::int16_t y) { fake(XCB_MOTION_NOTIFY, 0, x, y); }
    void click(std::uint8_t button) {
        fake(XCB_BUTTON_PRESS, button);
        fake(XCB_BUTTON_RELEASE, button);
    }

private:
    xcb_connection_t* connection_;
    xcb_window_t root_ = 0;
    xcb_key_symbols_t* symbols_ = nullptr;
};

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

    // Whether xrandr with `arguments` succeeded.
    bool xrandr(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), "xrandr");
        return RunningProcess(std::move(arguments), display_.environment()).waitForExit() == 0;
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

// One private X server for the suite, with two clients per test: the one the class under test
// uses, and a driver that plays the user.
class X11InputTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() { display_ = new VirtualDisplay(); }
    static void TearDownTestSuite() {
        delete display_;
        display_ = nullptr;
    }

    xcb_window_t root() const { return observedClient_.root(); }
    // Once the server has handled what the driver sent, every event it caused is in the observed
    // client's queue (the server answers in order): hand them to `handle`, then run the work
    // they posted.
    void deliver(const std::function<bool(const xcb_generic_event_t&)>& handle) {
        driver_.sync();
        observedClient_.sync();
        while (xcb_generic_event_t* event = xcb_poll_for_event(observed_)) {
            handle(*event);
            std::free(event);
        }
        queue_.runUntilIdle();
    }

    static inline VirtualDisplay* display_ = nullptr;
    FakeClient observedClient_{display_->displayName()};
    xcb_connection_t* observed_ = observedClient_.raw();
    FakeClient driver_{display_->displayName()};
    ManualClock clock_;
    ManualQueue queue_{clock_};
};

}  // namespace corvetta::testing
