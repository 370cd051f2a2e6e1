// application.h: Runs the program from start to exit: chosen desktop, services, main loop.
#pragma once

#include "app/command_line.h"
#include "app/frontend.h"
#include "foundation/clock.h"
#include "foundation/paths.h"

namespace corvetta {

// The process root: builds the frontend that carries the main thread, the long-lived services on
// it, runs it until a termination signal or quit, and shuts down cleanly. Returns the process
// exit code: 2 when the chosen desktop cannot be opened.
int runApplication(const CommandLineOptions& options, const Paths& paths, const Clock& clock,
                   const FrontendFactory& makeFrontend = makePollFrontend);

}  // namespace corvetta
