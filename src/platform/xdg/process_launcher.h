// process_launcher.h: Starts the programs a desktop entry names, without a shell, and reaps them.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "foundation/expected.h"
#include "foundation/main_queue.h"
#include "platform/accessibility.h"

namespace corvetta {

// Each program starts in a session of its own, so a signal meant for this program's terminal does
// not end what the user launched; it is reaped on the main queue when it ends, and left running
// when this program ends first.
class ProcessLauncher {
public:
    explicit ProcessLauncher(MainQueue& queue);
    ~ProcessLauncher();
    ProcessLauncher(const ProcessLauncher&) = delete;
    ProcessLauncher& operator=(const ProcessLauncher&) = delete;

    // `arguments[0]` is looked up on PATH; `environment` holds NAME=VALUE texts; the process
    // starts in `workingDirectory` when one is given, else in this one's. The process, or why it
    // could not start.
    Expected<ProcessId, std::string> launch(const std::vector<std::string>& arguments,
                                            const std::vector<std::string>& environment,
                                            const std::string& workingDirectory = {});

private:
    struct Running {
        int descriptor = -1;
        FdWatch watch;
    };
    struct State {
        std::map<ProcessId, Running> running;
        void reap(ProcessId process);
    };

    MainQueue& queue_;
    // Shared with the work the watches post, which may run after this object is gone.
    std::shared_ptr<State> state_ = std::make_shared<State>();
};

}  // namespace corvetta
