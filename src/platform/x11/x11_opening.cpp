#include "platform/x11/x11_opening.h"

#include <cstdlib>
#include <optional>

#include <xcb/xcb_keysyms.h>
#include <xcb/xtest.h>

#include "platform/xdg/terminal_launch.h"

namespace corvetta {

namespace {

constexpr xcb_keysym_t kShiftLeft = 0xffe1;
constexpr xcb_keysym_t kReturn = 0xff0d;
constexpr xcb_keysym_t kTab = 0xff09;

// The code points of UTF-8 text; none for text that is not UTF-8.
std::optional<std::vector<char32_t>> codePoints(const std::string& text) {
    std::vector<char32_t> points;
    for (std::size_t index = 0; index < text.size();) {
        const auto lead = static_cast<unsigned char>(text[index]);
        const int length = lead < 0x80           ? 1
                           : (lead >> 5) == 0x6  ? 2
                           : (lead >> 4) == 0xe  ? 3
                           : (lead >> 3) == 0x1e ? 4
                                                 : 0;
        if (length == 0 || index + static_cast<std::size_t>(length) > text.size()) {
            return std::nullopt;
        }
        char32_t point = length == 1 ? lead : lead & (0x7f >> length);
        for (int part = 1; part < length; ++part) {
            const auto next = static_cast<unsigned char>(text[index + part]);
            if ((next & 0xc0) != 0x80) {
                return std::nullopt;
            }
            point = (point << 6) | (next & 0x3f);
        }
        points.push_back(point);
        index += static_cast<std::size_t>(length);
    }
    return points;
}

// Latin-1 characters are their own key symbols; the rest of Unicode sits above 0x1000000.
xcb_keysym_t keySymbolOf(char32_t point) {
    if (point == '\n') {
        return kReturn;
    }
    if (point == '\t') {
        return kTab;
    }
    if ((point >= 0x20 && point <= 0x7e) || (point >= 0xa0 && point <= 0xff)) {
        return point;
    }
    return 0x1000000 | point;
}

struct Stroke {
    xcb_keycode_t key = 0;
    bool shifted = false;
};

std::optional<xcb_keycode_t> keyFor(xcb_key_symbols_t* symbols, xcb_keysym_t symbol) {
    xcb_keycode_t* codes = xcb_key_symbols_get_keycode(symbols, symbol);
    std::optional<xcb_keycode_t> found;
    if (codes != nullptr && codes[0] != XCB_NO_SYMBOL) {
        found = codes[0];
    }
    std::free(codes);
    return found;
}

}  // namespace

X11Opening::X11Opening(X11Connection& connection, X11Launching launching)
    : connection_(connection),
      entries_(std::move(launching.applicationFolders)),
      environment_(std::move(launching.environment)),
      launcher_(connection.queue()) {}

Expected<std::vector<std::string>, std::string> X11Opening::commandOf(
    const std::string& bundleIdentifier, const std::vector<std::string>& targets) const {
    auto installed = entries_.byId(bundleIdentifier);
    if (!installed) {
        installed = entries_.forApplication({{}, bundleIdentifier, bundleIdentifier, {}});
    }
    if (!installed) {
        return unexpected("no desktop entry for " + bundleIdentifier);
    }
    const auto& entry = installed->entry;
    auto command =
        parseExecLine(entry.exec, {entry.icon, entry.name, installed->path.string(), targets});
    if (!command) {
        return unexpected(installed->id + ".desktop: " + command.error());
    }
    return command;
}

Expected<void, std::string> X11Opening::start(const std::vector<std::string>& arguments,
                                              const std::string& workingDirectory) {
    const auto launched = launcher_.launch(arguments, environment_, workingDirectory);
    if (!launched) {
        return unexpected(launched.error());
    }
    return {};
}

Expected<void, std::string> X11Opening::open(const std::string& bundleIdentifier,
                                             const std::string& target) {
    const auto command = commandOf(bundleIdentifier, {target});
    if (!command) {
        return unexpected(command.error());
    }
    return start(*command);
}

Expected<void, std::string> X11Opening::openTerminal(const std::string& bundleIdentifier,
                                                     const std::string& directory) {
    const auto command = commandOf(bundleIdentifier, {});
    if (!command) {
        return unexpected(command.error());
    }
    const auto launch = terminalLaunchInDirectory(*command, directory);
    return start(launch.arguments, launch.workingDirectory);
}

Expected<void, std::string> X11Opening::runApplicationProgram(
    const std::string& bundleIdentifier, const std::vector<std::string>& arguments) {
    const auto command = commandOf(bundleIdentifier, {});
    if (!command) {
        return unexpected(command.error());
    }
    std::vector<std::string> program{command->front()};
    program.insert(program.end(), arguments.begin(), arguments.end());
    return start(program);
}

Expected<void, std::string> X11Opening::typeText(const std::string& text) {
    const auto points = codePoints(text);
    if (!points) {
        return unexpected(std::string("the text is not UTF-8"));
    }
    xcb_connection_t* raw = connection_.raw();
    xcb_key_symbols_t* symbols = xcb_key_symbols_alloc(raw);
    if (symbols == nullptr) {
        return unexpected(std::string("cannot read the keyboard mapping"));
    }
    // Every key is found before the first is pressed, so a text is typed whole or not at all.
    std::vector<Stroke> strokes;
    const auto shift = keyFor(symbols, kShiftLeft);
    for (const char32_t point : *points) {
        const auto symbol = keySymbolOf(point);
        const auto key = keyFor(symbols, symbol);
        const bool shifted = key && xcb_key_symbols_get_keysym(symbols, *key, 0) != symbol;
        if (!key || (shifted && !shift)) {
            xcb_key_symbols_free(symbols);
            return unexpected("no key types U+" + std::to_string(static_cast<unsigned>(point)) +
                              " on this keyboard");
        }
        strokes.push_back({*key, shifted});
    }
    xcb_key_symbols_free(symbols);
    const auto send = [raw](std::uint8_t type, xcb_keycode_t key) {
        xcb_test_fake_input(raw, type, key, XCB_CURRENT_TIME, XCB_NONE, 0, 0, 0);
    };
    for (const auto& stroke : strokes) {
        if (stroke.shifted) {
            send(XCB_KEY_PRESS, *shift);
        }
        send(XCB_KEY_PRESS, stroke.key);
        send(XCB_KEY_RELEASE, stroke.key);
        if (stroke.shifted) {
            send(XCB_KEY_RELEASE, *shift);
        }
    }
    xcb_flush(raw);
    return {};
}

}  // namespace corvetta
