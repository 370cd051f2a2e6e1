#include "diagnostics/stderr_log.h"

#include <cerrno>
#include <utility>

#include <poll.h>
#include <unistd.h>

namespace corvetta {

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

StderrLog::StderrLog(int fd, std::size_t capacity)
    : fd_(fd), capacity_(capacity == 0 ? 1 : capacity), writer_([this] { drain(); }) {}

StderrLog::~StderrLog() {
    {
        std::lock_guard lock(mutex_);
        stopping_ = true;
    }
    hasWork_.notify_all();
    writer_.join();
}

void StderrLog::write(const LogEntry& entry) {
    std::string line = formatPlatformLogLine(entry);
    {
        std::lock_guard lock(mutex_);
        if (lines_.size() >= capacity_) {
            ++dropped_;
            return;
        }
        lines_.push_back(std::move(line));
    }
    hasWork_.notify_one();
}

void StderrLog::flush() {
    std::unique_lock lock(mutex_);
    idle_.wait(lock, [this] { return lines_.empty() && !writing_; });
}

void StderrLog::writeAll(const std::string& text) {
    const char* data = text.data();
    std::size_t left = text.size();
    while (left > 0) {
        const ssize_t n = ::write(fd_, data, left);
        if (n < 0) {
            if (errno == EINTR) {
                continue;
            }
            // A descriptor shared with a parent may be non-blocking; this thread can wait.
            if (errno == EAGAIN || errno == EWOULDBLOCK) {
                pollfd writable{fd_, POLLOUT, 0};
                if (poll(&writable, 1, -1) >= 0) {
                    continue;
                }
            }
            return;  // Nowhere left to report a broken log descriptor.
        }
        data += n;
        left -= static_cast<std::size_t>(n);
    }
}

void StderrLog::drain() {
    std::unique_lock lock(mutex_);
    while (true) {
        hasWork_.wait(lock, [this] { return stopping_ || !lines_.empty(); });
        if (lines_.empty() && stopping_) {
            return;
        }
        std::deque<std::string> batch;
        batch.swap(lines_);
        const std::size_t dropped = std::exchange(dropped_, 0);
        writing_ = true;
        lock.unlock();
        std::string text;
        for (const auto& line : batch) {
            text += line;
        }
        if (dropped > 0) {
            text += "(" + std::to_string(dropped) + " log lines dropped: the log fell behind)\n";
        }
        writeAll(text);
        lock.lock();
        writing_ = false;
        if (lines_.empty()) {
            idle_.notify_all();
        }
    }
}

}  // namespace corvetta
