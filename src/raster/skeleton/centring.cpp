// Centring.
//
// Where a spur is cut, the line that it left keeps a kink: the junction's own pixel was needless as long as
// the spur was there, and has gone. A pixel with two neighbours can be any of the pixels beside it that touch
// both neighbours too; it goes to the one farthest from the ground, as long as the topology allows to set
// that one first and to take the old one away then. Distances only grow, so this ends.
#include "raster/skeleton/centring.h"

#include <optional>
#include <utility>

namespace tarvex::skeleton {
namespace {

/// The window's bits of the neighbours of each place in the window, itself not included.
constexpr Window NeighboursWithin(int place) {
    Window window = 0;
    for (int other = 0; other < 9; ++other) {
        const int dx = other % 3 - place % 3;
        const int dy = other / 3 - place / 3;
        if (other != place && dx * dx <= 1 && dy * dy <= 1) window |= 1U << other;
    }
    return window;
}

class Centring {
  public:
    Centring(BitPlane& plane, const BitPlane& shape, const DistanceMap& distances, std::vector<Position> open)
        : m_plane(plane), m_shape(shape), m_distances(distances), m_open(std::move(open)) {}

    void Run() {
        while (!m_open.empty()) {
            const Position p = m_open.back();
            m_open.pop_back();
            if (m_plane.Get(p)) TryMove(p);
        }
    }

  private:
    void TryMove(Position p) {
        const Window window = m_plane.Around(p);
        if (NeighbourCount(window) != 2) return;
        const auto better = BetterPlace(p, window & ~kCentre);
        if (!better || !MoveInLine(m_plane, p, *better)) return;
        m_open.push_back(*better);
        ForEachNeighbour(m_plane, *better, m_plane.Around(*better),
                         [this](Position q) { m_open.push_back(q); });
    }

    /// The one of the four pixels beside `p` that touches both of its neighbours and is farther from the
    /// ground than `p`, the farthest of several.
    std::optional<Position> BetterPlace(Position p, Window neighbours) const {
        std::optional<Position> better;
        std::uint32_t most = m_distances.At(p);
        const Window inShape = m_shape.Around(p);
        for (const int place : {1, 3, 5, 7}) {
            const bool touchesBoth = (NeighboursWithin(place) & neighbours) == neighbours;
            if (!touchesBoth || (inShape >> place & 1) == 0) continue;
            const auto bit = static_cast<Position>(place);
            const Position q = p + (bit / 3) * m_plane.Down() + bit % 3 - m_plane.Down() - 1;
            const std::uint32_t square = m_distances.At(q);
            if (square <= most) continue;
            most = square;
            better = q;
        }
        return better;
    }

    BitPlane& m_plane;
    const BitPlane& m_shape;
    const DistanceMap& m_distances;
    std::vector<Position> m_open;
};

}  // namespace

bool MoveInLine(BitPlane& plane, Position from, Position to) {
    if (plane.Get(to) || !IsSimple(plane.Around(to))) return false;
    plane.Set(to);
    if (!IsSimple(plane.Around(from)) || NeighbourCount(plane.Around(to)) != 3) {
        plane.Clear(to);
        return false;
    }
    plane.Clear(from);
    bool isThin = !IsNeedless(plane.Around(to));
    ForEachNeighbour(plane, to, plane.Around(to),
                     [&](Position q) { isThin = isThin && !IsNeedless(plane.Around(q)); });
    if (!isThin) {
        plane.Set(from);
        plane.Clear(to);
    }
    return isThin;
}

void CentreLines(BitPlane& plane, const BitPlane& shape, const DistanceMap& distances,
                 std::vector<Position> open) {
    Centring(plane, shape, distances, std::move(open)).Run();
}

}  // namespace tarvex::skeleton
