// Polylines and polygons held in growable arrays: their rectangles, what lies in and on them, where lines
// cross them, arc length, orientation, integer lines and the convex hull.
//
// Model. A polyline is its points in order; a polygon is one whose last point repeats the first. Nothing
// here closes a polygon for the caller, except that orientation wraps from the last point to the first. In
// arrays of Bezier nodes only the anchors count. Fractional coordinates are in the caller's unit; "clockwise"
// is what a screen shows, where y grows downwards.
//
// GEOMETRY_EPSILON, and the elementary tests of lines.h on which everything here stands, decide what is
// degenerate. Nothing raises on account of coordinates, NaN and infinities included; only arrays that
// cannot grow raise. Every function takes time linear in the number of points unless it says otherwise.
// All functions may be called from several threads at once, on different arrays.
//
//     CArray<DPOINT, DPOINT> square;
//     for (DPOINT p : {DPOINT{0, 0}, {10, 0}, {10, 10}, {0, 10}, {0, 0}}) square.Add(p);
//     DRECT frame = GetPolygonRect(square);
//     bool inside = IsPointInPolygon(square, DPOINT{5, 5}, &frame) != 0;
#pragma once

#include "tarvex/containers.h"
#include "tarvex/records.h"
#include "tarvex/rectangles.h"

namespace tarvex {

// ---------------------------------------------------------------------------------------------
// Bounding rectangles

/// Smallest and largest x and y of `n` points (right and bottom are the largest coordinates themselves);
/// zeros for n <= 0.
TARVEX_API CRect GetPolygonRect(const tagPOINT* points, int n);
/// The same of the coordinates truncated towards zero: parts of a unit beyond the rectangle can remain.
TARVEX_API CRect GetPolygonRect(const DPOINT* points, int n);
/// Smallest and largest x and y; zeros for an empty array. NaN coordinates are passed over, except in the
/// first point.
TARVEX_API DRECT GetPolygonRect(const CArray<DPOINT, DPOINT>& points);
/// One rectangle over all points of all contours; zeros when there are none.
TARVEX_API DRECT GetPolyPolygonRect(const CPolyPolyDPoint& contours);

// ---------------------------------------------------------------------------------------------
// Points on and in

/// 1 if `p` lies within `tol`, inclusive, of a segment of the polyline; else 0. A single point has no
/// segment: 0.
TARVEX_API int IsPointOnPolyline(const CArray<DPOINT, DPOINT>& polyline, const DPOINT& p, double tol);

/// 1 if `p` lies in the polygon by the even-odd rule, else 0.
///
/// `rc` is the polygon's rectangle, from GetPolygonRect: points outside it are out at once. Null gives 0.
///
/// Crossings of the boundary are counted along a ray to the left, so the boundary itself is not treated
/// alike on all sides: points on a left edge count as inside, points on a right edge as outside. Where the
/// ray passes through vertices a crossing is counted where the boundary goes on to the ray's other side and
/// none where it turns back. Vertices are told by rounding and truncating the crossing to integers: on steep
/// edges with far ends that can misjudge by rounding. A polygon whose points all share one y contains
/// nothing.
TARVEX_API int IsPointInPolygon(const tagPOINT* points, int n, const tagPOINT& p, const tagRECT* rc);
TARVEX_API int IsPointInPolygon(const CArray<tagPOINT, tagPOINT>& polygon, const tagPOINT& p,
                                const tagRECT* rc);
/// The same on everything rounded to the nearest integers, halves upwards: what is nearer than a unit
/// merges. Scale small shapes up.
TARVEX_API int IsPointInPolygon(const CArray<DPOINT, DPOINT>& polygon, const DPOINT& p, const DRECT* rc);
/// 1 if an odd number of contours contain `p`, so that holes are outside. Each contour's rectangle is
/// computed here.
TARVEX_API int IsPointInPolygon(const CPolyPolyDPoint& contours, const DPOINT& p);

// ---------------------------------------------------------------------------------------------
// Crossings with a line

/// The first crossing of the polyline, from segment `index` on, with the infinite line: 1 with the point in
/// `hit` and its segment in `index`.
///
/// Else 0, `index` unchanged and `hit` at an end of the polyline: the last point if `index` is greater than
/// half the number of points (rounded down), otherwise the first; (0, 0) when there are no points. A
/// negative index counts as 0. Segments parallel to the line do not cross it.
TARVEX_API int GetPolyLineWithLineIntersectionFirst(const CArray<DPOINT, DPOINT>& polyline, DLINE line,
                                                    DPOINT& hit, int& index);

/// Appends to `hits`, in order along the polyline, its crossings with a segment; 1 if there were any,
/// else 0. A crossing at a vertex is taken once, with the segment that starts there; so one at the very end
/// of the polyline is not taken.
TARVEX_API int GetPolyLineWithLineSegIntersection(const CArray<DPOINT, DPOINT>& polyline, DLINE segment,
                                                  CArray<DPOINT, DPOINT>& hits);

/// Of those crossings from segment `index` on (a negative one counts as 0) the one nearest to the middle of
/// `segment`, the first of equally near ones: 1 with the point in `hit` and the polyline's segment in
/// `index`. Else 0, and both unchanged.
TARVEX_API int GetPolyLineWithLineSegIntersection(const CArray<DPOINT, DPOINT>& polyline, DLINE segment,
                                                  DPOINT& hit, int& index);

// ---------------------------------------------------------------------------------------------
// Arc length

/// The sum of the lengths of the segments. For Bezier nodes that of the chords from anchor to anchor, not
/// of the curve.
TARVEX_API double GetPolylineLength(const CArray<tagPOINT, tagPOINT>& polyline);
TARVEX_API double GetPolylineLength(const CArray<DPOINT, DPOINT>& polyline);
TARVEX_API double GetPolylineLength(const CArray<BPOINT, BPOINT>& polyline);
/// The length from the first point to point `count`, or to the last if there are fewer.
TARVEX_API double GetPolylineLength(const CArray<DPOINT, DPOINT>& polyline, int count);

/// The point at the fraction `t` of the length, and in *segment, unless null, the segment it lies on.
///
/// t beyond 1 continues the last segment. A negative t is not the continuation of the first one
/// but its mirror image: the point at |t| of the length from the start. An empty array gives (0, 0), a
/// single point itself.
TARVEX_API DPOINT GetPolylinePoint(const CArray<DPOINT, DPOINT>& polyline, double t, int* segment);

/// The point of the polyline nearest to `p`, in *point, and its segment in *segment; either may be null.
/// Always true. With fewer than two points, and when everything is farther away than 1e10, *segment is 0 and
/// *point is left as it was.
TARVEX_API bool GetPolylineClosestPoint(const CArray<DPOINT, DPOINT>& polyline, DPOINT p, int* segment,
                                        DPOINT* point);

/// The fraction of the length at which `p`, a point on segment `segment`, lies: the length up to that segment
/// plus the straight distance from its start, over the whole.
///
/// 1 when `segment` is the index of the last point, 0 for any other segment that is not there, and 0 for
/// polylines shorter than one unit.
TARVEX_API double GetPolylineT(const CArray<DPOINT, DPOINT>& polyline, int segment, DPOINT p);

// ---------------------------------------------------------------------------------------------
// Orientation

/// True if the polygon runs clockwise on a screen (y downwards): the sum of (x' - x)(y' + y) over its sides,
/// the one from the last point to the first included, is at most 0. So an empty or flat polygon is
/// clockwise.
TARVEX_API bool IsClockwise(const CArray<BPOINT, BPOINT>& contour);
TARVEX_API bool IsClockwise(const CArray<DPOINT, DPOINT>& contour);

/// Reverses the contour if it runs the other way round. Bezier nodes also swap their two control points, so
/// that the curve stays what it was. Because a contour of zero area always counts as clockwise, asking for
/// the other direction reverses it at every call.
TARVEX_API void SetOrientation(CArray<BPOINT, BPOINT>& contour, bool clockwise);
TARVEX_API void SetOrientation(CArray<DPOINT, DPOINT>& contour, bool clockwise);

// ---------------------------------------------------------------------------------------------
// Integer points

/// Replaces `out` by the pixels of the line, both ends included: max(|dx|, |dy|) + 1 of them, each a
/// neighbour of the one before. Method: Bresenham's. Raises CMemoryException when an array cannot hold so
/// many.
TARVEX_API void GetBresenhamPoints(tagPOINT from, tagPOINT to, CArray<tagPOINT, tagPOINT>& out);

/// Replaces the points by their convex hull, closed by repeating the first.
///
/// The hull starts at the point of greatest y, of those the one of greatest x, and goes by the right side to
/// smaller y: counter-clockwise on a screen, where y grows downwards. Points along its edges are left
/// out. Fewer than four points are returned as they are. If all points are on a line the result is
/// the two ends and the first again; if all are equal, that point. O(n log n), and exact. Method:
/// Andrew's monotone chains after Akl and Toussaint's elimination.
TARVEX_API void GetConvexHull(CArray<tagPOINT, tagPOINT>& points);

}  // namespace tarvex
