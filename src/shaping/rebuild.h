// Stretches of segments as contours of nodes.
#pragma once

#include <memory>
#include <vector>

#include "shaping/runs.h"

namespace tarvex::shaping {

/// The shapes that the segments were made of.
struct Operands {
    const CPolyPolyBezier& a;
    const CPolyPolyBezier& b;
};

/// Builds contours of stretches.
class ContourBuilder {
  public:
    ContourBuilder(const SegmentList& list, const PieceList& pieces, const Operands& operands);

    /// The closed contour of the stretches, finished by FixBezierCP. Nodes of the input keep their flags, and
    /// their handles where their segments survive whole. Null if fewer than three nodes come out.
    std::unique_ptr<CArray<BPOINT, BPOINT>> Build(std::vector<Stretch> stretches) const;

  private:
    class Work;

    const SegmentList& m_list;
    const PieceList& m_pieces;
    Operands m_operands;
    std::vector<int> m_pointLike;  // segments without extent, sorted
};

}  // namespace tarvex::shaping
