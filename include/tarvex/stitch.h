// What embroidery asks of contours: the inclinations of satin between two rails, which contours are holes,
// and spirals.
//
// Coordinates are in the caller's unit, angles radians from +x towards +y; "clockwise" is what a screen
// shows, where y grows downwards. Nothing raises on account of coordinates, NaN and infinities included.
// Different contours may be worked on from different threads.
#pragma once

#include "tarvex/containers.h"
#include "tarvex/nodes.h"

namespace tarvex {

/// The most lines that GetDefaultSatinInclinations gives.
inline constexpr int MAX_SATIN_INCLINATIONS = 10000;

/// Replaces `inclinations` by the lines along which satin between two rails is stitched by default: from a
/// point of `rail1` (p1) to one of `rail2` (p2), in order along the rails.
///
/// The rails are open contours that run side by side; if the ends of `rail2` lie nearer to those of `rail1`
/// the other way round, it is taken as reversed. The lines are
/// - the two ends;
/// - from each corner (a node that is not smooth, see IsSmooth) of either rail the line to the closest point
///   of the other, unless that corner already has one: lines between two corners come first, then the
///   shorter ones;
/// - in each gap between those as many as it takes that neighbours are at most `spacing` apart on both rails,
///   at equal fractions of the gap on either. None for a spacing that is not above 0; one too fine is widened
///   until no more than MAX_SATIN_INCLINATIONS lines come out.
///
/// No two lines cross, and along both rails they never go back: a line that would is left out. They may share
/// an end, as a fan about a corner does.
///
/// Closed rails are taken from their first node around to it again; they must run the same way.
///
/// False, with `inclinations` empty, when a rail has no extent or coordinates that are not finite. Time: the
/// number of corners times that of nodes, and the square of the number of lines, some tenths of a second for
/// the most there can be.
TARVEX_API bool GetDefaultSatinInclinations(const CArray<BPOINT, BPOINT>& rail1,
                                            const CArray<BPOINT, BPOINT>& rail2, double spacing,
                                            CArray<DLINE, DLINE>& inclinations);

/// Where a contour stands among the others of its shape.
struct BEZIERHOLEINFO {
    int depth = 0;        ///< by how many contours it is surrounded
    int parent = -1;      ///< the innermost of those; -1 for none
    bool isHole = false;  ///< for an odd depth: filled by the even-odd rule, it is a hole in its parent
};

/// Replaces `info` by the nesting of the shape's contours, one entry for each slot.
///
/// A contour lies in another when a point inside it, away from its outline, is inside the other, and its
/// frame within the other's; so contours may touch, share nodes or whole edges. "Inside" is by the even-odd
/// rule, on the curves themselves. Of contours that coincide, the one listed first surrounds the others.
/// Where contours cross each other the answers are only as meaningful as the question, but parents never form
/// a circle.
///
/// Open contours count as closed by a line. Null slots and contours without an interior (fewer than two
/// nodes, no area, coordinates that are not finite) are in nothing and contain nothing.
///
/// Time: that of the square of the number of contours whose frames lie in each other, times the nodes of
/// the outer ones.
TARVEX_API void GetBezierHoleInfo(const CPolyPolyBezier& shape, CArray<BEZIERHOLEINFO, BEZIERHOLEINFO>& info);

/// A spiral of Archimedes: the radius grows, or shrinks, evenly with the angle.
struct SPIRAL {
    DPOINT centre;
    double startRadius = 0;
    double endRadius = 0;   ///< may be smaller than the start's, or equal: a circle
    double turns = 1;       ///< whole turns and parts of one
    double startAngle = 0;  ///< direction of the start as seen from the centre
    bool clockwise = true;  ///< on a screen: from +x towards +y
};

/// The most nodes that GetSymmetricalSpiralBPoints gives.
inline constexpr int MAX_SPIRAL_NODES = 1'000'000;

/// Replaces `spiral` by smooth nodes, evenly spaced in angle, whose curve is nowhere farther than `deviation`
/// from the spiral, and `twin` by its mirror image in the line through the centre in the direction of the
/// start: the two begin in one point and part to either side.
///
/// Four nodes a turn are the least; a deviation of 1/10000 of the radius takes eight a turn. A spiral that
/// begins or ends in its centre, where its direction changes fastest, takes two to four times as many. The
/// first node has no incoming and the last no outgoing handle; handles are otherwise equal on both sides of a
/// node.
///
/// False, with both empty: a number that is not finite, radii below 0 or both 0, turns or a deviation
/// of 0 or less, more than MAX_SPIRAL_NODES needed.
TARVEX_API bool GetSymmetricalSpiralBPoints(const SPIRAL& shape, double deviation,
                                            CArray<BPOINT, BPOINT>& spiral, CArray<BPOINT, BPOINT>& twin);

}  // namespace tarvex
