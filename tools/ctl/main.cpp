// corvetta-ctl: the command-line client of Corvetta's automation socket.

#include <iostream>
#include <string>
#include <vector>

#include <unistd.h>

#include "automation/bundle_identifier.h"
#include "ctl/ctl_arguments.h"
#include "ctl/ctl_help.h"
#include "ctl/ctl_session.h"
#include "foundation/paths.h"

int main(int argc, char** argv) {
    using namespace corvetta;
    const auto invocation = parseCtlArguments(std::vector<std::string>(argv + 1, argv + argc));
    if (!invocation) {
        std::cerr << "corvetta-ctl: " << invocation.error() << "\n" << ctlUsageLine() << "\n";
        return kCtlUsage;
    }
    const auto defaultSocket = defaultAutomationSocketPath(Paths::resolve(processEnvironment()));
    if (invocation->showHelp) {
        std::cout << ctlHelpText(defaultSocket);
        return kCtlResult;
    }
    return runCtlRequest(*invocation, invocation->socketPath.value_or(defaultSocket),
                         isatty(STDOUT_FILENO) == 1, std::cout, std::cerr);
}
