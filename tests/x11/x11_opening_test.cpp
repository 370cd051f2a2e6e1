#include "platform/x11/x11_opening.h"

#include <X11/keysym.h>
#include <poll.h>

#include "x11_test_support.h"

namespace corvetta {
namespace {

// The key symbols a window received, in order, reading until `count` arrived or a second passed
// without one.
std::vector<xcb_keysym_t> receivedKeys(testing::FakeClient& client, std::size_t count) {
    std::vector<xcb_keysym_t> keys;
    xcb_key_symbols_t* symbols = xcb_key_symbols_alloc(client.raw());
    pollfd socket{xcb_get_file_descriptor(client.raw()), POLLIN, 0};
    while (keys.size() < count) {
        xcb_generic_event_t* event = xcb_poll_for_event(client.raw());
        if (event == nullptr) {
            if (poll(&socket, 1, 1000) <= 0) {
                break;
            }
            continue;
        }
        if ((event->response_type & 0x7f) == XCB_KEY_PRESS) {
            auto* press = reinterpret_cast<xcb_key_press_event_t*>(event);
            const bool shifted = (press->state & XCB_MOD_MASK_SHIFT) != 0;
            const auto symbol = xcb_key_symbols_get_keysym(symbols, press->detail, shifted ? 1 : 0);
            if (symbol != XK_Shift_L) {
                keys.push_back(symbol);
            }
        }
        std::free(event);
    }
    xcb_key_symbols_free(symbols);
    return keys;
}

TEST(X11Opening, TypesTextIntoTheFocusedWindowOrNothingAtAll) {
    testing::X11Fixture x;
    X11Opening opening{x.connection(), X11Launching{}};
    auto& client = x.client();
    const auto window = client.createWindow(0, 0, 200, 100);
    const std::uint32_t keys = XCB_EVENT_MASK_KEY_PRESS;
    xcb_change_window_attributes(client.raw(), window, XCB_CW_EVENT_MASK, &keys);
    xcb_map_window(client.raw(), window);
    client.sync();
    xcb_set_input_focus(client.raw(), XCB_INPUT_FOCUS_POINTER_ROOT, window, XCB_CURRENT_TIME);
    client.sync();

    EXPECT_FALSE(opening.typeText("ls \xe2\x82"));      // cut-off UTF-8
    EXPECT_FALSE(opening.typeText("ls \xe2\x98\x83"));  // a snowman: no key types it
    ASSERT_TRUE(opening.typeText("cd ~/A\n"));
    EXPECT_EQ(receivedKeys(client, 7),
              (std::vector<xcb_keysym_t>{XK_c, XK_d, XK_space, XK_asciitilde, XK_slash, XK_A,
                                         XK_Return}));
}

}  // namespace
}  // namespace corvetta
