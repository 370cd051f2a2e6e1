#include "app/command_line.h"

#include <iterator>
#include <string_view>

namespace corvetta {

namespace {

constexpr std::string_view kDesktopOption = "--desktop";
constexpr std::string_view kSimulatedPrefix = "sim:";

Expected<DesktopChoice, CommandLineError> parseDesktop(const std::string& value) {
    if (value.starts_with(kSimulatedPrefix)) {
        const auto file = value.substr(kSimulatedPrefix.size());
        if (file.empty()) {
            return unexpected(CommandLineError{"option '--desktop=sim:' needs a desktop file"});
        }
        return DesktopChoice{DesktopChoice::Kind::simulated, file};
    }
    return unexpected(
        CommandLineError{"unsupported desktop '" + value + "' (available: sim:FILE)"});
}

}  // namespace

Expected<CommandLineOptions, CommandLineError> parseCommandLine(
    const std::vector<std::string>& arguments) {
    CommandLineOptions options;
    for (auto it = arguments.begin(); it != arguments.end(); ++it) {
        const auto& argument = *it;
        if (argument == kDesktopOption || argument.starts_with(std::string(kDesktopOption) + "=")) {
            std::string value;
            if (argument == kDesktopOption) {
                if (std::next(it) == arguments.end()) {
                    return unexpected(CommandLineError{"option '--desktop' needs a value"});
                }
                value = *++it;
            } else {
                value = argument.substr(kDesktopOption.size() + 1);
            }
            auto desktop = parseDesktop(value);
            if (!desktop) {
                return unexpected(desktop.error());
            }
            options.desktop = *desktop;
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

std::string helpText() {
    return "Usage: corvetta [options]\n"
           "\n"
           "Corvetta moves and resizes windows from shortcuts, a command palette and a local\n"
           "automation socket. It runs until it receives Ctrl-C (SIGINT) or SIGTERM.\n"
           "\n"
           "Options:\n"
           "  --desktop=sim:FILE  Act on a simulated desktop described by FILE (see\n"
           "                      docs/simulated-desktop.md).\n"
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
