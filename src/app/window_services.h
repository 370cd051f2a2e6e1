// window_services.h: The window-moving services in dependency order, for benchmarks and fuzzing.
#pragma once

#include "foundation/main_queue.h"
#include "foundation/preferences.h"
#include "platform/desktop.h"
#include "windowing/accessibility_element.h"
#include "windowing/screen_detection_service.h"
#include "windowing/window_calculation_service.h"
#include "windowing/window_mover.h"
#include "windowing/window_snapping_service.h"

namespace corvetta {

// The services that move windows, built once on one desktop in the order they depend on each
// other and kept for the life of the process.
struct WindowServices {
    WindowServices(Desktop& desktop, MainQueue& queue, const Preferences& defaults,
                   LoggingService& logging);
    WindowServices(const WindowServices&) = delete;
    WindowServices& operator=(const WindowServices&) = delete;

    ScreenDetectionService screenDetection;
    WindowCalculationService calculationService;
    AccessibilityElement accessibilityElement;
    WindowMover windowMover;
    WindowSnappingService windowSnappingService;
};

}  // namespace corvetta
