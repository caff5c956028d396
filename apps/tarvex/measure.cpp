#include "tarvex/measure.h"

#include <algorithm>
#include <cmath>

#include "tarvex/bezier.h"

namespace tarvex::app {

namespace {

DPOINT operator-(const DPOINT& a, const DPOINT& b) { return {a.x - b.x, a.y - b.y}; }
double Cross(const DPOINT& a, const DPOINT& b) { return a.x * b.y - a.y * b.x; }
double Distance(const DPOINT& a, const DPOINT& b) { return std::hypot(b.x - a.x, b.y - a.y); }

bool Same(const DPOINT& a, const DPOINT& b) { return a.x == b.x && a.y == b.y; }

void Include(DRECT& frame, const DPOINT& p) {
    frame.left = std::min(frame.left, p.x);
    frame.right = std::max(frame.right, p.x);
    frame.top = std::min(frame.top, p.y);
    frame.bottom = std::max(frame.bottom, p.y);
}

/// Includes the points where one coordinate of the curve, given by its four values, turns back.
void IncludeTurns(DRECT& frame, const CBezier& curve, double v0, double v1, double v2, double v3) {
    // The derivative is a t² + b t + c, up to a factor 3.
    const double a = v3 - v0 + 3 * (v1 - v2);
    const double b = 2 * (v0 - 2 * v1 + v2);
    const double c = v1 - v0;
    const double square = b * b - 4 * a * c;
    if (!(square >= 0)) return;
    const double q = -(b + std::copysign(std::sqrt(square), b)) / 2;
    for (const double t : {q / a, c / q}) {
        if (t > 0 && t < 1) Include(frame, curve.GetCurvePoint(t));
    }
}

/// The error of a sum of n chords falls with the square of n, so two sums tell a third one that is much
/// nearer (Richardson's extrapolation). Chords are doubled until two such estimates agree.
double LengthOf(const CBezier& curve) {
    constexpr double relativeError = 1e-7;
    constexpr int mostChords = 20480;
    if (Same(curve.p0, curve.p1) && Same(curve.p2, curve.p3)) return Distance(curve.p0, curve.p3);
    const double legs =
        Distance(curve.p0, curve.p1) + Distance(curve.p1, curve.p2) + Distance(curve.p2, curve.p3);
    double sum = curve.GetL(10);
    double estimate = sum;
    for (int n = 20; n <= mostChords; n *= 2) {
        const double finer = curve.GetL(n);
        const double better = finer + (finer - sum) / 3;
        if (std::fabs(better - estimate) <= legs * relativeError) return better;
        sum = finer;
        estimate = better;
    }
    return estimate;
}

}  // namespace

DRECT United(const DRECT& a, const DRECT& b) {
    return {std::min(a.left, b.left), std::max(a.right, b.right), std::min(a.top, b.top),
            std::max(a.bottom, b.bottom)};
}

void Unite(std::optional<DRECT>& frame, const std::optional<DRECT>& other) {
    if (frame && other) {
        frame = United(*frame, *other);
    } else if (other) {
        frame = other;
    }
}

std::optional<DRECT> FrameOf(ContourView nodes) {
    if (nodes.size() < 2) return std::nullopt;
    const DPOINT& start = nodes[0].pt;
    DRECT frame{start.x, start.x, start.y, start.y};
    for (std::size_t i = 0; i + 1 < nodes.size(); ++i) {
        const CBezier curve(nodes[i], nodes[i + 1]);
        Include(frame, curve.p3);
        DRECT hull = frame;
        Include(hull, curve.p1);
        Include(hull, curve.p2);
        if (hull.left < frame.left || hull.right > frame.right)
            IncludeTurns(frame, curve, curve.p0.x, curve.p1.x, curve.p2.x, curve.p3.x);
        if (hull.top < frame.top || hull.bottom > frame.bottom)
            IncludeTurns(frame, curve, curve.p0.y, curve.p1.y, curve.p2.y, curve.p3.y);
    }
    return frame;
}

std::optional<DRECT> FrameOf(const CPolyPolyBezier& shape) {
    std::optional<DRECT> frame;
    for (int i = 0; i < shape.GetSize(); ++i) Unite(frame, FrameOf(ContourView(shape[i])));
    return frame;
}

double LengthOf(ContourView nodes) {
    double length = 0;
    for (std::size_t i = 0; i + 1 < nodes.size(); ++i) length += LengthOf(CBezier(nodes[i], nodes[i + 1]));
    return length;
}

double SignedAreaOf(ContourView nodes) {
    // The integral of (x dy - y dx) / 2 over a cubic is a sum of cross products of its control points;
    // taken from the first anchor, the closing line adds nothing.
    double area = 0;
    for (std::size_t i = 0; i + 1 < nodes.size(); ++i) {
        const DPOINT& origin = nodes[0].pt;
        const DPOINT p0 = nodes[i].pt - origin;
        const DPOINT p1 = nodes[i].cp2 - origin;
        const DPOINT p2 = nodes[i + 1].cp1 - origin;
        const DPOINT p3 = nodes[i + 1].pt - origin;
        area += (6 * (Cross(p0, p1) + Cross(p2, p3)) + 3 * (Cross(p0, p2) + Cross(p1, p2) + Cross(p1, p3)) +
                 Cross(p0, p3)) /
                20;
    }
    return area;
}

}  // namespace tarvex::app
