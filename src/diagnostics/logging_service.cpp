#include "diagnostics/logging_service.h"

namespace corvetta {

LoggingSwitches LoggingSwitches::read(const Preferences& defaults) {
    LoggingSwitches switches;
    switches.enabled = defaults.boolValue(LoggingService::kLoggingEnabledKey).value_or(true);
    if (auto stored = defaults.object(LoggingService::kMinimumLogLevelKey)) {
        std::optional<LogLevel> level;
        if (const auto* name = stored->ifString()) {
            level = parseLogLevel(*name);
        }
        if (!level) {
            if (auto index = stored->toInteger()) {
                level = logLevelFromIndex(*index);
            }
        }
        switches.minimumLevel = level.value_or(LogLevel::debug);
    }
    if (auto categories = defaults.stringList(LoggingService::kEnabledCategoriesKey)) {
        switches.enabledCategories.emplace(categories->begin(), categories->end());
    }
    return switches;
}

LoggingService::LoggingService(Preferences& defaults, Logbook& logbook)
    : defaults_(defaults), logbook_(logbook) {
    reloadSettings();
}

void LoggingService::reloadSettings() {
    const auto switches = LoggingSwitches::read(defaults_);
    std::lock_guard lock(mutex_);
    enabled_ = switches.enabled;
    minimumLevel_ = switches.minimumLevel;
    enabledCategories_ = switches.enabledCategories;
}

bool LoggingService::wouldLog(LogLevel level, const LogCategory& category) const {
    std::lock_guard lock(mutex_);
    return enabled_ && level >= minimumLevel_ &&
           (!enabledCategories_ || enabledCategories_->count(category.rawValue) > 0);
}

void LoggingService::log(LogLevel level, std::string_view service, const LogCategory& category,
                         std::string message) {
    if (!wouldLog(level, category)) {
        return;
    }
    logbook_.log(level, std::string(service), category, std::move(message));
}

bool LoggingService::loggingEnabled() const {
    std::lock_guard lock(mutex_);
    return enabled_;
}

LogLevel LoggingService::minimumLogLevel() const {
    std::lock_guard lock(mutex_);
    return minimumLevel_;
}

std::optional<std::set<std::string>> LoggingService::enabledCategories() const {
    std::lock_guard lock(mutex_);
    return enabledCategories_;
}

}  // namespace corvetta
