// Angles, the comparisons of lengths and angles, and the random integer.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <numbers>

#include "tarvex/lines.h"

namespace tarvex {

namespace {

constexpr double PI = std::numbers::pi;
constexpr double FULL_TURN = 2 * PI;

double DirectionIn2PI(double dx, double dy) {
    const double a = std::atan2(dy, dx);
    return a < 0 ? a + FULL_TURN : a;
}

}  // namespace

double GetLinesAngle(double x0, double y0, double x1, double y1, double x2, double y2) {
    const DPOINT p0{x0, y0};
    const DPOINT p1{x1, y1};
    const DPOINT p2{x2, y2};
    if (p0 == p1 || p0 == p2 || p2 == p1) return 0;
    return BoundPI(DirectionIn2PI(x0 - x1, y0 - y1) - DirectionIn2PI(x2 - x1, y2 - y1));
}

double BoundPI(double a) { return std::fabs(a) <= PI ? a : a - std::copysign(FULL_TURN, a); }

double Bound2PI(double a) { return a < 0 ? a + FULL_TURN : a; }

int AreDistancesEqual(double a, double b, double ratio) {
    a = std::fabs(a);
    b = std::fabs(b);
    if (a < GEOMETRY_EPSILON && b < GEOMETRY_EPSILON) return 1;
    return std::min(a, b) / std::max(a, b) > std::fabs(ratio);
}

int AreAnglesEqual(double a, double b, double tol) {
    const double d = std::fabs(Bound2PI(a) - Bound2PI(b));
    return d < tol || std::fabs(d - FULL_TURN) < tol;
}

// In 64 bits: hi + 1 - lo does not fit into an int for wide ranges, and ends far out of order put the sum
// outside it, where it wraps.
int GetRandom(int lo, int hi) {
    const std::int64_t n = std::int64_t{hi} + 1 - lo;
    if (n == 0) return 1;
    return static_cast<int>(std::rand() % n + lo);
}

}  // namespace tarvex
