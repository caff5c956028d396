// From a shape to its skeleton.
#pragma once

#include "raster/skeleton/bit_plane.h"
#include "raster/skeleton/distance_map.h"

namespace tarvex::skeleton {

/// Thins `plane` to the skeleton that CSkeleton promises. `distances` are made the shape's; what they hold
/// for the pixels that stay is how far each is from the shape's ground.
void Thin(BitPlane& plane, DistanceMap& distances);

}  // namespace tarvex::skeleton
