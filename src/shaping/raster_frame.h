// The raster that shapes are drawn into: its size, and where in the document it lies.
#pragma once

#include <optional>

#include "tarvex/platform.h"
#include "tarvex/scaledraw.h"

namespace tarvex {

struct RasterFrame {
    int width = 0;
    int height = 0;
    CScaleDraw view;
};

/// The raster for what lies in `whole`, a rectangle in document units: as many pixels as units, but at most
/// 2000 on the longer side, with a margin of two pixels on every side. None when a side has no pixel.
///
/// Rectangles of fewer than 7 units leave nothing between the margins; the view is then sound, and the
/// drawing partly outside.
std::optional<RasterFrame> FrameRaster(const tagRECT& whole);

}  // namespace tarvex
