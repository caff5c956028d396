// Flattening into a vector, for callers who join the polylines of many segments: appending those to a
// CArray one by one copies the whole array every 1024 points.
#pragma once

#include <vector>

#include "tarvex/bezier.h"

namespace tarvex {

/// Appends to `out` just what `segment.GetPolyline` appends to a non-empty array: the points after `p0`.
void AppendFlattened(const CBezier& segment, std::vector<DPOINT>& out);

}  // namespace tarvex
