#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "foundation/expected.h"

namespace corvetta {

// Which desktop the program acts on.
struct DesktopChoice {
    enum class Kind { simulated };
    Kind kind = Kind::simulated;
    // The desktop file of a simulated desktop.
    std::filesystem::path file;

    bool operator==(const DesktopChoice&) const = default;
};

struct CommandLineOptions {
    bool showHelp = false;
    bool showVersion = false;
    std::optional<DesktopChoice> desktop;
    // Where the automation socket listens; the default place when absent.
    std::optional<std::filesystem::path> socketPath;
};

struct CommandLineError {
    std::string message;
};

// Parses the arguments after the program name.
Expected<CommandLineOptions, CommandLineError> parseCommandLine(
    const std::vector<std::string>& arguments);

std::string helpText();
// "corvetta <version>".
std::string versionText();

}  // namespace corvetta
