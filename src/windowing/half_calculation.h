// half_calculation.h: Computes the halves, whose repeated press may change display or size.
#pragma once

#include <string>

#include "diagnostics/deferred_logger.h"
#include "foundation/preferences.h"
#include "windowing/window_calculation.h"

namespace corvetta {

// The half actions, which a repeated press may send to the next display or through a cycle of
// sizes, as "subsequentExecutionSpace" says; the setting is read on every call. A press the caller
// marks as a first one is always placed on the current screen.
class HalfCalculation : public WindowCalculation {
public:
    HalfCalculation(const Preferences& defaults, LoggingService& logging);

    std::optional<WindowCalculationResult> calculate(
        const WindowCalculationParameters& parameters) const override;
    RectResult calculateRect(const RectCalculationParameters& parameters) const override;

    // Names the calculation in log lines.
    virtual std::string name() const { return "HalfCalculation"; }
    // The next size in the cycle; the action itself where there is no cycle.
    virtual WindowDirection nextAction(const WindowDirection& action) const { return action; }

protected:
    // The action's piece of the display after the current one.
    std::optional<WindowCalculationResult> calculateAcrossDisplays(
        const WindowCalculationParameters& parameters) const;
    // Reports the size after the last resulting action (else the requested one) as the resulting
    // action on the current screen, with the null rectangle: this path leaves the rectangle to
    // whoever drives the cycle.
    std::optional<WindowCalculationResult> calculateCycleSize(
        const WindowCalculationParameters& parameters) const;

private:
    const Preferences& defaults_;
    LoggingService& logging_;
    DeferredLogger logger_;
};

// leftHalf → leftTwoThirds → leftThird → leftHalf, and the same on the right.
class LeftRightHalfCalculation final : public HalfCalculation {
public:
    using HalfCalculation::HalfCalculation;

    std::string name() const override { return "LeftRightHalfCalculation"; }
    WindowDirection nextAction(const WindowDirection& action) const override;
};

// The vertical halves never cycle in size.
class TopBottomHalfCalculation final : public HalfCalculation {
public:
    using HalfCalculation::HalfCalculation;

    std::string name() const override { return "TopBottomHalfCalculation"; }
};

}  // namespace corvetta
