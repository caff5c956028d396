// Fitting, flattening and measuring any coordinates, NaN and infinities included: all of it ends, chains
// hang together, and ends are the given points bit for bit.
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

#include "input.h"
#include "tarvex/bezier.h"

namespace tarvex::fuzz {
namespace {

bool Same(const DPOINT& a, const DPOINT& b) {
    const auto same = [](double v, double w) {
        return (std::isnan(v) && std::isnan(w)) || std::memcmp(&v, &w, sizeof v) == 0;
    };
    return same(a.x, b.x) && same(a.y, b.y);
}

/// Coordinates of one of four kinds: whole and small, of a hundredth, special, or any bits.
double TakeCoordinate(Input& input, int kind) {
    static constexpr double specials[] = {
        0.0,    -0.0,     1e-8,      1e-300, 1e154, -1e154, 1e300, -1.7976931348623157e308,
        5e-324, INFINITY, -INFINITY, NAN,    1,     2};
    switch (kind) {
        case 0:
            return input.Take<std::int8_t>();
        case 1:
            return input.Take<std::int16_t>() / 100.0;
        case 2:
            return specials[static_cast<std::size_t>(
                input.TakeBetween(0, static_cast<int>(std::size(specials)) - 1))];
        default:
            return input.Take<double>();
    }
}

DPOINT TakePoint(Input& input, int kind) {
    const double x = TakeCoordinate(input, kind);
    return {x, TakeCoordinate(input, kind)};
}

void Fit(Input& input, int kind) {
    const double error = TakeCoordinate(input, input.TakeBetween(0, 3));
    std::vector<DPOINT> points;
    bool isModest = true;  // so that no distance overflows
    while (!input.Rest().empty() && points.size() < 4000) {
        // Now and then a point of another kind among its fellows.
        points.push_back(TakePoint(input, kind == 4 ? input.TakeBetween(0, 3) : kind));
        isModest = isModest && std::fabs(points.back().x) < 1e100 && std::fabs(points.back().y) < 1e100;
    }
    const int n = static_cast<int>(points.size());
    CArray<BEZIER, BEZIER> segments;
    FitCurve(points.data(), n, &segments, error);
    Require(n >= 2 || segments.IsEmpty(), "fewer than two points give nothing");
    Require(segments.GetSize() < std::max(n, 1), "a segment takes at least one step of the run");
    CArray<BPOINT, BPOINT> nodes;
    FitCurve(points.data(), n, &nodes, error);
    Require(nodes.GetSize() == (segments.IsEmpty() ? 0 : segments.GetSize() + 1), "a node for every joint");
    if (!isModest || n < 2 || n > 1000) return;  // there may be gaps
    Require(!segments.IsEmpty(), "modest points are fitted");
    Require(Same(segments[0].p0, points.front()), "the first point is the chain's");
    Require(Same(segments[segments.GetUpperBound()].p3, points.back()), "the last point is the chain's");
    for (int i = 0; i < segments.GetSize(); ++i) {
        if (i > 0) Require(Same(segments[i].p0, segments[i - 1].p3), "segments hang together");
        Require(Same(nodes[i].pt, segments[i].p0) && Same(nodes[i].cp2, segments[i].p1) &&
                    Same(nodes[i + 1].cp1, segments[i].p2) && Same(nodes[i + 1].pt, segments[i].p3),
                "nodes carry the segments");
    }
}

void Measure(Input& input, int kind) {
    const auto point = [&] { return TakePoint(input, kind == 4 ? input.TakeBetween(0, 3) : kind); };
    CBezier curve(point(), point(), point(), point());
    curve.SetExpandStraightLines(input.TakeBetween(0, 1) == 1);
    curve.SetResolution(TakeCoordinate(input, input.TakeBetween(0, 3)));
    CArray<DPOINT, DPOINT> points;
    curve.GetPolyline(points);
    Require(points.GetSize() >= 2 && points.GetSize() <= 100'000 + 4 + 3 * 61, "flattening is bounded");
    Require(Same(points[0], curve.p0), "a polyline begins at the segment's start");
    Require(Same(points[points.GetUpperBound()], curve.p3), "a polyline ends at the segment's end");
    const int count = points.GetSize();
    curve.GetPolyline(points);
    Require(points.GetSize() == 2 * count - 1, "the start is not repeated");

    const double length = curve.GetLength();
    Require(!(length < 0), "no length is negative");
    curve.GetPolylineEx(points);
    Require(points.GetSize() >= 21 && points.GetSize() <= 20481, "even samples are bounded");
    Require(Same(points[0], curve.p0) && Same(points[points.GetUpperBound()], curve.p3),
            "even samples run from end to end");
    const DPOINT near = point();
    const double scanned = curve._GetCurveT(near);
    const double exact = curve.GetNearestCurvePointT(near);
    Require(scanned >= 0 && scanned <= 1 && exact >= 0 && exact <= 1, "nearest parameters lie on the curve");
}

}  // namespace
}  // namespace tarvex::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace tarvex::fuzz;
    Input input(data, size);
    const bool fits = input.TakeBetween(0, 1) == 0;
    const int kind = input.TakeBetween(0, 4);
    if (fits) {
        Fit(input, kind);
    } else {
        Measure(input, kind);
    }
    return 0;
}
