// The pieces into which cuts divide a shape, exactly: made of the outline's own points and the cuts' ends.
#pragma once

#include <span>
#include <vector>

#include "tarvex/breakup.h"

namespace tarvex {

/// A closed boundary, the shape on the left of each edge in a frame with y upwards (on the right on a
/// screen). Edge i goes from point i to the next, the last one back to the first.
struct Boundary {
    std::vector<DPOINT> points;
    std::vector<int> cuts;  ///< of each edge: the cut it lies on, or -1
    double area = 0;        ///< positive around a piece, negative around a hole in one
};

/// A piece: its outer boundary, and its holes.
struct Piece {
    Boundary outer;
    std::vector<Boundary> holes;
};

double SignedArea(std::span<const DPOINT> points);
/// By the even-odd rule; what is on the boundary may count either way.
bool IsInside(std::span<const DPOINT> polygon, DPOINT p);

/// The pieces of the shape with these closed polylines (inside by the even-odd rule, none crossing itself or
/// another). A cut ends at the outline's points that round to its ends; one whose ends are not points of the
/// outline, or one and the same point, is ignored. The areas of the pieces add up to the shape's, unless a
/// cut leaves the shape.
std::vector<Piece> MakePieces(const CPolyPolyDPoint& outline, std::span<const CUTLINE> cuts);

}  // namespace tarvex
