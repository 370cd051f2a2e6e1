// change_size_calculation.h: Grows or shrinks the window by a fixed offset around its centre.
#pragma once

#include "foundation/preferences.h"
#include "windowing/window_calculation.h"

namespace corvetta {

class Logger;

// Grows or shrinks the window by a fixed offset around its centre. The offset, the edge gap and
// the curtain switch are read once, when built; the minimum size on every call.
// Out-of-range settings are logged through `logger`, which must outlive the calculation.
class ChangeSizeCalculation : public WindowCalculation {
public:
    explicit ChangeSizeCalculation(const Preferences& defaults, const Logger* logger = nullptr);

    RectResult calculateRect(const RectCalculationParameters& parameters) const override;

    double screenEdgeGapSize() const { return screenEdgeGapSize_; }
    double sizeOffsetAbs() const { return sizeOffsetAbs_; }
    bool curtainChangeSize() const { return curtainChangeSize_; }

private:
    const Preferences& defaults_;
    const Logger* logger_;
    double screenEdgeGapSize_;
    double sizeOffsetAbs_;
    bool curtainChangeSize_;
};

}  // namespace corvetta
