#include "diagnostics/log_text.h"

#include <algorithm>
#include <cctype>

namespace corvetta {

std::string renderLogText(const std::vector<LogEntry>& entries, TimeZoneChoice zone) {
    std::string text;
    for (const auto& entry : entries) {
        std::string level(logLevelName(entry.level));
        std::transform(level.begin(), level.end(), level.begin(),
                       [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
        text += formatIso8601(entry.timestamp) + " | " +
                formatMediumDateTime(entry.timestamp, zone) + " | " + level + " | " +
                entry.service + " | " + entry.category.rawValue + " | " + entry.message + "\n";
    }
    return text;
}

}  // namespace corvetta
