// Bounding rectangles of polygons.
#include <algorithm>

#include "core/rounding.h"
#include "tarvex/polygons.h"

namespace tarvex {

namespace {

/// The rectangle of `n` integer points that `pointAt` delivers.
template <class PointAt>
CRect RectOf(int n, PointAt pointAt) {
    if (n <= 0) return {};
    const tagPOINT first = pointAt(0);
    CRect rc(first.x, first.y, first.x, first.y);
    for (int i = 1; i < n; ++i) {
        const tagPOINT p = pointAt(i);
        rc.left = std::min(rc.left, p.x);
        rc.top = std::min(rc.top, p.y);
        rc.right = std::max(rc.right, p.x);
        rc.bottom = std::max(rc.bottom, p.y);
    }
    return rc;
}

void Widen(DRECT& rc, const CArray<DPOINT, DPOINT>& points) {
    for (const DPOINT& p : points) {
        rc.left = std::min(rc.left, p.x);
        rc.right = std::max(rc.right, p.x);
        rc.top = std::min(rc.top, p.y);
        rc.bottom = std::max(rc.bottom, p.y);
    }
}

}  // namespace

CRect GetPolygonRect(const tagPOINT* points, int n) {
    return RectOf(n, [points](int i) { return points[i]; });
}

CRect GetPolygonRect(const DPOINT* points, int n) {
    return RectOf(n, [points](int i) {
        return tagPOINT{SaturatingInt(points[i].x), SaturatingInt(points[i].y)};
    });
}

DRECT GetPolygonRect(const CArray<DPOINT, DPOINT>& points) {
    if (points.IsEmpty()) return {};
    DRECT rc{points[0].x, points[0].x, points[0].y, points[0].y};
    Widen(rc, points);
    return rc;
}

DRECT GetPolyPolygonRect(const CPolyPolyDPoint& contours) {
    DRECT rc;
    bool started = false;
    for (int i = 0; i < contours.GetCount(); ++i) {
        const CArray<DPOINT, DPOINT>* contour = contours.GetAt(i);
        if (contour == nullptr || contour->IsEmpty()) continue;
        if (!started) rc = GetPolygonRect(*contour);
        started = true;
        Widen(rc, *contour);
    }
    return rc;
}

}  // namespace tarvex
