#include "windowing/specified_calculation.h"

#include <algorithm>

#include "windowing/calculation_settings.h"

namespace corvetta {

namespace settings = calculation_settings;

SpecifiedCalculation::SpecifiedCalculation(const Preferences& defaults, const Logger* logger)
    : specifiedHeight_(settings::read(defaults, settings::kSpecifiedHeight, logger)),
      specifiedWidth_(settings::read(defaults, settings::kSpecifiedWidth, logger)) {}

RectResult SpecifiedCalculation::calculateRect(const RectCalculationParameters& parameters) const {
    const Rect& v = parameters.visibleFrameOfScreen;
    // Sizes in points round to the nearest point, unlike the floor used elsewhere. Only the width
    // in points is limited to the visible frame; the height is left to the display clamp, which
    // limits it to the full frame. The difference is intended: keep it.
    const double height = specifiedHeight_ <= 1.0 ? floorValue(specifiedHeight_ * v.height())
                                                  : roundToNearest(specifiedHeight_);
    const double width = specifiedWidth_ <= 1.0
                             ? floorValue(specifiedWidth_ * v.width())
                             : std::min(roundToNearest(specifiedWidth_), v.width());
    return {Rect(v.minX() + roundToNearest((v.width() - width) / 2),
                 v.minY() + roundToNearest((v.height() - height) / 2), width, height),
            std::nullopt};
}

}  // namespace corvetta
