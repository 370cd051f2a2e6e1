// specified_calculation.h: Centres the window at the size the user specified.
#pragma once

#include "foundation/preferences.h"
#include "windowing/window_calculation.h"

namespace corvetta {

class Logger;

// Centred at a size the user specified: up to 1 a fraction of the visible frame, above it points.
// The sizes are read once, when built; out-of-range sizes are logged through `logger`.
class SpecifiedCalculation : public WindowCalculation {
public:
    explicit SpecifiedCalculation(const Preferences& defaults, const Logger* logger = nullptr);

    RectResult calculateRect(const RectCalculationParameters& parameters) const override;

    double specifiedHeight() const { return specifiedHeight_; }
    double specifiedWidth() const { return specifiedWidth_; }

private:
    double specifiedHeight_;
    double specifiedWidth_;
};

}  // namespace corvetta
