// How far every pixel of a shape is from the ground, exactly, and which of them lie on the shape's middle.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "raster/skeleton/bit_plane.h"

namespace tarvex::skeleton {

/// The squared distances from the centres of a shape's pixels to the nearest centre of a ground pixel, 0 for
/// pixels of the ground. Only words of the plane in which the shape has pixels take memory; others share one.
class DistanceMap {
  public:
    explicit DistanceMap(const BitPlane& shape);

    std::uint32_t At(Position p) const { return m_squares[Place(p)]; }
    /// Those of the 64 pixels from `p`, a word's first, on.
    const std::uint32_t* Word(Position p) const { return m_squares.get() + m_places[p >> 6]; }

    /// Where what belongs to a pixel of the shape is kept in an array of `PlaceCount()`; pixels of a word are
    /// kept together.
    std::size_t Place(Position p) const { return std::size_t{m_places[p >> 6]} + (p & 63); }
    std::size_t PlaceCount() const { return m_placeCount; }

    /// Takes over the squares of the 64 pixels from `p`, a word's first, on. The shape has pixels in it.
    void SetWord(Position p, const std::uint32_t* squares) {
        std::copy_n(squares, 64, m_squares.get() + Place(p));
    }

  private:
    std::vector<std::uint32_t> m_places;  // of each word's first pixel
    std::size_t m_placeCount = 64;
    std::unique_ptr<std::uint32_t[]> m_squares;
};

/// Fills `distances` for the shape and sets in `middle`, empty and of the same size, the pixels on its medial
/// axis: those next to a point that has nearest ground pixels on two sides.
void MeasureShape(const BitPlane& shape, DistanceMap& distances, BitPlane& middle);

}  // namespace tarvex::skeleton
