#include "app/command_line.h"

namespace corvetta {

Expected<CommandLineOptions, CommandLineError> parseCommandLine(
    const std::vector<std::string>& arguments) {
    CommandLineOptions options;
    for (const auto& argument : arguments) {
        if (argument == "--help" || argument == "-h") {
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
           "  -h, --help      Show this help and exit.\n"
           "  -V, --version   Show the version and exit.\n"
           "\n"
           "Files:\n"
           "  ${XDG_CONFIG_HOME:-~/.config}/corvetta/preferences.json   settings\n"
           "  ${XDG_DATA_HOME:-~/.local/share}/Corvetta/                 application data\n";
}

std::string versionText() {
    return std::string("corvetta ") + CORVETTA_VERSION;
}

}  // namespace corvetta
