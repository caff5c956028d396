// The clipper on plain values, behind the raw sets of tarvex/clipper.h; what that header promises about
// regions and results is promised here.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "shaping/clip/boundary.h"
#include "tarvex/records.h"

namespace tarvex::clip {

enum class Operation : std::uint8_t { difference, intersection, exclusiveOr, unite };

/// A set as its contours' vertices; contours with coordinates that are not finite are ignored.
using Contours = std::span<const std::span<const DPOINT>>;

/// Subject op clip. Marks nothing and knows no trivial results.
std::vector<Contour> Clip(Operation operation, Contours subject, Contours clip);

}  // namespace tarvex::clip
