// Places on contours: a segment and a parameter on it. A segment without handles is a line that is run
// through evenly, although its cubic is not: what is cut out of a line is a line, in proportion.
#pragma once

#include <limits>
#include <span>

#include "bezier/nodes_cubic.h"

namespace tarvex {

struct Place {
    int segment = -1;
    double t = 0;
    double squaredDistance = std::numeric_limits<double>::infinity();
};

/// The place nearest to `p`, the first of equally near segments; no segment when none can be measured.
Place NearestPlace(std::span<const BPOINT> nodes, DPOINT p);

inline DPOINT PlacedPoint(const Cubic& c, double t) {
    if (t == 0) return c.p0;
    if (t == 1) return c.p3;
    return HasNoHandles(c) ? Mix(c.p0, c.p3, t) : PointAt(c, t);
}

inline Cubic PlacedPart(const Cubic& c, double from, double to) {
    if (!HasNoHandles(c)) return PartOf(c, from, to);
    const DPOINT a = PlacedPoint(c, from);
    const DPOINT b = PlacedPoint(c, to);
    return {a, a, b, b};
}

/// The length of the control polygon: a bound of the curve's.
inline double LegsOf(const Cubic& c) {
    return Distance(c.p0, c.p1) + Distance(c.p1, c.p2) + Distance(c.p2, c.p3);
}

}  // namespace tarvex
