#include "app/command_line.h"

#include <iterator>
#include <optional>
#include <string_view>

namespace corvetta {

namespace {

constexpr std::string_view kDesktopOption = "--desktop";
constexpr std::string_view kSocketOption = "--socket";
constexpr std::string_view kSimulatedPrefix = "sim:";
constexpr std::string_view kX11 = "x11";

Expected<DesktopChoice, CommandLineError> parseDesktop(const std::string& value) {
    if (value.starts_with(kSimulatedPrefix)) {
        const auto file = value.substr(kSimulatedPrefix.size());
        if (file.empty()) {
            return unexpected(CommandLineError{"option '--desktop=sim:' needs a desktop file"});
        }
        return DesktopChoice{.kind = DesktopChoice::Kind::simulated, .file = file};
    }
    if (value == kX11) {
        return DesktopChoice{.kind = DesktopChoice::Kind::x11};
    }
    if (value.starts_with(std::string(kX11) + ":")) {
        return DesktopChoice{.kind = DesktopChoice::Kind::x11,
                             .display = value.substr(kX11.size() + 1)};
    }
    return unexpected(CommandLineError{"unsupported desktop '" + value +
                                       "' (available: x11, x11:DISPLAY, sim:FILE)"});
}

}  // namespace

Expected<CommandLineOptions, CommandLineError> parseCommandLine(
    const std::vector<std::string>& arguments) {
    CommandLineOptions options;
    for (auto it = arguments.begin(); it != arguments.end(); ++it) {
        const auto& argument = *it;
        // "--name VALUE" or "--name=VALUE"; none when the argument is another option.
        const auto valueOf =
            [&](std::string_view name) -> std::optional<Expected<std::string, CommandLineError>> {
            if (argument == name) {
                if (std::next(it) == arguments.end()) {
                    return unexpected(
                        CommandLineError{"option '" + std::string(name) + "' needs a value"});
                }
                return *++it;
            }
            if (argument.starts_with(std::string(name) + "=")) {
                return argument.substr(name.size() + 1);
            }
            return std::nullopt;
        };
        if (auto value = valueOf(kDesktopOption)) {
            if (!*value) {
                return unexpected(value->error());
            }
            auto desktop = parseDesktop(**value);
            if (!desktop) {
                return unexpected(desktop.error());
            }
            options.desktop = *desktop;
        } else if (auto socket = valueOf(kSocketOption)) {
            if (!*socket) {
                return unexpected(socket->error());
            }
            if ((*socket)->empty()) {
                return unexpected(CommandLineError{"option '--socket' needs a path"});
            }
            options.socketPath = std::filesystem::path(**socket);
        } else if (argument == "--no-ui") {
            options.noUi = true;
        } else if (argument == "--help" || argument == "-h") {
            options.showHelp = true;
        } else if (argument == "--version" || argument == "-V") {
            options.showVersion = true;
        } else if (argument.rfind("-", 0) == 0) {
            return unexpected(CommandLineError{"unrecognized option '" + argument + "'"});
        } else {
            return unexpected(CommandLineError{"unexpected argument '" + argument + "'"});
        }
    }
    return options;
}

std::optional<DesktopChoice> defaultDesktopChoice(
    const std::optional<std::string>& displayVariable) {
    if (!displayVariable || displayVariable->empty()) {
        return std::nullopt;
    }
    return DesktopChoice{.kind = DesktopChoice::Kind::x11};
}

std::optional<std::string> interfaceDisplay(const CommandLineOptions& options,
                                            const std::optional<std::string>& displayVariable) {
    if (options.noUi) {
        return std::nullopt;
    }
    if (options.desktop && options.desktop->kind == DesktopChoice::Kind::x11 &&
        !options.desktop->display.empty()) {
        return options.desktop->display;
    }
    if (displayVariable && !displayVariable->empty()) {
        return *displayVariable;
    }
    return std::nullopt;
}

std::string helpText() {
    return "Usage: corvetta [options]\n"
           "\n"
           "Corvetta moves and resizes windows from shortcuts, a command palette and a local\n"
           "automation socket. It runs until it receives Ctrl-C (SIGINT), SIGTERM or SIGHUP.\n"
           "\n"
           "Options:\n"
           "  --desktop=x11       Act on the X display DISPLAY names (the default when it is\n"
           "                      set); --desktop=x11:DISPLAY picks another one.\n"
           "  --desktop=sim:FILE  Act on a simulated desktop described by FILE (see\n"
           "                      docs/simulated-desktop.md).\n"
           "  --socket=PATH       Listen for automation requests on PATH instead of the\n"
           "                      default socket (see docs/automation.md).\n"
           "  --no-ui             Run without the interface (status item, command palette,\n"
           "                      toasts); shortcuts and the socket work as before.\n"
           "  -h, --help          Show this help and exit.\n"
           "  -V, --version       Show the version and exit.\n"
           "\n"
           "Files:\n"
           "  ${XDG_CONFIG_HOME:-~/.config}/corvetta/preferences.json   settings\n"
           "  ${XDG_DATA_HOME:-~/.local/share}/Corvetta/                 application data\n";
}

std::string versionText() {
    return std::string("corvetta ") + CORVETTA_VERSION;
}

}  // namespace corvetta
