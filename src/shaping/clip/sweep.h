// From edges that cross in any way to pieces that meet at their ends only, each knowing what is inside
// on its two sides.
#pragma once

#include <cstdint>
#include <vector>

#include "shaping/clip/point.h"

namespace tarvex::clip {

/// Bits of a side: inside the subject, inside the clip set.
inline constexpr std::uint8_t subjectBit = 1;
inline constexpr std::uint8_t clipBit = 2;

/// A piece of an edge between two vertices, the earlier one first.
struct Piece {
    std::int32_t a = 0;
    std::int32_t b = 0;
    std::int32_t edge = 0;    ///< the input edge that it lies on; of several, the first
    std::uint8_t parity = 0;  ///< the bits that change from one side to the other
    std::uint8_t left = 0;    ///< the bits that hold on the left side, looking from a to b
};

/// Pieces with the vertices between which they go.
struct Arrangement {
    std::vector<Point> vertices;  ///< in sweep order, each once
    std::vector<Piece> pieces;
    std::vector<Segment> edges;  ///< the input edges, which `Piece::edge` counts
};

/// Cuts the pieces until they meet at their ends only (no two coincide either, and pieces that bound
/// nothing are gone), and sets their left sides.
void Arrange(Arrangement& arrangement);

}  // namespace tarvex::clip
