// From traced regions to columns: which piece of the shape a region is, and its rails.
#pragma once

#include <optional>
#include <span>
#include <vector>

#include "breakup/columns.h"
#include "breakup/faces.h"

namespace tarvex {

/// A skeleton line's points.
PointList LinePoints(const CArray<POINT, POINT>& line);

struct Region {
    int index = -1;  ///< of the skeleton line it is made from; -1 for a line of its own
    PointList line;  ///< that line
    POINT seed{};
    DPOINT identity;  ///< the first point of its trace, which is the same from wherever it is traced
    double tracedArea = 0;
    bool isExact = false;  ///< made from a piece of the outline
    Rails rails;
};

/// Collects the regions of one run.
class RegionMaker {
  public:
    RegionMaker(const CPolyPolyDPoint& outline, std::span<const CUTLINE> cuts, ColumnSettings settings)
        : m_outline(outline),
          m_cuts(cuts.begin(), cuts.end()),
          m_settings(settings),
          m_pieces(MakePieces(outline, cuts)) {}

    /// A region with one outline, split along the line. False when it cannot be split, or has a longer line
    /// that it was made from.
    bool AddOutlines(int index, const PointList& line, POINT seed, const CArray<DPOINT, DPOINT>& outline);
    /// A region with two outlines, which are its rails.
    bool AddOutlines(int index, const PointList& line, POINT seed, const CArray<DPOINT, DPOINT>& first,
                     const CArray<DPOINT, DPOINT>& second);

    /// Sees to the pieces that no line was left in. A small one goes to a neighbour, by leaving out the cut
    /// between them; a larger one becomes a region along its own longer axis.
    void TakeInOrphans();

    const std::vector<Region>& Regions() const { return m_regions; }

  private:
    const Piece* PieceAt(POINT seed) const;
    const Piece* PieceAt(POINT seed, double tracedArea) const;
    std::optional<Rails> RailsOf(const Piece& piece, const PointList& line) const;
    Boundary TracedBoundary(const CArray<DPOINT, DPOINT>& outline) const;
    bool Keep(Region region);
    std::vector<const Piece*> Taken() const;
    void JoinSmallOrphans();
    void SplitOrphans();
    std::optional<CUTLINE> WayOut(const Piece& orphan) const;
    bool LeaveOut(const CUTLINE& cut);

    const CPolyPolyDPoint& m_outline;
    std::vector<CUTLINE> m_cuts;  ///< without length where left out
    ColumnSettings m_settings;
    std::vector<Piece> m_pieces;
    std::vector<Region> m_regions;
};

}  // namespace tarvex
