// The whole way of an offset, for points from whatever source: onto the grid, around, and the parts of the
// result with an account of where their edges come from.
#pragma once

#include <optional>
#include <span>
#include <vector>

#include "geometry/offset_problem.h"

namespace tarvex::offsetting {

/// A part of a result. `tags` has one entry for each edge, an index into the solution's edges.
struct Strand {
    std::vector<GridPoint> points;
    std::vector<int>
        tags;  ///< of the edge from point i to the next; a closed strand's last point is its first
};

struct Solution {
    Grid grid;
    std::vector<RawEdge> edges;  ///< their sources are indices of points: of the edge that starts there
    std::vector<Strand> strands;
};

/// The offset of one contour or line, as ShrinkPolyline describes it. Nothing for unusable input. The
/// distance must not be 0.
std::optional<Solution> SolveContour(std::span<const DPOINT> points, double distance,
                                     const OffsetOptions& options);

/// The offset of a shape filled by the even-odd rule; points are numbered through all contours. A distance
/// of 0 gives its outline, with the sources for tags and without edges.
std::optional<Solution> SolveShape(std::span<const std::span<const DPOINT>> contours, double distance,
                                   const OffsetOptions& options);

}  // namespace tarvex::offsetting
