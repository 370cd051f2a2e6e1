// termination_signals.h: Turns the signals that end the program into main-queue work.
#pragma once

#include <functional>

#include "foundation/main_queue.h"

namespace corvetta {

// Turns SIGINT, SIGTERM and SIGHUP (the terminal went away) into main-queue work: the handlers
// only write the signal number to a pipe, and the queue reads it and calls back on the main
// thread, so the program stops the way it always does, removing its socket. One instance per
// process.
class TerminationSignals {
public:
    TerminationSignals(MainQueue& queue, std::function<void(int signal)> onSignal);
    ~TerminationSignals();
    TerminationSignals(const TerminationSignals&) = delete;
    TerminationSignals& operator=(const TerminationSignals&) = delete;

    // "SIGTERM", for log lines.
    static const char* name(int signal);

private:
    int readFd_ = -1;
    int writeFd_ = -1;
    FdWatch watch_;
};

// A reader of standard error (or of a client socket) that goes away must not end the program: the
// write fails with EPIPE instead, and the writer decides. Call first thing, before any logging.
void ignoreBrokenPipes();

}  // namespace corvetta
