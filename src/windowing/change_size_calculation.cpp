#include "windowing/change_size_calculation.h"

#include <cmath>

#include "windowing/calculation_settings.h"

namespace corvetta {

namespace settings = calculation_settings;

ChangeSizeCalculation::ChangeSizeCalculation(const Preferences& defaults, const Logger* logger)
    : defaults_(defaults),
      logger_(logger),
      screenEdgeGapSize_(settings::read(defaults, settings::kGapSize, logger)),
      sizeOffsetAbs_(settings::read(defaults, settings::kSizeOffset, logger)),
      curtainChangeSize_(defaults.boolValue(settings::kCurtainChangeSize).value_or(false)) {}

RectResult ChangeSizeCalculation::calculateRect(const RectCalculationParameters& parameters) const {
    using enum WindowDirection::Case;
    const Rect& f = parameters.window.frame;
    const Rect& v = parameters.visibleFrameOfScreen;
    const auto action = parameters.action.kind();

    const bool grows = action == larger || action == largerWidth;
    const bool shrinks = action == smaller || action == smallerWidth;
    const double d = grows ? sizeOffsetAbs_ : shrinks ? -sizeOffsetAbs_ : 0;

    Rect resized = f;
    if (grows || shrinks) {
        // floor(d/2) in both directions: an odd offset moves the origin one point further when
        // shrinking than when growing. Kept so repeated presses land where they always have.
        resized.size.width = f.width() + d;
        resized.origin.x = f.minX() - floorValue(d / 2);
        if (curtainChangeSize_) {
            // A window at a side edge stays there and changes size away from it, like a curtain.
            if (std::fabs(f.minX() - v.minX()) <= screenEdgeGapSize_) {
                resized.origin.x = v.minX();
            } else if (std::fabs(v.maxX() - f.maxX()) <= screenEdgeGapSize_) {
                resized.origin.x = v.maxX() - resized.size.width;
            }
        }
    }
    if (action == larger || action == smaller) {
        // No curtain vertically: the top and bottom edges always move together.
        resized.size.height = f.height() + d;
        resized.origin.y = f.minY() - floorValue(d / 2);
    }

    // The height is checked for the width-only actions too, so a window already at or below the
    // minimum height cannot be widened either.
    const double minimumWidth =
        floorValue(v.width() * settings::read(defaults_, settings::kMinimumWindowWidth, logger_));
    const double minimumHeight =
        floorValue(v.height() * settings::read(defaults_, settings::kMinimumWindowHeight, logger_));
    if (resized.size.width <= minimumWidth || resized.size.height <= minimumHeight) {
        return {f, std::nullopt};
    }
    return {resized, std::nullopt};
}

}  // namespace corvetta
