// termination_signals.h: Turns SIGINT and SIGTERM into main-queue work for a clean exit.
#pragma once

#include <functional>

#include "foundation/main_queue.h"

namespace corvetta {

// Turns SIGINT and SIGTERM into main-queue work: the handlers only write the signal number to a
// pipe, and the queue reads it and calls back on the main thread. One instance per process.
class TerminationSignals {
public:
    TerminationSignals(MainQueue& queue, std::function<void(int signal)> onSignal);
    ~TerminationSignals();
    TerminationSignals(const TerminationSignals&) = delete;
    TerminationSignals& operator=(const TerminationSignals&) = delete;

private:
    int readFd_ = -1;
    int writeFd_ = -1;
    FdWatch watch_;
};

}  // namespace corvetta
