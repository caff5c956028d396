// The nearest place: segments whose control points' box is farther away than the best so far are skipped.
#include "bezier/nodes_place.h"

#include <algorithm>
#include <cmath>

#include "tarvex/bezier.h"

namespace tarvex {

namespace {

/// A lower bound of the squared distance: that from the box of the control points. Not a number when a
/// control point is none.
double BoxDistance(const Cubic& c, DPOINT p) {
    const auto gap = [](double v, double a, double b, double d, double e) {
        const auto [least, most] = std::minmax({a, b, d, e});
        return std::max({least - v, v - most, 0.0});
    };
    return SquaredLength(
        {gap(p.x, c.p0.x, c.p1.x, c.p2.x, c.p3.x), gap(p.y, c.p0.y, c.p1.y, c.p2.y, c.p3.y)});
}

double LineParameter(const Cubic& c, DPOINT p) {
    const DPOINT along = Minus(c.p3, c.p0);
    const double squared = SquaredLength(along);
    if (!(squared > 0)) return 0;
    return std::clamp(Dot(Minus(p, c.p0), along) / squared, 0.0, 1.0);
}

}  // namespace

Place NearestPlace(std::span<const BPOINT> nodes, DPOINT p) {
    Place best;
    for (std::size_t i = 0; i + 1 < nodes.size(); ++i) {
        const Cubic c = SegmentOf(nodes[i], nodes[i + 1]);
        if (!(BoxDistance(c, p) < best.squaredDistance)) continue;
        const double t =
            HasNoHandles(c) ? LineParameter(c, p) : CBezier(c.p0, c.p1, c.p2, c.p3).GetNearestCurvePointT(p);
        const double squared = SquaredDistance(PlacedPoint(c, t), p);
        if (squared < best.squaredDistance) best = {static_cast<int>(i), t, squared};
    }
    return best;
}

}  // namespace tarvex
