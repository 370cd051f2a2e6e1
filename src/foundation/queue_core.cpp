#include "foundation/queue_core.h"

#include <cstdio>
#include <stdexcept>

namespace corvetta {

void reportUncaughtTaskFailure(std::exception_ptr failure) {
    try {
        std::rethrow_exception(failure);
    } catch (const std::exception& e) {
        std::fprintf(stderr, "Unhandled error in main-queue work: %s\n", e.what());
    } catch (...) {
        std::fprintf(stderr, "Unhandled error in main-queue work\n");
    }
}

QueueCore::QueueCore(std::function<void()> wake, FailureHandler onFailure)
    : wake_(std::move(wake)),
      onFailure_(onFailure ? std::move(onFailure) : FailureHandler(reportUncaughtTaskFailure)) {}

QueueCore::~QueueCore() = default;

void QueueCore::post(Task task) {
    {
        std::lock_guard lock(mutex_);
        posted_.push_back(std::move(task));
    }
    if (wake_) {
        wake_();
    }
}

WorkItem QueueCore::postDelayed(MonotonicTime due, Task task) {
    auto state = std::make_shared<WorkItem::State>();
    {
        std::lock_guard lock(mutex_);
        // multimap keeps insertion order among equal keys, so equal due times run as scheduled.
        delayed_.emplace(due, Delayed{std::move(task), state});
    }
    if (wake_) {
        wake_();
    }
    return WorkItem(state);
}

void QueueCore::runGuarded(const Task& task) {
    try {
        task();
    } catch (...) {
        onFailure_(std::current_exception());
    }
}

std::size_t QueueCore::runPosted() {
    std::vector<Task> batch;
    {
        std::lock_guard lock(mutex_);
        batch.swap(posted_);
    }
    for (const auto& task : batch) {
        runGuarded(task);
    }
    return batch.size();
}

std::optional<MonotonicTime> QueueCore::runNextDue(
    MonotonicTime limit, const std::function<void(MonotonicTime)>& beforeRun) {
    Delayed next;
    MonotonicTime due;
    {
        std::lock_guard lock(mutex_);
        // Cancelled work is dropped here rather than at cancel time; cancel may come from any
        // thread and must stay cheap.
        while (!delayed_.empty() && delayed_.begin()->second.state->cancelled) {
            delayed_.erase(delayed_.begin());
        }
        if (delayed_.empty() || delayed_.begin()->first > limit) {
            return std::nullopt;
        }
        due = delayed_.begin()->first;
        next = std::move(delayed_.begin()->second);
        delayed_.erase(delayed_.begin());
    }
    if (beforeRun) {
        beforeRun(due);
    }
    // A cancel that lands before the work starts (possibly from beforeRun) still wins.
    if (!next.state->cancelled) {
        next.state->ran = true;
        runGuarded(next.task);
    }
    return due;
}

std::optional<MonotonicTime> QueueCore::nextDue() const {
    std::lock_guard lock(mutex_);
    for (const auto& [due, item] : delayed_) {
        if (!item.state->cancelled) {
            return due;
        }
    }
    return std::nullopt;
}

bool QueueCore::hasPosted() const {
    std::lock_guard lock(mutex_);
    return !posted_.empty();
}

std::size_t QueueCore::pendingCount() const {
    std::lock_guard lock(mutex_);
    std::size_t count = posted_.size();
    for (const auto& entry : delayed_) {
        count += entry.second.state->cancelled ? 0 : 1;
    }
    return count;
}

FdWatch QueueCore::addWatch(int fd, unsigned events, std::function<void(unsigned)> callback) {
    auto watch = std::make_shared<Watch>(Watch{fd, events, std::move(callback)});
    const std::uint64_t id = watches_->nextId++;
    watches_->byId.emplace(id, watch);
    std::weak_ptr<Watches> registry = watches_;
    return FdWatch([registry, id, watch] {
        watch->active = false;
        if (auto live = registry.lock()) {
            live->byId.erase(id);
        }
    });
}

QueueCore::PollSet QueueCore::pollSet() const {
    PollSet set;
    set.fds.reserve(watches_->byId.size());
    for (const auto& [id, watch] : watches_->byId) {
        short events = 0;
        if (hasEvent(watch->events, FdEvent::readable))
            events |= POLLIN;
        if (hasEvent(watch->events, FdEvent::writable))
            events |= POLLOUT;
        set.fds.push_back(pollfd{watch->fd, events, 0});
        set.watches.push_back(watch);
    }
    return set;
}

void QueueCore::dispatch(const PollSet& polled) {
    for (std::size_t i = 0; i < polled.fds.size(); ++i) {
        const short revents = polled.fds[i].revents;
        // A callback may have dropped a later watch, its own included; a dropped one stays quiet.
        if (revents == 0 || !polled.watches[i]->active) {
            continue;
        }
        unsigned bits = 0;
        if (revents & POLLIN)
            bits |= static_cast<unsigned>(FdEvent::readable);
        if (revents & POLLOUT)
            bits |= static_cast<unsigned>(FdEvent::writable);
        if (revents & POLLHUP)
            bits |= static_cast<unsigned>(FdEvent::hangup);
        if (revents & (POLLERR | POLLNVAL))
            bits |= static_cast<unsigned>(FdEvent::error);
        const auto watch = polled.watches[i];
        runGuarded([&] { watch->callback(bits); });
    }
}

}  // namespace corvetta
