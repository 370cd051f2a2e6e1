#include "platform/xdg/terminal_launch.h"

#include <filesystem>
#include <initializer_list>
#include <string_view>

namespace corvetta {

namespace {

// A terminal program and the option that names its starting directory: the directory follows
// the option as its own argument, or is joined to it ("--working-directory=").
struct DirectoryOption {
    std::string_view program;
    std::initializer_list<std::string_view> option;
    bool joined;
};

const DirectoryOption kOptions[] = {
    {"gnome-terminal", {"--working-directory="}, true},
    {"konsole", {"--workdir"}, false},
    {"kitty", {"--directory"}, false},
    {"wezterm", {"start", "--cwd"}, false},
    {"alacritty", {"--working-directory"}, false},
    {"xfce4-terminal", {"--working-directory="}, true},
    {"kgx", {"--working-directory="}, true},
    {"foot", {"--working-directory="}, true},
    {"terminator", {"--working-directory="}, true},
};

}  // namespace

TerminalLaunch terminalLaunchInDirectory(const std::vector<std::string>& execArguments,
                                         const std::string& directory) {
    if (execArguments.empty()) {
        return {{}, directory};
    }
    const auto program = std::filesystem::path(execArguments.front()).filename().string();
    for (const auto& row : kOptions) {
        if (row.program != program) {
            continue;
        }
        // The entry's own arguments may already choose a directory ("wezterm start --cwd ."),
        // so the program alone takes the option.
        TerminalLaunch launch{{execArguments.front()}, {}};
        for (const auto part : row.option) {
            launch.arguments.emplace_back(part);
        }
        if (row.joined) {
            launch.arguments.back() += directory;
        } else {
            launch.arguments.push_back(directory);
        }
        return launch;
    }
    return {execArguments, directory};
}

}  // namespace corvetta
