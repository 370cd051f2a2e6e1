// command_line.h: Reads the arguments: which desktop to act on, where the socket listens.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "foundation/expected.h"

namespace corvetta {

// Which desktop the program acts on.
struct DesktopChoice {
    enum class Kind { simulated, x11 };
    Kind kind = Kind::simulated;
    // The desktop file of a simulated desktop.
    std::filesystem::path file{};
    // The X display to connect to; empty for the one DISPLAY names.
    std::string display{};

    bool operator==(const DesktopChoice&) const = default;
};

struct CommandLineOptions {
    bool showHelp = false;
    bool showVersion = false;
    std::optional<DesktopChoice> desktop;
    // Where the automation socket listens; the default place when absent.
    std::optional<std::filesystem::path> socketPath;
    // Run without the interface even where an X display could show it.
    bool noUi = false;
};

struct CommandLineError {
    std::string message;
};

// Parses the arguments after the program name.
Expected<CommandLineOptions, CommandLineError> parseCommandLine(
    const std::vector<std::string>& arguments);

// The desktop to use when none was chosen: the X display when DISPLAY names one, else none.
std::optional<DesktopChoice> defaultDesktopChoice(
    const std::optional<std::string>& displayVariable);

// The X display the interface shows on: the X desktop's own display, else the one DISPLAY names;
// none with --no-ui or where there is no X display at all (a simulated desktop, DISPLAY unset).
std::optional<std::string> interfaceDisplay(const CommandLineOptions& options,
                                            const std::optional<std::string>& displayVariable);

std::string helpText();
// "corvetta <version>".
std::string versionText();

}  // namespace corvetta
