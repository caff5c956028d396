// How far every pixel of a shape is from the ground, exactly, and which of them lie on the shape's middle.
#pragma once

#include <cstdint>
#include <memory>

#include "raster/skeleton/bit_plane.h"

namespace tarvex::skeleton {

/// The squared distances from the centres of a shape's pixels to the nearest centre of a ground pixel.
class DistanceMap {
  public:
    DistanceMap(int width, int height)
        : m_width(width),
          m_squares(std::make_unique_for_overwrite<std::uint32_t[]>(static_cast<std::size_t>(width) *
                                                                    static_cast<std::size_t>(height))) {}

    /// Of a pixel of the shape only: others have none.
    std::uint32_t Square(int x, int y) const { return m_squares[Index(x, y)]; }
    std::uint32_t* Row(int y) { return m_squares.get() + Index(0, y); }
    const std::uint32_t* Row(int y) const { return m_squares.get() + Index(0, y); }

  private:
    std::size_t Index(int x, int y) const {
        return static_cast<std::size_t>(y) * static_cast<std::size_t>(m_width) + static_cast<std::size_t>(x);
    }

    int m_width;
    std::unique_ptr<std::uint32_t[]> m_squares;
};

/// Fills `distances` for the shape and sets in `middle`, empty and of the same size, the pixels on its medial
/// axis: those next to a point that has nearest ground pixels on two sides.
void MeasureShape(const BitPlane& shape, DistanceMap& distances, BitPlane& middle);

}  // namespace tarvex::skeleton
