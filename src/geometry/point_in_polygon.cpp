// Whether a point lies on a polyline or in a polygon.
//
// Point in polygon. A horizontal ray runs from the point to the left, past the polygon; the point is inside
// if the boundary crosses it an odd number of times. The crossings are computed in doubles and vertices are
// recognised on the integer grid: a crossing that rounds to an edge's start belongs to the edge before, and
// one that truncates to an edge's end is judged there, by whether the boundary goes on to the other side of
// the ray. The crossing's rounding, the one-sided treatment of edge starts and ends, and with them
// which parts of the boundary count as inside, are what callers rely on; a cleaner test would give other
// answers on boundaries.
//
// The ray's end, and with it the crossings' roundings, depend on the polygon's least x. So the points are
// gone over once for that, in short runs, and for each run's range of y, which tells the few runs whose edges
// have to be looked at afterwards.
#include <algorithm>
#include <array>
#include <cstdint>

#include "core/rounding.h"
#include "geometry/distance.h"
#include "tarvex/lines.h"
#include "tarvex/polygons.h"

namespace tarvex {

namespace {

/// Edges from one index up to, but not including, another.
struct EdgeRun {
    int first = 0;
    int end = 0;
};

/// Runs of edges in order. When there is no room for another, the last one reaches up to its end.
class EdgeRuns {
  public:
    void Add(const EdgeRun& run) {
        const bool goesOn = m_count > 0 && m_runs[m_count - 1].end == run.first;
        if (goesOn || m_count == m_runs.size()) {
            m_runs[m_count - 1].end = run.end;
        } else {
            m_runs[m_count++] = run;
        }
    }
    const EdgeRun* begin() const { return m_runs.data(); }
    const EdgeRun* end() const { return m_runs.data() + m_count; }

  private:
    std::array<EdgeRun, 32> m_runs;
    std::size_t m_count = 0;
};

/// Counts crossings for the polygon whose `n` points `pointAt` delivers.
template <class PointAt>
class CrossingCounter {
  public:
    CrossingCounter(int n, PointAt pointAt, const tagPOINT& p) : m_n(n), m_pointAt(pointAt), m_p(p) {}

    bool Odd() {
        const EdgeRuns runs = FindRuns();
        for (const EdgeRun& run : runs) {
            for (int j = run.first; j < run.end && !m_done; ++j) CountEdge(j);
        }
        return m_crossings % 2 != 0;
    }

  private:
    static constexpr int kEdgesOfRun = 64;

    /// Those that are neither above nor below the ray as a whole. Also finds the ray's end.
    EdgeRuns FindRuns() {
        EdgeRuns runs;
        LONG xmin = m_pointAt(0).x;
        for (int first = 0; first < m_n - 1;) {
            const int last = first + std::min(kEdgesOfRun, m_n - 1 - first);
            LONG top = m_pointAt(first).y;
            LONG bottom = top;
            for (int i = first + 1; i <= last; ++i) {
                const tagPOINT p = m_pointAt(i);
                xmin = std::min(xmin, p.x);
                top = std::min(top, p.y);
                bottom = std::max(bottom, p.y);
            }
            if (top <= m_p.y && bottom >= m_p.y) runs.Add({first, last});
            first = last;
        }
        m_rayEnd = static_cast<double>(std::int64_t{xmin} - 1);
        return runs;
    }

    void CountEdge(int j) {
        const tagPOINT a = m_pointAt(j);
        const tagPOINT b = m_pointAt(j + 1);
        if ((a.y < m_p.y && b.y < m_p.y) || (a.y > m_p.y && b.y > m_p.y)) return;
        double x, y;
        if (!GetLinesIntersection(a.x, a.y, b.x, b.y, m_p.x, m_p.y, m_rayEnd, m_p.y, &x, &y)) return;
        if (!IsPointInLineRange(a.x, a.y, b.x, b.y, x, y)) return;
        if (!IsPointInLineRange(m_p.x, m_p.y, m_rayEnd, m_p.y, x, y)) return;
        if (RoundToInt(x) == a.x && RoundToInt(y) == a.y) return;
        if (SaturatingInt(x) == b.x && SaturatingInt(y) == b.y) {
            CountVertex(j);
        } else {
            ++m_crossings;
        }
    }

    /// The ray passes through the end of edge `j`: a crossing unless the boundary turns back there.
    void CountVertex(int j) {
        const LONG before = m_pointAt(j).y;
        const LONG at = m_pointAt(j + 1).y;
        int next = FirstOffTheLevel(j + 2, at);
        if (next == m_n) {
            // The level run reaches over the polygon's closing; what is left of it is no crossing.
            m_done = true;
            next = FirstOffTheLevel(1, at);
            if (next == m_n) {
                m_crossings = 2;
                return;
            }
        }
        const LONG after = m_pointAt(next).y;
        const bool turnsBack = (at < before && at < after) || (at > before && at > after);
        if (!turnsBack) ++m_crossings;
    }

    /// The first point from index `i` <= n on that does not have this y, or n.
    int FirstOffTheLevel(int i, LONG y) const {
        while (i < m_n && m_pointAt(i).y == y) ++i;
        return i;
    }

    int m_n;
    PointAt m_pointAt;
    tagPOINT m_p;
    double m_rayEnd = 0;
    int m_crossings = 0;
    bool m_done = false;
};

template <class PointAt>
int Contains(int n, PointAt pointAt, const tagPOINT& p, const tagRECT& rc) {
    if (n < 1 || p.x < rc.left || p.x > rc.right || p.y < rc.top || p.y > rc.bottom) return 0;
    return CrossingCounter<PointAt>(n, pointAt, p).Odd();
}

tagPOINT Rounded(const DPOINT& p) { return {RoundToInt(p.x), RoundToInt(p.y)}; }

}  // namespace

int IsPointOnPolyline(const CArray<DPOINT, DPOINT>& polyline, const DPOINT& p, double tol) {
    for (int i = 0; i + 1 < polyline.GetSize(); ++i) {
        const DPOINT& a = polyline[i];
        const DPOINT& b = polyline[i + 1];
        if (PointDistance(p, a) <= tol || PointDistance(p, b) <= tol) return 1;
        const DPOINT foot = GetDistancePoint(a.x, a.y, b.x, b.y, p.x, p.y);
        if (IsPointInLineRange(a.x, a.y, b.x, b.y, foot.x, foot.y) && PointDistance(foot, p) <= tol) return 1;
    }
    return 0;
}

int IsPointInPolygon(const tagPOINT* points, int n, const tagPOINT& p, const tagRECT* rc) {
    if (rc == nullptr) return 0;
    return Contains(
        n, [points](int i) { return points[i]; }, p, *rc);
}

int IsPointInPolygon(const CArray<tagPOINT, tagPOINT>& polygon, const tagPOINT& p, const tagRECT* rc) {
    return IsPointInPolygon(polygon.GetData(), polygon.GetSize(), p, rc);
}

int IsPointInPolygon(const CArray<DPOINT, DPOINT>& polygon, const DPOINT& p, const DRECT* rc) {
    if (rc == nullptr) return 0;
    const tagRECT rounded{RoundToInt(rc->left), RoundToInt(rc->top), RoundToInt(rc->right),
                          RoundToInt(rc->bottom)};
    const DPOINT* points = polygon.GetData();
    return Contains(
        polygon.GetSize(), [points](int i) { return Rounded(points[i]); }, Rounded(p), rounded);
}

int IsPointInPolygon(const CPolyPolyDPoint& contours, const DPOINT& p) {
    int containing = 0;
    for (int i = 0; i < contours.GetCount(); ++i) {
        const CArray<DPOINT, DPOINT>* contour = contours.GetAt(i);
        if (contour == nullptr) continue;
        const DRECT rc = GetPolygonRect(*contour);
        containing += IsPointInPolygon(*contour, p, &rc);
    }
    return containing % 2;
}

}  // namespace tarvex
