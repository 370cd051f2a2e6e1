#include <cstdio>
#include <exception>
#include <string>
#include <vector>

#include "app/application.h"
#include "app/command_line.h"
#include "foundation/clock.h"
#include "foundation/paths.h"
#ifdef CORVETTA_HAS_UI
#include "ui/interface_frontend.h"
#endif

int main(int argc, char** argv) {
    using namespace corvetta;
    const std::vector<std::string> arguments(argv + 1, argv + argc);
    auto options = parseCommandLine(arguments);
    if (!options) {
        std::fprintf(stderr, "corvetta: %s\nTry 'corvetta --help' for more information.\n",
                     options.error().message.c_str());
        return 2;
    }
    if (options->showHelp) {
        std::fputs(helpText().c_str(), stdout);
        return 0;
    }
    if (options->showVersion) {
        std::puts(versionText().c_str());
        return 0;
    }
    if (!options->desktop) {
        options->desktop = defaultDesktopChoice(processEnvironment()("DISPLAY"));
    }
    try {
        SystemClock clock;
        FrontendFactory frontend = makePollFrontend;
#ifdef CORVETTA_HAS_UI
        if (const auto display = interfaceDisplay(*options, processEnvironment()("DISPLAY"))) {
            frontend = interfaceFrontendFactory(*display);
        }
#endif
        return runApplication(*options, Paths::resolve(processEnvironment()), clock, frontend);
    } catch (const std::exception& e) {
        std::fprintf(stderr, "corvetta: %s\n", e.what());
        return 1;
    }
}
