// Building the mask of the shape and walking its cracks; level_set.h says what comes out.
#include "raster/contours/level_set.h"

#include <algorithm>
#include <bit>

namespace tarvex::contours {

namespace {

/// The mask's words that hold `width` pixels and a margin on either side.
int WordsFor(int width) {
    return static_cast<int>((std::int64_t{width} + std::int64_t{2} * ShapeMask::margin + 63) / 64);
}

}  // namespace

bool HasMoreThanTwoLevels(const GreyView& picture) {
    const std::uint8_t first = picture.Row(0)[0];
    int second = -1;
    for (int y = 0; y < picture.height; ++y) {
        const std::uint8_t* row = picture.Row(y);
        for (int x = 0; x < picture.width; ++x) {
            if (row[x] == first || row[x] == second) continue;
            if (second >= 0) return true;
            second = row[x];
        }
    }
    return false;
}

ShapeMask::ShapeMask(const GreyView& picture, int threshold, ShapeSide side)
    : m_width(picture.width), m_height(picture.height), m_words(WordsFor(picture.width)) {
    m_bits.resize((static_cast<std::size_t>(m_height) + std::size_t{2} * margin) *
                  static_cast<std::size_t>(m_words));
    const bool darkIsShape = side == ShapeSide::dark;
    std::vector<std::uint8_t> padded(static_cast<std::size_t>(m_words) * 64);
    for (int y = 0; y < m_height; ++y) {
        const std::uint8_t* levels = picture.Row(y);
        for (int x = 0; x < m_width; ++x)
            padded[static_cast<std::size_t>(x + margin)] = (levels[x] <= threshold) == darkIsShape ? 1 : 0;
        std::uint64_t* row = MutableRow(y);
        for (int w = 0; w < m_words; ++w) {
            // Eight bytes of 0 or 1 become eight bits by one multiplication: no two partial products
            // fall on the same bit of the top byte.
            std::uint64_t word = 0;
            for (int k = 0; k < 8; ++k) {
                std::uint64_t bytes = 0;
                const std::uint8_t* from =
                    padded.data() + (static_cast<std::size_t>(w) * 8 + static_cast<std::size_t>(k)) * 8;
                for (int b = 0; b < 8; ++b) bytes |= static_cast<std::uint64_t>(from[b]) << (8 * b);
                word |= (bytes * 0x0102040810204080u >> 56) << (8 * k);
            }
            row[w] = word;
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
