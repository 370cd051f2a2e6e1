#include "windowing/window_calculation_service.h"

namespace corvetta {

WindowCalculationService::WindowCalculationService(ScreenDetectionService& screenDetection,
                                                   const Preferences& defaults,
                                                   LoggingService& logging)
    : screenDetection_(screenDetection),
      logger_(logging, "WindowCalculationService", LogCategory::windowCalculation()),
      displayScaleManager_(logging),
      almostMaximizeCalculation_(defaults, &logger_.logger()),
      changeSizeCalculation_(defaults, &logger_.logger()),
      specifiedCalculation_(defaults, &logger_.logger()),
      leftRightHalfCalculation_(defaults, logging),
      topBottomHalfCalculation_(defaults, logging) {}

const WindowCalculation& WindowCalculationService::calculationFor(
    const WindowDirection& action) const {
    using enum WindowDirection::Case;
    switch (action.kind()) {
        case leftHalf:
        case rightHalf:
            return leftRightHalfCalculation_;
        case topHalf:
        case bottomHalf:
            return topBottomHalfCalculation_;
        case larger:
        case smaller:
        case largerWidth:
        case smallerWidth:
            return changeSizeCalculation_;
        case almostMaximize:
            return almostMaximizeCalculation_;
        case specified:
            return specifiedCalculation_;
        default:
            // `custom` and every positional action from topLeft through bottomRightQuarter.
            return standardPositionCalculation_;
    }
}

Rect WindowCalculationService::calculate(const WindowDirection& action, const TargetWindow& window,
                                         const Screen& screen, bool isRepeatedPress) {
    const auto calculated = calculateWithScreen(action, window, screen, isRepeatedPress);
    return calculated ? calculated->rect : Rect::null();
}

std::optional<CalculatedFrame> WindowCalculationService::calculateWithScreen(
    const WindowDirection& action, const TargetWindow& window, const Screen& screen,
    bool isRepeatedPress, const std::optional<WindowDirection>& lastResultingAction) {
    const WindowCalculationParameters parameters{window,          screenDetection_.orderedScreens(),
                                                 screen,          action,
                                                 isRepeatedPress, lastResultingAction};
    const auto result = calculationFor(action).calculate(parameters);
    if (!result) {
        return std::nullopt;
    }
    // A present result is clamped even when its rectangle is null (the size cycle's), which
    // turns it into a zero-sized frame at the screen's far corner; callers have always seen that.
    const Rect adjusted = displayScaleManager_.adjust(result->rect, *result->screen);
    logger_.info(
        [&] { return "Calculated " + action.description() + " → " + adjusted.description(); });
    return CalculatedFrame{adjusted, *result->screen, result->resultingAction,
                           result->resultingSubAction};
}

}  // namespace corvetta
