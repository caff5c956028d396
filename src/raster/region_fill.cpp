// The seed fill of a colour region, a row of bits at a time.
//
// A fill asks two or three times of each pixel whether it belongs, once from each neighbouring row, and for a
// tolerance the answer takes nine pixels. So the answers for a whole row are worked out together when the
// fill first comes there, the sums of a window's three rows serving three windows, and kept as bits, which
// the span fill passes by in words. A small region in a large picture thus costs its rows, no more.
#include "raster/region_fill.h"

#include <algorithm>
#include <array>
#include <bit>

#include "raster/seedfill.h"

namespace tarvex {
namespace {

constexpr std::size_t kChannels = 4;  // of a pixel in memory: blue, green, red, reserved

/// The rows' operations of FillFromSeed, over rows that are prepared when first asked for.
class LazyRows {
  public:
    LazyRows(const MarkedRaster& picture, const BitRaster& cuts, const RGBQUAD& seed, int tolerance)
        : m_picture(picture),
          m_cuts(cuts),
          m_seed(seed),
          m_tolerance(tolerance),
          m_inside(picture.Width(), picture.Height()),
          m_open(picture.Width(), picture.Height()),
          m_isPrepared(static_cast<std::size_t>(picture.Height())),
          m_sums(kChannels * (static_cast<std::size_t>(picture.Width()) + 2)) {}

    int FillLeft(int x, int y) { return Open(y).FillLeft(x, y); }
    int FillRight(int x, int y) { return Open(y).FillRight(x, y); }
    int SkipRight(int x, int last, int y) { return Open(y).SkipRight(x, last, y); }

    /// What was filled. Widens `bounds` by it.
    OwnBits Filled(CRect& bounds) && {
        const std::size_t stride = m_inside.Raster().Stride();
        for (int y = 0; y < m_picture.Height(); ++y) {
            if (m_isPrepared[static_cast<std::size_t>(y)] == 0) continue;
            std::uint8_t* row = m_inside.Raster().Row(y);
            const std::uint8_t* rest = m_open.Raster().Row(y);
            for (std::size_t i = 0; i < stride; ++i) row[i] = static_cast<std::uint8_t>(row[i] ^ rest[i]);
            Widen(bounds, row, stride, y);
        }
        return std::move(m_inside);
    }

  private:
    static void Widen(CRect& bounds, const std::uint8_t* row, std::size_t stride, int y) {
        const auto isSet = [](std::uint8_t byte) { return byte != 0; };
        const auto* const first = std::find_if(row, row + stride, isSet);
        if (first == row + stride) return;
        const std::uint8_t* last = row + stride - 1;
        while (*last == 0) --last;
        const auto left = static_cast<LONG>(first - row) * 8 + std::countl_zero(*first);
        const auto right = static_cast<LONG>(last - row) * 8 + 7 - std::countr_zero(*last);
        bounds.left = std::min<LONG>(bounds.left, left);
        bounds.right = std::max<LONG>(bounds.right, right);
        bounds.top = std::min<LONG>(bounds.top, y);
        bounds.bottom = std::max<LONG>(bounds.bottom, y);
    }

    const BitRaster& Open(int y) {
        std::uint8_t& isPrepared = m_isPrepared[static_cast<std::size_t>(y)];
        if (isPrepared == 0) {
            isPrepared = 1;
            Prepare(y);
        }
        return m_open.Raster();
    }

    void Prepare(int y) {
        std::uint8_t* const row = m_inside.Raster().Row(y);
        if (m_tolerance == 0) {
            PrepareExact(m_picture.Row(y), row);
        } else {
            PrepareMeans(y, row);
        }
        const std::size_t stride = m_inside.Raster().Stride();
        if (m_cuts.Width() > 0) {
            const std::uint8_t* const cut = m_cuts.Row(y);
            for (std::size_t i = 0; i < stride; ++i) row[i] = static_cast<std::uint8_t>(row[i] & ~cut[i]);
        }
        std::copy(row, row + stride, m_open.Raster().Row(y));
    }

    /// Packs `inside(x)` for every column.
    template <class Inside>
    void Pack(std::uint8_t* row, Inside inside) const {
        const int width = m_picture.Width();
        int x = 0;
        for (; x + 8 <= width; x += 8) {
            unsigned byte = 0;
            for (int bit = 0; bit < 8; ++bit) byte = byte << 1 | static_cast<unsigned>(inside(x + bit));
            *row++ = static_cast<std::uint8_t>(byte);
        }
        if (x == width) return;
        unsigned byte = 0;
        for (int bit = 0; bit < 8; ++bit)
            byte = byte << 1 | static_cast<unsigned>(x + bit < width && inside(x + bit));
        *row = static_cast<std::uint8_t>(byte);
    }

    void PrepareExact(const RGBQUAD* pixels, std::uint8_t* row) const {
        const auto colour = [](const RGBQUAD& p) {
            return static_cast<std::uint32_t>(p.rgbBlue | p.rgbGreen << 8 | p.rgbRed << 16);
        };
        Pack(row, [pixels, colour, wanted = colour(m_seed)](int x) { return colour(pixels[x]) == wanted; });
    }

    void PrepareMeans(int y, std::uint8_t* row) {
        const int width = m_picture.Width();
        const auto bytes = [this](int line) {
            return reinterpret_cast<const std::uint8_t*>(m_picture.Row(m_picture.ClampedY(line)));
        };
        const std::uint8_t *above = bytes(y - 1), *level = bytes(y), *below = bytes(y + 1);
        // The sums of three rows, with the first and the last column once more on either side.
        std::uint16_t* const sums = m_sums.data();
        const std::size_t count = kChannels * static_cast<std::size_t>(width);
        for (std::size_t i = 0; i < count; ++i)
            sums[kChannels + i] = static_cast<std::uint16_t>(above[i] + level[i] + below[i]);
        std::copy(sums + kChannels, sums + 2 * kChannels, sums);
        std::copy(sums + count, sums + count + kChannels, sums + count + kChannels);
        Pack(row, [this, sums](int x) {
            const std::uint16_t* s = sums + kChannels * static_cast<std::size_t>(x);
            const auto off = [s](std::size_t channel, int seed) {
                const int mean = (s[channel] + s[channel + kChannels] + s[channel + 2 * kChannels]) / 9;
                return (mean - seed) * (mean - seed);
            };
            return off(0, m_seed.rgbBlue) + off(1, m_seed.rgbGreen) + off(2, m_seed.rgbRed) <= m_tolerance;
        });
    }

    const MarkedRaster& m_picture;
    const BitRaster& m_cuts;
    RGBQUAD m_seed;
    int m_tolerance;
    OwnBits m_inside;  ///< what may be filled, in prepared rows
    OwnBits m_open;    ///< what of that is not yet filled
    std::vector<std::uint8_t> m_isPrepared;
    std::vector<std::uint16_t> m_sums;
};

}  // namespace

OwnBits FillRegion(const MarkedRaster& picture, const BitRaster& cuts, PixelPosition seed, int tolerance,
                   CRect& bounds) {
    if (!picture.Inside(seed.x, seed.y)) return {picture.Width(), picture.Height()};
    const RGBQUAD colour = tolerance == 0 ? picture.At(seed.x, seed.y) : picture.Mean(seed.x, seed.y);
    LazyRows rows(picture, cuts, colour, tolerance);
    FillStack stack;
    FillFromSeed(rows, stack, picture.Height(), seed.x, seed.y);
    return std::move(rows).Filled(bounds);
}

}  // namespace tarvex
