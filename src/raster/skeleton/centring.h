// Moving the pixels of a skeleton to the middle.
#pragma once

#include <vector>

#include "raster/skeleton/bit_plane.h"
#include "raster/skeleton/distance_map.h"

namespace tarvex::skeleton {

/// Moves pixels inside the lines of `plane`, which are one pixel wide and stay so, to neighbours of theirs
/// that are farther from the ground of `shape`: those at the positions `open`, and those beside one that has
/// been moved. Topology, junctions and ends stay.
void CentreLines(BitPlane& plane, const BitPlane& shape, const DistanceMap& distances,
                 std::vector<Position> open);

}  // namespace tarvex::skeleton
