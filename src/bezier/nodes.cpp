// Node-array functions that shaping needs: a node at a point of a contour, and handles put in order.
#include "tarvex/nodes.h"

#include <algorithm>
#include <cmath>

#include "bezier/nodes_place.h"

namespace tarvex {

namespace {

/// The new node at a place; the handles of its neighbours are set to those of the halves.
BPOINT SplitAt(BPOINT& before, BPOINT& after, double t, const DPOINT* anchor) {
    const Cubic c = SegmentOf(before, after);
    if (HasNoHandles(c)) {
        const DPOINT p = anchor != nullptr ? *anchor : PlacedPoint(c, t);
        return {p, p, p};
    }
    const Cubic left = PartOf(c, 0, t);
    const Cubic right = PartOf(c, t, 1);
    before.cp2 = left.p1;
    after.cp1 = right.p2;
    BPOINT node{left.p2, left.p3, right.p1};
    if (anchor != nullptr) {
        const DPOINT shift = Minus(*anchor, node.pt);
        node = {Plus(node.cp1, shift), *anchor, Plus(node.cp2, shift)};
    }
    return node;
}

void SettleHandle(DPOINT& handle, DPOINT anchor) {
    if (!IsFinite(handle) || Distance(handle, anchor) < GEOMETRY_EPSILON) handle = anchor;
}

}  // namespace

int AddPointToPolyBezier(CArray<BPOINT, BPOINT>* contour, DPOINT p, bool exactly) {
    if (contour == nullptr || contour->GetSize() < 2 || !IsFinite(p)) return -1;
    CArray<BPOINT, BPOINT>& nodes = *contour;
    for (int i = 0; i < nodes.GetSize(); ++i) {
        if (nodes[i].pt == p) return i;
    }
    const Place place = NearestPlace(nodes, p);
    if (place.segment < 0) return -1;
    if (!exactly) {
        // The nearest point of the curve may be a node.
        const Cubic c = SegmentOf(nodes[place.segment], nodes[place.segment + 1]);
        const DPOINT q = PlacedPoint(c, place.t);
        if (q == c.p0) return place.segment;
        if (q == c.p3) return place.segment + 1;
    }
    BPOINT before = nodes[place.segment];
    BPOINT after = nodes[place.segment + 1];
    const BPOINT node = SplitAt(before, after, place.t, exactly ? &p : nullptr);
    nodes.InsertAt(place.segment + 1, node);  // may raise, so the neighbours change after it
    nodes[place.segment] = before;
    nodes[place.segment + 2] = after;
    return place.segment + 1;
}

void FixBezierCP(CArray<BPOINT, BPOINT>& contour) {
    if (contour.GetSize() < 2) return;
    const BPOINT& first = contour[0];
    BPOINT& last = contour[contour.GetUpperBound()];
    if (first.pt == last.pt && (first.pt.x != last.pt.x || first.pt.y != last.pt.y)) {
        const DPOINT shift = Minus(first.pt, last.pt);
        last.cp1 = Plus(last.cp1, shift);
        last.cp2 = Plus(last.cp2, shift);
        last.pt = first.pt;
    }
    for (BPOINT& node : contour) {
        SettleHandle(node.cp1, node.pt);
        SettleHandle(node.cp2, node.pt);
    }
}

}  // namespace tarvex
