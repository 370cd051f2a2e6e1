#include "diagnostics/stderr_log.h"

#include <algorithm>
#include <cerrno>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>
#include <utility>

#include <limits.h>
#include <poll.h>
#include <unistd.h>

namespace corvetta {

namespace {
using SteadyClock = std::chrono::steady_clock;
// Small writes let the waiting side see progress on a slow reader; a pipe takes up to this much
// at once without splitting it.
constexpr std::size_t kWriteChunkBytes = PIPE_BUF;
}  // namespace

struct StderrLog::Shared {
    Shared(int descriptor, std::size_t maxLines, std::chrono::milliseconds maxStall)
        : fd(descriptor), capacity(maxLines == 0 ? 1 : maxLines), stallLimit(maxStall) {}

    void drain();
    // False when the descriptor is gone.
    bool writeAll(const std::string& text);
    // Waits until the backlog is written, the writer ends, or the descriptor stalls.
    bool waitUntilWritten(std::unique_lock<std::mutex>& lock);

    const int fd;
    const std::size_t capacity;
    const std::chrono::milliseconds stallLimit;
    std::mutex mutex;
    std::condition_variable hasWork;
    std::condition_variable progress;
    std::deque<std::string> lines;
    std::size_t dropped = 0;
    bool writing = false;
    bool stopping = false;
    bool broken = false;
    bool finished = false;
    // A wait gave up on the descriptor, and it has taken nothing since: later waits give up at
    // once, so a program ending behind a blocked reader pays the stall limit only once.
    bool stalled = false;
    SteadyClock::time_point lastProgress = SteadyClock::now();
};

std::string formatPlatformLogLine(const LogEntry& entry) {
    std::string line = formatIso8601(entry.timestamp);
    line += ' ';
    line += logLevelName(entry.level);
    line += ' ';
    line += entry.service;
    line += '[';
    line += entry.category.rawValue;
    line += "] ";
    for (const char c : entry.message) {
        if (c == '\n') {
            line += "\\n";
        } else if (c == '\r') {
            line += "\\r";
        } else {
            line += c;
        }
    }
    line += '\n';
    return line;
}

StderrLog::StderrLog(int fd, std::size_t capacity, std::chrono::milliseconds stallLimit)
    : shared_(std::make_shared<Shared>(fd, capacity, stallLimit)) {
    std::thread([shared = shared_] { shared->drain(); }).detach();
}

StderrLog::~StderrLog() {
    std::unique_lock lock(shared_->mutex);
    shared_->stopping = true;
    shared_->hasWork.notify_all();
    shared_->waitUntilWritten(lock);
}

void StderrLog::write(const LogEntry& entry) {
    std::string line = formatPlatformLogLine(entry);
    {
        std::lock_guard lock(shared_->mutex);
        if (shared_->broken) {
            return;
        }
        if (shared_->lines.size() >= shared_->capacity) {
            ++shared_->dropped;
            return;
        }
        shared_->lines.push_back(std::move(line));
    }
    shared_->hasWork.notify_one();
}

bool StderrLog::flush() {
    std::unique_lock lock(shared_->mutex);
    return shared_->waitUntilWritten(lock);
}

bool StderrLog::Shared::waitUntilWritten(std::unique_lock<std::mutex>& lock) {
    // The stall is measured from the last write that went through, or from now.
    lastProgress = std::max(lastProgress, SteadyClock::now());
    while (!(lines.empty() && !writing) && !finished && !broken) {
        if (stalled) {
            return false;
        }
        if (progress.wait_until(lock, lastProgress + stallLimit) == std::cv_status::timeout &&
            SteadyClock::now() >= lastProgress + stallLimit) {
            stalled = true;
        }
    }
    return !broken;
}

bool StderrLog::Shared::writeAll(const std::string& text) {
    std::string_view rest = text;
    while (!rest.empty()) {
        const ssize_t n = ::write(fd, rest.data(), std::min(rest.size(), kWriteChunkBytes));
        if (n < 0) {
            if (errno == EINTR) {
                continue;
            }
            // A descriptor shared with a parent may be non-blocking; this thread can wait.
            if (errno == EAGAIN || errno == EWOULDBLOCK) {
                pollfd writable{fd, POLLOUT, 0};
                if (poll(&writable, 1, -1) >= 0) {
                    continue;
                }
            }
            return false;  // Nowhere left to report a broken log descriptor.
        }
        rest.remove_prefix(static_cast<std::size_t>(n));
        std::lock_guard lock(mutex);
        lastProgress = SteadyClock::now();
        stalled = false;
        progress.notify_all();
    }
    return true;
}

void StderrLog::Shared::drain() {
    std::unique_lock lock(mutex);
    while (true) {
        hasWork.wait(lock, [this] { return stopping || !lines.empty(); });
        if (lines.empty() && stopping) {
            finished = true;
            progress.notify_all();
            return;
        }
        std::deque<std::string> batch;
        batch.swap(lines);
        const std::size_t droppedNow = std::exchange(dropped, 0);
        writing = true;
        lock.unlock();
        std::string text;
        for (const auto& line : batch) {
            text += line;
        }
        if (droppedNow > 0) {
            text += "(" + std::to_string(droppedNow) + " log lines dropped: the log fell behind)\n";
        }
        const bool written = writeAll(text);
        lock.lock();
        writing = false;
        if (!written) {
            broken = true;
            lines.clear();
        }
        progress.notify_all();
    }
}

}  // namespace corvetta
