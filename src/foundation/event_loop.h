// event_loop.h: The real program's main queue: a poll loop over work, timers and descriptors.
#pragma once

#include <atomic>
#include <thread>

#include "foundation/queue_core.h"

namespace corvetta {

// The program's main queue: a poll(2) loop over the watched descriptors, woken through a pipe
// when work arrives from other threads.
class EventLoop final : public MainQueue {
public:
    explicit EventLoop(const Clock& clock, FailureHandler onFailure = {});
    ~EventLoop() override;
    EventLoop(const EventLoop&) = delete;
    EventLoop& operator=(const EventLoop&) = delete;

    // Runs on the calling thread, which becomes the main thread, until stop().
    void run();
    // Ends run() after the work in hand; safe from any thread, signal handlers excepted.
    void stop();

    void post(Task task) override;
    WorkItem postDelayed(Duration delay, Task task) override;
    FdWatch watch(int fd, unsigned events, std::function<void(unsigned)> callback) override;
    bool isMainThread() const override;
    const Clock& clock() const override { return clock_; }

private:
    void wake();
    void drainWakePipe();
    int pollTimeoutMs() const;

    const Clock& clock_;
    int wakeRead_ = -1;
    int wakeWrite_ = -1;
    QueueCore core_;
    std::atomic<bool> stopRequested_{false};
    std::atomic<std::thread::id> mainThread_;
};

}  // namespace corvetta
