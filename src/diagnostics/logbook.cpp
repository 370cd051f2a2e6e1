#include "diagnostics/logbook.h"

#include <algorithm>
#include <cctype>

namespace corvetta {

namespace {
std::string lowered(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

bool matches(const LogEntry& entry, const LogFilter& filter, const std::string& loweredSearch) {
    if (filter.minimumLevel && entry.level < *filter.minimumLevel)
        return false;
    if (filter.category && entry.category.rawValue != *filter.category)
        return false;
    if (filter.service && entry.service != *filter.service)
        return false;
    if (!loweredSearch.empty() && lowered(entry.message).find(loweredSearch) == std::string::npos) {
        return false;
    }
    return true;
}
}  // namespace

Logbook::Logbook(Preferences& defaults, NotificationCenter& notifications, const Clock& clock,
                 PlatformLog* platformLog, std::string keyPrefix)
    : defaults_(defaults),
      notifications_(notifications),
      clock_(clock),
      platformLog_(platformLog),
      keyPrefix_(std::move(keyPrefix)) {
    // Absent switches mean: on, everything from debug up, no category off.
    enabled_ = defaults_.boolValue(key("isEnabled")).value_or(true);
    if (auto index = defaults_.integer(key("minimumLevel"))) {
        minimumLevel_ = logLevelFromIndex(*index).value_or(LogLevel::debug);
    }
    if (auto categories = defaults_.stringList(key("disabledCategories"))) {
        disabledCategories_.insert(categories->begin(), categories->end());
    }
}

void Logbook::log(LogLevel level, std::string service, LogCategory category, std::string message) {
    std::vector<std::shared_ptr<LogHandler>> handlers;
    LogEntry entry{clock_.now(), level, std::move(service), std::move(category),
                   std::move(message)};
    {
        std::lock_guard lock(stateQueue_);
        if (!enabled_ || level < minimumLevel_ ||
            disabledCategories_.count(entry.category.rawValue)) {
            return;
        }
        recentEntries_.push_back(entry);
        while (recentEntries_.size() > maxRecentEntries_) {
            recentEntries_.pop_front();
        }
        for (const auto& [id, handler] : handlers_) {
            if (level >= handler->logLevel) {
                handlers.push_back(handler);
            }
        }
    }
    // Outside the lock: a handler may log in turn.
    if (platformLog_) {
        platformLog_->write(entry);
    }
    for (const auto& handler : handlers) {
        handler->handler(entry);
    }
}

std::vector<LogEntry> Logbook::recentEntries(const LogFilter& filter) const {
    const std::string search = filter.search ? lowered(*filter.search) : std::string();
    std::vector<LogEntry> out;
    {
        std::lock_guard lock(stateQueue_);
        for (const auto& entry : recentEntries_) {
            if (matches(entry, filter, search)) {
                out.push_back(entry);
            }
        }
    }
    if (filter.limit && out.size() > *filter.limit) {
        out.erase(out.begin(), out.end() - static_cast<std::ptrdiff_t>(*filter.limit));
    }
    return out;
}

std::size_t Logbook::entryCount() const {
    std::lock_guard lock(stateQueue_);
    return recentEntries_.size();
}

void Logbook::clear() {
    std::lock_guard lock(stateQueue_);
    recentEntries_.clear();
}

bool Logbook::isEnabled() const {
    std::lock_guard lock(stateQueue_);
    return enabled_;
}

void Logbook::setEnabled(bool enabled) {
    std::lock_guard writing(settingsWrite_);
    {
        std::lock_guard lock(stateQueue_);
        enabled_ = enabled;
    }
    defaults_.set(key("isEnabled"), enabled);
    settingsChanged();
}

LogLevel Logbook::minimumLevel() const {
    std::lock_guard lock(stateQueue_);
    return minimumLevel_;
}

void Logbook::setMinimumLevel(LogLevel level) {
    std::lock_guard writing(settingsWrite_);
    {
        std::lock_guard lock(stateQueue_);
        minimumLevel_ = level;
    }
    defaults_.set(key("minimumLevel"), logLevelIndex(level));
    settingsChanged();
}

std::set<std::string> Logbook::disabledCategories() const {
    std::lock_guard lock(stateQueue_);
    return disabledCategories_;
}

void Logbook::setCategoryEnabled(const LogCategory& category, bool enabled) {
    std::lock_guard writing(settingsWrite_);
    std::vector<std::string> disabled;
    {
        std::lock_guard lock(stateQueue_);
        if (enabled) {
            disabledCategories_.erase(category.rawValue);
        } else {
            disabledCategories_.insert(category.rawValue);
        }
        disabled.assign(disabledCategories_.begin(), disabledCategories_.end());
    }
    defaults_.set(key("disabledCategories"), disabled);
    settingsChanged();
}

void Logbook::settingsChanged() {
    notifications_.post(kSettingsChangedNotification);
}

ObserverToken Logbook::addHandler(LogHandler handler) {
    std::lock_guard lock(stateQueue_);
    const std::uint64_t id = nextHandlerId_++;
    handlers_.emplace(id, std::make_shared<LogHandler>(std::move(handler)));
    std::weak_ptr<bool> alive = alive_;
    return ObserverToken([this, alive, id] {
        if (alive.lock()) {
            std::lock_guard guard(stateQueue_);
            handlers_.erase(id);
        }
    });
}

}  // namespace corvetta
