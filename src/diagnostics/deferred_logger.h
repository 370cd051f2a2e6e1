// deferred_logger.h: Logs from hot paths, building a message only when it will be kept.
#pragma once

#include <string>
#include <utility>

#include "diagnostics/logger.h"
#include "diagnostics/logging_service.h"

namespace corvetta {

// A service's logger that builds a message only when the logging switches would keep it. The
// calculations run on every key press and drag step; formatting rectangles for lines that are
// then dropped would cost more than the arithmetic.
class DeferredLogger {
public:
    DeferredLogger(LoggingService& service, std::string serviceName, LogCategory category)
        : service_(&service), logger_(service, std::move(serviceName), std::move(category)) {}

    template <class MakeMessage>
    void debug(MakeMessage&& makeMessage) const {
        log(LogLevel::debug, std::forward<MakeMessage>(makeMessage));
    }
    template <class MakeMessage>
    void info(MakeMessage&& makeMessage) const {
        log(LogLevel::info, std::forward<MakeMessage>(makeMessage));
    }

    const Logger& logger() const { return logger_; }
    const std::string& serviceName() const { return logger_.serviceName(); }

private:
    template <class MakeMessage>
    void log(LogLevel level, MakeMessage&& makeMessage) const {
        if (service_->wouldLog(level, logger_.defaultCategory())) {
            logger_.log(level, makeMessage(), logger_.defaultCategory());
        }
    }

    LoggingService* service_;
    Logger logger_;
};

}  // namespace corvetta
