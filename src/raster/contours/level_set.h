// The boundary between shape and ground, as closed chains of points between pixel centres.
#pragma once

#include <cstdint>
#include <vector>

#include "tarvex/contours.h"

namespace tarvex::contours {

/// One bit a pixel, 1 for the shape, with a margin of ground two pixels wide on all four sides, so that
/// neighbours can be asked for without looking where the picture ends.
class ShapeMask {
  public:
    static constexpr int margin = 2;

    ShapeMask(const GreyView& picture, int threshold, ShapeSide side);

    int Width() const { return m_width; }
    int Height() const { return m_height; }
    /// x in [-margin, width + margin), y likewise.
    bool Get(int x, int y) const {
        const std::size_t column = static_cast<std::size_t>(x + margin);
        return (Row(y)[column >> 6] >> (column & 63) & 1) != 0;
    }
    /// Pixels x to x + 3 of row y, as the lowest four bits.
    unsigned GetFour(int x, int y) const {
        const std::size_t column = static_cast<std::size_t>(x + margin);
        const std::uint64_t* word = Row(y) + (column >> 6);
        const unsigned shift = column & 63;
        const std::uint64_t bits =
            shift <= 60 ? word[0] >> shift : word[0] >> shift | word[1] << (64 - shift);
        return static_cast<unsigned>(bits & 15);
    }
    int Words() const { return m_words; }
    /// Bit (x + margin) of the row is pixel x.
    const std::uint64_t* Row(int y) const {
        return m_bits.data() + static_cast<std::size_t>(y + margin) * static_cast<std::size_t>(m_words);
    }

  private:
    std::uint64_t* MutableRow(int y) {
        return m_bits.data() + static_cast<std::size_t>(y + margin) * static_cast<std::size_t>(m_words);
    }

    int m_width;
    int m_height;
    int m_words;
    std::vector<std::uint64_t> m_bits;
};

/// One bit for each of up to 64 pixels, 1 where the level is at most `level`; lowest bit first.
std::uint64_t DarkBits(const std::uint8_t* levels, int count, std::uint8_t level);

/// Whether grey can tell where edges run; false for pictures of two levels or one.
bool HasMoreThanTwoLevels(const GreyView& picture);

/// Where an outline crosses the line between the centres of two neighbouring pixels.
using Crossing = DPOINT;

/// Follows the outlines one after the other.
///
/// The follower walks along the cracks, the sides that a pixel of the shape shares with a pixel of the
/// ground, with the shape on its right hand, and puts a point on each: where the grey, interpolated
/// between the two pixels' centres, crosses the level. Every crack belongs to one outline. An outline
/// that is closed has a crack where it goes up, on the left side of a pixel; the left sides not yet
/// walked are kept as bits, so the next outline is found 64 pixels at a time.
class OutlineFollower {
  public:
    OutlineFollower(const GreyView& picture, int threshold, ShapeSide side);

    /// Fills `points` with the next outline, one point a crack, the first not repeated; false when
    /// there is none left. Outlines come in the order of their first left side, row by row.
    bool Next(std::vector<Crossing>& points);

    /// The part of the picture's rows that `Next` has left behind, 0 to 1.
    double Progress() const;

  private:
    enum Side : int { left, top, right, bottom };

    Crossing Cross(int x, int y, Side side) const;
    bool HangsTogether(int x, int y, int stepX, int stepY) const;
    double Level(int x, int y) const;
    void Follow(int startX, int startY, std::vector<Crossing>& points);

    GreyView m_picture;
    double m_level;
    ShapeMask m_mask;
    std::vector<std::uint64_t> m_pending;  // left sides not yet walked, laid out as the mask's rows
    int m_row = 0;
    int m_word = 0;
    double m_sign;
    bool m_soft;
};

}  // namespace tarvex::contours
