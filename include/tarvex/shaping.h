// Boolean operations on shapes: difference, intersection, exclusive or and union of Bezier outlines.
//
// Two ways lead to the result. The vector path keeps curves: what survives of an outline is a piece of the
// cubic it was. The raster path fills both shapes into bitmaps, combines the pixels and traces the result:
// coarser, and insensitive to whatever the outlines do.
//
// Shapes are closed contours in document units, tenths of a millimetre; the direction of y does not matter.
// Both functions leave `a` with the result on success and bit for bit as it was on failure. Neither raises,
// except CMemoryException (`a` is then as it was, too). Different shapes may be combined from different
// threads.
#pragma once

#include "tarvex/containers.h"

namespace tarvex {

/// The codes of the operations.
enum ShapingOperation : int {
    SHAPING_DIFFERENCE = 0,    ///< a minus b
    SHAPING_INTERSECTION = 1,  ///< what is in both
    SHAPING_XOR = 2,           ///< what is in one of them; the raster path makes a union of it
    SHAPING_UNION = 3,         ///< what is in either
};

/// The vector path: a := a op b.
///
///     CPolyPolyBezier star = ..., disc = ...;
///     if (PolyPolyBezierShaping(SHAPING_DIFFERENCE, star, disc)) {
///         // star has lost the disc, whose arcs are now part of its outline
///     }
///
/// Inside is what an odd number of a shape's contours surrounds, whichever way they run: nested contours are
/// holes, and so is the middle of a contour that overlaps itself twice. An open contour counts as closed by a
/// line. Contours of fewer than two nodes, and null slots of the list, are passed over.
///
/// The result:
/// - Each of its segments is one of the segments of `a` or `b`, or a piece of one by subdivision; runs
///   of vertices inside one segment become a single piece. A contour that the other shape does not touch
///   comes back with its own nodes, its first node included unless it was turned round.
/// - Where outlines cross, or a node of one lies on the other (within 1e-8), both get a node at the
///   same point; a crossing is that of the curves, to the last few bits, not of their polylines. Where
///   a shape crosses itself, the result turns at such a point, too. No other nodes are added, with one
///   exception: a contour of a single segment is halved.
/// - All contours run clockwise on a screen (see `CPolyPolyBezier::SetOrientation`), holes included. Contours
/// of
///   fewer than three nodes (the closing one counted) are left out, as is what is thinner than about 1e-7.
///
/// `b` changes as well, deliberately: it is closed, receives the nodes at the crossings and is turned
/// clockwise, so that the caller can go on with outlines that fit each other. It keeps that when the call
/// fails because the result is empty.
///
/// False: an operation other than the four (nothing is changed), a shape without contours or with
/// coordinates that are not finite (nothing is changed), a result without area.
///
/// Method: both outlines are flattened at a resolution of 10 units, curves that cross are split where they
/// cross, the polygons are combined by ClipPolygons, and the result's vertices are looked up in a table of
/// the flattened points, which tells the curve they came from. 10 units are a millimetre: a shape much
/// smaller than that is one or two spans to the eye of this function. Crossings are found all the same, but
/// scale small drawings up: outlines of some 10,000 units across combine best. Where polylines of
/// that resolution cross and the curves do not, they are refined, at most ten times, by half each.
/// Pieces of curves that run along each other (within 1e-8) are recognised as one, and curves that leave a
/// node in one direction meet there once, however long they stay that near to each other. Curves that touch
/// or run side by side at less than about a millionth of their length without being the same can still be
/// taken for crossing or not: the area that costs is below that millionth of the length.
///
/// Shapes larger than 100,000 units are flattened at a ten-thousandth of their size.
///
/// Time: that of flattening, of sorting, and of clipping the polygons; see docs/shaping.md for figures.
TARVEX_API bool PolyPolyBezierShaping(int op, CPolyPolyBezier& a, CPolyPolyBezier& b);

/// The raster path: a := a op b, by way of bitmaps. `b` is not changed.
///
/// 0 is the difference and 1 the intersection; every other code, 2 (SHAPING_XOR) among them, is the union:
/// deliberately, the raster path has no exclusive or.
///
/// `fillModeA` and `fillModeB` say what is inside a shape: 2 (WINDING) fills every contour by itself, so that
/// nested contours are filled solid; 1 (ALTERNATE), and every other value, makes holes of them. Open
/// contours count as closed by a line. Contours of fewer than two nodes, and null slots, are passed over.
///
/// A pixel is a document unit; when the rectangle around both shapes (rounded to whole units) is longer than
/// 2000 either way, it is scaled to fit: 4000 by 1000 units are drawn into 2000 by 500 pixels. Two pixels on
/// every side stay free. The result is traced by CShapeTrace with 10 as the least number of points, so
/// - its outlines are within about three pixels of the true ones, its corners are rounded by as much, and its
///   nodes are new: `flags` 0, outer contours counterclockwise on a screen, holes clockwise;
/// - parts thinner or smaller than some 10 pixels can be missing. Scale small drawings up before: of
///   those under 7 units nothing sensible comes out.
///
/// False: nothing to draw (the rectangle has no width or no height, or is over 4000 times as long as
/// wide), a bitmap that cannot be made, a result without contours. Plain shapes take some milliseconds,
/// whatever their number of nodes; the trace of intricate ones takes longer.
TARVEX_API bool PolyPolyBezierBmpShaping(int op, CPolyPolyBezier& a, CPolyPolyBezier& b, int fillModeA,
                                         int fillModeB);

}  // namespace tarvex
