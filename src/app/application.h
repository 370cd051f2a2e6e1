// application.h: Runs the program from start to exit: chosen desktop, services, main loop.
#pragma once

#include "app/command_line.h"
#include "foundation/clock.h"
#include "foundation/paths.h"

namespace corvetta {

// The process root for now: builds the long-lived services, runs the main queue until a
// termination signal arrives, and shuts down cleanly. Returns the process exit code: 2 when the
// chosen desktop cannot be opened.
int runApplication(const CommandLineOptions& options, const Paths& paths, const Clock& clock);

}  // namespace corvetta
