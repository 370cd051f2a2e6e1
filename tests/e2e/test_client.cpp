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

namespace {

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

xcb_atom_t atom(xcb_connection_t* connection, std::string_view name) {
    std::unique_ptr<xcb_intern_atom_reply_t, decltype(&std::free)> reply(
        xcb_intern_atom_reply(
            connection,
            xcb_intern_atom(connection, 0, static_cast<uint16_t>(name.size()), name.data()),
            nullptr),
        &std::free);
    return reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
}

void setText(xcb_connection_t* connection, xcb_window_t window, xcb_atom_t property,
             xcb_atom_t type, std::string_view text) {
    xcb_change_property(connection, XCB_PROP_MODE_REPLACE, window, property, type, 8,
                        static_cast<uint32_t>(text.size()), text.data());
}

void describe(xcb_connection_t* connection, xcb_window_t window, const Options& options) {
    setText(connection, window, XCB_ATOM_WM_NAME, XCB_ATOM_STRING, options.title);
    setText(connection, window, atom(connection, "_NET_WM_NAME"), atom(connection, "UTF8_STRING"),
            options.title);
    // WM_CLASS is "instance\0class\0".
    const std::string windowClass =
        "corvetta-test-client" + std::string(1, '\0') + options.windowClass + std::string(1, '\0');
    setText(connection, window, XCB_ATOM_WM_CLASS, XCB_ATOM_STRING, windowClass);
    // _NET_WM_PID is only meaningful next to WM_CLIENT_MACHINE.
    char host[256] = {};
    gethostname(host, sizeof host - 1);
    setText(connection, window, XCB_ATOM_WM_CLIENT_MACHINE, XCB_ATOM_STRING, host);
    const uint32_t pid = static_cast<uint32_t>(getpid());
    xcb_change_property(connection, XCB_PROP_MODE_REPLACE, window, atom(connection, "_NET_WM_PID"),
                        XCB_ATOM_CARDINAL, 32, 1, &pid);
    const xcb_atom_t deleteWindow = atom(connection, "WM_DELETE_WINDOW");
    xcb_change_property(connection, XCB_PROP_MODE_REPLACE, window, atom(connection, "WM_PROTOCOLS"),
                        XCB_ATOM_ATOM, 32, 1, &deleteWindow);

    // A user-specified position: the window manager keeps it instead of placing the window.
    xcb_size_hints_t hints = {};
    xcb_icccm_size_hints_set_position(&hints, 1, options.x, options.y);
    xcb_icccm_size_hints_set_size(&hints, 1, options.width, options.height);
    if (options.fixedSize) {
        xcb_icccm_size_hints_set_min_size(&hints, options.width, options.height);
        xcb_icccm_size_hints_set_max_size(&hints, options.width, options.height);
    }
    xcb_icccm_set_wm_normal_hints(connection, window, &hints);
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
    xcb_connection_t* connection = xcb_connect(nullptr, nullptr);
    if (xcb_connection_has_error(connection)) {
        std::fprintf(stderr, "corvetta-test-client: cannot connect to the X server\n");
        return 1;
    }
    const xcb_screen_t* screen = xcb_setup_roots_iterator(xcb_get_setup(connection)).data;
    const xcb_window_t window = xcb_generate_id(connection);
    const uint32_t values[] = {screen->white_pixel, XCB_EVENT_MASK_STRUCTURE_NOTIFY};
    xcb_create_window(connection, XCB_COPY_FROM_PARENT, window, screen->root,
                      static_cast<int16_t>(options->x), static_cast<int16_t>(options->y),
                      static_cast<uint16_t>(options->width), static_cast<uint16_t>(options->height),
                      0, XCB_WINDOW_CLASS_INPUT_OUTPUT, screen->root_visual,
                      XCB_CW_BACK_PIXEL | XCB_CW_EVENT_MASK, values);
    describe(connection, window, *options);
    const xcb_atom_t protocols = atom(connection, "WM_PROTOCOLS");
    const xcb_atom_t deleteWindow = atom(connection, "WM_DELETE_WINDOW");
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
    xcb_disconnect(connection);
    return 0;
}
