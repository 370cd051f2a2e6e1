// main_queue.h: The main queue all product logic and timers run on, and its work handles.
#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <utility>

#include "foundation/clock.h"
#include "foundation/registration.h"

namespace corvetta {

using Task = std::function<void()>;

// A handle to delayed work. Cancelling before the work runs keeps it from running; cancelling
// later does nothing. Copies share the same work.
class WorkItem {
public:
    WorkItem() = default;

    void cancel();
    bool isCancelled() const;
    // True once the work has run (cancelled work never runs).
    bool hasRun() const;
    // Scheduled, neither run nor cancelled.
    bool isPending() const;

    struct State {
        std::atomic<bool> cancelled{false};
        std::atomic<bool> ran{false};
    };
    explicit WorkItem(std::shared_ptr<State> state) : state_(std::move(state)) {}

private:
    std::shared_ptr<State> state_;
};

enum class FdEvent : unsigned { readable = 1, writable = 2, hangup = 4, error = 8 };

constexpr unsigned operator|(FdEvent a, FdEvent b) {
    return static_cast<unsigned>(a) | static_cast<unsigned>(b);
}
constexpr bool hasEvent(unsigned events, FdEvent e) {
    return (events & static_cast<unsigned>(e));
}

// Keeps a file descriptor watched for as long as it lives.
using FdWatch = Registration;

// The one queue that all product logic runs on. post and postDelayed may be called from any
// thread; everything they are given runs on the main thread in order: posted work in the order
// posted, delayed work by due time and then by the order it was scheduled.
class MainQueue {
public:
    virtual ~MainQueue() = default;

    virtual void post(Task task) = 0;
    virtual WorkItem postDelayed(Duration delay, Task task) = 0;
    // Calls back on the main thread with the FdEvent bits seen, until the watch is dropped.
    // Call from the main thread.
    virtual FdWatch watch(int fd, unsigned events, std::function<void(unsigned)> callback) = 0;
    virtual bool isMainThread() const = 0;
    virtual const Clock& clock() const = 0;

    // Runs the task on the main thread and returns once it has run; exceptions it throws are
    // rethrown to the caller. On the main thread itself it runs at once.
    void runAndWait(Task task);
};

// Holds at most one pending piece of delayed work: scheduling again cancels the previous one,
// the way a newer request replaces an older one (debounces, settle delays, retries).
class DelayedWorkSlot {
public:
    explicit DelayedWorkSlot(MainQueue& queue) : queue_(queue) {}
    ~DelayedWorkSlot() { cancel(); }
    DelayedWorkSlot(const DelayedWorkSlot&) = delete;
    DelayedWorkSlot& operator=(const DelayedWorkSlot&) = delete;

    void schedule(Duration delay, Task task);
    void cancel();
    bool isPending() const { return item_.isPending(); }

private:
    MainQueue& queue_;
    WorkItem item_;
};

}  // namespace corvetta
