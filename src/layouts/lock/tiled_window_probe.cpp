#include "layouts/lock/tiled_window_probe.h"

#include <algorithm>
#include <cmath>

#include "layouts/lock/learned_min_size_store.h"
#include "layouts/lock/tiling_calculator.h"
#include "windowing/ax_reading.h"

namespace corvetta {

namespace {
constexpr double kFillTolerance = 5;

template <class T>
const T* valueOf(const Expected<AXValue, AXErrorCode>& value) {
    return value ? std::get_if<T>(&*value) : nullptr;
}
}  // namespace

TiledWindowProbe::TiledWindowProbe(AccessibilityPort& accessibility, ApplicationsPort& applications,
                                   ScreenPort& screens, LearnedMinSizeStore& learned)
    : accessibility_(accessibility),
      applications_(applications),
      screens_(screens),
      learned_(learned) {}

std::optional<TiledWindowReading> TiledWindowProbe::read(const AXWindowRef& window) const {
    const auto values = accessibility_.copyMultipleAttributeValues(
        window.element, {AXAttribute::kMinimized, AXAttribute::kPosition, AXAttribute::kSize});
    const auto* minimized = valueOf<bool>(values[0]);
    const auto* position = valueOf<Point>(values[1]);
    const auto* size = valueOf<Size>(values[2]);
    if (position == nullptr || size == nullptr) {
        return std::nullopt;
    }
    return TiledWindowReading{minimized != nullptr && *minimized, Rect(*position, *size)};
}

Size TiledWindowProbe::minimumSize(const AXWindowRef& window, Size observed) const {
    const auto bundle = bundleIdentifier(window);
    const auto learned = bundle ? learned_.minSize(*bundle) : std::nullopt;
    const auto own = readAttribute<Size>(accessibility_, window.element, AXAttribute::kMinSize);
    const auto pick = [&](double learnedSide, double ownSide, double observedSide) {
        double side = kFallbackMinimumSide;
        if (learnedSide > 0) {
            side = learnedSide;
        } else if (own) {
            side = ownSide;
        }
        return std::max(side, observedSide);
    };
    const Size noneLearned{};
    const Size& l = learned ? *learned : noneLearned;
    const Size o = own ? *own : Size{};
    return {pick(l.width, o.width, observed.width), pick(l.height, o.height, observed.height)};
}

std::optional<std::string> TiledWindowProbe::bundleIdentifier(const AXWindowRef& window) const {
    const auto application = applications_.runningApplication(window.element.process());
    return application ? application->bundleIdentifier : std::nullopt;
}

bool TiledWindowProbe::fillsItsDisplay(const Rect& frame) const {
    const auto screens = screens_.screens();
    if (screens.empty()) {
        return false;
    }
    const double primaryHeight = screens.front().frame.height();
    const Point centre{frame.midX(), frame.midY()};
    for (const auto& screen : screens) {
        const Rect& v = screen.visibleFrame;
        const Rect visible(v.minX(), primaryHeight - v.maxY(), v.width(), v.height());
        if (!visible.contains(centre)) {
            continue;
        }
        const auto near = [](double a, double b) { return std::abs(a - b) <= kFillTolerance; };
        return near(frame.minX(), visible.minX()) && near(frame.minY(), visible.minY()) &&
               near(frame.width(), visible.width()) && near(frame.height(), visible.height());
    }
    return false;
}

}  // namespace corvetta
