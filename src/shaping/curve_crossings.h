// Where two cubics cross, and whether they run along each other.
#pragma once

#include <vector>

#include "bezier/nodes_cubic.h"

namespace tarvex::shaping {

/// A piece of a cubic with its range of parameters, turning so little that it cannot cross itself.
struct Arc {
    Cubic curve;
    double from;
    double to;
};

/// A common point of two curves, by its parameters on both.
struct CurveHit {
    double s;
    double t;
    DPOINT point;
};

/// The curve cut into arcs, at most 1024 of them, which turn by about 15 degrees either way or are cusps.
std::vector<Arc> ArcsOf(const Cubic& curve);

/// True if both run along each other from end to end, in the same direction: their control points agree
/// within a few POINT_EPSILON, or their ends do and both are lines.
bool SameCourse(const Cubic& a, const Cubic& b);

/// A line from end to end that does not turn back, whatever its parametrization.
bool IsLine(const Cubic& c);

/// The parameter in [0, 1] of the curve's point nearest to `p`.
double NearestParameter(const Cubic& c, DPOINT p);

/// Appends the ends of either curve that are ends of its arc, too, and lie on the other arc within
/// POINT_EPSILON; parameters next to an end of the other curve are that end's.
void AppendEndHits(const Cubic& a, const Arc& arcA, const Cubic& b, const Arc& arcB,
                   std::vector<CurveHit>& hits);

/// Appends the points in which two arcs of the curves cross, refined on the curves themselves. Also points
/// at which they touch may be among them, and the same point several times. Arcs that coincide have none.
void AppendArcHits(const Cubic& a, const Arc& arcA, const Cubic& b, const Arc& arcB,
                   std::vector<CurveHit>& hits);

}  // namespace tarvex::shaping
