#include "foundation/geometry.h"

#include <cmath>
#include <limits>

#include <gtest/gtest.h>

namespace corvetta {
namespace {

constexpr double kInf = std::numeric_limits<double>::infinity();

TEST(RectNull, IsTheInfiniteOriginAndDiffersFromMerelyEmpty) {
    const Rect null = Rect::null();
    EXPECT_EQ(null.origin.x, kInf);
    EXPECT_EQ(null.origin.y, kInf);
    EXPECT_EQ(null.size.width, 0);
    EXPECT_EQ(null.size.height, 0);
    EXPECT_TRUE(null.isNull());
    EXPECT_TRUE(null.isEmpty());
    EXPECT_EQ(null, Rect::null());
    EXPECT_NE(null, Rect::zero());
    // Any null origin makes the rectangle null, whatever its size.
    EXPECT_TRUE(Rect(kInf, 5, 10, 10).isNull());
    EXPECT_TRUE(Rect(5, kInf, 10, 10).isNull());
    // Zero width or height is empty but not null.
    EXPECT_TRUE(Rect(10, 10, 0, 50).isEmpty());
    EXPECT_TRUE(Rect(10, 10, 50, 0).isEmpty());
    EXPECT_FALSE(Rect(10, 10, 0, 50).isNull());
    EXPECT_FALSE(Rect(10, 10, 1, 1).isEmpty());
    EXPECT_FALSE(Rect(10, 10, -1, -1).isEmpty());
}

TEST(RectExtents, NegativeSizesAreStandardized) {
    const Rect r(100, 200, -40, -60);
    EXPECT_EQ(r.minX(), 60);
    EXPECT_EQ(r.maxX(), 100);
    EXPECT_EQ(r.midX(), 80);
    EXPECT_EQ(r.minY(), 140);
    EXPECT_EQ(r.maxY(), 200);
    EXPECT_EQ(r.midY(), 170);
    EXPECT_EQ(r.width(), 40);
    EXPECT_EQ(r.height(), 60);
    EXPECT_EQ(r.standardized(), Rect(60, 140, 40, 60));
    EXPECT_EQ(r, Rect(60, 140, 40, 60));
    EXPECT_TRUE(Rect::null().standardized().isNull());
}

TEST(RectIntersection, GivesTheSharedAreaOrNullWhenApart) {
    EXPECT_EQ(Rect(0, 0, 100, 100).intersection(Rect(50, 25, 100, 100)), Rect(50, 25, 50, 75));
    // Standardized before intersecting.
    EXPECT_EQ(Rect(100, 100, -100, -100).intersection(Rect(50, 50, 10, 10)), Rect(50, 50, 10, 10));
    EXPECT_EQ(Rect(0, 0, 100, 100).intersection(Rect(-10, -10, 500, 500)), Rect(0, 0, 100, 100));
    // Disjoint or null operands give null.
    EXPECT_TRUE(Rect(0, 0, 10, 10).intersection(Rect(20, 0, 10, 10)).isNull());
    EXPECT_TRUE(Rect(0, 0, 10, 10).intersection(Rect(0, 20, 10, 10)).isNull());
    EXPECT_TRUE(Rect(0, 0, 10, 10).intersection(Rect::null()).isNull());
    EXPECT_TRUE(Rect::null().intersection(Rect(0, 0, 10, 10)).isNull());
}

TEST(RectIntersection, TouchingEdgesMeetInAnEmptyRectangleThatDoesNotIntersect) {
    const Rect shared = Rect(0, 0, 10, 10).intersection(Rect(10, 0, 10, 10));
    EXPECT_FALSE(shared.isNull());
    EXPECT_TRUE(shared.isEmpty());
    EXPECT_EQ(shared, Rect(10, 0, 0, 10));
    EXPECT_FALSE(Rect(0, 0, 10, 10).intersects(Rect(10, 0, 10, 10)));
    EXPECT_TRUE(Rect(0, 0, 10, 10).intersects(Rect(9.5, 0, 10, 10)));
    EXPECT_FALSE(Rect(0, 0, 10, 10).intersects(Rect::null()));
}

TEST(RectUnion, CoversBothAndIgnoresNull) {
    EXPECT_EQ(Rect(0, 0, 10, 10).unionWith(Rect(20, 30, 10, 10)), Rect(0, 0, 30, 40));
    EXPECT_EQ(Rect(0, 0, 10, 10).unionWith(Rect::null()), Rect(0, 0, 10, 10));
    EXPECT_EQ(Rect::null().unionWith(Rect(5, 5, -5, -5)), Rect(0, 0, 5, 5));
    EXPECT_TRUE(Rect::null().unionWith(Rect::null()).isNull());
}

TEST(RectContainsPoint, MinEdgesInsideMaxEdgesOutside) {
    const Rect r(0, 0, 100, 50);
    EXPECT_TRUE(r.contains(Point{0, 0}));
    EXPECT_TRUE(r.contains(Point{99.9, 49.9}));
    EXPECT_FALSE(r.contains(Point{100, 10}));
    EXPECT_FALSE(r.contains(Point{10, 50}));
    EXPECT_FALSE(r.contains(Point{-0.1, 10}));
    EXPECT_FALSE(Rect(0, 0, 0, 10).contains(Point{0, 5}));
    EXPECT_FALSE(Rect::null().contains(Point{0, 0}));
}

TEST(RectContainsRect, EdgesIncludedAndNullNeverContained) {
    const Rect screen(0, 0, 1440, 900);
    EXPECT_TRUE(screen.contains(screen));
    EXPECT_TRUE(screen.contains(Rect(0, 0, 720, 900)));
    EXPECT_TRUE(screen.contains(Rect(720, 0, 720, 900)));
    EXPECT_FALSE(screen.contains(Rect(721, 0, 720, 900)));
    EXPECT_FALSE(screen.contains(Rect(-1, 0, 10, 10)));
    EXPECT_TRUE(screen.contains(Rect(100, 100, 0, 0)));
    EXPECT_FALSE(screen.contains(Rect::null()));
    EXPECT_FALSE(Rect::null().contains(screen));
    // A display whose origin is not zero, e.g. left of the primary one.
    EXPECT_TRUE(Rect(-1920, 0, 1920, 1080).contains(Rect(-1920, 40, 960, 1040)));
}

TEST(RectTransforms, OffsetInsetAndFloor) {
    EXPECT_EQ(Rect(10, 20, 30, 40).offsetBy(-10, 5), Rect(0, 25, 30, 40));
    EXPECT_EQ(Rect(0, 0, 100, 50).insetBy(5, 10), Rect(5, 10, 90, 30));
    EXPECT_EQ(Rect(0, 0, 100, 50).insetBy(-5, 0), Rect(-5, 0, 110, 50));
    // Insetting past the middle leaves nothing.
    EXPECT_TRUE(Rect(0, 0, 10, 10).insetBy(6, 0).isNull());
    EXPECT_TRUE(Rect::null().offsetBy(1, 1).isNull());
    EXPECT_EQ(Rect(10.7, -3.2, 500.9, 333.5).floored(), Rect(10, -4, 500, 333));
}

TEST(Rounding, FloorGoesDownAndNearestRoundsHalvesAwayFromZero) {
    EXPECT_EQ(floorValue(500.5), 500);
    EXPECT_EQ(floorValue(-0.5), -1);
    EXPECT_EQ(roundToNearest(2.5), 3);
    EXPECT_EQ(roundToNearest(-2.5), -3);
    EXPECT_EQ(roundToNearest(2.4999), 2);
}

TEST(RectDescription, NamesAllFourValues) {
    EXPECT_EQ(Rect(0, 25, 720.5, 875).description(), "(0, 25, 720.5, 875)");
}

}  // namespace
}  // namespace corvetta
