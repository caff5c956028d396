// Node-array functions that shaping needs: a node at a point of a contour, and handles put in order.
#include "tarvex/nodes.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "bezier/nodes_cubic.h"
#include "tarvex/bezier.h"

namespace tarvex {

namespace {

constexpr double FAR_AWAY = std::numeric_limits<double>::infinity();

/// Where on a contour a point is.
struct Place {
    int segment = -1;
    double t = 0;
    double squaredDistance = FAR_AWAY;
};

/// A lower bound of the squared distance: that from the box of the control points. Not a number when a
/// control point is none.
double BoxDistance(const Cubic& c, DPOINT p) {
    const auto gap = [](double v, double a, double b, double d, double e) {
        const auto [least, most] = std::minmax({a, b, d, e});
        return std::max({least - v, v - most, 0.0});
    };
    return SquaredLength(
        {gap(p.x, c.p0.x, c.p1.x, c.p2.x, c.p3.x), gap(p.y, c.p0.y, c.p1.y, c.p2.y, c.p3.y)});
}

/// The parameter on a line without handles, as though it ran evenly.
double LineParameter(const Cubic& c, DPOINT p) {
    const DPOINT along = Minus(c.p3, c.p0);
    const double squared = SquaredLength(along);
    if (!(squared > 0)) return 0;
    return std::clamp(Dot(Minus(p, c.p0), along) / squared, 0.0, 1.0);
}

Place NearestPlace(const CArray<BPOINT, BPOINT>& nodes, DPOINT p) {
    Place best;
    for (int i = 0; i + 1 < nodes.GetSize(); ++i) {
        const Cubic c = SegmentOf(nodes[i], nodes[i + 1]);
        if (!(BoxDistance(c, p) < best.squaredDistance)) continue;
        const bool isLine = HasNoHandles(c);
        const double t =
            isLine ? LineParameter(c, p) : CBezier(c.p0, c.p1, c.p2, c.p3).GetNearestCurvePointT(p);
        const double squared = SquaredDistance(isLine ? Mix(c.p0, c.p3, t) : PointAt(c, t), p);
        if (squared < best.squaredDistance) best = {i, t, squared};
    }
    return best;
}

/// The new node at a place; the handles of its neighbours are set to those of the halves.
BPOINT SplitAt(BPOINT& before, BPOINT& after, double t, const DPOINT* anchor) {
    const Cubic c = SegmentOf(before, after);
    if (HasNoHandles(c)) {
        const DPOINT p = anchor != nullptr ? *anchor : Mix(c.p0, c.p3, t);
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
        const DPOINT q = HasNoHandles(c) ? Mix(c.p0, c.p3, place.t) : PointAt(c, place.t);
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
    if (first.pt == last.pt && !SameBits(first.pt, last.pt)) {
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
