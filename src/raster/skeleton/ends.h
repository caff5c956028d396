// Where the lines of a skeleton end.
#pragma once

#include "raster/skeleton/bit_plane.h"
#include "raster/skeleton/distance_map.h"

namespace tarvex::skeleton {

/// Lets the free ends of `plane`, lines one pixel wide, which they stay, run on along the middle of `shape`
/// as far as it does not narrow as it does towards a blunt end, and takes them back to there.
void SettleEnds(BitPlane& plane, const BitPlane& shape, const DistanceMap& distances);

}  // namespace tarvex::skeleton
