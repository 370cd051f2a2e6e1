#include "windowing/almost_maximize_calculation.h"

#include "windowing/calculation_settings.h"

namespace corvetta {

namespace settings = calculation_settings;

AlmostMaximizeCalculation::AlmostMaximizeCalculation(const Preferences& defaults,
                                                     const Logger* logger)
    : almostMaximizeHeight_(settings::read(defaults, settings::kAlmostMaximizeHeight, logger)),
      almostMaximizeWidth_(settings::read(defaults, settings::kAlmostMaximizeWidth, logger)) {}

RectResult AlmostMaximizeCalculation::calculateRect(
    const RectCalculationParameters& parameters) const {
    const Rect& v = parameters.visibleFrameOfScreen;
    const double height = floorValue(v.height() * almostMaximizeHeight_);
    const double width = floorValue(v.width() * almostMaximizeWidth_);
    return {Rect(v.minX() + floorValue((v.width() - width) / 2),
                 v.minY() + floorValue((v.height() - height) / 2), width, height),
            std::nullopt};
}

}  // namespace corvetta
