// The most frequent colour of a square window of a picture.
#pragma once

#include "raster/color/distance.h"

namespace tarvex::color {

inline constexpr int largestRadius = 3;

struct Winner {
    RGBQUAD color;
    int count;
};

/// The largest class of the window around (x, y), and its representative; CColorReduction::GetMajorityPixel
/// says which. The image has pixels; the radius is 0 to 3. With `wanted`, a winner of fewer pixels may be
/// given with any count below that.
Winner MajorityOfWindow(const PixelView& image, int x, int y, int radius, int wanted = 0);

}  // namespace tarvex::color
