// manual_queue.h: The main queue of unit tests, whose clock moves only when the test advances it.
#pragma once

#include <condition_variable>
#include <mutex>
#include <thread>

#include "foundation/queue_core.h"

namespace corvetta {

// The main queue of unit tests. Nothing runs until the test says so, and time moves only when the
// test advances the clock, so timing is exact and no test sleeps.
class ManualQueue final : public MainQueue {
public:
    explicit ManualQueue(ManualClock& clock, FailureHandler onFailure = {});

    // Runs posted work, work that is due now and ready descriptors until none is left.
    // Returns how many pieces of work ran.
    std::size_t runUntilIdle();
    // Moves the clock forward, running each piece of delayed work at its own due time, in order.
    void advance(Duration by);
    // For tests of cross-thread calls: blocks until another thread posts work or the timeout
    // passes.
    bool waitForPostedWork(std::chrono::milliseconds timeout);

    std::size_t pendingCount() const { return core_.pendingCount(); }
    // How long until the next delayed work is due, if any is scheduled.
    std::optional<Duration> timeUntilNextDue() const;

    void post(Task task) override;
    WorkItem postDelayed(Duration delay, Task task) override;
    FdWatch watch(int fd, unsigned events, std::function<void(unsigned)> callback) override;
    bool isMainThread() const override { return std::this_thread::get_id() == mainThread_; }
    const Clock& clock() const override { return clock_; }

private:
    std::size_t pollReadyDescriptors();

    ManualClock& clock_;
    std::mutex wakeMutex_;
    std::condition_variable wakeSignal_;
    bool woken_ = false;
    QueueCore core_;
    std::thread::id mainThread_ = std::this_thread::get_id();
};

}  // namespace corvetta
