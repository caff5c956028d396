// From a region's boundary and the line along its middle to two rails.
#pragma once

#include <optional>
#include <span>
#include <vector>

#include "breakup/faces.h"

namespace tarvex {

using PointList = std::vector<DPOINT>;

/// Two polylines that run beside each other in the same direction. Closed ones repeat their first point.
struct Rails {
    PointList first;
    PointList second;
};

struct ColumnSettings {
    int trim = 1;          ///< points at a line's end that do not count
    double edgeLimit = 6;  ///< an end edge that is shorter is none: the rails then meet in a point
};

/// Splits a boundary along a line that runs from one end of it to the other. The rails run as the line does;
/// with the edges between their starts and between their ends they are the boundary. None when the line does
/// not reach two different places of it.
std::optional<Rails> SplitAlong(const Boundary& boundary, std::span<const DPOINT> line,
                                const ColumnSettings& settings);

/// The rails of a ring, closed: both boundaries, turned the way the line runs, each from its place nearest to
/// the line's start.
std::optional<Rails> RingRails(const Boundary& outer, const Boundary& inner, std::span<const DPOINT> line);

}  // namespace tarvex
