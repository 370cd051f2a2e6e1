#include "windowing/standard_position_calculation.h"

#include <array>

namespace corvetta {

namespace {

struct Placement {
    bool positional = false;
    double fx = 0;
    double fy = 0;
    double fw = 0;
    double fh = 0;
    // The piece touching the right or top edge takes the remainder, so that neighbouring pieces
    // tile the frame without a gap whatever the rounding.
    bool rightAnchor = false;
    bool topAnchor = false;
};

constexpr double kHalf = 1.0 / 2;
constexpr double kThird = 1.0 / 3;
constexpr double kTwoThirds = 2.0 / 3;
constexpr double kSixth = 1.0 / 6;

constexpr Placement piece(double fx, double fy, double fw, double fh, bool right, bool top) {
    return {true, fx, fy, fw, fh, right, top};
}

// Indexed by WindowDirection::Case; actions that are not fixed fractions stay not positional.
constexpr std::array<Placement, kWindowDirectionCaseCount> makePlacements() {
    using enum WindowDirection::Case;
    std::array<Placement, kWindowDirectionCaseCount> table{};
    const auto set = [&table](WindowDirection::Case c, Placement p) {
        table[static_cast<std::size_t>(c)] = p;
    };
    set(leftHalf, piece(0, 0, kHalf, 1, false, false));
    set(rightHalf, piece(kHalf, 0, kHalf, 1, true, false));
    set(topHalf, piece(0, kHalf, 1, kHalf, false, true));
    set(bottomHalf, piece(0, 0, 1, kHalf, false, false));
    set(topLeft, piece(0, kHalf, kHalf, kHalf, false, true));
    set(topRight, piece(kHalf, kHalf, kHalf, kHalf, true, true));
    set(bottomLeft, piece(0, 0, kHalf, kHalf, false, false));
    set(bottomRight, piece(kHalf, 0, kHalf, kHalf, true, false));
    set(maximize, piece(0, 0, 1, 1, false, false));
    set(leftThird, piece(0, 0, kThird, 1, false, false));
    set(centerThird, piece(kThird, 0, kThird, 1, false, false));
    set(rightThird, piece(kTwoThirds, 0, kThird, 1, true, false));
    set(leftTwoThirds, piece(0, 0, kTwoThirds, 1, false, false));
    set(centerTwoThirds, piece(kSixth, 0, kTwoThirds, 1, false, false));
    set(rightTwoThirds, piece(kThird, 0, kTwoThirds, 1, true, false));
    set(topThird, piece(0, kTwoThirds, 1, kThird, false, true));
    set(centerVerticalThird, piece(0, kThird, 1, kThird, false, false));
    set(bottomThird, piece(0, 0, 1, kThird, false, false));
    set(topLeftQuarter, piece(0, kHalf, kHalf, kHalf, false, true));
    set(topRightQuarter, piece(kHalf, kHalf, kHalf, kHalf, true, true));
    set(bottomLeftQuarter, piece(0, 0, kHalf, kHalf, false, false));
    set(bottomRightQuarter, piece(kHalf, 0, kHalf, kHalf, true, false));
    return table;
}

constexpr auto kPlacements = makePlacements();

}  // namespace

Rect StandardPositionCalculation::fractionRect(const WindowDirection& action,
                                               const Rect& visibleFrame) {
    const Placement& p = kPlacements[static_cast<std::size_t>(action.kind())];
    if (!p.positional) {
        return Rect::null();
    }
    const double x0 = visibleFrame.minX();
    const double y0 = visibleFrame.minY();
    const double w = visibleFrame.width();
    const double h = visibleFrame.height();
    const double x = x0 + floorValue(w * p.fx);
    const double y = y0 + floorValue(h * p.fy);
    const double width = p.rightAnchor ? visibleFrame.maxX() - x : floorValue(w * p.fw);
    const double height = p.topAnchor ? visibleFrame.maxY() - y : floorValue(h * p.fh);
    return Rect(x, y, width, height);
}

RectResult StandardPositionCalculation::calculateRect(
    const RectCalculationParameters& parameters) const {
    const auto& action = parameters.action;
    const Rect& visible = parameters.visibleFrameOfScreen;
    if (action.isCustom()) {
        return {action.customRect(), std::nullopt};
    }
    if (action.kind() == WindowDirection::Case::center) {
        // No clamp here: a window larger than the frame starts before its edge, and the display
        // clamp decides what happens to it.
        const Size& size = parameters.window.frame.size;
        return {Rect(visible.minX() + floorValue((visible.width() - size.width) / 2),
                     visible.minY() + floorValue((visible.height() - size.height) / 2), size.width,
                     size.height),
                std::nullopt};
    }
    return {fractionRect(action, visible), std::nullopt};
}

}  // namespace corvetta
