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
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <poll.h>
#include <xcb/xcb.h>

#include "foundation/clock.h"
#include "foundation/manual_queue.h"
#include "platform/x11/x11_connection.h"
#include "support/fake_x_client.h"
#include "support/running_process.h"
#include "support/virtual_display.h"

namespace corvetta::testing {

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
