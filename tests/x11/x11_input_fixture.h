// x11_input_fixture.h: A private X server with an XTest driver, for the X11 input tests.
#pragma once

// A private X server with two clients: the one the class under test uses, and a driver that
// injects key and button presses through XTest the way a user would make them.

#include <cstdlib>
#include <functional>
#include <memory>
#include <stdexcept>

#include <gtest/gtest.h>
#include <xcb/xcb.h>
#include <xcb/xcb_keysyms.h>
#include <xcb/xtest.h>

#include "foundation/clock.h"
#include "foundation/manual_queue.h"
#include "support/virtual_display.h"

namespace corvetta::testing {

class X11InputTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() { display_ = new VirtualDisplay(); }
    static void TearDownTestSuite() {
        delete display_;
        display_ = nullptr;
    }

    X11InputTest()
        : observed_(connect()),
          driver_(connect()),
          driverSymbols_(xcb_key_symbols_alloc(driver_)) {}
    ~X11InputTest() override {
        xcb_key_symbols_free(driverSymbols_);
        xcb_disconnect(driver_);
        xcb_disconnect(observed_);
    }

    static xcb_connection_t* connect() {
        xcb_connection_t* connection = xcb_connect(display_->displayName().c_str(), nullptr);
        if (xcb_connection_has_error(connection)) {
            throw std::runtime_error("cannot connect to " + display_->displayName());
        }
        return connection;
    }
    static xcb_window_t rootOf(xcb_connection_t* connection) {
        return xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root;
    }
    xcb_window_t root() const { return rootOf(observed_); }

    xcb_keycode_t keyCode(xcb_keysym_t symbol) const {
        std::unique_ptr<xcb_keycode_t, decltype(&std::free)> codes(
            xcb_key_symbols_get_keycode(driverSymbols_, symbol), &std::free);
        if (!codes || *codes == XCB_NO_SYMBOL) {
            throw std::runtime_error("no key code for symbol " + std::to_string(symbol));
        }
        return *codes;
    }
    void fake(std::uint8_t type, std::uint8_t detail, std::int16_t x = 0, std::int16_t y = 0) {
        xcb_test_fake_input(driver_, type, detail, XCB_CURRENT_TIME, rootOf(driver_), x, y,
                            XCB_NONE);
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

    static void roundTrip(xcb_connection_t* connection) {
        std::free(xcb_get_input_focus_reply(connection, xcb_get_input_focus(connection), nullptr));
    }
    // Once the server has handled what the driver sent, every event it caused is in the observed
    // client's queue (the server answers in order): hand them to `handle`, then run the work
    // they posted.
    void deliver(const std::function<bool(const xcb_generic_event_t&)>& handle) {
        roundTrip(driver_);
        roundTrip(observed_);
        while (xcb_generic_event_t* event = xcb_poll_for_event(observed_)) {
            handle(*event);
            std::free(event);
        }
        queue_.runUntilIdle();
    }

    static inline VirtualDisplay* display_ = nullptr;
    xcb_connection_t* observed_;
    xcb_connection_t* driver_;
    xcb_key_symbols_t* driverSymbols_;
    ManualClock clock_;
    ManualQueue queue_{clock_};
};

}  // namespace corvetta::testing
