// What hangs together in a picture of labels.
#pragma once

#include <cstdint>
#include <vector>

#include "tarvex/colortrace.h"

namespace tarvex::contours {

/// The number of a region; 0 is the ground: all that is outside the picture or has no label.
using RegionId = std::int32_t;
inline constexpr RegionId ground = 0;

/// Whether the pixels of one diagonal of a 2 x 2 block hang together there.
enum class Diagonal : std::uint8_t { none, falling, rising };  // falling: top left with bottom right

/// A picture of labels, each pixel with the number of its region, and around it ground.
class RegionMap {
  public:
    explicit RegionMap(const LabelView& picture);

    /// Gives regions whose border has at most `sides` sides to neighbours, or to the ground when they have
    /// no other.
    void RemoveSpecks(int sides);

    int Width() const { return m_width; }
    int Height() const { return m_height; }
    /// Regions have the numbers 1 to this, in the order of their first pixels row by row.
    RegionId Count() const { return static_cast<RegionId>(m_labelOf.size()) - 1; }
    std::uint16_t LabelOf(RegionId region) const { return m_labelOf[static_cast<std::size_t>(region)]; }
    /// Ground outside the picture.
    RegionId At(int x, int y) const {
        return x >= 0 && y >= 0 && x < m_width && y < m_height ? m_ids[Index(x, y)] : ground;
    }
    /// At the corner of pixels (x, y): how the four pixels around it hang together.
    Diagonal DiagonalAt(int x, int y) const;

  private:
    std::size_t Index(int x, int y) const {
        return static_cast<std::size_t>(y) * static_cast<std::size_t>(m_width) + static_cast<std::size_t>(x);
    }
    std::uint16_t Label(int x, int y) const {
        return x >= 0 && y >= 0 && x < m_width && y < m_height ? m_labels[Index(x, y)] : NO_LABEL;
    }
    bool IsRarer(int x, int y, std::uint16_t a, std::uint16_t b) const;
    void Number();

    int m_width;
    int m_height;
    std::vector<std::uint16_t> m_labels;
    std::vector<RegionId> m_ids;
    std::vector<std::uint16_t> m_labelOf;
};

}  // namespace tarvex::contours
