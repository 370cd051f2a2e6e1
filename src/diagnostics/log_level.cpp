#include "diagnostics/log_level.h"

namespace corvetta {

std::string_view logLevelName(LogLevel level) {
    switch (level) {
        case LogLevel::debug:
            return "debug";
        case LogLevel::info:
            return "info";
        case LogLevel::warning:
            return "warning";
        case LogLevel::error:
            return "error";
    }
    return "info";
}

std::optional<LogLevel> parseLogLevel(std::string_view name) {
    for (auto level : {LogLevel::debug, LogLevel::info, LogLevel::warning, LogLevel::error}) {
        if (logLevelName(level) == name) {
            return level;
        }
    }
    return std::nullopt;
}

std::optional<LogLevel> logLevelFromIndex(long long index) {
    if (index < 0 || index > 3) {
        return std::nullopt;
    }
    return static_cast<LogLevel>(index);
}

}  // namespace corvetta
