// ctl_arguments.h: Parses corvetta-ctl's command line into one request for the automation socket.
#pragma once

#include <chrono>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "foundation/expected.h"

namespace corvetta {

// What one run of corvetta-ctl is asked to do.
struct CtlInvocation {
    bool showHelp = false;
    // The server's socket; the build's default when absent.
    std::optional<std::filesystem::path> socketPath;
    std::chrono::milliseconds timeout{30'000};
    // The request, one line without its line feed.
    std::string requestLine;
    // --raw: the whole answer is printed, not only its result.
    bool raw = false;
};

// "METHOD [key=value ...]" or "--raw REQUEST", after any options. The text says what is wrong.
Expected<CtlInvocation, std::string> parseCtlArguments(const std::vector<std::string>& arguments);

// The request id corvetta-ctl sends.
inline constexpr const char* kCtlRequestId = "corvetta-ctl";

}  // namespace corvetta
