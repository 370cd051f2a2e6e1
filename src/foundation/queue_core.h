// queue_core.h: The bookkeeping both main queues share: posted work, timers and descriptor watches.
#pragma once

#include <cstdint>
#include <exception>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

#include <poll.h>

#include "foundation/main_queue.h"

namespace corvetta {

using FailureHandler = std::function<void(std::exception_ptr)>;

// The bookkeeping both main-queue implementations share: posted work, delayed work ordered by due
// time, and file-descriptor watches. It decides what is due; the owner decides when time moves.
class QueueCore {
public:
    // `wake` is called after work is added from any thread, so a sleeping loop notices it.
    QueueCore(std::function<void()> wake, FailureHandler onFailure);
    ~QueueCore();

    void post(Task task);
    WorkItem postDelayed(MonotonicTime due, Task task);

    // Runs the work posted before the call; work posted meanwhile waits for the next round, so a
    // task that re-posts itself cannot starve timers. Returns how many ran.
    std::size_t runPosted();
    // Runs the earliest delayed work due at or before `limit`, if any; returns its due time.
    std::optional<MonotonicTime> runNextDue(MonotonicTime limit,
                                            const std::function<void(MonotonicTime)>& beforeRun);
    std::optional<MonotonicTime> nextDue() const;
    bool hasPosted() const;
    std::size_t pendingCount() const;

    FdWatch addWatch(int fd, unsigned events, std::function<void(unsigned)> callback);
    struct Watch;
    // The descriptors to poll, with the watches they belong to, handed back for dispatch.
    struct PollSet {
        std::vector<pollfd> fds;
        std::vector<std::shared_ptr<Watch>> watches;
    };
    PollSet pollSet() const;
    void dispatch(const PollSet& polled);

private:
    struct Delayed {
        Task task;
        std::shared_ptr<WorkItem::State> state;
    };

public:
    struct Watch {
        int fd;
        unsigned events;
        std::function<void(unsigned)> callback;
        bool active = true;
    };

private:
    struct Watches {
        std::map<std::uint64_t, std::shared_ptr<Watch>> byId;
        std::uint64_t nextId = 1;
    };

    void runGuarded(const Task& task);

    std::function<void()> wake_;
    FailureHandler onFailure_;
    mutable std::mutex mutex_;
    std::vector<Task> posted_;
    std::multimap<MonotonicTime, Delayed> delayed_;
    std::shared_ptr<Watches> watches_ = std::make_shared<Watches>();
};

// What happens to an exception that escapes main-queue work when no handler is given: it is
// written to standard error and the queue goes on.
void reportUncaughtTaskFailure(std::exception_ptr failure);

}  // namespace corvetta
