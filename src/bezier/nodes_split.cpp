// Cutting contours in two, and turning parts of them round.
#include <algorithm>
#include <utility>

#include "bezier/nodes_place.h"
#include "tarvex/nodes.h"

namespace tarvex {

namespace {

using Nodes = CArray<BPOINT, BPOINT>;

/// Nodes `from` to `to` - 1, with room for one more at either end where asked.
Nodes CopyOf(const Nodes& nodes, int from, int to, int roomBefore, int roomAfter) {
    Nodes copy;
    copy.SetSize(to - from + roomBefore + roomAfter);
    std::copy(nodes.begin() + from, nodes.begin() + to, copy.begin() + roomBefore);
    return copy;
}

/// Takes the handles away that lead beyond the cut.
void EndAtCut(Nodes& first, Nodes& second) {
    BPOINT& last = first[first.GetUpperBound()];
    last.cp2 = last.pt;
    second[0].cp1 = second[0].pt;
}

bool SplitAtNode(const Nodes& nodes, int node, Nodes& first, Nodes& second) {
    if (node <= 0 || node >= nodes.GetUpperBound()) return false;
    first = CopyOf(nodes, 0, node + 1, 0, 0);
    second = CopyOf(nodes, node, nodes.GetSize(), 0, 0);
    EndAtCut(first, second);
    return true;
}

bool Split(const Nodes& nodes, int segment, double t, Nodes& first, Nodes& second) {
    if (segment < 0 || segment + 1 >= nodes.GetSize() || !(t >= 0 && t <= 1)) return false;
    const Cubic c = SegmentOf(nodes[segment], nodes[segment + 1]);
    const Cubic left = PlacedPart(c, 0, t);
    const Cubic right = PlacedPart(c, t, 1);
    if (!(LegsOf(left) >= GEOMETRY_EPSILON)) return SplitAtNode(nodes, segment, first, second);
    if (!(LegsOf(right) >= GEOMETRY_EPSILON)) return SplitAtNode(nodes, segment + 1, first, second);
    first = CopyOf(nodes, 0, segment + 1, 0, 1);
    second = CopyOf(nodes, segment + 1, nodes.GetSize(), 1, 0);
    first[segment].cp2 = left.p1;
    first[segment + 1] = {left.p2, left.p3, left.p3};
    second[0] = {left.p3, left.p3, right.p1};
    second[1].cp1 = right.p2;
    return true;
}

}  // namespace

bool SplitBPointArray(const Nodes& nodes, int segment, double t, Nodes& first, Nodes& second) {
    Nodes before, after;
    const bool isSplit = Split(nodes, segment, t, before, after);
    first = std::move(before);
    second = std::move(after);
    return isSplit;
}

bool SplitBPointArray(const Nodes& nodes, const DPOINT& p, Nodes& first, Nodes& second) {
    const Place place = NearestPlace(nodes, p);
    return SplitBPointArray(nodes, place.segment, place.t, first, second);
}

bool SwapPoints(Nodes& nodes, int first, int last) {
    if (first < 0 || last < first || last >= nodes.GetSize()) return false;
    std::reverse(nodes.begin() + first, nodes.begin() + last + 1);
    std::for_each(nodes.begin() + first, nodes.begin() + last + 1,
                  [](BPOINT& node) { std::swap(node.cp1, node.cp2); });
    return true;
}

void SwapPoints(Nodes& nodes) { SwapPoints(nodes, 0, nodes.GetUpperBound()); }

}  // namespace tarvex
