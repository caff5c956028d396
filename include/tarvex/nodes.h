// Functions on the nodes of Bezier contours.
//
// A contour is an array of nodes; the segment between two neighbours is a cubic (see BPOINT in records.h),
// and the contour is closed when its last anchor equals its first. Coordinates are in the caller's unit;
// nothing here depends on the direction of y. Nothing raises on account of coordinates, NaN and infinities
// included. Different contours may be worked on from different threads.
#pragma once

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
