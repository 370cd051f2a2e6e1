#include "windowing/layout_gap.h"

#include <tuple>
#include <vector>

#include <gtest/gtest.h>

namespace corvetta {
namespace {

const Rect kVisible(0, 0, 1000, 800);

TEST(LayoutGapTest, InsetsOnlyTheEdgesInsideTheVisibleFrame) {
    // frame, spacing, expected
    const std::vector<std::tuple<Rect, double, Rect>> rows = {
        // Neighbouring halves end up `spacing` apart and keep touching the screen's edges.
        {{0, 0, 500, 800}, 10, {0, 0, 495, 800}},
        {{500, 0, 500, 800}, 10, {505, 0, 495, 800}},
        {{0, 400, 1000, 400}, 10, {0, 405, 1000, 395}},
        // A centred window touching no edge shrinks by the spacing both ways.
        {{300, 250, 400, 300}, 10, {305, 255, 390, 290}},
        // Less than 2 points from an edge counts as on it; 2 points does not.
        {{1.5, 0, 400, 798.5}, 10, {1.5, 0, 395, 798.5}},
        {{2, 0, 400, 798}, 10, {7, 0, 390, 793}},
        {{600, 0, 398.5, 800}, 10, {605, 0, 393.5, 800}},
        // An odd spacing splits into half points.
        {{300, 250, 400, 300}, 5, {302.5, 252.5, 395, 295}},
        // No gap asked for.
        {{300, 250, 400, 300}, 0, {300, 250, 400, 300}},
        {{300, 250, 400, 300}, -10, {300, 250, 400, 300}},
        // A gap wider than the window leaves that direction alone, never inside out.
        {{300, 250, 400, 300}, 500, {300, 250, 400, 300}},
        {{300, 250, 400, 300}, 350, {475, 250, 50, 300}},
        {{0, 250, 400, 300}, 500, {0, 250, 150, 300}},
        // An empty frame stays as it is rather than turning inside out.
        {{1000, 825, 0, 0}, 10, {1000, 825, 0, 0}},
    };
    for (const auto& [frame, spacing, expected] : rows) {
        EXPECT_EQ(insetByLayoutGap(frame, kVisible, spacing), expected)
            << frame << " spacing " << spacing;
    }
}

TEST(LayoutGapTest, MeasuresEdgesAgainstAVisibleFrameAwayFromTheOrigin) {
    const Rect visible(-1200, 40, 1200, 860);
    EXPECT_EQ(insetByLayoutGap({-1200, 40, 600, 430}, visible, 8), Rect(-1200, 40, 596, 426));
    EXPECT_EQ(insetByLayoutGap({-600, 470, 600, 430}, visible, 8), Rect(-596, 474, 596, 426));
}

}  // namespace
}  // namespace corvetta
