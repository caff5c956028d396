// Flattening and measuring segments of any coordinates, NaN and infinities included: all of it ends, within
// the bounds that the header gives, and ends are the given points bit for bit.
#include <cmath>
#include <cstddef>
#include <cstdint>

#include "checks.h"
#include "coordinates.h"
#include "input.h"
#include "tarvex/bezier.h"

namespace tarvex::fuzz {
namespace {

void Measure(Input& input, int kind) {
    const auto point = [&] { return TakePoint(input, kind); };
    const DPOINT p0 = point();  // in statements of their own: the same for every compiler
    const DPOINT p1 = point();
    const DPOINT p2 = point();
    CBezier curve(p0, p1, p2, point());
    curve.SetExpandStraightLines(input.TakeBetween(0, 1) == 1);
    curve.SetResolution(TakeCoordinate(input, input.TakeBetween(0, 3)));
    CArray<DPOINT, DPOINT> points;
    curve.GetPolyline(points);
    Require(points.GetSize() >= 2 && points.GetSize() <= 100'000 + 4 + 3 * 61, "flattening is bounded");
    Require(SameNumbers(points[0], curve.p0), "a polyline begins at the segment's start");
    Require(SameNumbers(points[points.GetUpperBound()], curve.p3), "a polyline ends at the segment's end");
    const int count = points.GetSize();
    curve.GetPolyline(points);
    Require(points.GetSize() == 2 * count - 1, "the start is not repeated");

    const double length = curve.GetLength();
    Require(!(length < 0), "no length is negative");
    curve.GetPolylineEx(points);
    Require(points.GetSize() >= 21 && points.GetSize() <= 20481, "even samples are bounded");
    Require(SameNumbers(points[0], curve.p0) && SameNumbers(points[points.GetUpperBound()], curve.p3),
            "even samples run from end to end");
    const DPOINT near = point();
    const double scanned = curve._GetCurveT(near);
    const double exact = curve.GetNearestCurvePointT(near);
    Require(scanned >= 0 && scanned <= 1 && exact >= 0 && exact <= 1, "nearest parameters lie on the curve");
}

/// A flattened curve stays within its control points' frame, and near the curve.
void Approximate(Input& input) {
    const int kind = input.TakeBetween(0, 1);
    CBezier curve(TakePoint(input, kind), TakePoint(input, kind), TakePoint(input, kind),
                  TakePoint(input, kind));
    const double resolution = input.TakeBetween(1, 64) / 16.0;
    curve.SetResolution(resolution);
    CArray<DPOINT, DPOINT> points;
    curve.GetPolyline(points);
    Box frame;
    for (const DPOINT& p : {curve.p0, curve.p1, curve.p2, curve.p3}) frame.Include(p);
    Require(frame.Holds(BoxOf(points), 1e-9), "a polyline stays in the control points' frame");
    double length = 0;
    for (int i = 1; i < points.GetSize(); ++i)
        length += std::hypot(points[i].x - points[i - 1].x, points[i].y - points[i - 1].y);
    const double chord = std::hypot(curve.p3.x - curve.p0.x, curve.p3.y - curve.p0.y);
    const double polygon = std::hypot(curve.p1.x - curve.p0.x, curve.p1.y - curve.p0.y) +
                           std::hypot(curve.p2.x - curve.p1.x, curve.p2.y - curve.p1.y) +
                           std::hypot(curve.p3.x - curve.p2.x, curve.p3.y - curve.p2.y);
    Require(length >= chord - 1e-9 && length <= polygon + 1e-9,
            "a polyline is as long as the chord at least, as the control polygon at most");
}

}  // namespace

void TryInput(Input input) {
    const int kind = input.TakeBetween(0, COORDINATE_KINDS + 1);
    if (kind > COORDINATE_KINDS) {
        Approximate(input);
    } else {
        Measure(input, kind);
    }
}

}  // namespace tarvex::fuzz
