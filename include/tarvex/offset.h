// Offsetting: contours and lines moved sideways by a distance, the loops that this makes, and where a closed
// contour starts.
//
// Model. A contour is closed when its last point (of Bezier nodes: anchor) equals its first, and open
// otherwise; points nearer to one another than POINT_EPSILON are one. "Clockwise" is what `IsClockwise`
// (polygons.h) says: the sum of (x' - x)(y' + y) over all sides is at most 0, which is clockwise on a screen,
// where y grows downwards. A positive distance moves towards the side on which a clockwise contour has its
// inside, (-dy, dx) for a side in the direction (dx, dy): so it shrinks a clockwise contour and grows a
// counter-clockwise one. A shape whose holes run the other way than its outlines is therefore made
// thinner all over by one positive distance. A negative distance moves to the other side.
//
// What is computed. For a closed contour, the region that it fills (whatever it goes round, winding number
// not zero) is made smaller by what lies within the distance of its outline, or larger by what lies
// within the distance of the contour: the result is the outline of that region, in as many parts as there
// are. It does not cross itself, and none of its points is nearer to the original than the distance, but
// for the tolerance. So a dumbbell falls into two when its bar vanishes, an arc that closes around a hole
// gets a contour for the hole, running the other way, and a shape that is nowhere wide enough gives an
// empty result. Strokes without width inside a filled region do not count, neither do those outside it when
// the region shrinks; when it grows they become bars. Parts narrower than POINT_EPSILON are left out.
// For an open line, it is the part of the line moved to one side that is not nearer to the line than the
// distance: one open line, or several, each in the direction of the original.
//
// Corners that open towards the side moved to are mitred: both sides go on until they meet. A tip farther
// than `mitreLimit` times the distance from the original corner is cut instead. Corners that close need
// nothing.
//
// Degenerate input. A distance of 0 gives a copy of the contour. Fewer than two different points, a NaN or
// infinite coordinate or distance (numbers beyond 1e100 count as that) and a contour smaller than 1e-14
// times the distance give an empty result. Collinear closed contours have no inside; they vanish or become
// bars. Everything is decided on a grid of 2^48 steps over the result's size, exactly, so results are good to
// about 1e-14 of that, at any size and place; coordinates far from the origin have no more digits than that.
//
// Nothing raises, except arrays for lack of memory. All functions may be called from several threads at
// once, on different arrays.
//
//     CArray<DPOINT, DPOINT> square;  // clockwise on a screen
//     for (DPOINT p : {DPOINT{0, 0}, {10, 0}, {10, 10}, {0, 10}, {0, 0}}) square.Add(p);
//     CPolyPolyDPoint smaller = ShrinkPolyline(square, 1);  // (1, 1), (9, 1), (9, 9), (1, 9), (1, 1)
//     CPolyPolyDPoint larger = ShrinkPolyline(square, -1);  // (-1, -1), (11, -1), (11, 11), ...
//     CPolyPolyDPoint nothing = ShrinkPolyline(square, 5);  // no contour
#pragma once

#include "tarvex/containers.h"

namespace tarvex {

/// The form of a corner whose mitre would be too long.
enum class OffsetCorner {
    bevel,  ///< cut straight across, at right angles to its bisector, at the distance from the original
            ///< corner
    round,  ///< an arc around the original corner
};

struct OffsetOptions {
    /// The longest mitre, from the original corner to the tip, in distances: 1 at a straight line, 1.41 at a
    /// right angle, 4 at 29 degrees. Taken as at least 1, where no corner is mitred, and at most 100.
    double mitreLimit = 4;
    OffsetCorner corner = OffsetCorner::bevel;  ///< of corners beyond the limit
    /// How far, in the caller's unit, the result may be off: chords of arcs from the arc, fitted curves from
    /// the true offset curve. Taken as at least a millionth of the distance; an arc has at most 1024 chords
    /// to a full turn.
    double tolerance = 0.01;
};

/// The contour or line moved sideways. Closed contours come out closed, by repeating the first point. The
/// parts follow the order in which the original passes them. O(n log n) for n points, also where the
/// distance is large beside the contour's details; with k crossings of a self-crossing contour
/// O((n + k) log n).
///
///     CPolyPolyDPoint parts = ShrinkPolyline(contour, 2.5, {.mitreLimit = 2, .corner =
///     OffsetCorner::round}); for (int i = 0; i < parts.GetSize(); ++i) Draw(parts[i]);
TARVEX_API CPolyPolyDPoint ShrinkPolyline(const CArray<DPOINT, DPOINT>& contour, double distance,
                                          const OffsetOptions& options = {});

/// The same for a shape of several contours filled by the even-odd rule, whichever way they run: positive
/// distances shrink the filled region, negative ones grow it. Open contours count as closed. Outlines come
/// out clockwise, holes counter-clockwise; a distance of 0 gives the region's outline. Lines that enclose
/// nothing have no region to shrink, but grow to both sides; contours of a single point are left out.
///
///     CPolyPolyDPoint ring = ...;                        // an outline and a hole in it
///     CPolyPolyDPoint thinner = ShrinkPolyline(ring, 1);  // the outline smaller, the hole larger
TARVEX_API CPolyPolyDPoint ShrinkPolyline(const CPolyPolyDPoint& shape, double distance,
                                          const OffsetOptions& options = {});

/// A Bezier contour or line moved sideways, as Bezier nodes: everything is within `options.tolerance` of the
/// true offset of the curve.
///
/// Whether a contour runs clockwise is decided by the curve, not by the anchors alone. Straight segments
/// (handles on their anchors, or along the chord) stay straight, without handles, and so are mitres and
/// bevels; arcs around corners and the offsets of curved segments, which are no cubics, become as many cubics
/// as the tolerance asks for. Where segments of the original meet smoothly so do those of the result, within
/// the tolerance. Closed contours come out closed.
///
///     CArray<BPOINT, BPOINT> circle;
///     CEllipse({0, 0}, 10).GetBeziers(circle);
///     CPolyPolyBezier smaller = ShrinkBezier(circle, 4);  // a circle of radius 6, to 0.01
TARVEX_API CPolyPolyBezier ShrinkBezier(const CArray<BPOINT, BPOINT>& contour, double distance,
                                        const OffsetOptions& options = {});
/// The same for a shape of several contours filled by the even-odd rule, as for polylines; a distance of 0
/// gives a copy.
TARVEX_API CPolyPolyBezier ShrinkBezier(const CPolyPolyBezier& shape, double distance,
                                        const OffsetOptions& options = {});

/// Removes the loops of a polyline that has been moved sideways point by point: where its radius was smaller
/// than the distance it runs backwards, and crosses itself before and after. `distance` is that by which
/// it was moved. Points that are on no loop are kept bit for bit, and a polyline without loops comes back as
/// it is.
///
/// A closed contour gives the outline of the region that it goes round in its own direction: loops that run
/// against it, and those that go round twice, are gone, and what they held together is several contours.
/// (A contour that went round something twice before it was moved loses that too.) An open line is walked
/// from its start: whenever it comes back to a point it passed, and what it went round since then lies on the
/// side of loops made by `distance`, it is cut short there; loops the other way are its own and stay. A
/// distance of 0 or NaN removes nothing; a NaN or infinite coordinate, or one beyond 1e100, gives an empty
/// result.
///
/// What the loops hide is not known here: a contour moved by more than half its width everywhere comes out
/// turned inside out rather than gone, unlike with ShrinkPolyline, which starts from the original.
///
/// O((n + k) log n) for n points and k crossings.
///
///     CArray<DPOINT, DPOINT> moved;  // both slopes of a V, moved to the left past one another
///     for (DPOINT p : {DPOINT{-2, 6}, {2, 2}, {-2, 2}, {2, 6}}) moved.Add(p);
///     CPolyPolyDPoint line = RemovePolylineLoops(moved, 2);  // (-2, 6), (0, 4), (2, 6)
TARVEX_API CPolyPolyDPoint RemovePolylineLoops(const CArray<DPOINT, DPOINT>& polyline, double distance);

/// Which way round a contour is to run afterwards.
enum class ContourOrder { kept, reversed };

/// Makes a closed contour start, and end, at point `start`, and reverses it if asked: then it starts at the
/// same point and runs the other way. The last point is a copy of the first, bit for bit. False, with the
/// contour as it was, when it is not closed, has fewer than two points or no point `start`. Linear.
///
///     ReorderPolyline(square, 2);  // (10, 10), (0, 10), (0, 0), (10, 0), (10, 10)
TARVEX_API bool ReorderPolyline(CArray<DPOINT, DPOINT>& contour, int start,
                                ContourOrder order = ContourOrder::kept);

/// The same from the contour's point nearest to `p`, which becomes a corner if it lies inside a side. Of
/// several equally near ones the first. False also when no distance is a number.
///
///     ReorderPolyline(square, DPOINT{5, -3}, ContourOrder::reversed);  // (5, 0), (0, 0), (0, 10), ...
TARVEX_API bool ReorderPolyline(CArray<DPOINT, DPOINT>& contour, DPOINT p,
                                ContourOrder order = ContourOrder::kept);

}  // namespace tarvex
