// How far every pixel of a shape is from the ground, exactly, and which of them lie on the shape's middle.
#pragma once

#include <cstdint>
#include <memory>

#include "raster/skeleton/bit_plane.h"

namespace tarvex::skeleton {

/// The squared distances from the centres of a shape's pixels to the nearest centre of a ground pixel, laid
/// out as the shape's plane. Pixels of the ground have none.
class DistanceMap {
  public:
    explicit DistanceMap(const BitPlane& shape)
        : m_squares(std::make_unique_for_overwrite<std::uint32_t[]>(shape.PositionCount())) {}

    std::uint32_t At(Position p) const { return m_squares[p]; }
    std::uint32_t* From(Position p) { return m_squares.get() + p; }

  private:
    std::unique_ptr<std::uint32_t[]> m_squares;  // pages of ground alone are never touched
};

/// Fills `distances` for the shape and sets in `middle`, empty and of the same size, the pixels on its medial
/// axis: those next to a point that has nearest ground pixels on two sides.
void MeasureShape(const BitPlane& shape, DistanceMap& distances, BitPlane& middle);

}  // namespace tarvex::skeleton
