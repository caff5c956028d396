// The one geometric question the clipper decides by: on which side of a line a point lies. The answer
// is exact for all finite doubles.
#pragma once

#include <cmath>

#include "shaping/clip/point.h"

namespace tarvex::clip {

/// The sign of the turn a, b, c, decided without rounding; slow.
int ExactTurn(const Point& a, const Point& b, const Point& c);

/// 1 when c lies to the left of the line from a to b (with y upwards), -1 to the right, 0 on it.
///
/// Rounding of the plain formula is bounded by (3 + 16u)u times the sum of its two products, u = 2^-53
/// (Shewchuk, Adaptive Precision Floating-Point Arithmetic, 1997); the small constant covers products
/// that underflow, and what overflows compares false. Only what is nearer to 0 than that is decided
/// exactly.
inline int Turn(const Point& a, const Point& b, const Point& c) {
    constexpr double relativeError = 3.3306690738754716e-16;
    constexpr double underflow = 1e-300;
    const double left = (b.x - a.x) * (c.y - a.y);
    const double right = (b.y - a.y) * (c.x - a.x);
    const double turn = left - right;
    const double error = relativeError * (std::fabs(left) + std::fabs(right)) + underflow;
    if (turn > error) return 1;
    if (-turn > error) return -1;
    return ExactTurn(a, b, c);
}

}  // namespace tarvex::clip
