// stderr_log.h: Copies log entries to stderr from its own thread, so logging never blocks.
#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <mutex>
#include <string>
#include <thread>

#include "diagnostics/log_entry.h"

namespace corvetta {

// One compact line per entry: "2026-11-21T10:15:30Z warning Service[category] message", with line
// breaks in the message written as "\n" so every entry stays on one line.
std::string formatPlatformLogLine(const LogEntry& entry);

// Writes log lines to a descriptor (standard error by default) from its own thread, so a slow or
// blocked terminal never holds up the thread that logs. When the backlog passes `capacity` lines,
// new lines are dropped and counted, and the count is reported once writing catches up.
class StderrLog final : public PlatformLog {
public:
    explicit StderrLog(int fd = 2, std::size_t capacity = 10'000);
    ~StderrLog() override;
    StderrLog(const StderrLog&) = delete;
    StderrLog& operator=(const StderrLog&) = delete;

    void write(const LogEntry& entry) override;
    // Blocks until every line queued so far has been written.
    void flush();

private:
    void drain();
    void writeAll(const std::string& text);

    int fd_;
    std::size_t capacity_;
    std::mutex mutex_;
    std::condition_variable hasWork_;
    std::condition_variable idle_;
    std::deque<std::string> lines_;
    std::size_t dropped_ = 0;
    bool writing_ = false;
    bool stopping_ = false;
    std::thread writer_;
};

}  // namespace corvetta
