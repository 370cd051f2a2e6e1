// standard_position_calculation.h: Computes fixed fractions of the screen, center and custom.
#pragma once

#include "windowing/window_calculation.h"

namespace corvetta {

// The positional actions: fixed fractions of the visible frame, `center`, and `custom`.
class StandardPositionCalculation : public WindowCalculation {
public:
    RectResult calculateRect(const RectCalculationParameters& parameters) const override;

    // The fraction placement alone: the action's piece of a visible frame, or the null rectangle
    // for an action that is not a fixed fraction. Shared with the half actions.
    static Rect fractionRect(const WindowDirection& action, const Rect& visibleFrame);
};

}  // namespace corvetta
