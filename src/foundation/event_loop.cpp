#include "foundation/event_loop.h"

#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <string>

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

namespace corvetta {

namespace {
void setNonBlockingCloseOnExec(int fd) {
    fcntl(fd, F_SETFL, fcntl(fd, F_GETFL) | O_NONBLOCK);
    fcntl(fd, F_SETFD, fcntl(fd, F_GETFD) | FD_CLOEXEC);
}
}  // namespace

EventLoop::EventLoop(const Clock& clock, FailureHandler onFailure)
    : clock_(clock),
      core_([this] { wake(); }, std::move(onFailure)),
      mainThread_(std::this_thread::get_id()) {
    int fds[2];
    if (pipe(fds) != 0) {
        throw std::runtime_error(std::string("Could not create the main queue's wake pipe: ") +
                                 std::strerror(errno));
    }
    wakeRead_ = fds[0];
    wakeWrite_ = fds[1];
    setNonBlockingCloseOnExec(wakeRead_);
    setNonBlockingCloseOnExec(wakeWrite_);
}

EventLoop::~EventLoop() {
    close(wakeRead_);
    close(wakeWrite_);
}

void EventLoop::wake() {
    const char byte = 1;
    // A full pipe already guarantees a wake-up, so EAGAIN is fine to ignore.
    [[maybe_unused]] auto written = write(wakeWrite_, &byte, 1);
}

void EventLoop::drainWakePipe() {
    char buffer[256];
    while (read(wakeRead_, buffer, sizeof buffer) > 0) {
    }
}

void EventLoop::post(Task task) {
    core_.post(std::move(task));
}

WorkItem EventLoop::postDelayed(Duration delay, Task task) {
    return core_.postDelayed(clock_.monotonicNow() + delay, std::move(task));
}

FdWatch EventLoop::watch(int fd, unsigned events, std::function<void(unsigned)> callback) {
    return core_.addWatch(fd, events, std::move(callback));
}

bool EventLoop::isMainThread() const {
    return std::this_thread::get_id() == mainThread_.load();
}

int EventLoop::pollTimeoutMs() const {
    if (core_.hasPosted() || stopRequested_) {
        return 0;
    }
    const auto due = core_.nextDue();
    if (!due) {
        return -1;
    }
    const auto wait = *due - clock_.monotonicNow();
    if (wait <= Duration::zero()) {
        return 0;
    }
    // Round up so the loop never wakes a little early and spins until the timer is due.
    const auto ms = std::chrono::ceil<std::chrono::milliseconds>(wait).count();
    return ms > 1'000'000 ? 1'000'000 : static_cast<int>(ms);
}

void EventLoop::run() {
    mainThread_ = std::this_thread::get_id();
    stopRequested_ = false;
    while (!stopRequested_) {
        core_.runPosted();
        const MonotonicTime now = clock_.monotonicNow();
        while (!stopRequested_ && core_.runNextDue(now, {})) {
        }
        if (stopRequested_) {
            break;
        }
        auto set = core_.pollSet();
        set.fds.push_back(pollfd{wakeRead_, POLLIN, 0});
        set.watches.push_back(nullptr);
        const int ready = poll(set.fds.data(), set.fds.size(), pollTimeoutMs());
        if (ready < 0) {
            if (errno == EINTR) {
                continue;
            }
            throw std::runtime_error(std::string("The main queue could not poll: ") +
                                     std::strerror(errno));
        }
        if (set.fds.back().revents != 0) {
            drainWakePipe();
        }
        set.fds.pop_back();
        set.watches.pop_back();
        core_.dispatch(set);
    }
}

void EventLoop::stop() {
    stopRequested_ = true;
    wake();
}

}  // namespace corvetta
