// A 32-bit picture with marks in its reserved bytes, as the colour-region tracer works on it.
#pragma once

#include <algorithm>
#include <cstddef>

#include "tarvex/autotrace.h"

namespace tarvex {

/// The squared distance of two colours.
inline int ColourDistance(const RGBQUAD& a, const RGBQUAD& b) {
    const int red = a.rgbRed - b.rgbRed;
    const int green = a.rgbGreen - b.rgbGreen;
    const int blue = a.rgbBlue - b.rgbBlue;
    return red * red + green * green + blue * blue;
}

/// A view of pixels that stay their owner's, rows from the bottom up. `At` wants coordinates inside.
class MarkedRaster {
  public:
    MarkedRaster(RGBQUAD* bits, int width, int height) : m_bits(bits), m_width(width), m_height(height) {}

    int Width() const { return m_width; }
    int Height() const { return m_height; }
    bool HasPixels() const { return m_width > 0; }
    bool Inside(int x, int y) const { return x >= 0 && x < m_width && y >= 0 && y < m_height; }
    int ClampedX(int x) const { return std::clamp(x, 0, m_width - 1); }
    int ClampedY(int y) const { return std::clamp(y, 0, m_height - 1); }

    RGBQUAD* Row(int y) const { return m_bits + static_cast<std::ptrdiff_t>(m_height - 1 - y) * m_width; }
    RGBQUAD& At(int x, int y) const { return Row(y)[x]; }

    bool Has(int x, int y, BYTE mark) const { return (At(x, y).rgbReserved & mark) != 0; }
    void Mark(int x, int y, BYTE mark) const {
        BYTE& byte = At(x, y).rgbReserved;
        byte = static_cast<BYTE>(byte | mark);
    }

    /// The mean of the 3 x 3 window, each channel rounded down.
    RGBQUAD Mean(int x, int y) const;

  private:
    RGBQUAD* m_bits;
    int m_width;
    int m_height;
};

enum class Digitised { Forget, Keep };

/// Clears foreign reserved bytes and all marks but the digitised one; to keep what is digitised also marks
/// what is filled.
void CleanUpReserved(const MarkedRaster& raster, Digitised filled);

}  // namespace tarvex
