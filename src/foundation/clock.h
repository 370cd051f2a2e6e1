// clock.h: The wall and monotonic clocks all timing reads, real or moved by hand in tests.
#pragma once

#include <chrono>
#include <mutex>

#include "foundation/date.h"

namespace corvetta {

using Duration = std::chrono::steady_clock::duration;
using MonotonicTime = std::chrono::steady_clock::time_point;

// Both kinds of time the program reads: the wall clock for dates that are stored or shown, and a
// monotonic clock for delays and timeouts.
class Clock {
public:
    virtual ~Clock() = default;
    virtual Date now() const = 0;
    virtual MonotonicTime monotonicNow() const = 0;
};

class SystemClock final : public Clock {
public:
    Date now() const override { return std::chrono::system_clock::now(); }
    MonotonicTime monotonicNow() const override { return std::chrono::steady_clock::now(); }
};

// A clock that moves only when told to; both readings advance together. Safe to read from any
// thread, since the log book stamps entries wherever they are written.
class ManualClock final : public Clock {
public:
    explicit ManualClock(Date start = Date(std::chrono::seconds(1'795'000'000)))
        : date_(start), monotonic_(std::chrono::hours(1)) {}

    Date now() const override {
        std::lock_guard lock(mutex_);
        return date_;
    }
    MonotonicTime monotonicNow() const override {
        std::lock_guard lock(mutex_);
        return monotonic_;
    }
    void advance(Duration by) {
        std::lock_guard lock(mutex_);
        date_ += std::chrono::duration_cast<Date::duration>(by);
        monotonic_ += by;
    }
    // Moves the monotonic reading forward to `to` (never back), the dates along with it.
    void advanceTo(MonotonicTime to) {
        std::lock_guard lock(mutex_);
        if (to > monotonic_) {
            date_ += std::chrono::duration_cast<Date::duration>(to - monotonic_);
            monotonic_ = to;
        }
    }
    void setDate(Date date) {
        std::lock_guard lock(mutex_);
        date_ = date;
    }

private:
    mutable std::mutex mutex_;
    Date date_;
    MonotonicTime monotonic_;
};

}  // namespace corvetta
