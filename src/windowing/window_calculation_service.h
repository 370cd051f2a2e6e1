#pragma once

#include "foundation/preferences.h"
#include "windowing/almost_maximize_calculation.h"
#include "windowing/change_size_calculation.h"
#include "windowing/display_scale_manager.h"
#include "windowing/half_calculation.h"
#include "windowing/screen_detection_service.h"
#include "windowing/specified_calculation.h"
#include "windowing/standard_position_calculation.h"

namespace corvetta {

// The frame a window action gives a window on a screen. The calculators are built once, with the
// service, so the settings they read when built take effect when the service is next built.
class WindowCalculationService {
public:
    WindowCalculationService(ScreenDetectionService& screenDetection, const Preferences& defaults,
                             LoggingService& logging);

    // The final frame, clamped into the display the calculation chose; the null rectangle when
    // no calculator produced one, which callers take as nothing to do.
    Rect calculate(const WindowDirection& action, const TargetWindow& window, const Screen& screen);

    // The calculator that handles an action.
    const WindowCalculation& calculationFor(const WindowDirection& action) const;

private:
    ScreenDetectionService& screenDetection_;
    DeferredLogger logger_;
    DisplayScaleManager displayScaleManager_;
    StandardPositionCalculation standardPositionCalculation_;
    AlmostMaximizeCalculation almostMaximizeCalculation_;
    ChangeSizeCalculation changeSizeCalculation_;
    SpecifiedCalculation specifiedCalculation_;
    LeftRightHalfCalculation leftRightHalfCalculation_;
    TopBottomHalfCalculation topBottomHalfCalculation_;
};

}  // namespace corvetta
