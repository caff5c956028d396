// Ends.
//
// Where the last pixel of a line lies depends on which of several equally good pixels thinning took first,
// and so on how the picture lies. What does not depend on it is the shape: along a stroke its half width
// hardly changes, and behind the centre of the last disc, towards a blunt or round end, it falls by a pixel a
// pixel. So every end is moved to where that begins. It runs on by the pixel farthest from the ground of the
// three ahead, as long as that one is not on the slope, and is taken back as long as it is.
#include "raster/skeleton/ends.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <utility>
#include <vector>

namespace tarvex::skeleton {
namespace {

constexpr int kReach = 3;           // pixels that a slope is looked at over
constexpr double kSteepNear = 0.6;  // the fall of the half width to a neighbour, in pixels a pixel
constexpr double kSteepFar = 0.52;  // and beyond, where rounding matters less
constexpr int kMostBack = 3;        // pixels that an end is taken back by
constexpr std::size_t kRun = 8;     // pixels that tell a line's direction
constexpr std::size_t kLeast = 8;   // pixels of a line that it is kept at

class EndSettler {
  public:
    EndSettler(BitPlane& plane, const BitPlane& shape, const DistanceMap& distances)
        : m_plane(plane), m_shape(shape), m_distances(distances) {}

    void Run() {
        std::vector<Position> ends;
        m_plane.ForEachSet([&](Position p) {
            if (NeighbourCount(m_plane.Around(p)) == 1) ends.push_back(p);
        });
        for (const Position end : ends) Settle(end);
    }

  private:
    void Settle(Position end) {
        std::vector<Position> path = PathFrom(end);
        if (path.size() < 2) return;
        if (IsOnSlope(path[0])) {
            TakeBack(path);
        } else {
            RunOn(path);
        }
    }

    /// A line's first pixels from an end on, up to where it branches or ends.
    std::vector<Position> PathFrom(Position end) const {
        std::vector<Position> path{end};
        while (path.size() <= kLeast) {
            const int expected = path.size() == 1 ? 1 : 2;
            if (NeighbourCount(m_plane.Around(path.back())) != expected) break;
            path.push_back(Onwards(m_plane, path.back(), path[path.size() == 1 ? 0 : path.size() - 2]));
        }
        return path;
    }

    double Radius(Position p) const { return std::sqrt(static_cast<double>(m_distances.At(p))); }

    double Apart(Position p, Position q) const {
        const auto [px, py] = m_plane.Where(p);
        const auto [qx, qy] = m_plane.Where(q);
        return std::hypot(px - qx, py - qy);
    }

    /// Whether the shape widens steeply from a pixel to one near it.
    bool IsOnSlope(Position p) const {
        const auto [x, y] = m_shape.Where(p);
        const double radius = Radius(p);
        for (int dy = -kReach; dy <= kReach; ++dy) {
            const int v = y + dy;
            if (v < 0 || v >= m_shape.Height()) continue;
            for (int dx = -kReach; dx <= kReach; ++dx) {
                const int u = x + dx;
                const int square = dx * dx + dy * dy;
                if (u < 0 || u >= m_shape.Width() || square == 0 || square > kReach * kReach + 1) continue;
                const Position q = m_shape.At(u, v);
                if (!m_shape.Get(q)) continue;
                const double steep = square < 4 ? kSteepNear : kSteepFar;
                if (Radius(q) - radius >= steep * std::sqrt(static_cast<double>(square))) return true;
            }
        }
        return false;
    }

    void TakeBack(std::vector<Position> path) {
        for (int k = 0; k < kMostBack && path.size() > kLeast && IsOnSlope(path[0]); ++k) {
            m_plane.Clear(path[0]);
            path = PathFrom(path[1]);
        }
    }

    void RunOn(std::vector<Position>& path) {
        for (;;) {
            const auto next = Ahead(path);
            if (!next || IsOnSlope(*next)) return;
            m_plane.Set(*next);
            path.insert(path.begin(), *next);
        }
    }

    /// The best pixel to run on by: of the shape, touching the line's end and nothing else.
    std::optional<Position> Ahead(const std::vector<Position>& path) const {
        const Position end = path[0];
        const Position inner = path[std::min(path.size() - 1, kRun)];
        const std::pair<int, int> at = m_plane.Where(end);
        const std::pair<int, int> from = m_plane.Where(inner);
        const int outX = at.first - from.first;
        const int outY = at.second - from.second;
        const double length = Apart(end, inner);
        std::optional<Position> best;
        std::pair<std::uint32_t, double> most{0, 0};
        ForEachNeighbour(m_plane, end, m_shape.Around(end), [&](Position q) {
            if (NeighbourCount(m_plane.Around(q)) != 1) return;
            const auto [u, v] = m_plane.Where(q);
            const int dx = u - at.first;
            const int dy = v - at.second;
            const double along = (dx * outX + dy * outY) / (length * Apart(end, q));
            if (along < kAhead) return;
            const std::pair<std::uint32_t, double> value{m_distances.At(q), along};
            if (best && value <= most) return;
            most = value;
            best = q;
        });
        return best;
    }

    static constexpr double kAhead = 0.8;  // cosine of the most that a line turns at its end

    BitPlane& m_plane;
    const BitPlane& m_shape;
    const DistanceMap& m_distances;
};

}  // namespace

void SettleEnds(BitPlane& plane, const BitPlane& shape, const DistanceMap& distances) {
    EndSettler(plane, shape, distances).Run();
}

}  // namespace tarvex::skeleton
