// Building the mask of the shape and walking its cracks; level_set.h says what comes out.
#include "raster/contours/level_set.h"

#include <algorithm>
#include <bit>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace tarvex::contours {

namespace {

/// The mask's words that hold `width` pixels and a margin on either side.
int WordsFor(int width) {
    return static_cast<int>((std::int64_t{width} + std::int64_t{2} * ShapeMask::margin + 63) / 64);
}

}  // namespace

std::uint64_t DarkBits(const std::uint8_t* levels, int count, std::uint8_t level) {
    std::uint64_t bits = 0;
    int x = 0;
#if defined(__SSE2__)
    const __m128i limit = _mm_set1_epi8(static_cast<char>(level));
    for (; x + 16 <= count; x += 16) {
        const __m128i sixteen = _mm_loadu_si128(reinterpret_cast<const __m128i*>(levels + x));
        const __m128i dark = _mm_cmpeq_epi8(_mm_min_epu8(sixteen, limit), sixteen);
        bits |= static_cast<std::uint64_t>(static_cast<unsigned>(_mm_movemask_epi8(dark))) << x;
    }
#endif
    for (; x < count; ++x) bits |= static_cast<std::uint64_t>(levels[x] <= level ? 1 : 0) << x;
    return bits;
}

bool HasMoreThanTwoLevels(const GreyView& picture) {
    const std::uint8_t first = picture.Row(0)[0];
    std::uint8_t second = first;
    for (int y = 0; y < picture.height; ++y) {
        const std::uint8_t* row = picture.Row(y);
        int x = 0;
        while (x < picture.width) {
#if defined(__SSE2__)
            if (x + 16 <= picture.width) {
                const __m128i sixteen = _mm_loadu_si128(reinterpret_cast<const __m128i*>(row + x));
                const __m128i known =
                    _mm_or_si128(_mm_cmpeq_epi8(sixteen, _mm_set1_epi8(static_cast<char>(first))),
                                 _mm_cmpeq_epi8(sixteen, _mm_set1_epi8(static_cast<char>(second))));
                if (_mm_movemask_epi8(known) == 0xFFFF) {
                    x += 16;
                    continue;
                }
            }
#endif
            const std::uint8_t level = row[x++];
            if (level == first || level == second) continue;
            if (second != first) return true;
            second = level;
        }
    }
    return false;
}

ShapeMask::ShapeMask(const GreyView& picture, int threshold, ShapeSide side)
    : m_width(picture.width), m_height(picture.height), m_words(WordsFor(picture.width)) {
    m_bits.resize((static_cast<std::size_t>(m_height) + std::size_t{2} * margin) *
                  static_cast<std::size_t>(m_words));
    // All pixels are on one side of a threshold beyond the levels.
    const std::uint64_t flip = side == ShapeSide::dark ? 0 : ~std::uint64_t{0};
    const auto level = static_cast<std::uint8_t>(std::clamp(threshold, 0, 255));
    const bool none = threshold < 0;
    for (int y = 0; y < m_height; ++y) {
        std::uint64_t* row = MutableRow(y);
        for (int x = 0; x < m_width; x += 64) {
            const int count = std::min(64, m_width - x);
            std::uint64_t bits = none ? 0 : DarkBits(picture.Row(y) + x, count, level);
            bits = (bits ^ flip) & (~std::uint64_t{0} >> (64 - count));
            const std::size_t column = static_cast<std::size_t>(x) + margin;
            row[column >> 6] |= bits << (column & 63);
            if (const std::uint64_t rest = bits >> (64 - (column & 63)); rest != 0)
                row[(column >> 6) + 1] |= rest;
        }
    }
}

OutlineFollower::OutlineFollower(const GreyView& picture, int threshold, ShapeSide side)
    : m_picture(picture),
      m_level(threshold + 0.5),
      m_mask(picture, threshold, side),
      m_sign(side == ShapeSide::dark ? -1.0 : 1.0),
      m_soft(HasMoreThanTwoLevels(picture)) {
    const std::size_t words = static_cast<std::size_t>(m_mask.Words());
    m_pending.resize(static_cast<std::size_t>(picture.height) * words);
    for (int y = 0; y < picture.height; ++y) {
        const std::uint64_t* row = m_mask.Row(y);
        std::uint64_t* pending = m_pending.data() + static_cast<std::size_t>(y) * words;
        std::uint64_t carry = 0;
        for (std::size_t w = 0; w < words; ++w) {
            pending[w] = row[w] & ~(row[w] << 1 | carry);
            carry = row[w] >> 63;
        }
    }
}

double OutlineFollower::Progress() const {
    return static_cast<double>(m_row) / static_cast<double>(m_picture.height);
}

bool OutlineFollower::Next(std::vector<Crossing>& points) {
    const std::size_t words = static_cast<std::size_t>(m_mask.Words());
    for (; m_row < m_picture.height; ++m_row, m_word = 0) {
        const std::uint64_t* pending = m_pending.data() + static_cast<std::size_t>(m_row) * words;
        for (; m_word < m_mask.Words(); ++m_word) {
            const std::uint64_t word = pending[m_word];
            if (word == 0) continue;
            Follow(m_word * 64 + std::countr_zero(word) - ShapeMask::margin, m_row, points);
            return true;
        }
    }
    return false;
}

/// The grey of a pixel, counted from the level upwards on the shape's side.
double OutlineFollower::Level(int x, int y) const {
    return m_sign * (static_cast<double>(m_picture.Row(y)[x]) - m_level);
}

Crossing OutlineFollower::Cross(int x, int y, Side side) const {
    static constexpr int stepX[4] = {-1, 0, 1, 0};
    static constexpr int stepY[4] = {0, -1, 0, 1};
    const int groundX = x + stepX[side];
    const int groundY = y + stepY[side];
    double t = 0.5;
    if (m_soft && groundX >= 0 && groundY >= 0 && groundX < m_picture.width && groundY < m_picture.height) {
        const double inside = Level(x, y);
        t = inside / (inside - Level(groundX, groundY));
    }
    return {x + 0.5 + t * stepX[side], y + 0.5 + t * stepY[side]};
}

/// Whether the pixel (x, y) and the one diagonal to it by the steps, both shape between two ground
/// pixels, belong to one region. The side that is rarer in the 4 x 4 pixels around stays in one piece:
/// a thin dark line on light ground, or a thin light one on dark, is a line and not a row of dots. In
/// a tie the grey decides: whether the four pixels' mean is on the shape's side.
bool OutlineFollower::HangsTogether(int x, int y, int stepX, int stepY) const {
    const int fromX = std::min(x, x + stepX) - 1;
    const int fromY = std::min(y, y + stepY) - 1;
    int shape = 0;
    for (int row = 0; row < 4; ++row) shape += std::popcount(m_mask.GetFour(fromX, fromY + row));
    if (shape != 8) return shape < 8;
    return Level(x, y) + Level(x + stepX, y + stepY) + Level(x + stepX, y) + Level(x, y + stepY) >= 0.0;
}

void OutlineFollower::Follow(int startX, int startY, std::vector<Crossing>& points) {
    static constexpr int alongX[4] = {0, 1, 0, -1};
    static constexpr int alongY[4] = {-1, 0, 1, 0};
    static constexpr int outX[4] = {-1, 0, 1, 0};
    static constexpr int outY[4] = {0, -1, 0, 1};
    points.clear();
    const std::size_t words = static_cast<std::size_t>(m_mask.Words());
    int x = startX;
    int y = startY;
    int side = left;
    do {
        points.push_back(Cross(x, y, static_cast<Side>(side)));
        if (side == left) {
            const std::size_t column = static_cast<std::size_t>(x + ShapeMask::margin);
            m_pending[static_cast<std::size_t>(y) * words + (column >> 6)] &=
                ~(std::uint64_t{1} << (column & 63));
        }
        const int aheadX = x + alongX[side];
        const int aheadY = y + alongY[side];
        const int diagonalX = aheadX + outX[side];
        const int diagonalY = aheadY + outY[side];
        const bool ahead = m_mask.Get(aheadX, aheadY);
        bool turnOut = m_mask.Get(diagonalX, diagonalY);
        if (turnOut && !ahead) turnOut = HangsTogether(x, y, diagonalX - x, diagonalY - y);
        if (turnOut) {
            x = diagonalX;
            y = diagonalY;
            side = (side + 3) & 3;
        } else if (ahead) {
            x = aheadX;
            y = aheadY;
        } else {
            side = (side + 1) & 3;
        }
    } while (x != startX || y != startY || side != left);
}

}  // namespace tarvex::contours
