// stderr_log.h: Writes log lines to standard error from its own thread, never blocking the logger.
#pragma once

#include <chrono>
#include <cstddef>
#include <memory>
#include <string>

#include "diagnostics/log_entry.h"

namespace corvetta {

// One compact line per entry: "2026-11-21T10:15:30Z warning Service[category] message", with line
// breaks in the message written as "\n" so every entry stays on one line.
std::string formatPlatformLogLine(const LogEntry& entry);

// Writes log lines to a descriptor (standard error by default) from its own thread, so a slow or
// blocked terminal never holds up the thread that logs. When the backlog passes `capacity` lines,
// new lines are dropped and counted, and the count is reported once writing catches up. A
// descriptor that is gone (a closed pipe) ends the writing; lines after that are dropped.
//
// A reader that stops reading must not keep the process from ending: flush() and destruction
// wait only while the descriptor keeps taking bytes, and give up once it has taken nothing for
// `stallLimit`. A writer still stuck then is left behind; it holds nothing of the log's owner.
class StderrLog final : public PlatformLog {
public:
    static constexpr std::chrono::milliseconds kDefaultStallLimit{400};

    explicit StderrLog(int fd = 2, std::size_t capacity = 10'000,
                       std::chrono::milliseconds stallLimit = kDefaultStallLimit);
    ~StderrLog() override;
    StderrLog(const StderrLog&) = delete;
    StderrLog& operator=(const StderrLog&) = delete;

    void write(const LogEntry& entry) override;
    // Blocks until every line queued so far has been written; false when the descriptor stalled
    // or went away first.
    bool flush();

private:
    struct Shared;
    std::shared_ptr<Shared> shared_;
};

}  // namespace corvetta
