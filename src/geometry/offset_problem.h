// What the offset functions share before and after the grid: checking and placing their points, the sense of
// a closed contour, and leaving out what is too narrow.
#pragma once

#include <optional>
#include <span>
#include <vector>

#include "geometry/offset_raw.h"

namespace tarvex::offsetting {

/// Points on a grid that has room for their offset.
struct Problem {
    Grid grid;
    Manner manner;
    std::vector<Path> paths;  ///< tagged with the points' numbers through all contours; at least two each
    double narrowest;         ///< the width, on the grid, up to which parts do not count
};

enum class Closing { open, closed };

/// Nothing when a coordinate or the distance is not a number below 1e100, or no path has two different
/// points. Paths with fewer are left out; in closed ones the last point is not taken if it repeats the first.
std::optional<Problem> Pose(std::span<const std::span<const DPOINT>> contours, Closing closing,
                            double distance, const OffsetOptions& options);

/// Whether the points end where they begin.
bool IsClosed(std::span<const DPOINT> points);

/// Twice the area, positive for what is clockwise on a screen.
double DoubleArea(const Path& path);

/// Drops contours that are nowhere wider, on average, than `width`.
void DropNarrow(std::vector<Contour>& contours, double width);

}  // namespace tarvex::offsetting
