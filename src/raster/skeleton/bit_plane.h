// A 1-bit raster to thin in: 64 pixels to a word, with ground all around it, so that every pixel has eight
// neighbours that can be read without asking where the picture ends.
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace tarvex::skeleton {

/// Where a pixel's bit is, counted from the plane's first one. Steps to neighbours are the same for all.
using Position = std::uint32_t;

/// The eight neighbours of a pixel and the pixel itself, row by row from the top, each from the left: bit
/// 3 * (dy + 1) + (dx + 1). The centre, bit 4, is set as the pixel is.
using Window = unsigned;
inline constexpr Window kCentre = 1U << 4;

class BitPlane {
  public:
    /// Raises CMemoryException (by `Checked`) when positions would not fit.
    BitPlane(int width, int height)
        : m_width(width),
          m_height(height),
          m_words(1 + (static_cast<std::size_t>(width) + 63) / 64),
          m_bits(Checked(m_words, static_cast<std::size_t>(height)) + 1) {}

    int Width() const { return m_width; }
    int Height() const { return m_height; }

    /// The words of a row, the lowest bit leftmost; bits beyond the width are 0. Rows -1 and Height() exist.
    std::uint64_t* Row(int y) { return m_bits.data() + FirstWord(y); }
    const std::uint64_t* Row(int y) const { return m_bits.data() + FirstWord(y); }
    /// Words of a row.
    int Words() const { return static_cast<int>(m_words) - 1; }

    /// How many positions there are, those of the ground around included.
    std::size_t PositionCount() const { return m_bits.size() * 64; }

    Position At(int x, int y) const {
        return static_cast<Position>(FirstWord(y) * 64 + static_cast<std::size_t>(x));
    }
    std::pair<int, int> Where(Position p) const {
        const std::size_t word = p >> 6;
        const auto y = static_cast<int>(word / m_words) - 1;
        return {static_cast<int>(p - At(0, y)), y};
    }
    /// From a row to the one below it.
    Position Down() const { return static_cast<Position>(m_words * 64); }

    bool Get(Position p) const { return (m_bits[p >> 6] >> (p & 63) & 1) != 0; }
    void Set(Position p) { m_bits[p >> 6] |= Bit(p); }
    void Clear(Position p) { m_bits[p >> 6] &= ~Bit(p); }

    Window Around(Position p) const {
        const Position left = p - 1;
        return Three(left - Down()) | Three(left) << 3 | Three(left + Down()) << 6;
    }

    /// How many set pixels follow a pixel in its row, counted at least up to `most`.
    int RunAfter(Position p, int most) const {
        int count = 0;
        int ones = 64;
        for (; ones == 64 && count < most; count += ones)
            ones = std::countr_one(SixtyFour(p + 1 + static_cast<Position>(count)));
        return count;
    }
    /// How many stand before it.
    int RunBefore(Position p, int most) const {
        int count = 0;
        int ones = 64;
        for (; ones == 64 && count < most; count += ones)
            ones = std::countl_one(SixtyFour(p - 64 - static_cast<Position>(count)));
        return count;
    }

    /// Calls `visit` with the position of each set pixel, in scan order.
    template <class Visit>
    void ForEachSet(Visit visit) const {
        for (std::size_t i = 0; i < m_bits.size(); ++i) {
            for (std::uint64_t word = m_bits[i]; word != 0; word &= word - 1)
                visit(static_cast<Position>(i * 64 + static_cast<std::size_t>(std::countr_zero(word))));
        }
    }

    friend bool operator==(const BitPlane&, const BitPlane&) = default;

  private:
    static std::size_t Checked(std::size_t words, std::size_t height);
    static std::uint64_t Bit(Position p) { return std::uint64_t{1} << (p & 63); }

    /// One word of ground stands before each row; the one before the next row ends this one.
    std::size_t FirstWord(int y) const { return static_cast<std::size_t>(y + 1) * m_words + 1; }

    /// Pixels from p rightwards, the lowest bit first.
    std::uint64_t SixtyFour(Position p) const {
        const std::uint64_t* word = m_bits.data() + (p >> 6);
        const unsigned shift = p & 63;
        return word[0] >> shift | word[1] << 1 << (63 - shift);
    }
    unsigned Three(Position p) const { return static_cast<unsigned>(SixtyFour(p)) & 7U; }

    int m_width;
    int m_height;
    std::size_t m_words;
    std::vector<std::uint64_t> m_bits;
};

/// What there is to know about a window, answered in advance: thinning asks it a hundred million times.
struct WindowFacts {
    bool simple;
    std::uint8_t neighbours;
};
extern const std::array<WindowFacts, 512> kWindowFacts;

/// Whether taking the pixel away leaves the topology of its neighbourhood as it is: the set neighbours are
/// one 8-connected piece and the ground beside it one 4-connected piece. False for a pixel without set
/// neighbours and for one without ground at its four sides.
inline bool IsSimple(Window window) { return kWindowFacts[window].simple; }

/// How many of the eight neighbours are set.
inline int NeighbourCount(Window window) { return kWindowFacts[window].neighbours; }

/// Whether a line one pixel wide is as good without the pixel: it is simple and not the line's end.
inline bool IsNeedless(Window window) { return IsSimple(window) && NeighbourCount(window) > 1; }

/// Calls `visit` with the position of each neighbour of `p` that is set in `window`.
template <class Visit>
void ForEachNeighbour(const BitPlane& plane, Position p, Window window, Visit visit) {
    for (unsigned rest = window & ~kCentre; rest != 0; rest &= rest - 1) {
        const auto bit = static_cast<Position>(std::countr_zero(rest));
        visit(p + (bit / 3) * plane.Down() + bit % 3 - plane.Down() - 1);
    }
}

/// The neighbour of `p`, which has one or two of them, that is not `former`; `p` itself when there is none.
inline Position Onwards(const BitPlane& plane, Position p, Position former) {
    Position next = p;
    ForEachNeighbour(plane, p, plane.Around(p), [&](Position q) {
        if (q != former) next = q;
    });
    return next;
}

}  // namespace tarvex::skeleton
