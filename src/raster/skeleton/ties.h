// Which of two middle pixels a line runs on.
#pragma once

#include "raster/skeleton/bit_plane.h"
#include "raster/skeleton/distance_map.h"

namespace tarvex::skeleton {

/// Where `shape` is an even number of pixels wide, moves the pixels inside the lines of `plane`, which are
/// one pixel wide and stay so, to those of the two in the middle that the shape's middle is nearer to.
/// Topology, junctions and ends stay.
void SettleTies(BitPlane& plane, const BitPlane& shape, const DistanceMap& distances);

}  // namespace tarvex::skeleton
