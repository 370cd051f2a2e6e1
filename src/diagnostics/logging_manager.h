// logging_manager.h: Switches logging through presets or singly, and names the preset in force.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "diagnostics/logbook.h"
#include "diagnostics/logging_service.h"
#include "foundation/notification_center.h"
#include "foundation/preferences.h"

namespace corvetta {

// One bulk setting of the logging switches.
struct LoggingPreset {
    const char* methodName;    // "enableAllLogging"
    const char* confirmation;  // "All logging enabled at debug level"
    const char* presetText;    // "preset.allLogging", or null when the preset has no text
    const char* displayName;   // "Shortcuts Debugging", or null when the check never reports it
    LogLevel minimumLevel;
    std::vector<std::string> categories;  // empty: every category

    LoggingSwitches switches() const;
};

// The presets in the order the current-preset check tries them first, then the others.
const std::vector<LoggingPreset>& loggingPresets();

// Changes the logging switches in bulk or one at a time, and tells which preset is in force.
// Every change is written to the user defaults and then announced with
// "com.corvetta.loggingSettingsChanged".
class LoggingManager {
public:
    static constexpr const char* kSettingsChangedNotification =
        "com.corvetta.loggingSettingsChanged";

    LoggingManager(Preferences& defaults, NotificationCenter& notifications,
                   LoggingService& loggingService);

    void enableAllLogging();
    void disableDebugLogs();
    void enableGeneralUsageLogging();
    void enableSystemDebugging();
    void enableShortcutsDebugging();
    void enableUserInterfaceDebugging();
    void enableWorkspacesDebugging();
    void enableScreenDetectionDebugging();
    void enableWindowManagementDebugging();
    void enableDeeplinksDebugging();
    void enableMCPDebugging();

    // Applies the preset named by its text ("preset.allLogging", ...); false for an unknown text.
    bool applyPreset(std::string_view presetText);

    // Compares the stored switches with each preset; returns and logs the line
    // "Current preset: <name>", "Current preset: Custom Configuration" when none matches.
    std::string checkCurrentPreset();

    void setLoggingEnabled(bool enabled);
    void setMinimumLogLevel(LogLevel level);
    // Exactly these categories, and no others.
    void enableOnlyCategories(const std::vector<LogCategory>& categories);
    // These categories in addition to those already on; with every category on, nothing changes.
    void enableCategories(const std::vector<LogCategory>& categories);
    // Every category on again.
    void enableAllCategories();
    // The "Logging enabled: ", "Minimum log level: " and "Enabled categories: " lines.
    void logCurrentState();

private:
    void apply(const LoggingPreset& preset);
    void write(const LoggingSwitches& switches);
    // Reads the stored switches, changes them, writes them, logs the line and announces.
    void change(const std::function<void(LoggingSwitches&)>& mutate, const std::string& logLine);
    void announce();

    // The manager's own lines go straight to the log book: the switches it changes must not hide
    // the confirmation that they changed, nor the answer to which preset is in force.
    void say(LogLevel level, std::string message);

    Preferences& defaults_;
    NotificationCenter& notifications_;
    Logbook& logbook_;
    const std::string serviceName_ = "LoggingManager";
};

}  // namespace corvetta
