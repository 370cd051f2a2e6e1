// logging_service.h: The logging front: drops what the user's switches exclude.
#pragma once

#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <string_view>

#include "diagnostics/logbook.h"
#include "foundation/preferences.h"

namespace corvetta {

// The logging front every service writes through. Its switches live in the user defaults and are
// changed in bulk by the presets of LoggingManager; it re-reads them when told to, after the
// settings-changed notification.
class LoggingService {
public:
    static constexpr const char* kLoggingEnabledKey = "LoggingService.loggingEnabled";
    static constexpr const char* kMinimumLogLevelKey = "LoggingService.minimumLogLevel";
    static constexpr const char* kEnabledCategoriesKey = "LoggingService.enabledCategories";

    LoggingService(Preferences& defaults, Logbook& logbook);

    // Passes the message on to the log book unless the switches drop it.
    void log(LogLevel level, std::string_view service, const LogCategory& category,
             std::string message);
    bool wouldLog(LogLevel level, const LogCategory& category) const;

    void reloadSettings();
    bool loggingEnabled() const;
    LogLevel minimumLogLevel() const;
    // No value: every category is enabled.
    std::optional<std::set<std::string>> enabledCategories() const;

    Logbook& logbook() { return logbook_; }

private:
    Preferences& defaults_;
    Logbook& logbook_;
    mutable std::mutex mutex_;
    bool enabled_ = true;
    LogLevel minimumLevel_ = LogLevel::debug;
    std::optional<std::set<std::string>> enabledCategories_;
};

// Reads the switches as stored: absent means enabled, debug, every category; the level may be
// stored as its index or its name.
struct LoggingSwitches {
    bool enabled = true;
    LogLevel minimumLevel = LogLevel::debug;
    std::optional<std::set<std::string>> enabledCategories;

    static LoggingSwitches read(const Preferences& defaults);
    bool operator==(const LoggingSwitches&) const = default;
};

}  // namespace corvetta
