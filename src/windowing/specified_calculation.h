// specified_calculation.h: Computes the specified action's frame: centred at the size the user set.
#pragma once

#include "foundation/preferences.h"
#include "windowing/window_calculation.h"

namespace corvetta {

// Centred at a size the user specified: up to 1 a fraction of the visible frame, above it points.
// The sizes are read once, when built.
class SpecifiedCalculation : public WindowCalculation {
public:
    explicit SpecifiedCalculation(const Preferences& defaults);

    RectResult calculateRect(const RectCalculationParameters& parameters) const override;

    double specifiedHeight() const { return specifiedHeight_; }
    double specifiedWidth() const { return specifiedWidth_; }

private:
    double specifiedHeight_;
    double specifiedWidth_;
};

}  // namespace corvetta
