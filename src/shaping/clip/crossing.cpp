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
#include <optional>

#include "core/lanes.h"
#include "shaping/clip/double_double.h"

namespace tarvex::clip {
namespace {

/// Both coordinates of a vector, or two numbers that go the same way, side by side.
using Pair = TwoParts<TwoLanes>;

TwoLanes At(const Point& p) { return TwoLanes::Of(p.x, p.y); }
TwoLanes Exchanged(TwoLanes v) { return TwoLanes::Of(v.Lane(1), v.Lane(0)); }
TwoLanes Size(TwoLanes v) { return Greater(v, TwoLanes(0) - v); }

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
    const TwoLanes sizes =
        Greater(Greater(Size(At(e.a)), Size(At(e.b))), Greater(Size(At(f.a)), Size(At(f.b))));
    const double size = std::max(sizes.Lane(0), sizes.Lane(1));
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
TwoLanes Mixed(const Pair& a, const Pair& b) { return a.high * b.low + a.low * b.high; }

/// a.x * f.y - a.y * f.x and b.x * f.y - b.y * f.x, and the sums of the products' sizes.
struct CrossProducts {
    Pair value;
    TwoLanes size;

    CrossProducts(const Pair& a, const Pair& b, const Pair& f) {
        const Pair turned{Exchanged(f.high), Exchanged(f.low)};
        const Pair ofA = Product(a.high, turned.high);
        const Pair ofB = Product(b.high, turned.high);
        const TwoLanes mixedA = Mixed(a, turned);
        const TwoLanes mixedB = Mixed(b, turned);
        const auto lefts = [](TwoLanes u, TwoLanes v) { return TwoLanes::Of(u.Lane(0), v.Lane(0)); };
        const auto rights = [](TwoLanes u, TwoLanes v) { return TwoLanes::Of(u.Lane(1), v.Lane(1)); };
        const Pair left{lefts(ofA.high, ofB.high), lefts(ofA.low, ofB.low)};
        const Pair right{rights(ofA.high, ofB.high), rights(ofA.low, ofB.low)};
        const TwoLanes mixed = lefts(mixedA, mixedB) - rights(mixedA, mixedB);
        const Pair high = Difference(left.high, right.high);
        value = Sum(high.high, high.low + ((left.low - right.low) + mixed));
        size = Size(left.high) + Size(right.high);
    }
};

/// What LineCrossing gives, in half the time, where it is sure of both coordinates.
std::optional<Point> QuickLineCrossing(const Segment& e, const Segment& f) {
    constexpr double relativeError = 0x1p-96;
    constexpr double underflow = 0x1p-440;  // of products, divided by no less than 2^-400
    const Pair way = Difference(At(e.b), At(e.a));
    const CrossProducts cross(Difference(At(f.a), At(e.a)), way, Difference(At(f.b), At(f.a)));
    const DoubleDouble over{cross.value.high.Lane(0), cross.value.low.Lane(0)};
    const DoubleDouble under{cross.value.high.Lane(1), cross.value.low.Lane(1)};
    const double overSize = cross.size.Lane(0);
    const double underSize = cross.size.Lane(1);
    const double divisor = std::fabs(under.high);
    if (!(divisor > 0x1p-400 && divisor > 0x1p-60 * underSize)) return std::nullopt;
    const double t = over.high / under.high;
    const DoubleDouble product = Product(t, under.high);
    const double rest = ((over.high - product.high) - product.low) + (over.low - t * under.low);
    const double tLow = rest * (1 / under.high);  // a division that need not wait for the first one
    const double tSize = std::fabs(t) + (overSize + std::fabs(t) * underSize) / divisor;

    const Pair move = Product(TwoLanes(t), way.high);
    const Pair high = Sum(At(e.a), move.high);
    const TwoLanes low = high.low + (move.low + (TwoLanes(t) * way.low + TwoLanes(tLow) * way.high));
    const TwoLanes size = Size(At(e.a)) + TwoLanes(tSize) * Size(way.high);
    const TwoLanes error = TwoLanes(relativeError) * size + TwoLanes(underflow);
    const Pair sum = Sum(high.high, low);
    const TwoLanes most = sum.high + (sum.low + error);
    const TwoLanes least = sum.high + (sum.low - error);
    const Point result{sum.high.Lane(0), sum.high.Lane(1)};
    // All within the error must round to the same doubles.
    const bool sureX = most.Lane(0) == result.x && least.Lane(0) == result.x;
    const bool sureY = most.Lane(1) == result.y && least.Lane(1) == result.y;
    if (!sureX || !sureY) return std::nullopt;
    return result;
}

bool IsUpright(const Segment& e) { return e.a.x == e.b.x; }
bool IsLevel(const Segment& e) { return e.a.y == e.b.y; }

Point Crossing(const Segment& e, const Segment& f) {
    if (IsUpright(e) && IsLevel(f)) return {e.a.x, f.a.y};
    if (IsLevel(e) && IsUpright(f)) return {f.a.x, e.a.y};
    const bool inOrder = Precedes(e, f);
    const Segment& first = inOrder ? e : f;
    const Segment& second = inOrder ? f : e;
    const int scale = NeededScale(e, f);
    if (scale == 0) {
        const std::optional<Point> quick = QuickLineCrossing(first, second);
        return quick ? *quick : LineCrossing(first, second);
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
