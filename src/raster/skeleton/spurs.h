// Cutting the short branches that ragged edges leave.
#pragma once

#include <vector>

#include "raster/skeleton/bit_plane.h"
#include "raster/skeleton/distance_map.h"

namespace tarvex::skeleton {

/// Cuts the branches that are spurs from `plane`, lines one pixel wide, which they stay. `middle` are the
/// pixels of the shape's medial axis, `distances` the shape's. Returns the positions next to pixels that
/// went.
std::vector<Position> CutSpurs(BitPlane& plane, const BitPlane& middle, const DistanceMap& distances);

}  // namespace tarvex::skeleton
