// Lines: one pixel thin, or wide with round ends and corners.
#pragma once

#include <span>
#include <vector>

#include "platform/path.h"
#include "platform/surface.h"

namespace tarvex::platform {

/// Draws the pixels of a line but the last.
///
/// Along the axis of the longer side (x when both are equal) there is one pixel at each step; the
/// other coordinate is the exact one rounded to the nearest, halves away from the start. What lies
/// outside the surface is skipped, not walked, and changes no other pixel.
void DrawThinLine(const Surface& surface, const POINT& from, const POINT& to, PixelWord value);

/// Draws figures by thin lines between their points, each rounded to the nearest pixel.
void StrokeThin(const Surface& surface, std::span<const Figure> figures, PixelWord value);

/// Draws figures by lines of a width of at least 2: all that a disc of that diameter sweeps over when
/// its centre follows them, filled as a polygon. A single point leaves a disc. Raises std::bad_alloc.
void StrokeWide(const Surface& surface, std::span<const Figure> figures, std::int64_t width, PixelWord value);

}  // namespace tarvex::platform
