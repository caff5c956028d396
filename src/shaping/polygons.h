// The polygons handed to the clipper, with a record for each vertex of where it came from.
#pragma once

#include <span>
#include <vector>

#include "shaping/pieces.h"
#include "tarvex/clipper.h"

namespace tarvex::shaping {

/// A vertex of a flattened contour.
struct Vertex {
    int point;     ///< its number in the index: that of the first of all flattened points that equal it
    int piece;     ///< of the edge that starts here
    bool isStart;  ///< it is where that piece starts
};

/// A flattened contour without its closing point; consecutive vertices differ. Empty if it has no extent.
struct VertexRing {
    std::vector<Vertex> vertices;
};

struct VertexTable {
    std::vector<VertexRing> rings;  ///< one for each contour of the segments
    PointIndex points;

    /// Where a point occurs.
    struct Occurrence {
        int ring;
        int vertex;
    };
    /// All occurrences of a point, in the order of the contours and along them.
    std::span<const Occurrence> OccurrencesOf(int point) const {
        const auto i = static_cast<std::size_t>(point);
        const auto first = static_cast<std::size_t>(m_firsts[i]);
        return {m_occurrences.data() + first, static_cast<std::size_t>(m_firsts[i + 1]) - first};
    }

    std::vector<Occurrence> m_occurrences;
    std::vector<int> m_firsts;  ///< of each point; one more for the end
};

VertexTable BuildVertexTable(const SegmentList& list, const PieceList& pieces);

/// A polygon set that is given back in time.
class ClipSet {
  public:
    ClipSet() = default;
    ~ClipSet() { FreeClipPolygon(m_polygon); }
    ClipSet(const ClipSet&) = delete;
    ClipSet& operator=(const ClipSet&) = delete;
    ClipPolygon& operator*() { return m_polygon; }

  private:
    ClipPolygon m_polygon;
};

/// Fills an empty set with the rings of an operand. Those of fewer than three vertices surround nothing.
void FillClipSet(const SegmentList& list, const VertexTable& table, Operand operand, ClipPolygon& polygon);

}  // namespace tarvex::shaping
