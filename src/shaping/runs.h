// From the clipper's vertices back to pieces of curves.
#pragma once

#include <memory>
#include <span>
#include <vector>

#include "shaping/polygons.h"

namespace tarvex::shaping {

/// A part of a segment in a result's outline; `from` exceeds `to` where it runs backwards.
struct Stretch {
    int segment;
    double from;
    double to;
};

/// Finds the stretches that clipped contours consist of.
class RunFinder {
  public:
    RunFinder(const SegmentList& list, const PieceList& pieces, const VertexTable& table);
    ~RunFinder();
    RunFinder(const RunFinder&) = delete;
    RunFinder& operator=(const RunFinder&) = delete;

    /// The stretches of a contour in order, neighbours on one segment joined, as loops that pass no point
    /// twice: polylines that had an edge in common can stand for curves that have a point. Usually each
    /// stretch starts where the one before ends; there is a gap where the contour could not be explained.
    std::vector<std::vector<Stretch>> LoopsOf(std::span<const DPOINT> contour);

  private:
    class EdgeFinder;
    class Junctions;

    std::vector<Stretch> StretchesOf(std::span<const DPOINT> contour);

    const SegmentList& m_list;
    const PieceList& m_pieces;
    std::unique_ptr<EdgeFinder> m_edges;
};

}  // namespace tarvex::shaping
