// The order in which thinning takes a shape's pixels away.
#pragma once

#include <vector>

#include "raster/skeleton/bit_plane.h"
#include "raster/skeleton/distance_map.h"

namespace tarvex::skeleton {

/// The pixels of `plane` that are not in `except`, those nearest to the ground first. `except` may be null.
std::vector<Position> RemovalOrder(const BitPlane& plane, const DistanceMap& distances,
                                   const BitPlane* except);

}  // namespace tarvex::skeleton
