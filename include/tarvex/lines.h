// Lines given by two points, points moved in place, angles, circles and arcs, and clipping to a
// rectangle: the elementary functions on which the rest of the geometry stands.
//
// Model. Coordinates are doubles in the caller's unit. Angles are radians, positive from +x towards +y:
// counter-clockwise where y grows upwards, clockwise on a screen where it grows downwards. Words like
// "left" below speak of the frame with y upwards. The first line of a function is P1 = (x1, y1) to
// P2 = (x2, y2), the second P3 = (x3, y3) to P4 = (x4, y4), a point is (px, py). Pointers to results must
// not be null.
//
// Tolerance. GEOMETRY_EPSILON (1e-8, absolute) decides everywhere what is degenerate, parallel or on a
// line; work in units in which that is small.
//
// Degenerate input never raises: each function gives the neutral answer stated with it. NaN and infinite
// coordinates give answers without meaning (NaN in, NaN or a neutral answer out), nothing worse.
//
// All functions are constant time, except the arcs, and keep no state; GetRandom uses the runtime's `rand`.
//
//     double x, y;
//     if (GetSegmentIntersection(0, 0, 10, 10, 0, 10, 10, 0, &x, &y)) { /* (5, 5) */ }
#pragma once

#include "tarvex/records.h"

namespace tarvex {

// ---------------------------------------------------------------------------------------------
// Lines

/// The crossing of two infinite lines: 1 with the point in *x, *y, or 0.
///
/// 0 comes from a line whose two points are exactly equal, from two vertical lines (x differing by less
/// than the tolerance in each) and from slopes that differ by less than the tolerance, coincident lines
/// included. *x and *y are then 0, with one exception: for two vertical lines *x is left holding x3 - x2.
///
/// The computation is relative to P2, so swapping the lines or their ends can change the last bits. Slopes
/// are compared, not angles: steep lines must differ by less in direction to be told apart than flat ones.
TARVEX_API int GetLinesIntersection(double x1, double y1, double x2, double y2, double x3, double y3,
                                    double x4, double y4, double* x, double* y);

/// 1 if the point lies in the bounding box of P1 P2, widened by the tolerance on every side; else 0.
/// A box test, not a distance test: a point off the segment but in its box passes.
TARVEX_API int IsPointInLineRange(double x1, double y1, double x2, double y2, double px, double py);

/// The crossing of two segments, ends included: 1 with the point in *x, *y, or 0.
/// When the lines cross outside the segments, *x and *y keep the crossing of the lines; otherwise as
/// GetLinesIntersection leaves them. Overlapping collinear segments give 0.
TARVEX_API int GetSegmentIntersection(double x1, double y1, double x2, double y2, double x3, double y3,
                                      double x4, double y4, double* x, double* y);

/// On which side of the directed line (x1, y1) -> (x2, y2) the point (x0, y0) lies: 1 left, -1 right, 0 on
/// it. "On it" means that the cross product (x2-x1)(y0-y1) - (y2-y1)(x0-x1), an area and not a distance, is
/// smaller than the tolerance. A NaN gives -1.
TARVEX_API int GetHalfPlane(double x0, double y0, double x1, double y1, double x2, double y2);

/// Distance of the point from the infinite line; from P1 if the line is shorter than the tolerance.
TARVEX_API double GetDistanceFromLine(double x1, double y1, double x2, double y2, double px, double py);

/// The foot of the perpendicular from the point onto the infinite line (it may lie outside P1 P2); P1 if
/// the line is shorter than the tolerance.
TARVEX_API DPOINT GetDistancePoint(double x1, double y1, double x2, double y2, double px, double py);

/// The point first - (first - second) * t: t = 0 gives the first point, 1 the second, anything beyond
/// extrapolates.
TARVEX_API DPOINT DivideLine(const DLINE& line, double t);
/// The same, computed in double; coordinates smaller than the tolerance come out as exactly 0.
TARVEX_API FPOINT DivideLine(const FLINE& line, double t);

/// Pushes b away from a, along their line, by d (a negative d pulls it back, also through a). b stays if it
/// is nearer to a than the tolerance.
TARVEX_API void ExpandPoint(DPOINT a, DPOINT& b, double d);

/// Moves b to the distance d from a, in the direction it has now. b stays if it is nearer to a than the
/// tolerance.
TARVEX_API void GetDistPoint(DPOINT a, DPOINT& b, double d);

// ---------------------------------------------------------------------------------------------
// Moving a point in place, about the centre (cx, cy)

/// Turns the point by `angle`.
TARVEX_API void Rotate(double* x, double* y, double cx, double cy, double angle);
/// The same, computed in double; coordinates smaller than the tolerance come out as exactly 0.
TARVEX_API void Rotate(float* x, float* y, float cx, float cy, double angle);

/// Multiplies the point's offset from the centre by (sx, sy).
TARVEX_API void Stretch(double* x, double* y, double cx, double cy, double sx, double sy);
/// The same, computed in double; a factor smaller than the tolerance counts as exactly 0.
TARVEX_API void Stretch(float* x, float* y, float cx, float cy, double sx, double sy);

/// Mirrors left and right: x becomes -(x - cx) + cx. y and cy are not looked at.
TARVEX_API void FlipHor(double* x, double* y, double cx, double cy);
/// The same, computed in double; a centre coordinate smaller than the tolerance counts as 0.
TARVEX_API void FlipHor(float* x, float* y, double cx, double cy);

/// Mirrors top and bottom: y becomes -(y - cy) + cy. x and cx are not looked at.
TARVEX_API void FlipVer(double* x, double* y, double cx, double cy);
/// The same, computed in double; a centre coordinate smaller than the tolerance counts as 0.
TARVEX_API void FlipVer(float* x, float* y, double cx, double cy);

// ---------------------------------------------------------------------------------------------
// Angles and comparisons

/// The signed angle at (x1, y1) from the ray to (x2, y2) to the ray to (x0, y0), in [-pi, pi]: positive
/// when the ray to (x0, y0) lies counter-clockwise of the other by less than a half turn. A half turn comes
/// out as +pi or -pi, as the directions fall. 0 if any two of the points are equal.
TARVEX_API double GetLinesAngle(double x0, double y0, double x1, double y1, double x2, double y2);

/// Folds an angle into [-pi, pi], once: for differences of two angles that are in range. One beyond
/// ±3 pi stays outside.
TARVEX_API double BoundPI(double a);

/// Adds a full turn to a negative angle, once. Angles of 2 pi and more stay as they are.
TARVEX_API double Bound2PI(double a);

/// 1 if the shorter of |a| and |b| is more than |ratio| times the longer, or both are below the tolerance;
/// else 0. `ratio` is a proportion such as 0.9, not a distance.
TARVEX_API int AreDistancesEqual(double a, double b, double ratio);

/// 1 if two angles in [-2 pi, 2 pi) differ by less than `tol`, also across the full turn; else 0.
TARVEX_API int AreAnglesEqual(double a, double b, double tol);

/// A random integer in [lo, hi]. For hi + 1 == lo it is 1, whatever lo is: the answer to an empty range.
/// Emptier ranges give some integer. Drawn from the runtime's `rand` (seed it with `srand`; as many threads
/// may call this as may call `rand`), so no value above lo + RAND_MAX comes up and wide ranges are slightly
/// uneven.
TARVEX_API int GetRandom(int lo, int hi);

// ---------------------------------------------------------------------------------------------
// Circles and arcs

/// The circle through three points. False for collinear or repeated points; `radius` is then unchanged and
/// `centre` without meaning.
TARVEX_API bool CalcCircle(double x1, double y1, double x2, double y2, double x3, double y3, DPOINT& centre,
                           double& radius);

/// Appends the polyline of an arc to `pts`: the start point, points in equal angular steps on the middle
/// point's side of the chord, and the end point exactly.
///
/// The full circle would be floor(pi * radius + 0.5) steps, but at least 36 and at most 360: about two
/// units of length each for radii of 11 to 115. Steps start at the start point, so the last one, to the
/// end point, is shorter. The points keep the start point's distance from the centre; `radius` only sets the
/// step. Nothing is appended when the middle point lies on the chord.
TARVEX_API void CalcArc(CArray<DPOINT, DPOINT>& pts, DPOINT centre, double radius, double xs, double ys,
                        double xm, double ym, double xe, double ye);

/// The same through three points; collinear ones give the start and the end point.
TARVEX_API void CalcArc(CArray<DPOINT, DPOINT>& pts, double xs, double ys, double xm, double ym, double xe,
                        double ye);

// ---------------------------------------------------------------------------------------------
// Clipping

/// What clipping did, as bits.
inline constexpr int CLIP_VISIBLE = 1;       ///< some of the segment lies in the rectangle
inline constexpr int CLIP_FIRST_MOVED = 2;   ///< the first end changed
inline constexpr int CLIP_SECOND_MOVED = 4;  ///< the second end changed

/// Clips a segment in place to the closed rectangle [xmin, xmax] x [ymin, ymax].
///
/// Returns 0, and leaves the segment alone, when nothing of it is inside; otherwise 1, plus 2 if the first
/// and plus 4 if the second end changed. A segment along the rectangle's edge is inside. A rectangle turned
/// inside out (xmin > xmax) contains nothing. Method: Cohen and Sutherland's.
///
/// Near a corner rounding can put a moved end outside one edge when it is put on the other, back and
/// forth; such an end is set onto the corner.
TARVEX_API int _clip_line(double* x1, double* y1, double* x2, double* y2, double xmin, double xmax,
                          double ymin, double ymax);

/// Clips to a platform rectangle, whose right and bottom count as inside.
TARVEX_API int ClipLine(double* x1, double* y1, double* x2, double* y2, const tagRECT* rc);

}  // namespace tarvex
