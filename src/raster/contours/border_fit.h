// Curves along borders.
#pragma once

#include <functional>

#include "raster/contours/region_order.h"
#include "tarvex/colortrace.h"

namespace tarvex::contours {

/// Gives every border its cubics. False when `progress`, if there is one, asked to stop.
bool FitBorders(const RegionMap& map, const RegionOptions& options, Borders& borders);

/// Gives a border of each region, and of each hole, that has no area since the fit its points for cubics.
void KeepAreas(const RegionMap& map, const RegionOptions& options, const Regions& regions, Borders& borders);

}  // namespace tarvex::contours
