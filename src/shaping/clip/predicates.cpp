// The exact part of the side-of-line test. Grids, copies and touching shapes ask it all the time, and
// mostly of points on one upright or level line, or with coordinates whose differences are doubles: those
// are answered from the products' signs, or from the exact products. Everything else goes through a
// fixed-point sum that holds any product of doubles.
#include "shaping/clip/predicates.h"

#include "shaping/clip/double_double.h"
#include "shaping/clip/exact_sum.h"

namespace tarvex::clip {
namespace {

/// Whether a product of `a` and `b` has neither overflow nor underflow in any of its parts.
bool IsModerate(double a, double b) {
    constexpr double small = 0x1p-400;
    constexpr double large = 0x1p400;
    const auto moderate = [](double v) {
        const double size = std::fabs(v);
        return size == 0 || (size > small && size < large);
    };
    return moderate(a) && moderate(b);
}

int Sign(double v) { return (v > 0) - (v < 0); }

}  // namespace

int ExactTurn(const Point& a, const Point& b, const Point& c) {
    // A difference may be rounded, but never to 0 or beyond it.
    const int leftSign = Sign(b.x - a.x) * Sign(c.y - a.y);
    const int rightSign = Sign(b.y - a.y) * Sign(c.x - a.x);
    if (leftSign != rightSign) return leftSign > rightSign ? 1 : -1;
    if (leftSign == 0) return 0;
    const DoubleDouble bx = Difference(b.x, a.x);
    const DoubleDouble by = Difference(b.y, a.y);
    const DoubleDouble cx = Difference(c.x, a.x);
    const DoubleDouble cy = Difference(c.y, a.y);
    if (bx.low == 0 && by.low == 0 && cx.low == 0 && cy.low == 0 && IsModerate(bx.high, cy.high) &&
        IsModerate(by.high, cx.high)) {
        const DoubleDouble left = Product(bx.high, cy.high);
        const DoubleDouble right = Product(by.high, cx.high);
        if (left.high != right.high) return left.high > right.high ? 1 : -1;
        if (left.low != right.low) return left.low > right.low ? 1 : -1;
        return 0;
    }
    ExactSum sum;
    sum.Add(b.x, c.y);
    sum.Add(-b.x, a.y);
    sum.Add(-a.x, c.y);
    sum.Add(-b.y, c.x);
    sum.Add(b.y, a.x);
    sum.Add(a.y, c.x);
    return sum.Sign();
}

}  // namespace tarvex::clip
