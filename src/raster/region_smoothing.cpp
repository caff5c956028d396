// The smoothing of a region, 64 pixels at a time.
//
// A row is held in words, its leftmost pixel the highest bit, with a word more on either side that repeats
// the last pixel. Growing is an "or" of rows and of words shifted by one. For the majority each pixel of the
// window is a digit of a binary sum whose digits of one weight share a word: five rows add up to the
// numbers 0 to 5 in three words, and five of those, shifted by -2 to 2 columns, to 0 to 25 in five words. The
// additions are full adders made of "and" and "exclusive or", so every bit of a word is a sum of its own.
#include <algorithm>
#include <array>
#include <cstdint>
#include <vector>

#include "raster/region_fill.h"

namespace tarvex {
namespace {

using Word = std::uint64_t;
constexpr int kWordBits = 64;
constexpr Word kAll = ~Word{0};

struct Sum {
    Word ones, carry;
};
Sum Add(Word a, Word b) { return {a ^ b, a & b}; }
Sum Add(Word a, Word b, Word c) { return {a ^ b ^ c, (a & b) | (c & (a ^ b))}; }

/// A number below 8 for each pixel: the digits of weight 1, 2 and 4.
struct Digits {
    Word ones, twos, fours;
};

Digits AddFive(Word a, Word b, Word c, Word d, Word e) {
    const Sum first = Add(a, b, c);
    const Sum all = Add(first.ones, d, e);
    return {all.ones, first.carry ^ all.carry, first.carry & all.carry};
}

/// The words of rows `top` to `bottom`, exclusive, as far as the columns of the area need them; rows between
/// those and the raster's edge are clear, rows beyond its edge repeat the last.
class Rows {
  public:
    Rows(const BitRaster& raster, const CRect& area)
        : m_raster(raster),
          m_area(area),
          m_first(area.left / kWordBits),
          m_words(static_cast<std::size_t>((area.right - 1) / kWordBits - m_first + 1)),
          m_clear(m_words + 2),
          m_values(static_cast<std::size_t>(area.bottom - area.top) * (m_words + 2)) {}

    std::size_t Words() const { return m_words; }
    /// A row's words begin at index 1.
    Word* At(int y) { return m_values.data() + static_cast<std::size_t>(y - m_area.top) * (m_words + 2); }
    const Word* Clamped(int y) {
        y = std::clamp(y, 0, m_raster.Height() - 1);
        return y < m_area.top || y >= m_area.bottom ? m_clear.data() : At(y);
    }

    void Load(int y) {
        Word* const row = At(y);
        const std::uint8_t* const bytes = m_raster.Row(y);
        for (std::size_t k = 0; k < m_words; ++k) {
            const std::size_t from = ByteOf(k);
            Word word = 0;
            for (std::size_t i = from; i < from + 8; ++i)
                word = word << 8 | (i < m_raster.Stride() ? bytes[i] : 0U);
            row[k + 1] = word;
        }
        RepeatEnds(row);
    }

    void Store(int y) {
        Word* const row = At(y);
        if (ReachesEnd()) row[m_words] &= ~TailMask();
        std::uint8_t* const bytes = m_raster.Row(y);
        for (std::size_t k = 0; k < m_words; ++k) {
            const std::size_t from = ByteOf(k);
            for (std::size_t i = 0; i < 8 && from + i < m_raster.Stride(); ++i)
                bytes[from + i] = static_cast<std::uint8_t>(row[k + 1] >> (56 - 8 * i));
        }
    }

    /// Puts the first and the last pixel of the raster into the bits beyond it.
    void RepeatEnds(Word* row) const {
        row[0] = m_first == 0 && (row[1] >> 63) != 0 ? kAll : 0;
        row[m_words + 1] = 0;
        if (!ReachesEnd()) return;
        const int last = (m_raster.Width() - 1) % kWordBits;
        const bool isSet = (row[m_words] >> (kWordBits - 1 - last) & 1) != 0;
        row[m_words] = isSet ? row[m_words] | TailMask() : row[m_words] & ~TailMask();
        row[m_words + 1] = isSet ? kAll : 0;
    }

  private:
    std::size_t ByteOf(std::size_t k) const { return (static_cast<std::size_t>(m_first) + k) * 8; }
    bool ReachesEnd() const {
        return (m_first + static_cast<std::int64_t>(m_words)) * kWordBits >= m_raster.Width();
    }
    /// The bits of the last word that lie beyond the raster.
    Word TailMask() const {
        const int used = m_raster.Width() % kWordBits;
        return used == 0 ? 0 : kAll >> used;
    }

    const BitRaster& m_raster;
    CRect m_area;
    int m_first;
    std::size_t m_words;
    std::vector<Word> m_clear;
    std::vector<Word> m_values;
};

/// The word at `p` with each pixel's neighbour `by` columns to its left, or to its right.
Word FromLeft(const Word* p, int by) { return p[0] >> by | p[-1] << (kWordBits - by); }
Word FromRight(const Word* p, int by) { return p[0] << by | p[1] >> (kWordBits - by); }

void Grow(Rows& from, Rows& to, const CRect& area) {
    std::vector<Word> upright(from.Words() + 2);
    for (int y = area.top; y < area.bottom; ++y) {
        const Word *above = from.Clamped(y - 1), *level = from.Clamped(y), *below = from.Clamped(y + 1);
        for (std::size_t k = 0; k < upright.size(); ++k) upright[k] = above[k] | level[k] | below[k];
        Word* const row = to.At(y);
        for (std::size_t k = 1; k <= from.Words(); ++k)
            row[k] = upright[k] | FromLeft(&upright[k], 1) | FromRight(&upright[k], 1);
        to.RepeatEnds(row);
    }
}

/// Which of the numbers 0 to 25 that five columns of digits add up to are at least 13.
Word MajorityOf(const Digits& o, const Digits& t, const Digits& f) {
    const Sum twos = Add(o.twos, t.ones);
    const Sum fours = Add(o.fours, t.twos, f.ones);
    const Sum allFours = Add(fours.ones, twos.carry);
    const Sum eights = Add(t.fours, f.twos, fours.carry);
    const Sum allEights = Add(eights.ones, allFours.carry);
    const Word sixteens = f.fours | eights.carry | allEights.carry;
    return sixteens | (allEights.ones & allFours.ones & (twos.ones | o.ones));
}

void AddMajority(Rows& from, const CRect& area, Rows& to) {
    std::array<std::vector<Word>, 3> columns;  // the digits of the sums of five rows
    for (auto& digit : columns) digit.resize(from.Words() + 2);
    for (int y = area.top; y < area.bottom; ++y) {
        std::array<const Word*, 5> rows{};
        for (int dy = -2; dy <= 2; ++dy) rows[static_cast<std::size_t>(dy + 2)] = from.Clamped(y + dy);
        for (std::size_t k = 0; k < columns[0].size(); ++k) {
            const Digits sum = AddFive(rows[0][k], rows[1][k], rows[2][k], rows[3][k], rows[4][k]);
            columns[0][k] = sum.ones;
            columns[1][k] = sum.twos;
            columns[2][k] = sum.fours;
        }
        Word* const row = to.At(y);
        const auto across = [&columns](std::size_t digit, std::size_t k) {
            const Word* p = &columns[digit][k];
            return AddFive(FromLeft(p, 2), FromLeft(p, 1), *p, FromRight(p, 1), FromRight(p, 2));
        };
        for (std::size_t k = 1; k <= from.Words(); ++k)
            row[k] = rows[2][k] | MajorityOf(across(0, k), across(1, k), across(2, k));
    }
}

}  // namespace

void SmoothRegion(const BitRaster& region, const CRect& area) {
    if (area.left >= area.right || area.top >= area.bottom) return;
    Rows rows(region, area);
    for (int y = area.top; y < area.bottom; ++y) rows.Load(y);
    Rows grown(region, area);
    Grow(rows, grown, area);
    AddMajority(grown, area, rows);
    for (int y = area.top; y < area.bottom; ++y) rows.Store(y);
}

}  // namespace tarvex
