// Functions on lines given by two points.
#include "tarvex/lines.h"

#include <algorithm>
#include <cmath>

#include "geometry/snap.h"

namespace tarvex {

// Callers compare and store these roundings, so the origin (P2) and the order of the operations are fixed.
int GetLinesIntersection(double x1, double y1, double x2, double y2, double x3, double y3, double x4,
                         double y4, double* x, double* y) {
    *x = 0;
    *y = 0;
    if (x1 == x2 && y1 == y2) return 0;
    if (x3 == x4 && y3 == y4) return 0;

    const bool firstVertical = std::fabs(x1 - x2) < GEOMETRY_EPSILON;
    const bool secondVertical = std::fabs(x3 - x4) < GEOMETRY_EPSILON;
    if (secondVertical) {
        *x = x3 - x2;
        if (firstVertical) return 0;
        const double slope1 = (y1 - y2) / (x1 - x2);
        *y = slope1 * (x3 - x2);
    } else {
        const double slope2 = ((y3 - y2) - (y4 - y2)) / ((x3 - x2) - (x4 - x2));
        const double b = (y4 - y2) - slope2 * (x4 - x2);
        if (firstVertical) {
            *y = b;
        } else {
            const double slope1 = (y1 - y2) / (x1 - x2);
            if (std::fabs(slope1 - slope2) < GEOMETRY_EPSILON) return 0;
            *x = b / (slope1 - slope2);
            *y = slope1 * *x;
        }
    }
    *x += x2;
    *y += y2;
    return 1;
}

int IsPointInLineRange(double x1, double y1, double x2, double y2, double px, double py) {
    return std::min(x1, x2) - GEOMETRY_EPSILON <= px && px <= std::max(x1, x2) + GEOMETRY_EPSILON &&
           std::min(y1, y2) - GEOMETRY_EPSILON <= py && py <= std::max(y1, y2) + GEOMETRY_EPSILON;
}

int GetSegmentIntersection(double x1, double y1, double x2, double y2, double x3, double y3, double x4,
                           double y4, double* x, double* y) {
    if (!GetLinesIntersection(x1, y1, x2, y2, x3, y3, x4, y4, x, y)) return 0;
    return IsPointInLineRange(x1, y1, x2, y2, *x, *y) && IsPointInLineRange(x3, y3, x4, y4, *x, *y);
}

int GetHalfPlane(double x0, double y0, double x1, double y1, double x2, double y2) {
    const double cross = (x2 - x1) * (y0 - y1) - (y2 - y1) * (x0 - x1);
    if (std::fabs(cross) < GEOMETRY_EPSILON) return 0;
    return cross > 0 ? 1 : -1;
}

double GetDistanceFromLine(double x1, double y1, double x2, double y2, double px, double py) {
    const double length = std::hypot(x1 - x2, y1 - y2);
    if (length < GEOMETRY_EPSILON) return std::hypot(px - x1, py - y1);
    return std::fabs((y1 - y2) * px - (x1 - x2) * py + (x1 * y2 - x2 * y1)) / length;
}

DPOINT GetDistancePoint(double x1, double y1, double x2, double y2, double px, double py) {
    const double dx = x2 - x1;
    const double dy = y2 - y1;
    if (std::hypot(dx, dy) < GEOMETRY_EPSILON) return {x1, y1};
    const double t = ((px - x1) * dx + (py - y1) * dy) / (dx * dx + dy * dy);
    return {x1 + t * dx, y1 + t * dy};
}

DPOINT DivideLine(const DLINE& line, double t) {
    return {line.p1.x - (line.p1.x - line.p2.x) * t, line.p1.y - (line.p1.y - line.p2.y) * t};
}

FPOINT DivideLine(const FLINE& line, double t) {
    const DPOINT p = DivideLine(DLINE{{line.p1.x, line.p1.y}, {line.p2.x, line.p2.y}}, t);
    return {SnapToFloat(p.x), SnapToFloat(p.y)};
}

void ExpandPoint(DPOINT a, DPOINT& b, double d) {
    const double length = std::hypot(a.x - b.x, a.y - b.y);
    if (length < GEOMETRY_EPSILON) return;
    b = DivideLine(DLINE{a, b}, d / length + 1);
}

void GetDistPoint(DPOINT a, DPOINT& b, double d) {
    const double length = std::hypot(a.x - b.x, a.y - b.y);
    if (length < GEOMETRY_EPSILON) return;
    b = DivideLine(DLINE{a, b}, d / length);
}

}  // namespace tarvex
