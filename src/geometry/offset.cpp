// Polylines and polygons moved sideways: from the caller's arrays to strands of points, and back.
#include "tarvex/offset.h"

#include <algorithm>
#include <memory>

#include "geometry/offset_solution.h"

namespace tarvex {

namespace {

using namespace offsetting;

using PointArray = CArray<DPOINT, DPOINT>;

std::unique_ptr<PointArray> ToArray(std::span<const DPOINT> points) {
    auto array = std::make_unique<PointArray>();
    array->SetSize(static_cast<int>(points.size()));
    std::copy(points.begin(), points.end(), array->begin());
    return array;
}

/// Whether the corner between two edges of a result is there only because the parallels of two edges of the
/// original that are not neighbours lie on one line.
bool IsSeam(const Solution& solution, const Strand& strand, std::size_t before, std::size_t at) {
    if (solution.edges.empty()) return false;
    const RawEdge& in = solution.edges[static_cast<std::size_t>(strand.tags[before])];
    const RawEdge& out = solution.edges[static_cast<std::size_t>(strand.tags[at])];
    const int apart = out.source - in.source;
    const bool areBothParallel = in.kind == RawEdge::Kind::parallel && out.kind == RawEdge::Kind::parallel;
    if (areBothParallel && (apart == 1 || apart == -1)) return false;
    const std::size_t after = at + 1;
    const GridPoint& previous = strand.points[before];
    return SideOf(previous, strand.points[at], strand.points[after]) == 0;
}

CPolyPolyDPoint ToPolylines(const std::optional<Solution>& solution) {
    CPolyPolyDPoint result;
    if (!solution) return result;
    result.SetSize(static_cast<int>(solution->strands.size()));
    int count = 0;
    std::vector<DPOINT> points;
    for (const Strand& strand : solution->strands) {
        points.clear();
        for (std::size_t i = 0; i < strand.points.size(); ++i) {
            const bool isInner = i > 0 && i + 1 < strand.points.size();
            if (isInner && IsSeam(*solution, strand, i - 1, i)) continue;
            points.push_back(solution->grid.FromGrid(strand.points[i]));
        }
        result.SetAt(count++, ToArray(points).release());
    }
    return result;
}

}  // namespace

CPolyPolyDPoint ShrinkPolyline(const CArray<DPOINT, DPOINT>& contour, double distance,
                               const OffsetOptions& options) {
    const std::span<const DPOINT> points = contour;
    if (distance == 0) {
        CPolyPolyDPoint copy;
        if (Pose(std::span(&points, 1), Closing::open, 0, options)) copy.Add(ToArray(points));
        return copy;
    }
    return ToPolylines(SolveContour(points, distance, options));
}

CPolyPolyDPoint ShrinkPolyline(const CPolyPolyDPoint& shape, double distance, const OffsetOptions& options) {
    std::vector<std::span<const DPOINT>> contours;
    for (int i = 0; i < shape.GetSize(); ++i) {
        if (const PointArray* contour = shape.GetAt(i)) contours.emplace_back(*contour);
    }
    return ToPolylines(SolveShape(contours, distance, options));
}

}  // namespace tarvex
