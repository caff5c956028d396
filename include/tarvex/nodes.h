// Functions on the nodes of Bezier contours.
//
// A contour is an array of nodes; the segment between two neighbours is a cubic (see BPOINT in records.h),
// and the contour is closed when its last anchor equals its first. Coordinates are in the caller's unit;
// nothing here depends on the direction of y. Nothing raises on account of coordinates, NaN and infinities
// included. Different contours may be worked on from different threads.
#pragma once

#include <span>
#include <vector>

#include "tarvex/records.h"

namespace tarvex {

/// Gives the contour a node at `p`, a point on it, and returns that node's index. The segment that carries
/// the point is split there by de Casteljau's construction, so the curve stays what it was; `flags` of the
/// new node is 0, and the outer handles of its neighbours are kept.
///
/// The segment is the one that comes nearest to `p`, the first of equally near ones. A segment without
/// handles is a line and becomes two lines without handles. Where there is a node already (both coordinates
/// within 1e-8), nothing is inserted and the index of the first such node is returned.
///
/// `exactly` decides what a point a little off the curve does: true puts the anchor at `p` itself, bit for
/// bit, so that several contours can share it (the handles on both sides move along with it); false puts it
/// on the curve, at the point nearest to `p`.
///
/// -1, and no change: a null pointer, fewer than two nodes, a point that is not finite, a contour with
/// no segment that can be measured. Linear in the number of nodes, some microseconds for each segment whose
/// control points come nearer than the nearest curve so far.
TARVEX_API int AddPointToPolyBezier(CArray<BPOINT, BPOINT>* contour, DPOINT p, bool exactly);

/// Finishes the control points of a contour that was put together from pieces:
/// - a control point that is not finite, or within 1e-8 of its anchor, goes onto the anchor;
/// - when the last anchor is within 1e-8 of the first, it becomes the first, bit for bit, and the handle
///   on it moves along.
/// Whatever else the contour has stays as it is, bit for bit; so does a contour of fewer than two nodes.
TARVEX_API void FixBezierCP(CArray<BPOINT, BPOINT>& contour);

// ---------------------------------------------------------------------------------------------
// Tangents
//
// A tangent is that of the curve itself: it points to the next control point or anchor along the contour that
// is not within 1e-8 of the node, through collapsed handles and segments without extent. In a closed
// contour the first and the last node are one, which has a segment on either side.

/// The angle, in radians, up to which a contour counts as smooth: about a degree.
inline constexpr double SMOOTH_NODE_ANGLE = 0.02;

/// 1 if the tangents on the two sides of node `i` differ by at most SMOOTH_NODE_ANGLE, else 0. An open
/// contour's ends, a contour without extent and an index out of range are not smooth. Unlike
/// `CBezierPoint::IsSmooth` this looks at angles, not lengths, so it does not depend on the contour's size;
/// handles that fold back onto each other make a cusp, which is not smooth, and a collapsed handle can
/// be part of a smooth node.
TARVEX_API int IsSmooth(const CArray<BPOINT, BPOINT>& nodes, int i);

/// The unit vector that halves the angle at node `i` on the side that lies from +x towards +y of the
/// direction of travel (the right hand on a screen). At a smooth node it is the normal; at an open contour's
/// end, the normal to the one tangent; at a cusp, where both sides leave in one direction, that direction.
///
/// False, and (0, 0), for an index out of range and where there is no tangent at all.
TARVEX_API bool GetBisector(const CArray<BPOINT, BPOINT>& nodes, int i, DPOINT& bisector);

// ---------------------------------------------------------------------------------------------
// Cutting and turning

/// Cuts a contour at parameter `t`, 0 to 1, of the segment after node `segment`: `first` and `second`
/// together trace the same curve, and meet in one anchor bit for bit. Both are open; their nodes at the cut
/// have no handle beyond it, and `flags` 0 unless a node was there. Within 1e-8 of a node (measured along the
/// control polygon) the cut is at the node. A segment without handles is run through evenly: t = 0.5 is its
/// middle.
///
/// False, with both emptied: a cut at the very start or end of the contour, a segment that is not there, t
/// outside [0, 1] or NaN. An output may be the contour itself, but not both the same array.
TARVEX_API bool SplitBPointArray(const CArray<BPOINT, BPOINT>& nodes, int segment, double t,
                                 CArray<BPOINT, BPOINT>& first, CArray<BPOINT, BPOINT>& second);
/// The same at the point of the contour nearest to `p`.
TARVEX_API bool SplitBPointArray(const CArray<BPOINT, BPOINT>& nodes, const DPOINT& p,
                                 CArray<BPOINT, BPOINT>& first, CArray<BPOINT, BPOINT>& second);

/// Reverses the order of the nodes from `first` to `last`, both included, and exchanges the two handles of
/// each, so that the curve between them is what it was, run the other way. The segments that lead up to the
/// range and away from it now end in the exchanged nodes. False, and no change, when the range is not there
/// or runs backwards.
TARVEX_API bool SwapPoints(CArray<BPOINT, BPOINT>& nodes, int first, int last);
/// The same for the whole contour.
TARVEX_API void SwapPoints(CArray<BPOINT, BPOINT>& nodes);

// ---------------------------------------------------------------------------------------------
// Measures

/// The area enclosed, exactly but for rounding: positive for a contour that runs clockwise on a screen (from
/// +x towards +y). An open contour is closed by a line; where a contour crosses itself, each part counts by
/// how often it is surrounded. 0 for fewer than two nodes.
TARVEX_API double GetBezierArea(std::span<const BPOINT> nodes);

/// The smallest rectangle around the curve, exactly but for rounding. NaN coordinates are passed over. False,
/// and no change, for fewer than two nodes, and when no anchor's x or no anchor's y is a number.
TARVEX_API bool GetBezierFrame(std::span<const BPOINT> nodes, DRECT& frame);

/// The arc length: of lines exactly, of curves to some 1e-11 of it. NaN when a coordinate is not finite. A
/// few microseconds a segment.
TARVEX_API double GetBezierLength(std::span<const BPOINT> nodes);

/// A place on a contour: parameter `t`, 0 to 1, of the segment after node `segment`; -1 for none.
struct BPOINTPLACE {
    int segment = -1;
    double t = 0;
};

/// A contour with its lengths measured, for everything that asks by arc length.
///
///     CBPointArrayMath outline(nodes);
///     CArray<DPOINT, DPOINT> stitches;
///     outline.GetEvenPoints(static_cast<int>(outline.GetLength() / 25), stitches);  // about 2.5 mm apart
///
/// It keeps a copy of the nodes, and may be used from several threads. Lengths are as accurate as those of
/// GetBezierLength; what is asked by length costs a binary search and a few dozen evaluations. Beyond an open
/// contour's ends a length means the end; in a closed contour lengths go round.
///
/// A contour of fewer than two nodes, or with coordinates that are not finite, has no places: points and
/// tangents are (0, 0), parts and even points empty.
class TARVEX_API CBPointArrayMath {
  public:
    explicit CBPointArrayMath(std::span<const BPOINT> nodes);

    bool IsClosed() const;
    double GetLength() const;
    double GetArea() const { return GetBezierArea(m_nodes); }
    bool GetFrame(DRECT& frame) const { return GetBezierFrame(m_nodes, frame); }

    BPOINTPLACE GetPlace(double length) const;
    /// The length up to a place; t is taken into [0, 1]. NaN for a place that is not there.
    double GetLengthAt(const BPOINTPLACE& place) const;

    DPOINT GetPoint(const BPOINTPLACE& place) const;
    DPOINT GetPoint(double length) const { return GetPoint(GetPlace(length)); }
    /// The unit tangent, in the direction of travel; at a corner and at a cusp the one of what follows, at
    /// the end of an open contour the one of what came. (0, 0) for a contour without extent.
    DPOINT GetTangent(const BPOINTPLACE& place) const;
    DPOINT GetTangent(double length) const { return GetTangent(GetPlace(length)); }

    /// The place nearest to `p`, the earliest of equally near ones.
    BPOINTPLACE GetNearest(const DPOINT& p) const;

    /// Replaces `part` by the curve between two lengths: pieces of the segments, nodes in between as they
    /// are, no handles beyond the ends. In a closed contour both lengths may lie beyond its own, and the part
    /// may run through the start, at most once around. False, and an empty `part`, when it would be shorter
    /// than 1e-8.
    bool GetPart(double from, double to, CArray<BPOINT, BPOINT>& part) const;

    /// Replaces `points` by `count` points at equal distances along the curve: both ends of an open contour
    /// included (one point is its start), a closed contour's start only once. None for `count` below 1.
    void GetEvenPoints(int count, CArray<DPOINT, DPOINT>& points) const;

  private:
    struct Stretch {
        int segment;
        double from;  ///< parameters
        double to;
        double length;
        double before;  ///< length of the contour up to it
    };
    int SegmentCount() const { return static_cast<int>(m_nodes.size()) - 1; }
    double Wrapped(double length) const;
    const Stretch& StretchOf(const BPOINTPLACE& place) const;

    std::vector<BPOINT> m_nodes;
    std::vector<Stretch> m_stretches;  ///< none when there are no places
    std::vector<double> m_ends;        ///< lengths up to the end of each segment
};

// ---------------------------------------------------------------------------------------------
// One node

/// One node, with what an editor does to it. Its three points always move together, and its `flags` stay.
class TARVEX_API CBezierPoint {
  public:
    explicit CBezierPoint(const BPOINT& node) : m_node(node) {}

    /// The node as it is now.
    const BPOINT& GetNode() const { return m_node; }

    /// 1 if both handles are at least 0.1 long and the anchor lies less than 0.1 from the line through the
    /// control points, else 0: a node with a collapsed handle is never smooth, one whose handles fold back
    /// onto each other is. In drawing units; the free IsSmooth below looks at angles instead.
    int IsSmooth() const;

    /// Subtracts the offset: the node moves by (-dx, -dy). Deliberate: callers pass the vector from the new
    /// position to the old one.
    void Move(DPOINT d);
    void Move(double dx, double dy);

    /// Turns the node about (cx, cy), from +x towards +y, as the free Rotate does.
    void Rotate(double cx, double cy, double angle);

    /// Multiplies the points' offsets from `c` by (sx, sy).
    void Stretch(DPOINT c, double sx, double sy);

    /// Puts both control points on one line through the anchor, each a third as far away as the neighbouring
    /// anchor on its side, so that the line halves the angle that the neighbours leave open. A neighbour on
    /// the anchor collapses its handle.
    void Smooth(DPOINT prev, DPOINT next);

  private:
    BPOINT m_node;
};

}  // namespace tarvex
