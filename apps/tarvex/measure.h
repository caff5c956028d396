// Measures of outlines, from their curves and not from a flattened form.
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

/// The arc length: of lines exactly, of curves to about one part in ten million. CBezier::GetLength, which
/// always comes to 20,480 chords on a curve, would take minutes on a large drawing.
double LengthOf(ContourView nodes);

/// The area enclosed, exactly; positive when the contour runs clockwise as seen on the screen (y down).
/// An open contour is closed by a line, as it is when filled. A contour that crosses itself counts each
/// part by how often it runs around it.
double SignedAreaOf(ContourView nodes);

}  // namespace tarvex::app
