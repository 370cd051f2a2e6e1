// logger.h: The handle a service logs through, carrying its name and default category.
#pragma once

#include <string>

#include "diagnostics/log_level.h"

namespace corvetta {

class LoggingService;

// What a service holds to log: its name and the front it writes through. Cheap to copy.
class Logger {
public:
    Logger(LoggingService& service, std::string serviceName,
           LogCategory defaultCategory = LogCategory::general());

    void log(LogLevel level, std::string message, const LogCategory& category) const;
    void debug(std::string message) const;
    void info(std::string message) const;
    void warning(std::string message) const;
    void error(std::string message) const;
    void debug(std::string message, const LogCategory& category) const;
    void info(std::string message, const LogCategory& category) const;
    void warning(std::string message, const LogCategory& category) const;
    void error(std::string message, const LogCategory& category) const;

    // Whether a message at `level` in the default category would be kept: lets a caller skip
    // building messages nobody will read.
    bool wouldLog(LogLevel level) const;

    const std::string& serviceName() const { return serviceName_; }
    const LogCategory& defaultCategory() const { return defaultCategory_; }

private:
    LoggingService* service_;
    std::string serviceName_;
    LogCategory defaultCategory_;
};

}  // namespace corvetta
