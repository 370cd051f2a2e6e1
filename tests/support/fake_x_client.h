// fake_x_client.h: A plain X client that plays applications, window managers and the user.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <initializer_list>
#include <iterator>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <xcb/xcb.h>
#include <xcb/xcb_keysyms.h>
#include <xcb/xtest.h>

namespace corvetta::testing {

// Another X client: creates windows and writes properties the way applications and window
// managers do, and presses keys and buttons through XTest the way a user would.
class FakeClient {
public:
    explicit FakeClient(const std::string& display)
        : connection_(xcb_connect(display.c_str(), nullptr)) {
        if (xcb_connection_has_error(connection_)) {
            xcb_disconnect(connection_);
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
        const xcb_atom_t result = reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
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

}  // namespace corvetta::testing
