// Directions at nodes: smoothness and bisectors. Where handles are collapsed, the curve leaves its node
// towards the first control point that is elsewhere, so the walk goes on until it finds one.
#include "bezier/nodes_tangents.h"

#include <cmath>

#include "tarvex/nodes.h"

namespace tarvex {

namespace {

enum class Way { Forwards, Backwards };

/// The first point that the curve heads for from node `i`, minus the node.
DPOINT Heading(std::span<const BPOINT> nodes, int i, Way way) {
    const int count = static_cast<int>(nodes.size());
    const bool isClosed = IsClosedContour(nodes);
    const bool isForwards = way == Way::Forwards;
    const auto at = [&nodes](int k) -> const BPOINT& { return nodes[static_cast<std::size_t>(k)]; };
    const DPOINT start = at(i).pt;
    for (int walked = 0; walked + 1 < count; ++walked) {
        if (isForwards ? i + 1 == count : i == 0) {
            if (!isClosed) break;
            i = isForwards ? 0 : count - 1;
        }
        const BPOINT& here = at(i);
        i += isForwards ? 1 : -1;
        const BPOINT& next = at(i);
        for (const DPOINT& p :
             {isForwards ? here.cp2 : here.cp1, isForwards ? next.cp1 : next.cp2, next.pt}) {
            if (!(p == start)) return Minus(p, start);
        }
    }
    return {0, 0};
}

double Angle(DPOINT a, DPOINT b) { return std::atan2(std::fabs(a.x * b.y - a.y * b.x), Dot(a, b)); }

bool Vanishes(DPOINT v) { return v.x == 0 && v.y == 0; }

bool Holds(const CArray<BPOINT, BPOINT>& nodes, int i) { return i >= 0 && i < nodes.GetSize(); }

}  // namespace

DPOINT Unit(DPOINT v) {
    const double length = std::hypot(v.x, v.y);
    if (!(length > 0) || !std::isfinite(length)) return {0, 0};
    return {v.x / length, v.y / length};
}

bool IsClosedContour(std::span<const BPOINT> nodes) {
    return nodes.size() >= 2 && nodes.front().pt == nodes.back().pt;
}

NodeTangents TangentsAt(std::span<const BPOINT> nodes, int i) {
    return {Unit(Times(Heading(nodes, i, Way::Backwards), -1)), Unit(Heading(nodes, i, Way::Forwards))};
}

int IsSmooth(const CArray<BPOINT, BPOINT>& nodes, int i) {
    if (!Holds(nodes, i)) return 0;
    const auto [in, out] = TangentsAt(nodes, i);
    if (Vanishes(in) || Vanishes(out)) return 0;
    return Angle(in, out) <= SMOOTH_NODE_ANGLE ? 1 : 0;
}

bool GetBisector(const CArray<BPOINT, BPOINT>& nodes, int i, DPOINT& bisector) {
    bisector = {0, 0};
    if (!Holds(nodes, i)) return false;
    const auto [in, out] = TangentsAt(nodes, i);
    if (Vanishes(in) && Vanishes(out)) return false;
    const DPOINT along = Plus(in, out);
    constexpr double cusp = 1e-8;
    bisector = Length(along) < cusp ? out : Unit({-along.y, along.x});
    return true;
}

}  // namespace tarvex
