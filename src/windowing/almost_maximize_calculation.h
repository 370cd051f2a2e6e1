// almost_maximize_calculation.h: Centres the window over fractions of the visible frame.
#pragma once

#include "foundation/preferences.h"
#include "windowing/window_calculation.h"

namespace corvetta {

class Logger;

// Centred, covering fractions of the visible frame. The fractions are read once, when built;
// out-of-range ones are logged through `logger`.
class AlmostMaximizeCalculation : public WindowCalculation {
public:
    explicit AlmostMaximizeCalculation(const Preferences& defaults, const Logger* logger = nullptr);

    RectResult calculateRect(const RectCalculationParameters& parameters) const override;

    double almostMaximizeHeight() const { return almostMaximizeHeight_; }
    double almostMaximizeWidth() const { return almostMaximizeWidth_; }

private:
    double almostMaximizeHeight_;
    double almostMaximizeWidth_;
};

}  // namespace corvetta
