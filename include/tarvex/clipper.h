// Boolean operations on polygon sets: difference, intersection, exclusive or and union.
//
// A set is any number of closed contours without the closing vertex repeated. A point is inside a set
// when an odd number of its contours surround it (even-odd rule), so contours may overlap, nest, cross
// and repeat each other or themselves in any way; neither their direction nor their hole flags matter
// on input. Coordinates are in the caller's unit, anywhere in the range of a double, large and small
// ones together.
//
// Raw ownership is the contract here: a set owns its two arrays and every vertex array, allocated with
// new[], and FreeClipPolygon gives them back. Nothing is shared between calls, so different sets may be
// used from different threads.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "tarvex/export.h"
#include "tarvex/records.h"

namespace tarvex {

/// A closed contour: the vertices in order, the last one joined to the first. The clipper negates the
/// count of a contour that it found unable to contribute (see ClipPolygons), and passes over every
/// contour whose count is negative.
struct ClipContour {
    std::int32_t vertexCount = 0;
    DPOINT* vertices = nullptr;
};

/// A set of contours; `holes` has one flag for each, nonzero for a hole. Empty: count 0, no arrays.
struct ClipPolygon {
    std::int32_t contourCount = 0;
    std::int32_t* holes = nullptr;
    ClipContour* contours = nullptr;
};

/// Appends a copy of the contour, its vertices included, as the last one. A count of 0 or below is kept
/// as it is and gets no vertex storage. Both arrays are reallocated one larger, so adding n contours
/// copies O(n²) entries. Raises CMemoryException, with the set as it was, when memory is short.
TARVEX_API void AddClipContour(ClipPolygon& polygon, const ClipContour& contour, std::int32_t hole);

/// Puts subject op clip into `result`: 0 subject minus clip, 1 intersection, 2 exclusive or, 3 union.
/// Any other code gives the empty set.
///
/// `result` may hold a set, which is freed, and may be one of the operands, which it then replaces.
///
/// The result:
/// - Its region is exact but for the rounding of crossing points: a vertex of the result is a vertex of
///   the operands, bit for bit, or a point where their edges cross, rounded to doubles. (Of vertices that
///   differ only in the signs of zeros, the result has the one with positive zeros.) Where rounding
///   moves an edge to the other side of a vertex, the edge is led through that vertex.
/// - Its contours are simple polygons of three or more vertices; no two of them cross or overlap along
///   an edge, exactly, in the coordinates returned, and no contour meets a vertex twice.
/// - Parts that share an edge are one, without that edge. Parts that touch in a point stay apart, as
///   does a hole that touches the contour around it.
/// - A contour whose inner side is inside the result is an outer contour (hole flag 0), one whose inner
///   side is outside is a hole (1), at any depth. Outer contours have positive area (counter-clockwise
///   with y upwards), holes negative.
/// - A contour starts at its lowest vertex (smallest y, then smallest x); the contours stand in the
///   order in which a line moving towards larger y leaves them, those that have both their highest and
///   their lowest vertex in common from left to right. Vertices in the middle of a straight input edge,
///   where some other edge that bounds nothing ended, are left out.
/// Exchanging the operands of a symmetric operation gives the same result, bit for bit.
///
/// The operands: with no contour at all in the subject, difference and intersection are empty; without
/// one in the clip set, the intersection is. Contours with a NaN or an infinite coordinate, with a
/// negative count or without storage are ignored. Contours of one or two vertices surround nothing.
/// When both sets have contours, a difference or an intersection marks those that cannot contribute by
/// negating their `vertexCount` in the operand itself, deliberately: a clip contour whose bounding box
/// meets no subject contour's, and, for the intersection only, a subject contour whose box meets no clip
/// contour's (boxes that touch meet). Marks are never removed: a caller that uses an operand again must
/// allow for them.
///
/// Cost: O((n + k) log n) time and O(n + k) memory for n edges with k crossings; where crossings are so
/// close together that rounding makes new ones, the sweep is repeated. Raises CMemoryException, with
/// `result` empty, when memory is short or the crossings are beyond counting in 31 bits.
TARVEX_API void ClipPolygons(int op, ClipPolygon& subject, ClipPolygon& clip, ClipPolygon& result);

/// Deletes every vertex array and both arrays, and makes the set empty. Harmless on an empty set.
TARVEX_API void FreeClipPolygon(ClipPolygon& polygon);

/// Whether the text form carries the hole flags.
enum class ClipHoleFlags { omitted, written };

/// The text form: the contour count on a line; then, for each contour, its vertex count on a line, its
/// hole flag on a line when wanted, and a line for every vertex, " x y" with 15 digits after the point.
/// So coordinates are kept to 5e-16, not to the bit. A marked contour is written with its negative
/// count and no vertices.
TARVEX_API std::string WriteClipPolygon(const ClipPolygon& polygon, ClipHoleFlags flags);

/// Reads the text form into `polygon`, which may hold a set, which is freed; flags that are omitted
/// read as 0. Numbers may be separated by any white space and written in any decimal form. False, with
/// `polygon` empty, when the text ends early or something is not a number or beyond its range; text
/// after the last vertex is ignored. Never allocates more than a small multiple of the text's length; raises
/// CMemoryException, with `polygon` empty too, when it cannot.
TARVEX_API bool ReadClipPolygon(std::string_view text, ClipHoleFlags flags, ClipPolygon& polygon);

}  // namespace tarvex
