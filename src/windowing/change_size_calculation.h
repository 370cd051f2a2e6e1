// change_size_calculation.h: Computes larger and smaller: a fixed step about the centre.
#pragma once

#include "foundation/preferences.h"
#include "windowing/window_calculation.h"

namespace corvetta {

// Grows or shrinks the window by a fixed offset around its centre. The offset, the edge gap and
// the curtain switch are read once, when built; the minimum size on every call.
class ChangeSizeCalculation : public WindowCalculation {
public:
    explicit ChangeSizeCalculation(const Preferences& defaults);

    RectResult calculateRect(const RectCalculationParameters& parameters) const override;

    double screenEdgeGapSize() const { return screenEdgeGapSize_; }
    double sizeOffsetAbs() const { return sizeOffsetAbs_; }
    bool curtainChangeSize() const { return curtainChangeSize_; }

private:
    const Preferences& defaults_;
    double screenEdgeGapSize_;
    double sizeOffsetAbs_;
    bool curtainChangeSize_;
};

}  // namespace corvetta
