// terminal_launch.h: How each Linux terminal is started with its shell in a given directory.
#pragma once

#include <string>
#include <vector>

namespace corvetta {

// A terminal's command line, and the directory its process starts in (empty: this one's).
struct TerminalLaunch {
    std::vector<std::string> arguments;
    std::string workingDirectory;

    bool operator==(const TerminalLaunch&) const = default;
};

// The terminal that `execArguments` starts (its desktop entry's Exec, expanded), opened in
// `directory` through the terminal's own option; a terminal without one (xterm) or unknown here
// starts as its Exec says, from inside the directory, which its shell inherits.
TerminalLaunch terminalLaunchInDirectory(const std::vector<std::string>& execArguments,
                                         const std::string& directory);

}  // namespace corvetta
