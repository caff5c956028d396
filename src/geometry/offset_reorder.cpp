// Where a closed contour starts, and which way it runs.
#include <algorithm>
#include <limits>

#include "geometry/distance.h"
#include "tarvex/offset.h"

namespace tarvex {

namespace {

using PointArray = CArray<DPOINT, DPOINT>;

bool IsClosedContour(const PointArray& contour) {
    return contour.GetSize() >= 2 && contour[0] == contour[contour.GetUpperBound()];
}

DPOINT NearestOnSide(const DPOINT& a, const DPOINT& b, const DPOINT& p) {
    const double dx = b.x - a.x;
    const double dy = b.y - a.y;
    const double square = dx * dx + dy * dy;
    const double t = square > 0 ? ((p.x - a.x) * dx + (p.y - a.y) * dy) / square : 0;
    if (!(t > 0)) return a;
    return t < 1 ? DPOINT{a.x + t * dx, a.y + t * dy} : b;
}

}  // namespace

bool ReorderPolyline(CArray<DPOINT, DPOINT>& contour, int start, ContourOrder order) {
    if (!IsClosedContour(contour) || start < 0 || start >= contour.GetSize()) return false;
    DPOINT* const first = contour.begin();
    DPOINT* const last = contour.end() - 1;
    std::rotate(first, start < contour.GetUpperBound() ? first + start : first, last);
    *last = *first;
    if (order == ContourOrder::reversed) std::reverse(first, contour.end());
    return true;
}

bool ReorderPolyline(CArray<DPOINT, DPOINT>& contour, DPOINT p, ContourOrder order) {
    if (!IsClosedContour(contour)) return false;
    double best = std::numeric_limits<double>::infinity();
    int side = -1;
    DPOINT nearest;
    for (int i = 0; i < contour.GetUpperBound(); ++i) {
        const DPOINT q = NearestOnSide(contour[i], contour[i + 1], p);
        const double distance = PointDistance(q, p);
        if (!(distance < best)) continue;
        best = distance;
        side = i;
        nearest = q;
    }
    if (side < 0) return false;
    if (nearest == contour[side]) return ReorderPolyline(contour, side, order);
    if (!(nearest == contour[side + 1])) contour.InsertAt(side + 1, nearest);
    return ReorderPolyline(contour, side + 1, order);
}

}  // namespace tarvex
