// log_level.h: The levels and categories every log line carries, and their stored forms.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace corvetta {

// Ordered: a minimum level lets through that level and every higher one.
enum class LogLevel { debug = 0, info = 1, warning = 2, error = 3 };

// "debug", "info", "warning", "error".
std::string_view logLevelName(LogLevel level);
std::optional<LogLevel> parseLogLevel(std::string_view name);
// The stored form of a level is its index; out-of-range indexes have no level.
std::optional<LogLevel> logLevelFromIndex(long long index);
inline int logLevelIndex(LogLevel level) {
    return static_cast<int>(level);
}

// A category is an open set of texts; these are the ones the services use.
struct LogCategory {
    std::string rawValue = "general";

    static LogCategory general() { return {"general"}; }
    static LogCategory shortcut() { return {"shortcut"}; }
    static LogCategory workspace() { return {"workspace"}; }
    static LogCategory deeplink() { return {"deeplink"}; }
    static LogCategory permission() { return {"permission"}; }
    static LogCategory accessibility() { return {"accessibility"}; }
    static LogCategory windowPositioning() { return {"windowPositioning"}; }
    static LogCategory windowCalculation() { return {"windowCalculation"}; }
    static LogCategory toast() { return {"toast"}; }
    static LogCategory startup() { return {"startup"}; }
    static LogCategory system() { return {"system"}; }
    static LogCategory mcp() { return {"mcp"}; }

    bool operator==(const LogCategory&) const = default;
};

}  // namespace corvetta
