// The colour region around a pixel as a one-bit raster: what it is made of, the fill, and the smoothing.
#pragma once

#include <cstdint>
#include <vector>

#include "raster/autotrace_raster.h"
#include "raster/bit_raster.h"
#include "tarvex/rectangles.h"

namespace tarvex {

/// A one-bit raster that owns its pixels, all clear at first.
class OwnBits {
  public:
    OwnBits(int width, int height)
        : m_bytes(PaddedRowBytes(static_cast<std::uint64_t>(width)) * static_cast<std::size_t>(height)),
          m_raster(m_bytes.data(), width, height) {}
    OwnBits(OwnBits&&) = default;
    OwnBits& operator=(OwnBits&&) = default;
    OwnBits(const OwnBits&) = delete;
    OwnBits& operator=(const OwnBits&) = delete;
    ~OwnBits() = default;

    const BitRaster& Raster() const { return m_raster; }
    const std::vector<std::uint8_t>& Bytes() const { return m_bytes; }

  private:
    std::vector<std::uint8_t> m_bytes;
    BitRaster m_raster;
};

/// Fills the 4-connected region of (x, y): with tolerance 0 of exactly its colour, else where the mean of the
/// 3 x 3 window differs from the seed's by at most the tolerance, squared. `cuts`, a raster of the picture's
/// size or none, stops it. Widens `bounds` by the pixels filled, all sides inclusive.
OwnBits FillRegion(const MarkedRaster& picture, const BitRaster& cuts, PixelPosition seed, int tolerance,
                   CRect& bounds);

/// Grows what is set by a pixel to all eight sides, then sets the pixels whose 5 x 5 window, its pixels
/// beyond the raster repeating the last ones, is set for its greater part. `area`, right and bottom
/// exclusive, holds all that is set with three pixels around, as far as the raster has them.
void SmoothRegion(const BitRaster& region, const CRect& area);

}  // namespace tarvex
