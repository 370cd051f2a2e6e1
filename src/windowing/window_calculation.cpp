#include "windowing/window_calculation.h"

namespace corvetta {

std::optional<WindowCalculationResult> WindowCalculation::calculate(
    const WindowCalculationParameters& parameters) const {
    return calculateOn(parameters, parameters.currentScreen);
}

std::optional<WindowCalculationResult> WindowCalculation::calculateOn(
    const WindowCalculationParameters& parameters, const Screen& screen) const {
    const RectCalculationParameters rectParameters{parameters.window, screen.visibleFrame,
                                                   parameters.action, screen.frame};
    auto result = calculateRect(rectParameters);
    if (result.rect.isNull()) {
        return std::nullopt;
    }
    return WindowCalculationResult{result.rect, &screen, parameters.action, result.subAction};
}

}  // namespace corvetta
