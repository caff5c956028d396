// Where lines and segments cross a polyline.
#include <algorithm>
#include <vector>

#include "core/append.h"
#include "geometry/distance.h"
#include "tarvex/lines.h"
#include "tarvex/polygons.h"

namespace tarvex {

namespace {

/// Segments farther from the crossing segment than this in x are passed over; generous, to leave what is
/// in reach to the exact tests.
constexpr double X_SLACK = 3.0;
/// Crossings are preferred only when nearer to the middle than this.
constexpr double FARTHEST = 1e10;

bool MeetLines(const DPOINT& a, const DPOINT& b, const DLINE& line, DPOINT& hit) {
    return GetLinesIntersection(a.x, a.y, b.x, b.y, line.p1.x, line.p1.y, line.p2.x, line.p2.y, &hit.x,
                                &hit.y) != 0;
}

bool InRange(const DPOINT& a, const DPOINT& b, const DPOINT& p) {
    return IsPointInLineRange(a.x, a.y, b.x, b.y, p.x, p.y) != 0;
}

struct Hit {
    DPOINT point;
    int segment;
};

std::vector<Hit> SegmentHits(const CArray<DPOINT, DPOINT>& polyline, const DLINE& segment, int from) {
    const double lo = std::min(segment.p1.x, segment.p2.x) - X_SLACK;
    const double hi = std::max(segment.p1.x, segment.p2.x) + X_SLACK;
    std::vector<Hit> hits;
    for (int i = std::max(from, 0); i < polyline.GetSize() - 1; ++i) {
        const DPOINT& a = polyline[i];
        const DPOINT& b = polyline[i + 1];
        if ((a.x < lo && b.x < lo) || (a.x > hi && b.x > hi)) continue;
        DPOINT hit;
        if (!MeetLines(a, b, segment, hit)) continue;
        if (PointDistance(hit, b) < GEOMETRY_EPSILON) continue;  // the segment that starts there takes it
        if (InRange(a, b, hit) && InRange(segment.p1, segment.p2, hit)) hits.push_back({hit, i});
    }
    return hits;
}

}  // namespace

int GetPolyLineWithLineIntersectionFirst(const CArray<DPOINT, DPOINT>& polyline, DLINE line, DPOINT& hit,
                                         int& index) {
    const int n = polyline.GetSize();
    hit = {};
    if (n > 0) hit = polyline[index > n / 2 ? n - 1 : 0];
    for (int i = std::max(index, 0); i < n - 1; ++i) {
        DPOINT met;
        if (!MeetLines(polyline[i], polyline[i + 1], line, met)) continue;
        if (!InRange(polyline[i], polyline[i + 1], met)) continue;
        hit = met;
        index = i;
        return 1;
    }
    return 0;
}

int GetPolyLineWithLineSegIntersection(const CArray<DPOINT, DPOINT>& polyline, DLINE segment,
                                       CArray<DPOINT, DPOINT>& hits) {
    std::vector<DPOINT> points;
    for (const Hit& hit : SegmentHits(polyline, segment, 0)) points.push_back(hit.point);
    AppendAll(hits, points);
    return !points.empty();
}

int GetPolyLineWithLineSegIntersection(const CArray<DPOINT, DPOINT>& polyline, DLINE segment, DPOINT& hit,
                                       int& index) {
    const std::vector<Hit> hits = SegmentHits(polyline, segment, index);
    if (hits.empty()) return 0;
    const DPOINT middle{(segment.p1.x + segment.p2.x) / 2, (segment.p1.y + segment.p2.y) / 2};
    const Hit* best = &hits.front();
    double bestDistance = FARTHEST;
    for (const Hit& candidate : hits) {
        const double distance = PointDistance(candidate.point, middle);
        if (distance < bestDistance) {
            best = &candidate;
            bestDistance = distance;
        }
    }
    hit = best->point;
    index = best->segment;
    return 1;
}

}  // namespace tarvex
