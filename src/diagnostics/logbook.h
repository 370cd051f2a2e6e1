// logbook.h: Keeps recent log entries for the log window and automation, thread-safe.
#pragma once

#include <cstddef>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "diagnostics/log_entry.h"
#include "foundation/clock.h"
#include "foundation/notification_center.h"
#include "foundation/preferences.h"

namespace corvetta {

// What "get_logs" and the log window ask for. Every part is optional.
struct LogFilter {
    std::optional<LogLevel> minimumLevel;
    std::optional<std::string> category;  // exact category text
    std::optional<std::string> service;   // exact service name
    std::optional<std::string> search;    // text in the message, case ignored
    std::optional<std::size_t> limit;     // the most recent this many of the matches
};

// Receives every entry the log book keeps at or above its level, on the logging thread.
struct LogHandler {
    LogLevel logLevel = LogLevel::debug;
    std::function<void(const LogEntry&)> handler;
};

// Keeps the most recent entries in memory so they can be shown, copied or read by automation
// clients, and passes each kept entry on to the platform log. Any thread may log.
class Logbook {
public:
    static constexpr std::size_t kMaxRecentEntries = 500;
    static constexpr const char* kSettingsChangedNotification = "Logbook.settingsChanged";

    // `platformLog` may be null (nothing beyond the book itself).
    Logbook(Preferences& defaults, NotificationCenter& notifications, const Clock& clock,
            PlatformLog* platformLog, std::string keyPrefix = "Logbook");

    // Dropped when the book is disabled, below its minimum level, or in a disabled category.
    void log(LogLevel level, std::string service, LogCategory category, std::string message);

    // Oldest first.
    std::vector<LogEntry> recentEntries(const LogFilter& filter = {}) const;
    std::size_t entryCount() const;
    void clear();

    // The persistent switches ("<prefix>.isEnabled", "<prefix>.minimumLevel",
    // "<prefix>.disabledCategories"); each change posts "Logbook.settingsChanged".
    bool isEnabled() const;
    void setEnabled(bool enabled);
    LogLevel minimumLevel() const;
    void setMinimumLevel(LogLevel level);
    std::set<std::string> disabledCategories() const;
    void setCategoryEnabled(const LogCategory& category, bool enabled);

    [[nodiscard]] ObserverToken addHandler(LogHandler handler);

    const std::string& keyPrefix() const { return keyPrefix_; }

private:
    std::string key(const char* name) const { return keyPrefix_ + "." + name; }
    void settingsChanged();

    Preferences& defaults_;
    NotificationCenter& notifications_;
    const Clock& clock_;
    PlatformLog* platformLog_;
    const std::string keyPrefix_;
    const std::size_t maxRecentEntries_ = kMaxRecentEntries;

    // Orders switch changes and their writes to the defaults, without holding up logging threads
    // while the defaults reach the disk.
    std::mutex settingsWrite_;
    // Guards the entries, the switches and the handlers: the one structure many threads share.
    mutable std::mutex stateQueue_;
    std::deque<LogEntry> recentEntries_;
    bool enabled_ = true;
    LogLevel minimumLevel_ = LogLevel::debug;
    std::set<std::string> disabledCategories_;
    std::map<std::uint64_t, std::shared_ptr<LogHandler>> handlers_;
    std::uint64_t nextHandlerId_ = 1;
    std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);
};

}  // namespace corvetta
