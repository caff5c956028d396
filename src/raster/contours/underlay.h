// What lies beneath all layers where several regions reach the ground.
#pragma once

#include <vector>

#include "raster/contours/region_order.h"

namespace tarvex::contours {

/// Closed polygons, clockwise around what they cover, that cover each pixel with a region whose eight
/// neighbours have regions too (or are outside the picture), and nothing that is not in a region. Nothing for
/// parts of the picture in which one region surrounds all others, as that one covers everything.
std::vector<std::vector<Crossing>> FindUnderlay(const RegionMap& map, const Borders& borders);

}  // namespace tarvex::contours
