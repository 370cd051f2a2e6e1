#include "workspaces/display_change_monitor_service.h"

#include "workspaces/display_arrangement_capture.h"

namespace corvetta {

DisplayChangeMonitorService::DisplayChangeMonitorService(ScreenPort& screens,
                                                         NotificationCenter& notifications,
                                                         const Clock& clock,
                                                         LoggingService& logging)
    : screens_(screens),
      notifications_(notifications),
      clock_(clock),
      logger_(logging, "DisplayChangeMonitorService"),
      currentArrangement_(captureDisplayArrangement(screens.screens(), clock.now())),
      lastUpdateTime_(clock.now()) {
    screenObserver_ = screens_.observeScreenParameters([this] {
        logger_.info("System display configuration changed");
        rebuild();
    });
    logger_.info("DisplayChangeMonitorService initialized");
}

void DisplayChangeMonitorService::rebuild() {
    const Date now = clock_.now();
    currentArrangement_ = captureDisplayArrangement(screens_.screens(), now);
    lastUpdateTime_ = now;
    notifications_.post(kDisplayArrangementDidChangeNotification);
}

}  // namespace corvetta
