// Ellipses and their arcs as Bezier nodes and as polylines.
//
// Both divide the eccentric angle evenly. An ellipse is a circle stretched by at most its larger radius, so
// what is off by d on the unit circle is off by at most d times that radius here.
#include <algorithm>
#include <cmath>
#include <vector>

#include "core/append.h"
#include "core/rounding.h"
#include "tarvex/ellipse.h"

namespace tarvex {

namespace {

constexpr double QUARTER = std::numbers::pi / 2;
constexpr int FEWEST_SEGMENTS = 8;  // of a full turn
/// Rounding in counts and bounds: a quarter turn is one piece, though it may miss pi/2 by a bit.
constexpr double SLACK = 1e-12;

/// How far the cubic with end tangents of 4/3 tan(step / 4) leaves the unit circle outwards.
double CubicDeviation(double step) {
    const double s = std::sin(step / 4);
    const double c = std::cos(step / 4);
    return 2.0 / 27 * (s * s * s) * (s * s * s) / (c * c);
}

/// How far the chord of an arc leaves the unit circle.
double ChordDeviation(double step) {
    const double s = std::sin(step / 4);
    return 2 * s * s;
}

int PiecesOf(double sweep, double step) {
    return std::max(1, SaturatingInt(std::ceil(sweep / step - SLACK)));
}

/// The sweep cut to a full turn; 0 when there is nothing to draw.
double UsableSweep(const CEllipse& ellipse, double start, double sweep) {
    if (!ellipse.IsFinite() || !std::isfinite(start) || std::isnan(sweep)) return 0;
    return std::clamp(sweep, -CEllipse::FULL_TURN, CEllipse::FULL_TURN);
}

bool IsFullTurn(double sweep) { return std::fabs(sweep) >= CEllipse::FULL_TURN; }

}  // namespace

double CEllipse::GetBeziers(CArray<BPOINT, BPOINT>& nodes, double start, double sweep,
                            double tolerance) const {
    sweep = UsableSweep(*this, start, sweep);
    if (sweep == 0) return 0;
    const double radius = std::max(m_radiusX, m_radiusY);
    const double whole = std::fabs(sweep);
    int pieces = PiecesOf(whole, QUARTER);
    if (tolerance > 0) {
        while (pieces < MOST_BEZIERS && radius * CubicDeviation(whole / pieces) > tolerance) ++pieces;
    }

    const double step = sweep / pieces;
    const double handle = 4.0 / 3 * std::tan(step / 4);
    std::vector<BPOINT> arc;
    arc.reserve(static_cast<std::size_t>(pieces) + 1);
    for (int i = 0; i <= pieces; ++i) {
        const bool closing = i == pieces && IsFullTurn(sweep);
        const double angle = closing ? start : start + step * i;
        const DPOINT p = GetPoint(angle);
        const DPOINT t = GetTangent(angle);
        BPOINT node{p, p, p};
        if (i > 0) node.cp1 = {p.x - handle * t.x, p.y - handle * t.y};
        if (i < pieces) node.cp2 = {p.x + handle * t.x, p.y + handle * t.y};
        arc.push_back(node);
    }
    AppendAll(nodes, arc);
    return radius * CubicDeviation(step);
}

double CEllipse::GetPolyline(CArray<DPOINT, DPOINT>& points, double deviation, double start,
                             double sweep) const {
    sweep = UsableSweep(*this, start, sweep);
    if (sweep == 0) return 0;
    const double radius = std::max(m_radiusX, m_radiusY);
    int pieces = MOST_SEGMENTS;
    if (deviation > 0) {
        // ChordDeviation solved for the step; a point (radius 0) needs no refinement.
        const double fraction = radius > 0 ? std::min(1.0, std::sqrt(deviation / radius / 2)) : 1.0;
        const double step = std::min(4 * std::asin(fraction), FULL_TURN / FEWEST_SEGMENTS);
        pieces = std::min(MOST_SEGMENTS, PiecesOf(std::fabs(sweep), step));
    }

    std::vector<DPOINT> arc;
    arc.reserve(static_cast<std::size_t>(pieces) + 1);
    for (int i = 0; i < pieces; ++i) arc.push_back(GetPoint(start + sweep * i / pieces));
    arc.push_back(IsFullTurn(sweep) ? arc.front() : GetPoint(start + sweep));
    AppendAll(points, arc);
    return radius * ChordDeviation(sweep / pieces);
}

}  // namespace tarvex
