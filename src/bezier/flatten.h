// Flattening into a vector, or into no more than the points' frame, for callers who join the polylines of
// many segments: appending those to a CArray one by one copies the whole array every 1024 points.
#pragma once

#include <vector>

#include "bezier/point_frame.h"
#include "tarvex/bezier.h"

namespace tarvex {

/// Appends to `out` just what `segment.GetPolyline` appends to a non-empty array: the points after `p0`.
void AppendFlattened(const CBezier& segment, std::vector<DPOINT>& out);

/// Widens the frame, which holds `segment.p0` unless that is NaN, by all of those points.
void IncludeFlattened(const CBezier& segment, PointFrame& frame);

/// Whether that leaves the frame as it is, told from the other points alone; false when in doubt. Halving
/// stays within the range of what is halved, unless it overflows.
inline bool HoldsFlattened(const PointFrame& frame, const DPOINT& p1, const DPOINT& p2, const DPOINT& p3) {
    return frame.Holds(p1) && frame.Holds(p2) && frame.Holds(p3) && frame.IsWithin(1e300);
}

}  // namespace tarvex
