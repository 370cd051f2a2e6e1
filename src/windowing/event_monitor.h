// event_monitor.h: Hears input events for this and other applications in one handler.
#pragma once

#include "diagnostics/deferred_logger.h"
#include "platform/input_events.h"

namespace corvetta {

// One global and one local monitor for the same kinds of events, handing every event to one
// handler: events meant for other applications and for this one alike.
class EventMonitor {
public:
    EventMonitor(EventMonitorPort& port, EventTypeMask mask, EventHandler handler,
                 LoggingService& logging);
    ~EventMonitor();
    EventMonitor(const EventMonitor&) = delete;
    EventMonitor& operator=(const EventMonitor&) = delete;

    // Starting a started monitor or stopping a stopped one does nothing.
    void start();
    void stop();
    bool isRunning() const;

private:
    EventMonitorPort& port_;
    Registration globalMonitor_;
    Registration localMonitor_;
    EventTypeMask mask_;
    EventHandler handler_;
    DeferredLogger logger_;
};

}  // namespace corvetta
