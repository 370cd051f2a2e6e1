#include "foundation/geometry.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <ostream>
#include <sstream>

namespace corvetta {

namespace {
constexpr double kInfinity = std::numeric_limits<double>::infinity();

std::string formatNumber(double v) {
    std::ostringstream out;
    out << v;
    return out.str();
}
}  // namespace

Rect Rect::null() {
    return Rect(kInfinity, kInfinity, 0, 0);
}

bool Rect::isNull() const {
    return origin.x == kInfinity || origin.y == kInfinity;
}

bool Rect::isEmpty() const {
    return isNull() || size.width == 0 || size.height == 0;
}

Rect Rect::standardized() const {
    if (isNull()) {
        return null();
    }
    Rect r = *this;
    if (r.size.width < 0) {
        r.origin.x += r.size.width;
        r.size.width = -r.size.width;
    }
    if (r.size.height < 0) {
        r.origin.y += r.size.height;
        r.size.height = -r.size.height;
    }
    return r;
}

double Rect::minX() const {
    return standardized().origin.x;
}
double Rect::minY() const {
    return standardized().origin.y;
}
double Rect::width() const {
    return std::fabs(size.width);
}
double Rect::height() const {
    return std::fabs(size.height);
}
double Rect::maxX() const {
    return minX() + width();
}
double Rect::maxY() const {
    return minY() + height();
}
double Rect::midX() const {
    return minX() + width() / 2;
}
double Rect::midY() const {
    return minY() + height() / 2;
}

Rect Rect::intersection(const Rect& other) const {
    if (isNull() || other.isNull()) {
        return null();
    }
    const Rect a = standardized();
    const Rect b = other.standardized();
    const double x1 = std::max(a.minX(), b.minX());
    const double x2 = std::min(a.maxX(), b.maxX());
    const double y1 = std::max(a.minY(), b.minY());
    const double y2 = std::min(a.maxY(), b.maxY());
    // Rectangles that only touch along an edge meet in an empty, not a null, rectangle.
    if (x2 < x1 || y2 < y1) {
        return null();
    }
    return Rect(x1, y1, x2 - x1, y2 - y1);
}

Rect Rect::unionWith(const Rect& other) const {
    if (isNull()) {
        return other.standardized();
    }
    if (other.isNull()) {
        return standardized();
    }
    const double x1 = std::min(minX(), other.minX());
    const double y1 = std::min(minY(), other.minY());
    const double x2 = std::max(maxX(), other.maxX());
    const double y2 = std::max(maxY(), other.maxY());
    return Rect(x1, y1, x2 - x1, y2 - y1);
}

bool Rect::contains(Point p) const {
    if (isNull() || isEmpty()) {
        return false;
    }
    return p.x >= minX() && p.x < maxX() && p.y >= minY() && p.y < maxY();
}

bool Rect::contains(const Rect& other) const {
    // Inclusive on every edge: the union of the two would be this rectangle.
    if (isNull() || other.isNull()) {
        return false;
    }
    return other.minX() >= minX() && other.maxX() <= maxX() && other.minY() >= minY() &&
           other.maxY() <= maxY();
}

bool Rect::intersects(const Rect& other) const {
    // Touching edges do not count: the shared area must be positive.
    return !intersection(other).isEmpty();
}

Rect Rect::offsetBy(double dx, double dy) const {
    if (isNull()) {
        return null();
    }
    Rect r = standardized();
    r.origin.x += dx;
    r.origin.y += dy;
    return r;
}

Rect Rect::insetBy(double dx, double dy) const {
    if (isNull()) {
        return null();
    }
    Rect r = standardized();
    r.origin.x += dx;
    r.origin.y += dy;
    r.size.width -= 2 * dx;
    r.size.height -= 2 * dy;
    if (r.size.width < 0 || r.size.height < 0) {
        return null();
    }
    return r;
}

Rect Rect::floored() const {
    if (isNull()) {
        return null();
    }
    return Rect(std::floor(origin.x), std::floor(origin.y), std::floor(size.width),
                std::floor(size.height));
}

bool Rect::operator==(const Rect& other) const {
    if (isNull() || other.isNull()) {
        return isNull() && other.isNull();
    }
    const Rect a = standardized();
    const Rect b = other.standardized();
    return a.origin == b.origin && a.size == b.size;
}

std::string Point::description() const {
    return "(" + formatNumber(x) + ", " + formatNumber(y) + ")";
}

std::string Size::description() const {
    return "(" + formatNumber(width) + ", " + formatNumber(height) + ")";
}

std::string Rect::description() const {
    return "(" + formatNumber(origin.x) + ", " + formatNumber(origin.y) + ", " +
           formatNumber(size.width) + ", " + formatNumber(size.height) + ")";
}

double floorValue(double value) {
    return std::floor(value);
}

double roundToNearest(double value) {
    return std::round(value);
}

std::ostream& operator<<(std::ostream& os, const Point& p) {
    return os << p.description();
}

std::ostream& operator<<(std::ostream& os, const Size& s) {
    return os << s.description();
}

std::ostream& operator<<(std::ostream& os, const Rect& r) {
    return os << r.description();
}

}  // namespace corvetta
