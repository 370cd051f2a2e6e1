#pragma once

#include <string>
#include <vector>

#include "foundation/expected.h"

namespace corvetta {

struct CommandLineOptions {
    bool showHelp = false;
    bool showVersion = false;
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
