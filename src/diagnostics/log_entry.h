// log_entry.h: One log entry, and the system log that every kept entry is copied to.
#pragma once

#include <string>

#include "diagnostics/log_level.h"
#include "foundation/date.h"

namespace corvetta {

struct LogEntry {
    Date timestamp;
    LogLevel level = LogLevel::info;
    std::string service;
    LogCategory category;
    std::string message;
};

// Where entries go besides the log book: the system's log (standard error on Linux).
class PlatformLog {
public:
    virtual ~PlatformLog() = default;
    virtual void write(const LogEntry& entry) = 0;
};

}  // namespace corvetta
