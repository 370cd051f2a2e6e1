#include "diagnostics/logging_manager.h"

#include <algorithm>

namespace corvetta {

namespace {

std::string joined(const std::set<std::string>& names) {
    std::string text;
    for (const auto& name : names) {
        text += text.empty() ? name : ", " + name;
    }
    return text;
}

std::set<std::string> namesOf(const std::vector<LogCategory>& categories) {
    std::set<std::string> names;
    for (const auto& c : categories) {
        names.insert(c.rawValue);
    }
    return names;
}

const LoggingPreset& presetNamed(std::string_view methodName) {
    const auto& all = loggingPresets();
    return *std::find_if(all.begin(), all.end(),
                         [&](const LoggingPreset& p) { return p.methodName == methodName; });
}

}  // namespace

LoggingSwitches LoggingPreset::switches() const {
    LoggingSwitches s;
    s.enabled = true;
    s.minimumLevel = minimumLevel;
    if (!categories.empty()) {
        s.enabledCategories.emplace(categories.begin(), categories.end());
    }
    return s;
}

const std::vector<LoggingPreset>& loggingPresets() {
    // The focused presets keep "general" on so start-up and top-level errors stay visible.
    static const std::vector<LoggingPreset> presets = {
        {"enableWindowManagementDebugging",
         "Window management debugging preset enabled",
         "preset.windowManagement",
         "Window Management Debugging",
         LogLevel::debug,
         {"general", "accessibility", "windowPositioning", "windowCalculation"}},
        {"enableScreenDetectionDebugging",
         "Screen detection debugging preset enabled",
         "preset.screenDetection",
         "Screen Detection Debugging",
         LogLevel::debug,
         {"general", "windowCalculation", "system"}},
        {"enableWorkspacesDebugging",
         "Workspaces debugging preset enabled",
         "preset.workspaces",
         "Workspaces Debugging",
         LogLevel::debug,
         {"general", "workspace"}},
        {"enableUserInterfaceDebugging",
         "User interface debugging preset enabled",
         "preset.userInterface",
         "User Interface Debugging",
         LogLevel::debug,
         {"general", "startup", "toast"}},
        {"enableShortcutsDebugging",
         "Shortcuts debugging preset enabled",
         "preset.shortcuts",
         "Shortcuts Debugging",
         LogLevel::debug,
         {"general", "shortcut"}},
        {"enableSystemDebugging",
         "System debugging preset enabled",
         nullptr,
         "System Debugging",
         LogLevel::debug,
         {"general", "permission", "startup", "system"}},
        {"enableGeneralUsageLogging",
         "General usage logging preset enabled",
         "preset.generalUsage",
         "General Usage (Less Verbose)",
         LogLevel::info,
         {}},
        {"disableDebugLogs",
         "Debug logs disabled, keeping warnings and errors only",
         "preset.warningsOnly",
         "Warnings & Errors Only",
         LogLevel::warning,
         {}},
        {"enableAllLogging",
         "All logging enabled at debug level",
         "preset.allLogging",
         nullptr,
         LogLevel::debug,
         {}},
        {"enableDeeplinksDebugging",
         "Deeplinks debugging preset enabled",
         "preset.deeplinks",
         nullptr,
         LogLevel::debug,
         {"general", "deeplink", "workspace"}},
        {"enableMCPDebugging",
         "MCP debugging preset enabled",
         nullptr,
         nullptr,
         LogLevel::debug,
         {"general", "mcp"}},
    };
    return presets;
}

LoggingManager::LoggingManager(Preferences& defaults, NotificationCenter& notifications,
                               LoggingService& loggingService)
    : defaults_(defaults), notifications_(notifications), logbook_(loggingService.logbook()) {}

void LoggingManager::enableAllLogging() {
    apply(presetNamed("enableAllLogging"));
}
void LoggingManager::disableDebugLogs() {
    apply(presetNamed("disableDebugLogs"));
}
void LoggingManager::enableGeneralUsageLogging() {
    apply(presetNamed("enableGeneralUsageLogging"));
}
void LoggingManager::enableSystemDebugging() {
    apply(presetNamed("enableSystemDebugging"));
}
void LoggingManager::enableShortcutsDebugging() {
    apply(presetNamed("enableShortcutsDebugging"));
}
void LoggingManager::enableUserInterfaceDebugging() {
    apply(presetNamed("enableUserInterfaceDebugging"));
}
void LoggingManager::enableWorkspacesDebugging() {
    apply(presetNamed("enableWorkspacesDebugging"));
}
void LoggingManager::enableScreenDetectionDebugging() {
    apply(presetNamed("enableScreenDetectionDebugging"));
}
void LoggingManager::enableWindowManagementDebugging() {
    apply(presetNamed("enableWindowManagementDebugging"));
}
void LoggingManager::enableDeeplinksDebugging() {
    apply(presetNamed("enableDeeplinksDebugging"));
}
void LoggingManager::enableMCPDebugging() {
    apply(presetNamed("enableMCPDebugging"));
}

bool LoggingManager::applyPreset(std::string_view presetText) {
    for (const auto& preset : loggingPresets()) {
        if (preset.presetText && preset.presetText == presetText) {
            apply(preset);
            return true;
        }
    }
    say(LogLevel::warning, "Unknown logging preset: " + std::string(presetText));
    return false;
}

void LoggingManager::apply(const LoggingPreset& preset) {
    say(LogLevel::info, std::string(preset.methodName) + " method called");
    write(preset.switches());
    say(LogLevel::info, preset.confirmation);
    announce();
}

void LoggingManager::write(const LoggingSwitches& switches) {
    defaults_.set(LoggingService::kLoggingEnabledKey, switches.enabled);
    defaults_.set(LoggingService::kMinimumLogLevelKey, logLevelIndex(switches.minimumLevel));
    if (switches.enabledCategories) {
        defaults_.set(LoggingService::kEnabledCategoriesKey,
                      std::vector<std::string>(switches.enabledCategories->begin(),
                                               switches.enabledCategories->end()));
    } else {
        defaults_.remove(LoggingService::kEnabledCategoriesKey);
    }
}

void LoggingManager::say(LogLevel level, std::string message) {
    logbook_.log(level, serviceName_, LogCategory::system(), std::move(message));
}

void LoggingManager::announce() {
    notifications_.post(kSettingsChangedNotification);
}

std::string LoggingManager::checkCurrentPreset() {
    say(LogLevel::info, "Checking current logging preset...");
    const auto stored = LoggingSwitches::read(defaults_);
    std::string line = "Current preset: Custom Configuration";
    for (const auto& preset : loggingPresets()) {
        if (preset.displayName && preset.switches() == stored) {
            line = std::string("Current preset: ") + preset.displayName;
            break;
        }
    }
    say(LogLevel::info, line);
    return line;
}

void LoggingManager::change(const std::function<void(LoggingSwitches&)>& mutate,
                            const std::string& logLine) {
    auto switches = LoggingSwitches::read(defaults_);
    mutate(switches);
    write(switches);
    say(LogLevel::info, logLine);
    announce();
}

void LoggingManager::setLoggingEnabled(bool enabled) {
    change([&](LoggingSwitches& s) { s.enabled = enabled; },
           std::string("Logging enabled: ") + (enabled ? "true" : "false"));
}

void LoggingManager::setMinimumLogLevel(LogLevel level) {
    change([&](LoggingSwitches& s) { s.minimumLevel = level; },
           "Set minimum log level to: " + std::string(logLevelName(level)));
}

void LoggingManager::enableOnlyCategories(const std::vector<LogCategory>& categories) {
    change([&](LoggingSwitches& s) { s.enabledCategories = namesOf(categories); },
           "Enabled only categories: " + joined(namesOf(categories)));
}

void LoggingManager::enableCategories(const std::vector<LogCategory>& categories) {
    change(
        [&](LoggingSwitches& s) {
            // With every category on there is nothing to add.
            if (s.enabledCategories) {
                const auto added = namesOf(categories);
                s.enabledCategories->insert(added.begin(), added.end());
            }
        },
        "Enabled categories: " + joined(namesOf(categories)));
}

void LoggingManager::enableAllCategories() {
    change([](LoggingSwitches& s) { s.enabledCategories.reset(); }, "Enabled categories: all");
}

void LoggingManager::logCurrentState() {
    const auto switches = LoggingSwitches::read(defaults_);
    say(LogLevel::info, std::string("Logging enabled: ") + (switches.enabled ? "true" : "false"));
    say(LogLevel::info, "Minimum log level: " + std::string(logLevelName(switches.minimumLevel)));
    say(LogLevel::info,
        "Enabled categories: " +
            (switches.enabledCategories ? joined(*switches.enabledCategories) : "all"));
}

}  // namespace corvetta
