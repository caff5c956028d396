// The raw offset of a path: every edge moved sideways, joined at the corners. It still has the loops that
// make it turn back on itself; winding numbers tell them from the rest.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "geometry/offset_sweep.h"
#include "tarvex/offset.h"

namespace tarvex::offsetting {

/// How far and how, in units of the grid.
struct Manner {
    double distance = 0;  ///< to the left, y upwards; negative to the right
    double mitreLimit = 0;
    double tolerance = 0;
    OffsetCorner corner = OffsetCorner::round;
};

/// Where an edge of a raw offset comes from.
struct RawEdge {
    enum class Kind : std::uint8_t { parallel, arc, straight };
    enum class Side : std::uint8_t { wanted, other };

    Kind kind = Kind::straight;  ///< parallel to its source, round a corner, or anything else
    Side side = Side::wanted;    ///< other: made only to find where the wanted side is hidden
    int source = 0;              ///< the edge of the original; at a corner, the one before it
    GridPoint centre;            ///< of an arc
};

/// A closed path to be moved: its corners, no two neighbours equal, with the number of the edge that leaves.
using Path = std::vector<Corner>;

/// What is done at the ends of a path that runs forth and back, where it turns round.
enum class Tip { flat, round };

/// Builds raw offsets and keeps account of their edges, which it numbers: the tags of what it returns are
/// indices into `Edges()`.
///
/// What it returns is, in winding numbers, the path itself plus (to the right) or minus (to the left) a
/// rectangle on each edge and a sector at each corner that opens on that side, each counted once: the
/// curve passes through the corners that close on that side. So the region moved outwards is where the
/// number is positive, exactly, and so is the one moved inwards. Where the rectangles at a closing corner
/// are long enough the curve turns at the crossing of their outer sides instead: that leaves out only parts
/// that the other rectangle covers as well.
class RawOffset {
  public:
    explicit RawOffset(const Manner& manner) : m_manner(manner) {}

    /// The offset of a closed path.
    Contour OfLoop(const Path& path);

    /// What lies within the distance of an open chain of at least one edge, on both sides: a closed curve
    /// around it. The wanted side is that to which the distance points, and only there corners have the
    /// form asked for. The last corner's tag is not looked at.
    Contour AroundChain(std::span<const Corner> chain, Tip start, Tip end);

    /// The wanted side of that alone, with the chain itself for its other border.
    Contour BesideChain(std::span<const Corner> chain);

    /// What is missing where two chains with flat ends meet: the sector of the middle one of three corners,
    /// on the wanted side or on the other; empty if the corner does not open there.
    Contour Sector(std::span<const Corner> corners, RawEdge::Side side);

    /// An edge that no offset made, for curves that go into the result as they are.
    int AddEdge(int source);

    const std::vector<RawEdge>& Edges() const { return m_edges; }

  private:
    enum class Join { asWanted, round, none };
    struct Direction;
    struct Turn;

    enum class Way : std::uint8_t { forth, back };
    Turn TurnAt(std::span<const Corner> chain, std::size_t i, Way way) const;
    void AppendCorner(const Turn& turn, double distance, Join join, RawEdge::Side side);
    void AppendBeside(const GridPoint& at, const Direction& along, const RawEdge& edge);
    Way WantedWay() const { return m_manner.distance < 0 ? Way::forth : Way::back; }
    void AppendGap(const Turn& turn, double distance, Join join, RawEdge::Side side);
    void AppendArc(const Turn& turn, double distance, RawEdge::Side side);
    void Append(double x, double y, const RawEdge& edge);

    Manner m_manner;
    std::vector<RawEdge> m_edges;
    Contour m_contour;
};

}  // namespace tarvex::offsetting
