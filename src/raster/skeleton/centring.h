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

/// Moves the pixel of a line one pixel wide, which has two neighbours, to a place beside it that touches both
/// and nothing else. False, and nothing moved, where that would change the topology or the line's width.
bool MoveInLine(BitPlane& plane, Position from, Position to);

}  // namespace tarvex::skeleton
