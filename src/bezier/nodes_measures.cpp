// Area, frame and length of contours, each from the curves and not from a flattened form.
#include <algorithm>
#include <cmath>
#include <limits>

#include "bezier/arc_length.h"
#include "tarvex/nodes.h"

namespace tarvex {

namespace {

double Cross(DPOINT a, DPOINT b) { return a.x * b.y - a.y * b.x; }

void Include(DRECT& frame, DPOINT p) {
    frame.left = std::min(frame.left, p.x);
    frame.right = std::max(frame.right, p.x);
    frame.top = std::min(frame.top, p.y);
    frame.bottom = std::max(frame.bottom, p.y);
}

/// Includes the points where one coordinate of the cubic, given by its four values, turns back.
void IncludeTurns(DRECT& frame, const Cubic& curve, double v0, double v1, double v2, double v3) {
    // The derivative is a t² + b t + c, up to a factor 3.
    const double a = v3 - v0 + 3 * (v1 - v2);
    const double b = 2 * (v0 - 2 * v1 + v2);
    const double c = v1 - v0;
    const double square = b * b - 4 * a * c;
    if (!(square >= 0)) return;
    const double q = -(b + std::copysign(std::sqrt(square), b)) / 2;
    for (const double t : {q / a, c / q}) {
        if (t > 0 && t < 1) Include(frame, PointAt(curve, t));
    }
}

}  // namespace

bool GetBezierFrame(std::span<const BPOINT> nodes, DRECT& frame) {
    if (nodes.size() < 2) return false;
    constexpr double far = std::numeric_limits<double>::infinity();
    DRECT all = {far, -far, far, -far};
    Include(all, nodes[0].pt);
    for (std::size_t i = 0; i + 1 < nodes.size(); ++i) {
        const Cubic c = SegmentOf(nodes[i], nodes[i + 1]);
        Include(all, c.p3);
        DRECT hull = all;
        Include(hull, c.p1);
        Include(hull, c.p2);
        if (hull.left < all.left || hull.right > all.right)
            IncludeTurns(all, c, c.p0.x, c.p1.x, c.p2.x, c.p3.x);
        if (hull.top < all.top || hull.bottom > all.bottom)
            IncludeTurns(all, c, c.p0.y, c.p1.y, c.p2.y, c.p3.y);
    }
    if (!(all.left <= all.right && all.top <= all.bottom)) return false;
    frame = all;
    return true;
}

double GetBezierArea(std::span<const BPOINT> nodes) {
    // The integral of (x dy - y dx) / 2 over a cubic is a sum of cross products of its control points;
    // taken from the first anchor, the closing line adds nothing.
    double area = 0;
    for (std::size_t i = 0; i + 1 < nodes.size(); ++i) {
        const DPOINT origin = nodes[0].pt;
        const DPOINT p0 = Minus(nodes[i].pt, origin);
        const DPOINT p1 = Minus(nodes[i].cp2, origin);
        const DPOINT p2 = Minus(nodes[i + 1].cp1, origin);
        const DPOINT p3 = Minus(nodes[i + 1].pt, origin);
        area += (6 * (Cross(p0, p1) + Cross(p2, p3)) + 3 * (Cross(p0, p2) + Cross(p1, p2) + Cross(p1, p3)) +
                 Cross(p0, p3)) /
                20;
    }
    return area;
}

double GetBezierLength(std::span<const BPOINT> nodes) {
    double length = 0;
    std::vector<ArcPiece> pieces;
    for (std::size_t i = 0; i + 1 < nodes.size(); ++i) {
        pieces.clear();
        AppendArcPieces(SegmentOf(nodes[i], nodes[i + 1]), pieces);
        for (const ArcPiece& piece : pieces) length += piece.length;
    }
    return std::isfinite(length) ? length : std::numeric_limits<double>::quiet_NaN();
}

}  // namespace tarvex
