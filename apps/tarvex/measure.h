// Frames of outlines, from their curves and not from a flattened form.
#pragma once

#include <optional>

#include "tarvex/containers.h"
#include "tarvex/svg_writer.h"

namespace tarvex::app {

/// The smallest rectangle around both.
DRECT United(const DRECT& a, const DRECT& b);
void Unite(std::optional<DRECT>& frame, const std::optional<DRECT>& other);

/// The smallest rectangle around the contour's curves, exact but for rounding; none without a segment.
std::optional<DRECT> FrameOf(ContourView nodes);
std::optional<DRECT> FrameOf(const CPolyPolyBezier& shape);

}  // namespace tarvex::app
