#include "app/termination_signals.h"

#include <cerrno>
#include <csignal>
#include <cstring>
#include <stdexcept>
#include <string>

#include <fcntl.h>
#include <unistd.h>

namespace corvetta {

namespace {
constexpr int kHandledSignals[] = {SIGINT, SIGTERM, SIGHUP};

volatile std::sig_atomic_t signalPipe = -1;

extern "C" void forwardSignal(int signal) {
    const int savedErrno = errno;
    const unsigned char byte = static_cast<unsigned char>(signal);
    [[maybe_unused]] auto written = write(signalPipe, &byte, 1);
    errno = savedErrno;
}
}  // namespace

TerminationSignals::TerminationSignals(MainQueue& queue, std::function<void(int)> onSignal) {
    int fds[2];
    if (pipe(fds) != 0) {
        throw std::runtime_error(std::string("Could not create the signal pipe: ") +
                                 std::strerror(errno));
    }
    readFd_ = fds[0];
    writeFd_ = fds[1];
    for (int fd : fds) {
        fcntl(fd, F_SETFL, fcntl(fd, F_GETFL) | O_NONBLOCK);
        fcntl(fd, F_SETFD, FD_CLOEXEC);
    }
    signalPipe = writeFd_;
    watch_ = queue.watch(readFd_, static_cast<unsigned>(FdEvent::readable),
                         [this, onSignal = std::move(onSignal)](unsigned) {
                             unsigned char byte;
                             while (read(readFd_, &byte, 1) == 1) {
                                 onSignal(byte);
                             }
                         });
    struct sigaction action {};
    action.sa_handler = forwardSignal;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    for (const int handled : kHandledSignals) {
        sigaction(handled, &action, nullptr);
    }
}

TerminationSignals::~TerminationSignals() {
    for (const int handled : kHandledSignals) {
        signal(handled, SIG_DFL);
    }
    watch_.reset();
    signalPipe = -1;
    close(readFd_);
    close(writeFd_);
}

const char* TerminationSignals::name(int signal) {
    switch (signal) {
        case SIGINT:
            return "SIGINT";
        case SIGTERM:
            return "SIGTERM";
        case SIGHUP:
            return "SIGHUP";
        default:
            return "a signal";
    }
}

void ignoreBrokenPipes() {
    signal(SIGPIPE, SIG_IGN);
}

}  // namespace corvetta
