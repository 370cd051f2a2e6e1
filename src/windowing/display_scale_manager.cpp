#include "windowing/display_scale_manager.h"

#include <algorithm>

namespace corvetta {

DisplayScaleManager::DisplayScaleManager(LoggingService& logging)
    : logger_(logging, "DisplayScaleManager", LogCategory::windowPositioning()) {}

Rect DisplayScaleManager::adjust(const Rect& rect, const Screen& screen) const {
    const Rect& s = screen.frame;
    const double width = std::min(rect.width(), s.width());
    const double height = std::min(rect.height(), s.height());
    const double x = std::max(s.minX(), std::min(rect.minX(), s.maxX() - width));
    const double y = std::max(s.minY(), std::min(rect.minY(), s.maxY() - height));
    const Rect adjusted = Rect(x, y, width, height).floored();
    logger_.debug([&] {
        return "Adjusted frame " + rect.description() + " to " + adjusted.description() + " on " +
               screen.description();
    });
    return adjusted;
}

}  // namespace corvetta
