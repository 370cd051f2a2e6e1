#include "windowing/event_monitor.h"

#include <string>
#include <utility>

namespace corvetta {

EventMonitor::EventMonitor(EventMonitorPort& port, EventTypeMask mask, EventHandler handler,
                           LoggingService& logging)
    : port_(port),
      mask_(mask),
      handler_(std::move(handler)),
      logger_(logging, "EventMonitor", LogCategory::general()) {}

EventMonitor::~EventMonitor() {
    stop();
}

void EventMonitor::start() {
    if (isRunning()) {
        return;
    }
    // The monitors call through this object, which removes them before it goes away.
    const auto forward = [this](const InputEvent& event) {
        if (handler_) {
            handler_(event);
        }
    };
    globalMonitor_ = port_.addGlobalMonitor(mask_, forward);
    localMonitor_ = port_.addLocalMonitor(mask_, forward);
    logger_.debug([&] { return "Started monitoring events with mask: " + std::to_string(mask_); });
}

void EventMonitor::stop() {
    if (!isRunning()) {
        return;
    }
    globalMonitor_.reset();
    localMonitor_.reset();
    logger_.debug([] { return std::string("Stopped monitoring events"); });
}

bool EventMonitor::isRunning() const {
    return globalMonitor_.isActive() || localMonitor_.isActive();
}

}  // namespace corvetta
