// Arc lengths along one cubic.
#pragma once

#include <vector>

#include "bezier/nodes_place.h"

namespace tarvex {

/// A piece of a cubic short enough for ArcPieceLength.
struct ArcPiece {
    double from;
    double to;
    double length;
};

/// Cuts the cubic into pieces, in order, whose lengths together are the arc length, to some 1e-11 of the
/// control polygon's. A line without handles is one piece.
void AppendArcPieces(const Cubic& c, std::vector<ArcPiece>& pieces);

/// The length between two parameters of one piece.
double ArcPieceLength(const Cubic& c, double from, double to);

/// The parameter at a length from the start of a piece.
double ParameterAt(const Cubic& c, const ArcPiece& piece, double length);

}  // namespace tarvex
