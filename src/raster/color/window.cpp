// The majority of a window without a list of classes.
//
// By the rule, pixels are visited one by one and each joins the first class whose representative is almost
// equal to it. So the first class is all pixels almost equal to the first pixel; the second class all of the
// rest that are almost equal to the first of the rest; and so on. A class is thus found at once, as a mask
// of pixels, by comparing all of the window with one colour, once per class instead of once per pixel and
// class. A later class can only win with more pixels than the best so far, so the search ends as soon as no
// more than that are left: after one class in a window of one colour.
//
// The window stands in rows of eight columns, lane 8 row + column, so that a row's comparison is one vector
// operation. Channels differ by less than 16 when colours are almost equal, so differences are cut to 16 and
// their squares' sums fit 16 bits (3 · 256 alone is far beyond the limit).
#include "raster/color/window.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace tarvex::color {

namespace {

constexpr int kRows = 2 * largestRadius + 1;
constexpr int kColumns = 8;

struct Lanes {
    alignas(16) std::int16_t red[kRows * kColumns];
    alignas(16) std::int16_t green[kRows * kColumns];
    alignas(16) std::int16_t blue[kRows * kColumns];
    std::uint64_t all = 0;  // the lanes that are pixels of the window
    int rows = 0;
};

void Put(Lanes& lanes, int lane, const RGBQUAD& c) {
    lanes.red[lane] = c.rgbRed;
    lanes.green[lane] = c.rgbGreen;
    lanes.blue[lane] = c.rgbBlue;
}

/// Any window; columns beyond the window's repeat its last pixel.
void Read(const PixelView& image, int x, int y, int radius, Lanes& lanes) {
    for (int row = 0; row < lanes.rows; ++row) {
        const std::int64_t v = std::int64_t{y} + row - radius;
        const RGBQUAD* pixels =
            RowOf(image, static_cast<int>(std::clamp<std::int64_t>(v, 0, image.height - 1)));
        for (int column = 0; column < kColumns; ++column) {
            const std::int64_t u = std::int64_t{x} + std::min(column, 2 * radius) - radius;
            Put(lanes, row * kColumns + column, pixels[std::clamp<std::int64_t>(u, 0, image.width - 1)]);
        }
    }
}

#if defined(__SSE2__)

/// A window that lies inside the image with all eight columns.
void ReadInside(const PixelView& image, int x, int y, int radius, Lanes& lanes) {
    const __m128i low = _mm_set1_epi32(255);
    for (int row = 0; row < lanes.rows; ++row) {
        const RGBQUAD* pixels = RowOf(image, y + row - radius) + (x - radius);
        const __m128i a = _mm_loadu_si128(reinterpret_cast<const __m128i*>(pixels));
        const __m128i b = _mm_loadu_si128(reinterpret_cast<const __m128i*>(pixels + 4));
        const auto store = [](std::int16_t* to, __m128i first, __m128i second) {
            _mm_store_si128(reinterpret_cast<__m128i*>(to), _mm_packs_epi32(first, second));
        };
        const int lane = row * kColumns;
        store(lanes.blue + lane, _mm_and_si128(a, low), _mm_and_si128(b, low));
        store(lanes.green + lane, _mm_and_si128(_mm_srli_epi32(a, 8), low),
              _mm_and_si128(_mm_srli_epi32(b, 8), low));
        store(lanes.red + lane, _mm_and_si128(_mm_srli_epi32(a, 16), low),
              _mm_and_si128(_mm_srli_epi32(b, 16), low));
    }
}

/// The square of the difference, or 256 when that is less.
__m128i CutSquare(const std::int16_t* channel, __m128i value) {
    const __m128i difference =
        _mm_sub_epi16(_mm_load_si128(reinterpret_cast<const __m128i*>(channel)), value);
    const __m128i size = _mm_max_epi16(difference, _mm_sub_epi16(_mm_setzero_si128(), difference));
    const __m128i cut = _mm_min_epi16(size, _mm_set1_epi16(16));
    return _mm_mullo_epi16(cut, cut);
}

std::uint64_t AlmostEqualTo(const Lanes& lanes, int lane) {
    const __m128i red = _mm_set1_epi16(lanes.red[lane]);
    const __m128i green = _mm_set1_epi16(lanes.green[lane]);
    const __m128i blue = _mm_set1_epi16(lanes.blue[lane]);
    std::uint64_t mask = 0;
    for (int row = 0; row < lanes.rows; ++row) {
        const int first = row * kColumns;
        const __m128i r = CutSquare(lanes.red + first, red);
        const __m128i g = CutSquare(lanes.green + first, green);
        const __m128i b = CutSquare(lanes.blue + first, blue);
        const __m128i sum = _mm_add_epi16(_mm_add_epi16(r, _mm_slli_epi16(r, 1)),
                                          _mm_add_epi16(_mm_slli_epi16(g, 2), _mm_slli_epi16(b, 1)));
        const __m128i near = _mm_cmplt_epi16(sum, _mm_set1_epi16(almostEqual));
        const int bits = _mm_movemask_epi8(_mm_packs_epi16(near, _mm_setzero_si128()));
        mask |= static_cast<std::uint64_t>(static_cast<unsigned>(bits)) << first;
    }
    return mask;
}

#else

std::uint64_t AlmostEqualTo(const Lanes& lanes, int lane) {
    std::uint64_t mask = 0;
    for (int k = 0; k < lanes.rows * kColumns; ++k) {
        const int red = lanes.red[k] - lanes.red[lane];
        const int green = lanes.green[k] - lanes.green[lane];
        const int blue = lanes.blue[k] - lanes.blue[lane];
        if (3 * red * red + 4 * green * green + 2 * blue * blue < almostEqual) mask |= std::uint64_t{1} << k;
    }
    return mask;
}

#endif

}  // namespace

Winner MajorityOfWindow(const PixelView& image, int x, int y, int radius, int wanted) {
    const int side = 2 * radius + 1;
#if defined(__SSE2__)
    const bool inside = x >= radius && y >= radius && std::int64_t{x} - radius + kColumns <= image.width &&
                        std::int64_t{y} + radius < image.height;
#endif
    Lanes lanes;
    lanes.rows = side;
    const std::uint64_t rowMask = (1U << side) - 1;
    for (int row = 0; row < side; ++row) lanes.all |= rowMask << (row * kColumns);
#if defined(__SSE2__)
    if (inside) {
        ReadInside(image, x, y, radius, lanes);
    } else {
        Read(image, x, y, radius, lanes);
    }
#else
    Read(image, x, y, radius, lanes);
#endif
    int best = 0;
    int bestLane = 0;
    std::uint64_t left = lanes.all;
    int count = side * side;
    while (count > best && std::max(best, count) >= wanted) {
        const int lane = std::countr_zero(left);
        const std::uint64_t members = AlmostEqualTo(lanes, lane) & left;
        const int size = std::popcount(members);
        if (size > best) {
            best = size;
            bestLane = lane;
        }
        left &= ~members;
        count -= size;
    }
    return {{static_cast<BYTE>(lanes.blue[bestLane]), static_cast<BYTE>(lanes.green[bestLane]),
             static_cast<BYTE>(lanes.red[bestLane]), 0},
            best};
}

}  // namespace tarvex::color
