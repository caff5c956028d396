// The grid on which offsetting decides what lies where: whole numbers, held in doubles, fine enough that
// nothing of a drawing is lost on it and small enough that the side of a line on which a point lies is
// computed exactly.
#pragma once

#include <algorithm>
#include <cmath>

#include "tarvex/records.h"

namespace tarvex::offsetting {

/// A point whose coordinates are whole and at most 2^GRID_BITS in magnitude, so that differences of two
/// of them are exact.
struct GridPoint {
    double x = 0;
    double y = 0;

    friend bool operator==(const GridPoint&, const GridPoint&) = default;
};

inline constexpr int GRID_BITS = 48;

/// From left to right, and upwards in a column: the order in which a sweep meets the points.
inline bool Before(const GridPoint& a, const GridPoint& b) { return a.x != b.x ? a.x < b.x : a.y < b.y; }

/// What the product of two numbers below 2^500 loses when it is rounded to `product` (Dekker's and
/// Veltkamp's method, which needs no fused operation).
inline double ProductTail(double a, double b, double product) {
    constexpr double splitter = 0x1p27 + 1;
    const double aHigh = splitter * a - (splitter * a - a);
    const double bHigh = splitter * b - (splitter * b - b);
    const double aLow = a - aHigh;
    const double bLow = b - bHigh;
    return aLow * bLow - (((product - aHigh * bHigh) - aLow * bHigh) - aHigh * bLow);
}

/// The sign of a b - c d, exactly. Rounding never swaps two numbers, so unequal rounded products
/// decide; of equal ones what they lost does.
inline int CompareProducts(double a, double b, double c, double d) {
    const double first = a * b;
    const double second = c * d;
    if (first != second) return first > second ? 1 : -1;
    const double firstTail = ProductTail(a, b, first);
    const double secondTail = ProductTail(c, d, second);
    return (firstTail > secondTail ? 1 : 0) - (firstTail < secondTail ? 1 : 0);
}

/// The side of `p` seen along a -> b, exactly: 1 left with y upwards, -1 right, 0 on the line.
inline int SideOf(const GridPoint& a, const GridPoint& b, const GridPoint& p) {
    return CompareProducts(b.x - a.x, p.y - a.y, b.y - a.y, p.x - a.x);
}

/// The mapping between the caller's plane and the grid: a shift and a power of two.
class Grid {
  public:
    /// A grid that holds everything up to `margin` around `frame`, both finite and below 1e150.
    Grid(const DRECT& frame, double margin)
        : m_origin{frame.left / 2 + frame.right / 2, frame.top / 2 + frame.bottom / 2} {
        const double reach = std::max(frame.right - frame.left, frame.bottom - frame.top) + margin;
        int exponent = 0;
        std::frexp(reach, &exponent);
        m_step = std::ldexp(1.0, exponent + 1 - GRID_BITS);
    }

    double Step() const { return m_step; }
    double ToGrid(double length) const { return length / m_step; }
    GridPoint ToGrid(const DPOINT& p) const {
        return {std::nearbyint((p.x - m_origin.x) / m_step), std::nearbyint((p.y - m_origin.y) / m_step)};
    }
    DPOINT FromGrid(const GridPoint& p) const {
        return {m_origin.x + p.x * m_step, m_origin.y + p.y * m_step};
    }

  private:
    DPOINT m_origin;
    double m_step;
};

}  // namespace tarvex::offsetting
