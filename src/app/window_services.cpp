#include "app/window_services.h"

namespace corvetta {

WindowServices::WindowServices(Desktop& desktop, MainQueue& queue, const Preferences& defaults,
                               LoggingService& logging)
    : screenDetection(desktop.screenPort(), logging),
      calculationService(screenDetection, defaults, logging),
      accessibilityElement(desktop.accessibilityPort(), desktop.screenPort(),
                           desktop.windowListPort(), desktop.applicationsPort(),
                           desktop.pointerPort(), logging),
      windowMover(accessibilityElement, calculationService, screenDetection, desktop.screenPort(),
                  queue, logging),
      windowSnappingService(windowMover, screenDetection, accessibilityElement, calculationService,
                            desktop.applicationsPort(), defaults, logging) {}

}  // namespace corvetta
