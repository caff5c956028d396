// Directions of contours at their nodes.
#pragma once

#include <span>

#include "bezier/nodes_cubic.h"

namespace tarvex {

/// Whether the contour ends where it began.
bool IsClosedContour(std::span<const BPOINT> nodes);

/// Unit vectors along the direction of travel; (0, 0) where there is none.
struct NodeTangents {
    DPOINT in;
    DPOINT out;
};

NodeTangents TangentsAt(std::span<const BPOINT> nodes, int i);

/// The vector at unit length; (0, 0) when it has none.
DPOINT Unit(DPOINT v);

}  // namespace tarvex
