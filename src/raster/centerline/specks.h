// Removing what is too small to have been drawn.
#pragma once

#include "raster/skeleton/bit_plane.h"

namespace tarvex::centerline {

/// Clears the 8-connected pieces of `plane` that have `most` pixels or fewer, then fills the 4-connected
/// holes that have no more either. More than 256 counts as 256.
void RemoveSpecks(skeleton::BitPlane& plane, int most);

}  // namespace tarvex::centerline
