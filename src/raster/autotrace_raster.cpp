// What the colour-region tracer reads of its picture, and the cleaning up of reserved bytes.
#include "raster/autotrace_raster.h"

namespace tarvex {
namespace {

constexpr unsigned kForeignBits = 0xE0;
constexpr unsigned kPassingMarks = PIXEL_ATTR_FILL | PIXEL_ATTR_TRACE | PIXEL_ATTR_CUT | PIXEL_ATTR_FILTER;

BYTE CleanedUp(BYTE byte, Digitised filled) {
    unsigned marks = (byte & kForeignBits) != 0 ? 0U : byte;
    if (filled == Digitised::Keep && (marks & PIXEL_ATTR_FILL) != 0) marks |= PIXEL_ATTR_DIGI;
    return static_cast<BYTE>(marks & ~kPassingMarks);
}

}  // namespace

RGBQUAD MarkedRaster::Mean(int x, int y) const {
    int blue = 0, green = 0, red = 0;
    for (int dy = -1; dy <= 1; ++dy) {
        const RGBQUAD* row = Row(ClampedY(y + dy));
        for (int dx = -1; dx <= 1; ++dx) {
            const RGBQUAD& pixel = row[ClampedX(x + dx)];
            blue += pixel.rgbBlue;
            green += pixel.rgbGreen;
            red += pixel.rgbRed;
        }
    }
    return {static_cast<BYTE>(blue / 9), static_cast<BYTE>(green / 9), static_cast<BYTE>(red / 9), 0};
}

void CleanUpReserved(const MarkedRaster& raster, Digitised filled) {
    for (int y = 0; y < raster.Height(); ++y) {
        RGBQUAD* row = raster.Row(y);
        for (int x = 0; x < raster.Width(); ++x) {
            if (row[x].rgbReserved != 0) row[x].rgbReserved = CleanedUp(row[x].rgbReserved, filled);
        }
    }
}

}  // namespace tarvex
