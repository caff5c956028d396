// Pictures of 32 bits and the distance of their colours.
#pragma once

#include <cstddef>
#include <cstdint>

#include "tarvex/colors.h"

namespace tarvex::color {

using PixelView = CColorReduction::IMAGE;

inline constexpr int largestDistance = 9 * 255 * 255;
inline constexpr int almostEqual = 390;   // nearer than this is almost equal
inline constexpr int sameCluster = 1200;  // nearer than this is one cluster, and a palette entry's own

inline int Distance(const RGBQUAD& a, const RGBQUAD& b) {
    const int red = a.rgbRed - b.rgbRed;
    const int green = a.rgbGreen - b.rgbGreen;
    const int blue = a.rgbBlue - b.rgbBlue;
    return 3 * red * red + 4 * green * green + 2 * blue * blue;
}

/// Row y of the picture; y must be inside.
inline RGBQUAD* RowOf(const PixelView& image, int y) {
    return image.pixels + static_cast<std::ptrdiff_t>(image.height - 1 - y) * image.width;
}

inline std::size_t PixelCount(const PixelView& image) {
    return static_cast<std::size_t>(image.width) * static_cast<std::size_t>(image.height);
}

inline bool IsEmpty(const PixelView& image) {
    return image.pixels == nullptr || image.width <= 0 || image.height <= 0;
}

/// Red, green and blue in one number.
inline std::uint32_t KeyOf(const RGBQUAD& c) {
    return static_cast<std::uint32_t>(c.rgbRed) | static_cast<std::uint32_t>(c.rgbGreen) << 8 |
           static_cast<std::uint32_t>(c.rgbBlue) << 16;
}

/// Sets the colour and leaves the reserved byte.
inline void Paint(RGBQUAD& pixel, const RGBQUAD& c) {
    pixel.rgbBlue = c.rgbBlue;
    pixel.rgbGreen = c.rgbGreen;
    pixel.rgbRed = c.rgbRed;
}

}  // namespace tarvex::color
