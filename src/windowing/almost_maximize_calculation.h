// almost_maximize_calculation.h: Computes almost-maximize: centred, set fractions of the screen.
#pragma once

#include "foundation/preferences.h"
#include "windowing/window_calculation.h"

namespace corvetta {

// Centred, covering fractions of the visible frame. The fractions are read once, when built.
class AlmostMaximizeCalculation : public WindowCalculation {
public:
    explicit AlmostMaximizeCalculation(const Preferences& defaults);

    RectResult calculateRect(const RectCalculationParameters& parameters) const override;

    double almostMaximizeHeight() const { return almostMaximizeHeight_; }
    double almostMaximizeWidth() const { return almostMaximizeWidth_; }

private:
    double almostMaximizeHeight_;
    double almostMaximizeWidth_;
};

}  // namespace corvetta
