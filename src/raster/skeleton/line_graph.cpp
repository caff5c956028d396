// Following skeletons.
//
// A pixel with two neighbours is inside a line, all others are nodes: one neighbour is an end, three or more
// a junction. Around a junction several pixels usually have three neighbours; they are one node, at their
// middle. Where junctions are so dense that such a group would swallow lines (in a checkerboard it would be
// all), each pixel stays a node of its own.
//
// The middle of a stroke runs between pixels as often as on them. How far a pixel is off is told by the
// distances to the ground half-way to either edge: each plus the way there is the width on its side. The
// half of their difference is the shift, the half of their sum the half width.
#include "raster/skeleton/line_graph.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <utility>

#include "bezier/vector.h"

namespace tarvex::skeleton {
namespace {

constexpr int kReach = 3;            // pixels on either side that tell a line's direction
constexpr double kMostShift = 0.75;  // a skeleton's pixel is no farther from the middle
constexpr int kWidestJunction = 5;   // pixels across a group of junction pixels that is one node

/// The distances to the ground as a continuous surface, 0 on the ground.
class DistanceField {
  public:
    DistanceField(const BitPlane& shape, const DistanceMap& distances)
        : m_shape(shape), m_distances(distances) {}

    double AtPixel(int x, int y) const {
        if (x < 0 || y < 0 || x >= m_shape.Width() || y >= m_shape.Height()) return 0;
        if (!m_shape.Get(m_shape.At(x, y))) return 0;
        return std::sqrt(static_cast<double>(m_distances.Square(x, y)));
    }

    double At(DPOINT p) const {
        const double left = std::floor(p.x);
        const double top = std::floor(p.y);
        const auto x = static_cast<int>(left);
        const auto y = static_cast<int>(top);
        const double u = p.x - left;
        const double v = p.y - top;
        return (1 - v) * ((1 - u) * AtPixel(x, y) + u * AtPixel(x + 1, y)) +
               v * ((1 - u) * AtPixel(x, y + 1) + u * AtPixel(x + 1, y + 1));
    }

  private:
    const BitPlane& m_shape;
    const DistanceMap& m_distances;
};

class GraphBuilder {
  public:
    GraphBuilder(const BitPlane& lines, const BitPlane& shape, const DistanceMap& distances)
        : m_lines(lines), m_field(shape, distances), m_walked(lines.Width(), lines.Height()) {}

    LineGraph Build() {
        CollectNodePixels();
        MakeNodes();
        for (const auto& [p, node] : m_nodeOf) LeaveNode(p, node);
        m_lines.ForEachSet([this](Position p) {
            if (CountAt(p) == 2 && !m_walked.Get(p)) WalkLoop(p);
        });
        return std::move(m_graph);
    }

  private:
    int CountAt(Position p) const { return NeighbourCount(m_lines.Around(p)); }

    DPOINT PlaceOf(Position p) const {
        const auto [x, y] = m_lines.Where(p);
        return {static_cast<double>(x), static_cast<double>(y)};
    }

    void CollectNodePixels() {
        m_lines.ForEachSet([this](Position p) {
            if (CountAt(p) != 2) m_nodeOf.emplace_back(p, -1);
        });
    }

    /// The entry of a node's pixel; null for a pixel inside a line.
    int* Entry(Position p) {
        const auto found = std::lower_bound(m_nodeOf.begin(), m_nodeOf.end(), std::pair(p, -2));
        return found != m_nodeOf.end() && found->first == p ? &found->second : nullptr;
    }

    void MakeNodes() {
        std::vector<Position> group;
        for (const auto& [p, node] : m_nodeOf) {
            if (node >= 0) continue;
            TakeGroup(p, group);
            if (IsSmall(group)) {
                AddNode(group);
            } else {
                for (const Position q : group) AddNode({&q, 1});
            }
        }
    }

    /// The junction pixels that hang together with `first`, marked as taken; an end or a lone pixel alone.
    void TakeGroup(Position first, std::vector<Position>& group) {
        constexpr int kTaken = INT32_MAX;
        group.assign(1, first);
        *Entry(first) = kTaken;
        if (CountAt(first) < 3) return;
        for (std::size_t i = 0; i < group.size(); ++i) {
            ForEachNeighbour(m_lines, group[i], m_lines.Around(group[i]), [&](Position q) {
                int* entry = CountAt(q) > 2 ? Entry(q) : nullptr;
                if (entry == nullptr || *entry >= 0) return;
                *entry = kTaken;
                group.push_back(q);
            });
        }
    }

    bool IsSmall(const std::vector<Position>& group) const {
        auto [left, top] = m_lines.Where(group.front());
        int right = left;
        int bottom = top;
        for (const Position p : group) {
            const auto [x, y] = m_lines.Where(p);
            left = std::min(left, x);
            right = std::max(right, x);
            top = std::min(top, y);
            bottom = std::max(bottom, y);
        }
        return right - left < kWidestJunction && bottom - top < kWidestJunction;
    }

    void AddNode(std::span<const Position> group) {
        Node node;
        for (const Position p : group) {
            *Entry(p) = static_cast<int>(m_graph.nodes.size());
            node.at = Plus(node.at, Times(PlaceOf(p), 1.0 / static_cast<double>(group.size())));
            const auto [x, y] = m_lines.Where(p);
            node.radius = std::max(node.radius, m_field.AtPixel(x, y) - 0.5);
        }
        m_graph.nodes.push_back(node);
    }

    void LeaveNode(Position p, int node) {
        ForEachNeighbour(m_lines, p, m_lines.Around(p), [&](Position q) {
            if (const int* other = Entry(q)) {
                if (p < q && *other != node && !AreLinked(p, q)) AddLine({p, q}, node, *other);
            } else if (!m_walked.Get(q)) {
                WalkLine(p, q, node);
            }
        });
    }

    /// Whether two pixels that touch by a corner have a neighbour beside both, by way of which they hang
    /// together anyway.
    bool AreLinked(Position p, Position q) const {
        const auto [px, py] = m_lines.Where(p);
        const auto [qx, qy] = m_lines.Where(q);
        if (px == qx || py == qy) return false;
        return m_lines.Get(m_lines.At(px, qy)) || m_lines.Get(m_lines.At(qx, py));
    }

    void WalkLine(Position start, Position p, int node) {
        std::vector<Position> path{start};
        Position former = start;
        while (Entry(p) == nullptr) {
            m_walked.Set(p);
            path.push_back(p);
            former = std::exchange(p, Onwards(p, former));
        }
        path.push_back(p);
        AddLine(path, node, *Entry(p));
    }

    void WalkLoop(Position start) {
        std::vector<Position> path{start};
        m_walked.Set(start);
        Position former = start;
        Position p = Onwards(start, start);
        while (p != start) {
            m_walked.Set(p);
            path.push_back(p);
            former = std::exchange(p, Onwards(p, former));
        }
        path.push_back(start);
        AddLine(path, -1, -1);
    }

    Position Onwards(Position p, Position former) const {
        Position next = p;
        ForEachNeighbour(m_lines, p, m_lines.Around(p), [&](Position q) {
            if (q != former) next = q;
        });
        return next;
    }

    void AddLine(const std::vector<Position>& path, int from, int to) {
        Line line;
        line.from = from;
        line.to = to;
        std::vector<DPOINT> places;
        places.reserve(path.size());
        for (const Position p : path) places.push_back(PlaceOf(p));
        line.points.reserve(path.size());
        line.radii.reserve(path.size());
        for (std::size_t i = 0; i < path.size(); ++i) Centre(line, places, i);
        if (line.IsClosed()) {
            line.points.back() = line.points.front();
            line.radii.back() = line.radii.front();
        } else {
            SettleEnd(line.points.front(), from);
            SettleEnd(line.points.back(), to);
        }
        m_graph.lines.push_back(std::move(line));
    }

    /// Free ends stand where their line's centre is, junctions in their own place.
    void SettleEnd(DPOINT& end, int node) {
        Node& settled = m_graph.nodes[static_cast<std::size_t>(node)];
        const auto x = static_cast<int>(settled.at.x);
        const auto y = static_cast<int>(settled.at.y);
        const bool isWhole = settled.at.x == x && settled.at.y == y;
        if (isWhole && CountAt(m_lines.At(x, y)) == 1) settled.at = end;
        end = settled.at;
    }

    /// Appends point `i` of the pixels' places, moved to the middle.
    void Centre(Line& line, const std::vector<DPOINT>& places, std::size_t i) const {
        const DPOINT along = Minus(PlaceAt(line, places, static_cast<std::ptrdiff_t>(i) + kReach),
                                   PlaceAt(line, places, static_cast<std::ptrdiff_t>(i) - kReach));
        const DPOINT here = places[i];
        const double distance = m_field.At(here);
        const double length = Length(along);
        if (length == 0) {
            line.points.push_back(here);
            line.radii.push_back(distance - 0.5);
            return;
        }
        const DPOINT across{-along.y / length, along.x / length};
        const double aside = std::max(1.0, distance / 2);
        const double ahead = m_field.At(Plus(here, Times(across, aside))) + aside;
        const double behind = m_field.At(Minus(here, Times(across, aside))) + aside;
        const double shift = std::clamp((ahead - behind) / 2, -kMostShift, kMostShift);
        line.points.push_back(Plus(here, Times(across, shift)));
        line.radii.push_back(std::max(0.5, (ahead + behind - 1) / 2));
    }

    static DPOINT PlaceAt(const Line& line, const std::vector<DPOINT>& places, std::ptrdiff_t i) {
        const auto last = static_cast<std::ptrdiff_t>(places.size()) - 1;
        if (line.IsClosed()) i = ((i % last) + last) % last;
        return places[static_cast<std::size_t>(std::clamp(i, std::ptrdiff_t{0}, last))];
    }

    const BitPlane& m_lines;
    DistanceField m_field;
    BitPlane m_walked;
    std::vector<std::pair<Position, int>> m_nodeOf;  // sorted by position
    LineGraph m_graph;
};

}  // namespace

LineGraph FindLines(const BitPlane& lines, const BitPlane& shape, const DistanceMap& distances) {
    return GraphBuilder(lines, shape, distances).Build();
}

}  // namespace tarvex::skeleton
