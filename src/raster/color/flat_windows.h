// Which windows of a picture are of one colour, seen for a whole row at once.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <vector>

#include "raster/color/distance.h"

namespace tarvex::color {

/// The windows of 7 x 7 pixels around the pixels of one row.
class FlatWindows {
  public:
    static constexpr int radius = 3;

    explicit FlatWindows(const PixelView& image)
        : m_image(image), m_differs(static_cast<std::size_t>(std::max(image.width, 0))) {}

    /// Looks at the rows around row y, all of which are the picture's.
    void MoveTo(int y) {
        std::fill(m_differs.begin(), m_differs.end(), 0U);
        const RGBQUAD* centre = RowOf(m_image, y);
        const std::size_t width = m_differs.size();
        for (int k = -radius; k <= radius; ++k) {
            if (k != 0) Compare(centre, RowOf(m_image, y + k), width);
        }
        if (width > 1) Compare(centre, centre + 1, width - 1);
        constexpr RGBQUAD colored{255, 255, 255, 0};
        std::uint32_t mask;
        std::memcpy(&mask, &colored, sizeof mask);
        for (std::uint32_t& differs : m_differs) differs &= mask;
    }

    /// Whether the window around column x, which lies inside the picture, is sure to be of one colour: its
    /// columns are each of one, like the next column's, the one to the right of the window included.
    bool IsFlatAt(int x) const {
        const std::uint32_t* first = m_differs.data() + (x - radius);
        constexpr std::size_t side = 2 * radius + 1;
        return std::all_of(first, first + side, [](std::uint32_t differs) { return differs == 0; });
    }

  private:
    static std::uint32_t WordOf(const RGBQUAD& c) {
        std::uint32_t word;
        std::memcpy(&word, &c, sizeof word);
        return word;
    }
    void Compare(const RGBQUAD* a, const RGBQUAD* b, std::size_t count) {
        std::uint32_t* differs = m_differs.data();
        for (std::size_t x = 0; x < count; ++x) differs[x] |= WordOf(a[x]) ^ WordOf(b[x]);
    }

    PixelView m_image;
    std::vector<std::uint32_t>
        m_differs;  // a column's pixels, or it and the next one's; 0 where nothing does
};

}  // namespace tarvex::color
