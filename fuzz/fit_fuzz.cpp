// Fitting any coordinates, NaN and infinities included: it ends, chains hang together, finite points are
// fitted whole, and ends are the given points bit for bit.
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "checks.h"
#include "coordinates.h"
#include "input.h"
#include "tarvex/bezier.h"

namespace tarvex::fuzz {
namespace {

void Fit(Input& input, int kind) {
    const double error = TakeCoordinate(input, input.TakeBetween(0, 3));
    std::vector<DPOINT> points;
    double farthest = 0;  // NaN stays out
    bool areFinite = true;
    while (!input.Rest().empty() && points.size() < 4000) {
        points.push_back(TakePoint(input, kind));
        areFinite = areFinite && IsFinite(points.back());
        farthest = std::max({farthest, std::fabs(points.back().x), std::fabs(points.back().y)});
    }
    const int n = static_cast<int>(points.size());
    CArray<BEZIER, BEZIER> segments;
    FitCurve(points.data(), n, &segments, error);
    Require(n >= 2 || segments.IsEmpty(), "fewer than two points give nothing");
    Require(segments.GetSize() < std::max(n, 1), "a segment takes at least one step of the run");
    CArray<BPOINT, BPOINT> nodes;
    FitCurve(points.data(), n, &nodes, error);
    Require(nodes.GetSize() == (segments.IsEmpty() ? 0 : segments.GetSize() + 1), "a node for every joint");
    if (!areFinite || n < 2 || n > 1002) return;  // there may be gaps
    Require(!segments.IsEmpty(), "finite points are fitted");
    Require(SameNumbers(segments[0].p0, points.front()), "the first point is the chain's");
    Require(SameNumbers(segments[segments.GetUpperBound()].p3, points.back()),
            "the last point is the chain's");
    for (int i = 0; i < segments.GetSize(); ++i) {
        if (i > 0) Require(SameNumbers(segments[i].p0, segments[i - 1].p3), "segments hang together");
        Require(SameNumbers(nodes[i].pt, segments[i].p0) && SameNumbers(nodes[i].cp2, segments[i].p1) &&
                    SameNumbers(nodes[i + 1].cp1, segments[i].p2) &&
                    SameNumbers(nodes[i + 1].pt, segments[i].p3),
                "nodes carry the segments");
        Require(farthest >= 0x1p1022 || (IsFinite(segments[i].p1) && IsFinite(segments[i].p2)),
                "handles are finite");
    }
}

}  // namespace

void TryInput(Input input) { Fit(input, input.TakeBetween(0, COORDINATE_KINDS)); }

}  // namespace tarvex::fuzz
