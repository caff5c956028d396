// Curves along borders.
#pragma once

#include <functional>

#include "raster/contours/borders.h"
#include "tarvex/colortrace.h"

namespace tarvex::contours {

/// Gives every border its cubics. False when `progress`, if there is one, asked to stop.
bool FitBorders(const RegionMap& map, const RegionOptions& options, Borders& borders);

}  // namespace tarvex::contours
