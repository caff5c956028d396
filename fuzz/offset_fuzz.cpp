// Moving any contours sideways by any distance: what comes out is finite and closed where the contour was, no
// farther off than corners may reach, and keeps away from the contour; regions that grow grow.
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <numbers>

#include "checks.h"
#include "coordinates.h"
#include "input.h"
#include "tarvex/offset.h"

namespace tarvex::fuzz {
namespace {

using Polyline = CArray<DPOINT, DPOINT>;

/// How far inside its circle of radius 1 the middle of a chord lies, of 1024 to a full turn: no arc has more.
const double MOST_CHORDS_SAG = 1 - std::cos(std::numbers::pi / 1024);

OffsetOptions TakeOptions(Input& input) {
    OffsetOptions options;
    options.corner = input.TakeBetween(0, 1) == 1 ? OffsetCorner::round : OffsetCorner::bevel;
    const int wild = input.TakeBetween(0, 7);
    if (wild == 1) options.mitreLimit = TakeCoordinate(input, input.TakeBetween(0, 3));
    if (wild == 2) options.tolerance = TakeCoordinate(input, input.TakeBetween(0, 3));
    if (wild >= 3) options.mitreLimit = input.TakeBetween(0, 64) / 8.0;
    return options;
}

void TakePolyline(Input& input, int kind, Polyline& points) {
    const bool isClosed = input.TakeBetween(0, 1) == 1;
    for (int count = input.TakeBetween(0, 14); count > 0; --count) points.Add(TakePoint(input, kind));
    if (isClosed && !points.IsEmpty()) points.Add(DPOINT(points[0]));
}

/// How far a corner can stick out, with room for rounding.
double Reach(const OffsetOptions& options, double distance) {
    const double least = options.corner == OffsetCorner::bevel ? std::sqrt(2.0) : 1.0;  // the ends of a bevel
    const double limit = std::isnan(options.mitreLimit) ? 100 : std::clamp(options.mitreLimit, least, 100.0);
    const double slack = std::isnan(options.tolerance) ? 1 : std::fabs(options.tolerance);
    const double moved = std::isnan(distance) ? 0 : std::fabs(distance);  // no number moves nothing
    return moved * limit + slack + 1e-6 * (1 + moved);
}

double DistanceToSide(const DPOINT& p, const DPOINT& a, const DPOINT& b) {
    const double dx = b.x - a.x, dy = b.y - a.y, square = dx * dx + dy * dy;
    const double along =
        square > 0 ? std::clamp(((p.x - a.x) * dx + (p.y - a.y) * dy) / square, 0.0, 1.0) : 0;
    return std::hypot(p.x - a.x - along * dx, p.y - a.y - along * dy);
}

double AreaOf(const CPolyPolyDPoint& shape) {
    double area = 0;
    for (int i = 0; i < shape.GetSize(); ++i) area += fuzz::AreaOf(shape[i]);
    return area;
}

/// Whether all points are one.
bool IsPoint(const Polyline& contour) {
    return std::all_of(contour.begin(), contour.end(),
                       [&contour](const DPOINT& p) { return p.x == contour[0].x && p.y == contour[0].y; });
}

/// Shapes of small coordinates, filled by the even-odd rule.
void MoveShape(Input& input, int kind) {
    CPolyPolyDPoint shape;
    for (int count = input.TakeBetween(1, 3); count > 0; --count) {
        auto contour = std::make_unique<Polyline>();
        TakePolyline(input, kind, *contour);
        if (!contour->IsEmpty() && !IsClosed(*contour)) contour->Add(DPOINT(contour->GetAt(0)));
        shape.Add(std::move(contour));
    }
    const OffsetOptions options = TakeOptions(input);
    const double distance = input.TakeBetween(0, 255) / 16.0;
    const CPolyPolyDPoint region = ShrinkPolyline(shape, 0, options);
    const CPolyPolyDPoint smaller = ShrinkPolyline(shape, distance, options);
    const CPolyPolyDPoint larger = ShrinkPolyline(shape, -distance, options);
    for (const CPolyPolyDPoint* result : {&region, &smaller, &larger}) RequireClosedContours(*result, 4);
    const double area = AreaOf(region);
    const double slack = 1e-6 * (1 + std::fabs(area));
    Require(area >= -slack, "outlines run clockwise, holes the other way");
    Require(AreaOf(smaller) >= -slack && AreaOf(smaller) <= area + slack, "what shrinks is smaller");
    Require(AreaOf(larger) >= area - slack, "what grows is larger");
    if (!(options.tolerance >= 0 && options.tolerance < 1)) return;
    const double near = distance - std::max(options.tolerance, distance * MOST_CHORDS_SAG) - 1e-6;
    for (int i = 0; i < larger.GetSize(); ++i) {
        for (const DPOINT& p : larger[i]) {
            for (int k = 0; k < shape.GetSize(); ++k) {
                if (IsPoint(shape[k])) continue;  // left out, as nothing that could grow
                for (int side = 1; side < shape[k].GetSize(); ++side)
                    Require(DistanceToSide(p, shape[k][side - 1], shape[k][side]) >= near,
                            "a region's outline keeps its distance");
            }
        }
    }
}

template <class T, class Move>
void MoveContour(const CArray<T, T>& contour, const OffsetOptions& options, double distance, Move move) {
    const auto parts = move(contour, distance, options);
    Box around = BoxOf(contour);
    for (int i = 0; i < parts.GetSize(); ++i) {
        RequireFinite(parts[i]);
        Require(distance == 0 || !IsClosed(contour) || IsClosed(parts[i]), "closed contours come out closed");
        Require(around.Holds(AnchorBoxOf(parts[i]),
                             Reach(options, distance) +
                                 1e-9 * (around.right - around.left + around.bottom - around.top)),
                "corners reach no farther than they may");
    }
}

void Reorder(Input& input, int kind) {
    Polyline contour;
    TakePolyline(input, kind, contour);
    Polyline given;
    given.Copy(contour);
    const auto order = input.TakeBetween(0, 1) == 1 ? ContourOrder::reversed : ContourOrder::kept;
    const int start = input.TakeBetween(-1, 16);
    const bool byPoint = input.TakeBetween(0, 1) == 1;
    const bool done = byPoint ? ReorderPolyline(contour, TakePoint(input, kind), order)
                              : ReorderPolyline(contour, start, order);
    if (!done) {
        Require(Same(contour, given), "a contour that is refused stays as it was");
        return;
    }
    Require(contour.GetSize() > 1 && Same(contour[0], contour[contour.GetUpperBound()]),
            "a reordered contour ends with a copy of its first point");
    Require(contour.GetSize() - given.GetSize() == 0 || (byPoint && contour.GetSize() == given.GetSize() + 1),
            "a corner is added at most");
    Require(byPoint || Same(contour[0], given[start]), "it starts where it was asked to");
}

}  // namespace

void TryInput(Input input) {
    const int what = input.TakeBetween(0, 4);
    const int kind = input.TakeBetween(0, COORDINATE_KINDS);
    if (what == 0) {
        MoveShape(input, kind % 2);
        return;
    }
    if (what == 4) {
        Reorder(input, kind);
        return;
    }
    const OffsetOptions options = TakeOptions(input);
    const double distance = kind < 2 ? input.Take<std::int16_t>() / 256.0
                                     : TakeCoordinate(input, input.TakeBetween(0, COORDINATE_KINDS - 1));
    if (what == 1) {
        CArray<BPOINT, BPOINT> contour;
        TakeContour(input, kind, 8, contour);
        MoveContour(contour, options, distance,
                    [](const auto& c, double d, const OffsetOptions& o) { return ShrinkBezier(c, d, o); });
        return;
    }
    CArray<DPOINT, DPOINT> contour;
    TakePolyline(input, kind, contour);
    if (what == 2) {
        MoveContour(contour, options, distance,
                    [](const auto& c, double d, const OffsetOptions& o) { return ShrinkPolyline(c, d, o); });
    } else {
        MoveContour(contour, options, distance,
                    [](const auto& c, double d, const OffsetOptions&) { return RemovePolylineLoops(c, d); });
    }
}

}  // namespace tarvex::fuzz
