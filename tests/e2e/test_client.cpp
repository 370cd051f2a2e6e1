// corvetta-test-client: one top-level X window whose title, class, geometry and size hints the
// end-to-end tests choose. Prints "mapped <window id>" once the window manager has framed and
// mapped it, then lives until killed or closed through WM_DELETE_WINDOW.
//
//   corvetta-test-client [--title T] [--class C] [--geometry WxH+X+Y] [--fixed-size]

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include <unistd.h>
#include <xcb/xcb.h>
#include <xcb/xcb_icccm.h>

#include "support/fake_x_client.h"

namespace {

using corvetta::testing::FakeClient;

struct Options {
    std::string title = "Corvetta test client";
    std::string windowClass = "CorvettaTestClient";
    int x = 100, y = 100, width = 400, height = 300;
    bool fixedSize = false;
};

std::optional<Options> parse(int argc, char** argv) {
    Options options;
    for (int index = 1; index < argc; ++index) {
        const std::string_view option = argv[index];
        if (option == "--fixed-size") {
            options.fixedSize = true;
            continue;
        }
        if (index + 1 >= argc) {
            return std::nullopt;
        }
        const char* value = argv[++index];
        if (option == "--title") {
            options.title = value;
        } else if (option == "--class") {
            options.windowClass = value;
        } else if (option == "--geometry") {
            if (std::sscanf(value, "%dx%d%d%d", &options.width, &options.height, &options.x,
                            &options.y) != 4) {
                return std::nullopt;
            }
        } else {
            return std::nullopt;
        }
    }
    return options;
}

void describe(FakeClient& client, xcb_window_t window, const Options& options) {
    client.setText(window, "WM_NAME", options.title, XCB_ATOM_STRING);
    client.setText(window, "_NET_WM_NAME", options.title, client.atom("UTF8_STRING"));
    // WM_CLASS is "instance\0class\0".
    client.setText(
        window, "WM_CLASS",
        "corvetta-test-client" + std::string(1, '\0') + options.windowClass + std::string(1, '\0'),
        XCB_ATOM_STRING);
    // _NET_WM_PID is only meaningful next to WM_CLIENT_MACHINE.
    char host[256] = {};
    gethostname(host, sizeof host - 1);
    client.setText(window, "WM_CLIENT_MACHINE", host, XCB_ATOM_STRING);
    client.setCardinals(window, "_NET_WM_PID", {static_cast<uint32_t>(getpid())});
    client.setCardinals(window, "WM_PROTOCOLS", {client.atom("WM_DELETE_WINDOW")}, XCB_ATOM_ATOM);

    // A user-specified position: the window manager keeps it instead of placing the window.
    xcb_size_hints_t hints = {};
    xcb_icccm_size_hints_set_position(&hints, 1, options.x, options.y);
    xcb_icccm_size_hints_set_size(&hints, 1, options.width, options.height);
    if (options.fixedSize) {
        xcb_icccm_size_hints_set_min_size(&hints, options.width, options.height);
        xcb_icccm_size_hints_set_max_size(&hints, options.width, options.height);
    }
    xcb_icccm_set_wm_normal_hints(client.raw(), window, &hints);
}

}  // namespace

int main(int argc, char** argv) {
    const auto options = parse(argc, argv);
    if (!options) {
        std::fprintf(stderr,
                     "usage: corvetta-test-client [--title T] [--class C] [--geometry WxH+X+Y] "
                     "[--fixed-size]\n");
        return 2;
    }
    const char* display = std::getenv("DISPLAY");
    std::unique_ptr<FakeClient> client;
    try {
        client = std::make_unique<FakeClient>(display ? display : "");
    } catch (const std::runtime_error&) {
        std::fprintf(stderr, "corvetta-test-client: cannot connect to the X server\n");
        return 1;
    }
    xcb_connection_t* connection = client->raw();
    const xcb_window_t window =
        client->createWindow(options->x, options->y, options->width, options->height);
    const uint32_t values[] = {
        xcb_setup_roots_iterator(xcb_get_setup(connection)).data->white_pixel,
        XCB_EVENT_MASK_STRUCTURE_NOTIFY};
    xcb_change_window_attributes(connection, window, XCB_CW_BACK_PIXEL | XCB_CW_EVENT_MASK, values);
    describe(*client, window, *options);
    const xcb_atom_t protocols = client->atom("WM_PROTOCOLS");
    const xcb_atom_t deleteWindow = client->atom("WM_DELETE_WINDOW");
    xcb_map_window(connection, window);
    xcb_flush(connection);

    // A window manager ignores requests for a window it has not framed yet; the tests wait for
    // both before they act.
    bool reparented = false, mapped = false, announced = false;
    while (xcb_generic_event_t* event = xcb_wait_for_event(connection)) {
        const auto type = event->response_type & 0x7f;
        if (type == XCB_REPARENT_NOTIFY) {
            reparented = true;
        } else if (type == XCB_MAP_NOTIFY) {
            mapped = true;
        } else if (type == XCB_CLIENT_MESSAGE) {
            const auto* message = reinterpret_cast<xcb_client_message_event_t*>(event);
            if (message->type == protocols && message->data.data32[0] == deleteWindow) {
                std::free(event);
                break;
            }
        }
        std::free(event);
        if (reparented && mapped && !announced) {
            announced = true;
            std::printf("mapped %u\n", window);
            std::fflush(stdout);
        }
    }
    return 0;
}
