// Which lines of a skeleton go on in which through its junctions.
#pragma once

#include "raster/centerline/arms.h"
#include "raster/skeleton/bit_plane.h"

namespace tarvex::centerline {

/// Gives the ends of lines that are one stroke each other as partners, those of lines that end at another
/// stroke their goal on it, and drops the lines that were only bridges between junctions of one crossing.
/// `shape` is what the lines are the skeleton of.
void MendJunctions(ArmGraph& graph, const skeleton::BitPlane& shape);

}  // namespace tarvex::centerline
