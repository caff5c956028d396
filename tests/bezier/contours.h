// Random contours for the laws of node arrays.
#pragma once

#include "bezier/curves.h"
#include "tarvex/nodes.h"

namespace tarvex::testing_support {

using Nodes = CArray<BPOINT, BPOINT>;

inline Nodes MakeNodes(const std::vector<BPOINT>& list) {
    Nodes nodes;
    for (const BPOINT& node : list) nodes.Add(node);
    return nodes;
}

/// Curves and lines among points of some hundred units, closed or open; flags number the nodes.
inline Nodes RandomContour(CurveSource& source, bool isClosed) {
    const int count = source.Integer(2, 6);
    Nodes nodes;
    for (int i = 0; i < count; ++i) {
        const DPOINT at = source.Point(300);
        BPOINT node{at, at, at, static_cast<std::uint16_t>(i + 1)};
        if (source.Integer(0, 2) > 0) node.cp1 = source.Point(300);
        if (source.Integer(0, 2) > 0) node.cp2 = source.Point(300);
        nodes.Add(node);
    }
    if (isClosed) nodes.Add(nodes[0]);
    return nodes;
}

inline CBezier SegmentOfNodes(const Nodes& nodes, int i) { return {nodes[i], nodes[i + 1]}; }

}  // namespace tarvex::testing_support
