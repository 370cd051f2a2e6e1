#include "foundation/manual_queue.h"

#include <stdexcept>

#include <poll.h>

namespace corvetta {

namespace {
// Work that keeps re-posting itself would otherwise hang the test instead of failing it.
constexpr std::size_t kMaxRoundsBeforeIdle = 100'000;
}  // namespace

ManualQueue::ManualQueue(ManualClock& clock, FailureHandler onFailure)
    : clock_(clock),
      core_(
          [this] {
              std::lock_guard lock(wakeMutex_);
              woken_ = true;
              wakeSignal_.notify_all();
          },
          std::move(onFailure)) {}

void ManualQueue::post(Task task) {
    core_.post(std::move(task));
}

WorkItem ManualQueue::postDelayed(Duration delay, Task task) {
    return core_.postDelayed(clock_.monotonicNow() + delay, std::move(task));
}

FdWatch ManualQueue::watch(int fd, unsigned events, std::function<void(unsigned)> callback) {
    return core_.addWatch(fd, events, std::move(callback));
}

std::size_t ManualQueue::pollReadyDescriptors() {
    auto set = core_.pollSet();
    if (set.fds.empty() || poll(set.fds.data(), set.fds.size(), 0) <= 0) {
        return 0;
    }
    std::size_t ready = 0;
    for (const auto& p : set.fds) {
        ready += p.revents != 0 ? 1 : 0;
    }
    core_.dispatch(set);
    return ready;
}

std::size_t ManualQueue::runUntilIdle() {
    std::size_t total = 0;
    for (std::size_t round = 0; round < kMaxRoundsBeforeIdle; ++round) {
        std::size_t ran = core_.runPosted();
        while (core_.runNextDue(clock_.monotonicNow(), {})) {
            ++ran;
        }
        ran += pollReadyDescriptors();
        if (ran == 0) {
            return total;
        }
        total += ran;
    }
    throw std::logic_error("The manual queue never became idle: some work keeps re-posting itself");
}

void ManualQueue::advance(Duration by) {
    const MonotonicTime target = clock_.monotonicNow() + by;
    runUntilIdle();
    while (core_.runNextDue(target, [this](MonotonicTime due) { clock_.advanceTo(due); })) {
        runUntilIdle();
    }
    clock_.advanceTo(target);
    runUntilIdle();
}

bool ManualQueue::waitForPostedWork(std::chrono::milliseconds timeout) {
    std::unique_lock lock(wakeMutex_);
    const bool woken =
        wakeSignal_.wait_for(lock, timeout, [this] { return woken_ || core_.hasPosted(); });
    woken_ = false;
    return woken;
}

std::optional<Duration> ManualQueue::timeUntilNextDue() const {
    const auto due = core_.nextDue();
    if (!due) {
        return std::nullopt;
    }
    return *due - clock_.monotonicNow();
}

}  // namespace corvetta
