#include "windowing/half_calculation.h"

#include "windowing/calculation_settings.h"
#include "windowing/standard_position_calculation.h"
#include "windowing/usable_screens.h"

namespace corvetta {

namespace settings = calculation_settings;

HalfCalculation::HalfCalculation(const Preferences& defaults, LoggingService& logging)
    : defaults_(defaults),
      logging_(logging),
      logger_(logging, "HalfCalculation", LogCategory::windowCalculation()) {}

std::optional<WindowCalculationResult> HalfCalculation::calculate(
    const WindowCalculationParameters& parameters) const {
    using Mode = settings::SubsequentExecutionMode;
    const Mode mode =
        parameters.isRepeatedPress ? settings::subsequentExecutionMode(defaults_) : Mode::plain;
    switch (mode) {
        case Mode::acrossDisplays:
            return calculateAcrossDisplays(parameters);
        case Mode::acrossDisplaysOrCycleSize:
            return parameters.screens.size() > 1 ? calculateAcrossDisplays(parameters)
                                                 : calculateCycleSize(parameters);
        case Mode::cycleSize:
            return calculateCycleSize(parameters);
        case Mode::plain:
        case Mode::plainAlternative:
        case Mode::plainOutOfRange:
            break;
    }
    logger_.debug(
        [&] { return name() + ": " + parameters.action.description() + " on the current screen"; });
    return WindowCalculation::calculate(parameters);
}

RectResult HalfCalculation::calculateRect(const RectCalculationParameters& parameters) const {
    return {StandardPositionCalculation::fractionRect(parameters.action,
                                                      parameters.visibleFrameOfScreen),
            std::nullopt};
}

std::optional<WindowCalculationResult> HalfCalculation::calculateAcrossDisplays(
    const WindowCalculationParameters& parameters) const {
    const UsableScreens usable(parameters.screens, parameters.currentScreen, logging_);
    const Screen& next = usable.nextScreen();
    logger_.debug([&] {
        return name() + ": " + parameters.action.description() + " on the next display " +
               next.description();
    });
    return calculateOn(parameters, next);
}

std::optional<WindowCalculationResult> HalfCalculation::calculateCycleSize(
    const WindowCalculationParameters& parameters) const {
    const WindowDirection& from = parameters.lastResultingAction.value_or(parameters.action);
    const WindowDirection next = nextAction(from);
    logger_.debug(
        [&] { return name() + ": cycling " + from.description() + " to " + next.description(); });
    return WindowCalculationResult{Rect::null(), &parameters.currentScreen, next, from};
}

WindowDirection LeftRightHalfCalculation::nextAction(const WindowDirection& action) const {
    using enum WindowDirection::Case;
    switch (action.kind()) {
        case leftHalf:
            return leftTwoThirds;
        case leftTwoThirds:
            return leftThird;
        case leftThird:
            return leftHalf;
        case rightHalf:
            return rightTwoThirds;
        case rightTwoThirds:
            return rightThird;
        case rightThird:
            return rightHalf;
        default:
            return action;
    }
}

}  // namespace corvetta
