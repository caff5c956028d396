// Arc length along polylines: lengths, points at a fraction, and fractions at a point.
#include <algorithm>
#include <cmath>

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
    int bestSegment = 0;
    double bestDistance = FARTHEST;
    for (int i = 0; i < polyline.GetSize() - 1; ++i) {
        const DPOINT& a = polyline[i];
        const DPOINT& b = polyline[i + 1];
        DPOINT candidate = GetDistancePoint(a.x, a.y, b.x, b.y, p.x, p.y);
        if (!IsPointInLineRange(a.x, a.y, b.x, b.y, candidate.x, candidate.y)) {
            candidate = PointDistance(b, p) < PointDistance(a, p) ? b : a;
        }
        const double distance = PointDistance(candidate, p);
        if (!(distance < bestDistance)) continue;
        bestDistance = distance;
        bestSegment = i;
        if (point != nullptr) *point = candidate;
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
