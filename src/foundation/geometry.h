// geometry.h: Points, sizes and CoreGraphics-style rectangles for window calculations.
#pragma once

#include <iosfwd>
#include <string>

namespace corvetta {

// Points, sizes and rectangles in double-precision points. Rectangles follow CoreGraphics
// semantics exactly (null rectangle, standardization, half-open containment) because the window
// calculations were designed against them.

struct Point {
    double x = 0;
    double y = 0;

    bool operator==(const Point&) const = default;
    // "(10, 20)", for log lines.
    std::string description() const;
};

struct Size {
    double width = 0;
    double height = 0;

    bool operator==(const Size&) const = default;
    // "(800, 600)", for log lines.
    std::string description() const;
};

struct Rect {
    Point origin;
    Size size;

    constexpr Rect() = default;
    constexpr Rect(double x, double y, double width, double height)
        : origin{x, y}, size{width, height} {}
    constexpr Rect(Point o, Size s) : origin(o), size(s) {}

    // (+inf, +inf, 0, 0): the answer for "no rectangle", e.g. the intersection of disjoint ones.
    static Rect null();
    static constexpr Rect zero() { return {}; }

    bool isNull() const;
    // Zero width or zero height, or null.
    bool isEmpty() const;

    // Extents of the standardized rectangle, so negative sizes behave as CoreGraphics does.
    double minX() const;
    double midX() const;
    double maxX() const;
    double minY() const;
    double midY() const;
    double maxY() const;
    double width() const;
    double height() const;
    double area() const { return width() * height(); }

    // Same area with non-negative width and height.
    Rect standardized() const;
    Rect intersection(const Rect& other) const;
    // Smallest rectangle holding both; a null operand is ignored.
    Rect unionWith(const Rect& other) const;
    // Half-open: a point on the max edge is outside, as in CoreGraphics.
    bool contains(Point p) const;
    // Whether other lies wholly inside, edges included; null rectangles never take part.
    bool contains(const Rect& other) const;
    bool intersects(const Rect& other) const;

    Rect offsetBy(double dx, double dy) const;
    // Shrinks by dx on the left and right and dy at the bottom and top; negative values grow.
    Rect insetBy(double dx, double dy) const;
    // All four values floored, the rule window frames follow.
    Rect floored() const;

    // Equality of the standardized rectangles; two null rectangles are equal.
    bool operator==(const Rect& other) const;
    bool operator!=(const Rect& other) const { return !(*this == other); }

    // "(x, y, width, height)", used in log lines.
    std::string description() const;
};

// Geometry floors fractional sizes; these name the two rounding rules the calculations use.
double floorValue(double value);
// Nearest integer, halves rounded away from zero.
double roundToNearest(double value);

std::ostream& operator<<(std::ostream& os, const Point& p);
std::ostream& operator<<(std::ostream& os, const Size& s);
std::ostream& operator<<(std::ostream& os, const Rect& r);

}  // namespace corvetta
