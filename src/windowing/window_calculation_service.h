// window_calculation_service.h: Picks an action's calculator and clamps its frame to the display.
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

// A calculated frame with the display it lies on: the given screen, or the next display when a
// repeated half press sent the window there.
struct CalculatedFrame {
    Rect rect;
    Screen screen;
    // The action really computed; a size cycle advances it past the requested one.
    WindowDirection resultingAction;
    // Set only by the size cycle: the action it advanced from. Its rectangle is the zero-sized
    // one at the display's far corner.
    std::optional<WindowDirection> resultingSubAction;
};

// The frame a window action gives a window on a screen. The calculators are built once, with the
// service, so the settings they read when built take effect when the service is next built.
class WindowCalculationService {
public:
    WindowCalculationService(ScreenDetectionService& screenDetection, const Preferences& defaults,
                             LoggingService& logging);

    // The final frame, clamped into the display the calculation chose; the null rectangle when
    // no calculator produced one, which callers take as nothing to do. `isRepeatedPress` and
    // `lastResultingAction` are those of WindowCalculationParameters: a caller that does not
    // track presses leaves them, and the half actions apply "subsequentExecutionSpace" as given.
    Rect calculate(const WindowDirection& action, const TargetWindow& window, const Screen& screen,
                   bool isRepeatedPress = true);
    // The same, with the display the frame lies on; none when no calculator produced a frame.
    std::optional<CalculatedFrame> calculateWithScreen(
        const WindowDirection& action, const TargetWindow& window, const Screen& screen,
        bool isRepeatedPress = true,
        const std::optional<WindowDirection>& lastResultingAction = std::nullopt);

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
