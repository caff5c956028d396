// The crossing of two lines in double-double arithmetic. Nothing is decided here: whether segments cross
// is known exactly before, and any point in both bounding boxes would keep the sweep consistent. What
// depends on the precision is how near the result comes to the true one.
//
// The full arithmetic keeps every intermediate number in order, which the sum of two doubles in the end
// seldom needs. So the same formula is first evaluated with the low parts simply added up, and its
// result taken where all that lies within both ways' errors of it rounds to the same doubles. With u =
// 2^-53, either way is wrong by less than 100 u² of the terms that it adds: the lines' two coordinates,
// and, multiplied by what the division makes of them, the products whose differences are divided. 2^-96
// of them, 1024 u², is more than both together.
#include "shaping/clip/crossing.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "shaping/clip/double_double.h"

namespace tarvex::clip {
namespace {

struct Box {
    double left, right, bottom, top;

    bool Holds(const Point& p) const { return p.x >= left && p.x <= right && p.y >= bottom && p.y <= top; }
};

Box CommonBox(const Segment& e, const Segment& f) {
    return {std::max(std::min(e.a.x, e.b.x), std::min(f.a.x, f.b.x)),
            std::min(std::max(e.a.x, e.b.x), std::max(f.a.x, f.b.x)), std::max(e.a.y, f.a.y),
            std::min(e.b.y, f.b.y)};
}

/// A total order, so that a pair has a first one whichever way round it comes.
bool Precedes(const Segment& e, const Segment& f) {
    if (!Same(e.a, f.a)) return Before(e.a, f.a);
    return Before(e.b, f.b);
}

/// The power of two that brings coordinates whose products could overflow or vanish near to 1; 0 if
/// there are none.
int NeededScale(const Segment& e, const Segment& f) {
    double size = 0;
    for (const Point& p : {e.a, e.b, f.a, f.b}) size = std::max({size, std::fabs(p.x), std::fabs(p.y)});
    if (size > 0x1p-200 && size < 0x1p200) return 0;
    int exponent = 0;
    std::frexp(size, &exponent);
    return -exponent;
}

Segment Scaled(const Segment& e, int exponent) {
    const auto scaled = [exponent](const Point& p) {
        return Point{std::ldexp(p.x, exponent), std::ldexp(p.y, exponent)};
    };
    return {scaled(e.a), scaled(e.b)};
}

/// NaN or infinite when the lines are parallel as far as this precision can tell.
Point LineCrossing(const Segment& e, const Segment& f) {
    const DoubleDouble ex = Difference(e.b.x, e.a.x);
    const DoubleDouble ey = Difference(e.b.y, e.a.y);
    const DoubleDouble fx = Difference(f.b.x, f.a.x);
    const DoubleDouble fy = Difference(f.b.y, f.a.y);
    const DoubleDouble apartX = Difference(f.a.x, e.a.x);
    const DoubleDouble apartY = Difference(f.a.y, e.a.y);
    const DoubleDouble t = (apartX * fy - apartY * fx) / (ex * fy - ey * fx);
    const DoubleDouble x = DoubleDouble{e.a.x, 0} + t * ex;
    const DoubleDouble y = DoubleDouble{e.a.y, 0} + t * ey;
    return {x.high, y.high};
}

/// h * l + h * l, the products that a product of two numbers leaves out when only their high parts are
/// multiplied; that of the low parts is beyond what counts.
double Mixed(const DoubleDouble& a, const DoubleDouble& b) { return a.high * b.low + a.low * b.high; }

/// a * b - c * d, and the sum of the products' sizes.
struct CrossProduct {
    DoubleDouble value;
    double size = 0;

    CrossProduct(const DoubleDouble& a, const DoubleDouble& b, const DoubleDouble& c, const DoubleDouble& d) {
        const DoubleDouble left = Product(a.high, b.high);
        const DoubleDouble right = Product(c.high, d.high);
        const DoubleDouble high = Difference(left.high, right.high);
        value = Sum(high.high, high.low + ((left.low - right.low) + (Mixed(a, b) - Mixed(c, d))));
        size = std::fabs(left.high) + std::fabs(right.high);
    }
};

/// A double to which everything within the error of a sum rounds, or NaN when there is none.
double RoundedFor(const DoubleDouble& sum, double error) {
    const bool sure = sum.high + (sum.low + error) == sum.high && sum.high + (sum.low - error) == sum.high;
    return sure ? sum.high : std::numeric_limits<double>::quiet_NaN();
}

/// What LineCrossing gives, in half the time, or NaN in a coordinate that this cannot tell for sure.
Point QuickLineCrossing(const Segment& e, const Segment& f) {
    constexpr double relativeError = 0x1p-96;
    constexpr double underflow = 0x1p-440;  // of products, divided by no less than 2^-400
    const DoubleDouble ex = Difference(e.b.x, e.a.x);
    const DoubleDouble ey = Difference(e.b.y, e.a.y);
    const DoubleDouble fx = Difference(f.b.x, f.a.x);
    const DoubleDouble fy = Difference(f.b.y, f.a.y);
    const CrossProduct over(Difference(f.a.x, e.a.x), fy, Difference(f.a.y, e.a.y), fx);
    const CrossProduct under(ex, fy, ey, fx);
    const double divisor = std::fabs(under.value.high);
    if (!(divisor > 0x1p-400 && divisor > 0x1p-60 * under.size)) {
        constexpr double nan = std::numeric_limits<double>::quiet_NaN();
        return {nan, nan};
    }
    const double t = over.value.high / under.value.high;
    const DoubleDouble product = Product(t, under.value.high);
    const double rest =
        ((over.value.high - product.high) - product.low) + (over.value.low - t * under.value.low);
    const double tLow = rest / under.value.high;
    const double tSize = std::fabs(t) + (over.size + std::fabs(t) * under.size) / divisor;
    const auto along = [&](double start, const DoubleDouble& way) {
        const DoubleDouble move = Product(t, way.high);
        const DoubleDouble high = Sum(start, move.high);
        const double low = high.low + (move.low + (t * way.low + tLow * way.high));
        const double size = std::fabs(start) + tSize * std::fabs(way.high);
        return RoundedFor(Sum(high.high, low), relativeError * size + underflow);
    };
    return {along(e.a.x, ex), along(e.a.y, ey)};
}

bool IsUpright(const Segment& e) { return e.a.x == e.b.x; }
bool IsLevel(const Segment& e) { return e.a.y == e.b.y; }

Point Crossing(const Segment& e, const Segment& f) {
    if (IsUpright(e) && IsLevel(f)) return {e.a.x, f.a.y};
    if (IsLevel(e) && IsUpright(f)) return {f.a.x, e.a.y};
    const Segment& first = Precedes(e, f) ? e : f;
    const Segment& second = Precedes(e, f) ? f : e;
    const int scale = NeededScale(e, f);
    if (scale == 0) {
        const Point quick = QuickLineCrossing(first, second);
        const bool sure = !std::isnan(quick.x) && !std::isnan(quick.y);
        return sure ? quick : LineCrossing(first, second);
    }
    const Point p = LineCrossing(Scaled(first, scale), Scaled(second, scale));
    return {std::ldexp(p.x, -scale), std::ldexp(p.y, -scale)};
}

double Within(double value, double low, double high) {
    if (std::isnan(value)) return low / 2 + high / 2;
    return std::clamp(value, low, high);
}

}  // namespace

Point CutPoint(const Segment& e, const Segment& eEdge, const Segment& f, const Segment& fEdge) {
    const Box box = CommonBox(e, f);
    const Point ofEdges = Crossing(eEdge, fEdge);
    if (box.Holds(ofEdges)) return ofEdges;
    const Point ofPieces = Crossing(e, f);
    return {Within(ofPieces.x, box.left, box.right), Within(ofPieces.y, box.bottom, box.top)};
}

}  // namespace tarvex::clip
