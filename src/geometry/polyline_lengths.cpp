// Arc length along polylines: lengths, points at a fraction, and fractions at a point.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>

#include "core/lanes.h"
#include "geometry/distance.h"
#include "tarvex/lines.h"
#include "tarvex/polygons.h"

namespace tarvex {

namespace {

/// Points farther away than this are not found.
constexpr double FARTHEST = 1e10;
/// Polylines shorter than this, in the caller's unit, have no fractions.
constexpr double SHORTEST_MEASURED = 1.0;

/// The sum of the first `segments` segments; `pointAt` delivers the points.
template <class PointAt>
double LengthOf(int segments, PointAt pointAt) {
    double length = 0;
    for (int i = 0; i < segments; ++i) length += PointDistance(pointAt(i), pointAt(i + 1));
    return length;
}

DPOINT ClosestOfSegment(const DPOINT& a, const DPOINT& b, const DPOINT& p) {
    const DPOINT foot = GetDistancePoint(a.x, a.y, b.x, b.y, p.x, p.y);
    if (IsPointInLineRange(a.x, a.y, b.x, b.y, foot.x, foot.y)) return foot;
    return PointDistance(b, p) < PointDistance(a, p) ? b : a;
}

/// The distance of some segment that is likely near: the one after the nearest of every eighth point.
double DistanceByGuess(const DPOINT* points, int segments, const DPOINT& p) {
    constexpr int step = 8;
    int nearest = 0;
    double least = FARTHEST * FARTHEST;
    for (std::int64_t i = 0; i < segments; i += step) {
        const double dx = points[i].x - p.x;
        const double dy = points[i].y - p.y;
        const double square = dx * dx + dy * dy;
        if (!(square < least)) continue;
        least = square;
        nearest = static_cast<int>(i);
    }
    const double distance = PointDistance(ClosestOfSegment(points[nearest], points[nearest + 1], p), p);
    return distance < FARTHEST ? distance : FARTHEST;
}

/// Tells segments that cannot hold a nearer point, by their boxes.
///
/// What GetPolylineClosestPoint takes for a segment's nearest point is one of its ends or lies within
/// GEOMETRY_EPSILON of its box, so it is farther from `p` than the box, less that. Roundings are a few units
/// in the last place; the slack here is a thousand times as much. A comparison with NaN tells nothing, and a
/// segment that nothing is told of is looked at.
class FarSegments {
  public:
    FarSegments(const DPOINT& p, double nearest) : m_p(TwoLanes::Of(p.x, p.y)) { SetNearest(nearest); }

    void SetNearest(double distance) {
        const double reach = distance * (1 + 1e-9) + 4 * GEOMETRY_EPSILON;
        m_square = std::min(m_square, reach * reach);
    }

    bool Holds(const DPOINT& from, const DPOINT& to) const {
        const TwoLanes a = TwoLanes::Of(from.x, from.y);
        const TwoLanes b = TwoLanes::Of(to.x, to.y);
        // An end `b` that is no number gives 0, an `a` that is none just `b`, which is then not taken either.
        const TwoLanes outside = Greater(Greater(Lesser(a, b) - m_p, m_p - Greater(a, b)), TwoLanes(0.0));
        const TwoLanes squares = outside * outside;
        return squares.Lane(0) + squares.Lane(1) > m_square;
    }

  private:
    TwoLanes m_p;
    double m_square = std::numeric_limits<double>::infinity();
};

}  // namespace

double GetPolylineLength(const CArray<tagPOINT, tagPOINT>& polyline) {
    return LengthOf(polyline.GetSize() - 1, [&](int i) {
        return DPOINT{static_cast<double>(polyline[i].x), static_cast<double>(polyline[i].y)};
    });
}

double GetPolylineLength(const CArray<DPOINT, DPOINT>& polyline) {
    return GetPolylineLength(polyline, polyline.GetSize());
}

double GetPolylineLength(const CArray<BPOINT, BPOINT>& polyline) {
    return LengthOf(polyline.GetSize() - 1, [&](int i) { return polyline[i].pt; });
}

double GetPolylineLength(const CArray<DPOINT, DPOINT>& polyline, int count) {
    return LengthOf(std::min(count, polyline.GetSize() - 1), [&](int i) { return polyline[i]; });
}

DPOINT GetPolylinePoint(const CArray<DPOINT, DPOINT>& polyline, double t, int* segment) {
    if (segment != nullptr) *segment = 0;
    const int n = polyline.GetSize();
    if (n == 0) return {};

    const double target = GetPolylineLength(polyline) * t;
    double reached = 0;
    int i = 0;
    for (; i < n - 1; ++i) {
        reached += PointDistance(polyline[i], polyline[i + 1]);
        if (reached >= target) break;
    }
    if (i >= n - 1) i = reached / 2 <= target ? n - 2 : 0;  // beyond the end, or no number
    const int first = std::clamp(i, 0, n - 1);
    const int second = std::clamp(i + 1, 0, n - 1);

    if (segment != nullptr) *segment = first;
    const double length = PointDistance(polyline[first], polyline[second]);
    if (!(length >= GEOMETRY_EPSILON)) return polyline[first];
    return DivideLine(DLINE{polyline[first], polyline[second]},
                      std::fabs(length - (reached - target)) / length);
}

bool GetPolylineClosestPoint(const CArray<DPOINT, DPOINT>& polyline, DPOINT p, int* segment, DPOINT* point) {
    const DPOINT* const points = polyline.GetData();
    const int segments = polyline.GetSize() - 1;
    int bestSegment = 0;
    double bestDistance = FARTHEST;
    FarSegments far(p, segments > 0 ? DistanceByGuess(points, segments, p) : FARTHEST);
    for (int i = 0; i < segments; ++i) {
        if (far.Holds(points[i], points[i + 1])) continue;
        const DPOINT candidate = ClosestOfSegment(points[i], points[i + 1], p);
        const double distance = PointDistance(candidate, p);
        if (!(distance < bestDistance)) continue;
        bestDistance = distance;
        bestSegment = i;
        if (point != nullptr) *point = candidate;
        far.SetNearest(distance);
    }
    if (segment != nullptr) *segment = bestSegment;
    return true;
}

double GetPolylineT(const CArray<DPOINT, DPOINT>& polyline, int segment, DPOINT p) {
    const int n = polyline.GetSize();
    if (segment == n - 1) return 1.0;
    if (segment < 0 || segment >= n - 1) return 0.0;
    const double partial = GetPolylineLength(polyline, segment) + PointDistance(polyline[segment], p);
    const double total = GetPolylineLength(polyline);
    return total < SHORTEST_MEASURED ? 0 : partial / total;
}

}  // namespace tarvex
