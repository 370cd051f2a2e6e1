#include "diagnostics/logger.h"

#include "diagnostics/logging_service.h"

namespace corvetta {

Logger::Logger(LoggingService& service, std::string serviceName, LogCategory defaultCategory)
    : service_(&service),
      serviceName_(std::move(serviceName)),
      defaultCategory_(std::move(defaultCategory)) {}

void Logger::log(LogLevel level, std::string message, const LogCategory& category) const {
    service_->log(level, serviceName_, category, std::move(message));
}

bool Logger::wouldLog(LogLevel level) const {
    return service_->wouldLog(level, defaultCategory_);
}

void Logger::debug(std::string message) const {
    log(LogLevel::debug, std::move(message), defaultCategory_);
}
void Logger::info(std::string message) const {
    log(LogLevel::info, std::move(message), defaultCategory_);
}
void Logger::warning(std::string message) const {
    log(LogLevel::warning, std::move(message), defaultCategory_);
}
void Logger::error(std::string message) const {
    log(LogLevel::error, std::move(message), defaultCategory_);
}
void Logger::debug(std::string message, const LogCategory& category) const {
    log(LogLevel::debug, std::move(message), category);
}
void Logger::info(std::string message, const LogCategory& category) const {
    log(LogLevel::info, std::move(message), category);
}
void Logger::warning(std::string message, const LogCategory& category) const {
    log(LogLevel::warning, std::move(message), category);
}
void Logger::error(std::string message, const LogCategory& category) const {
    log(LogLevel::error, std::move(message), category);
}

}  // namespace corvetta
