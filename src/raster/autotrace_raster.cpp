// The colour-region tracer's work on whole areas of marks: cleaning up and smoothing. Areas lie inside the
// picture, right and bottom exclusive; inside out they hold nothing.
#include "raster/autotrace_raster.h"

#include <array>
#include <cstdint>
#include <vector>

namespace tarvex {
namespace {

constexpr unsigned kForeignBits = 0xE0;
constexpr unsigned kPassingMarks = PIXEL_ATTR_FILL | PIXEL_ATTR_TRACE | PIXEL_ATTR_CUT | PIXEL_ATTR_FILTER;

BYTE CleanedUp(BYTE byte, Digitised filled) {
    unsigned marks = (byte & kForeignBits) != 0 ? 0U : byte;
    if (filled == Digitised::Keep && (marks & PIXEL_ATTR_FILL) != 0) marks |= PIXEL_ATTR_DIGI;
    return static_cast<BYTE>(marks & ~kPassingMarks);
}

void GiveToNeighbours(const MarkedRaster& raster, int x, int y) {
    for (int dir = 0; dir < 8; ++dir) {
        const PixelPosition p = Stepped({x, y}, dir);
        raster.Mark(raster.ClampedX(p.x), raster.ClampedY(p.y), PIXEL_ATTR_FILTER);
    }
}

void Grow(const MarkedRaster& raster, const CRect& area) {
    for (int y = area.top; y < area.bottom; ++y) {
        for (int x = area.left; x < area.right; ++x) {
            if (raster.Has(x, y, PIXEL_ATTR_FILL)) GiveToNeighbours(raster, x, y);
        }
    }
}

/// Marks every pixel whose window is filled for its greater part. The windows' sums are made of the sums of
/// five pixels in each column.
void MarkMajority(const MarkedRaster& raster, const CRect& area) {
    constexpr int reach = 2;
    constexpr int majority = 13;
    if (area.left >= area.right) return;
    std::vector<int> columns(static_cast<std::size_t>(area.right - area.left + 2 * reach));
    for (int y = area.top; y < area.bottom; ++y) {
        std::array<const RGBQUAD*, 2 * reach + 1> rows{};
        for (int dy = -reach; dy <= reach; ++dy)
            rows[static_cast<std::size_t>(dy + reach)] = raster.Row(raster.ClampedY(y + dy));
        for (std::size_t i = 0; i < columns.size(); ++i) {
            const int x = raster.ClampedX(area.left - reach + static_cast<int>(i));
            columns[i] = 0;
            for (const RGBQUAD* row : rows) columns[i] += row[x].rgbReserved & PIXEL_ATTR_FILL;
        }
        for (int x = area.left; x < area.right; ++x) {
            const int* first = columns.data() + (x - area.left);
            if (first[0] + first[1] + first[2] + first[3] + first[4] >= majority)
                raster.Mark(x, y, PIXEL_ATTR_FILTER);
        }
    }
}

void FillMarked(const MarkedRaster& raster, const CRect& area) {
    for (int y = area.top; y < area.bottom; ++y) {
        for (int x = area.left; x < area.right; ++x) {
            BYTE& byte = raster.At(x, y).rgbReserved;
            if ((byte & PIXEL_ATTR_FILTER) == 0) continue;
            byte = static_cast<BYTE>((byte & ~unsigned{PIXEL_ATTR_FILTER}) | PIXEL_ATTR_FILL);
        }
    }
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

void CleanUpReserved(const MarkedRaster& raster, const CRect& area, Digitised filled) {
    for (int y = area.top; y < area.bottom; ++y) {
        RGBQUAD* row = raster.Row(y);
        for (int x = area.left; x < area.right; ++x) {
            if (row[x].rgbReserved != 0) row[x].rgbReserved = CleanedUp(row[x].rgbReserved, filled);
        }
    }
}

void FilterFillArea(const MarkedRaster& raster, const CRect& area) {
    Grow(raster, area);
    FillMarked(raster, area);
    // The rule asks for this pass twice. Both read the fill marks, which change only afterwards, so the
    // second would mark what the first has marked.
    MarkMajority(raster, area);
    FillMarked(raster, area);
}

}  // namespace tarvex
