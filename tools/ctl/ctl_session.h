// ctl_session.h: Sends corvetta-ctl's request and prints the answer, setting the exit code.
#pragma once

#include <filesystem>
#include <ostream>

#include "ctl/ctl_arguments.h"

namespace corvetta {

enum CtlExitCode : int {
    kCtlResult = 0,
    kCtlErrorAnswer = 1,
    kCtlNoServer = 2,
    kCtlUsage = 64,  // EX_USAGE
};

// Sends the invocation's request and prints the answer: the result (or, with --raw, the whole
// answer) to `out`, an error's message or why no answer came to `err`. Returns the exit code.
int runCtlRequest(const CtlInvocation& invocation, const std::filesystem::path& socketPath,
                  bool prettyOutput, std::ostream& out, std::ostream& err);

}  // namespace corvetta
