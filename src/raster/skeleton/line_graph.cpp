// Following skeletons.
//
// A pixel with two neighbours is inside a line, all others are nodes: one neighbour is an end, three or more
// a junction. Around a junction several pixels usually have three neighbours; they are one node, at their
// middle. Where junctions are so dense that such a group would swallow lines (in a checkerboard it would be
// all), each pixel stays a node of its own.
//
// The middle of a stroke runs between pixels as often as on them, and its distance to the ground is that to
// the nearest pixel there, which on a slanted edge lies nearer than the edge does on average. So middle and
// width are taken from the run of pixels that crosses the line at a pixel, in its row or column, whichever
// the line is steeper to: the middle of the run, and its length times the cosine of the slant. Their means
// along a line are the stroke's own (Cavalieri). Where greys tell how much of a pixel is drawn, the run is
// weighed by them, with its fading ends, and single runs are as exact as means. In junctions, where runs are
// as long as other strokes, the distance has to do.
//
// A free end is set back from the tip, where the line's direction leaves the shape, by the half width, so a
// round end drawn there reaches as far as the stroke did, whether its end was round or not.
#include "raster/skeleton/line_graph.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <utility>

#include "bezier/vector.h"

namespace tarvex::skeleton {
namespace {

constexpr int kReach = 5;            // pixels on either side that tell a line's direction
constexpr int kFade = 3;             // pixels over which greys fade
constexpr int kMostShift = 1;        // a skeleton's pixel is no farther from its run's middle
constexpr double kMostEndShift = 4;  // of free ends, in pixels
constexpr int kWidestJunction = 5;   // pixels across a group of junction pixels that is one node

/// What the shape is like around a pixel.
class Surroundings {
  public:
    Surroundings(const BitPlane& shape, const DistanceMap& distances, const ShapeGreys* greys)
        : m_shape(shape), m_distances(distances), m_greys(greys) {}

    double AtPixel(int x, int y) const {
        return IsShape(x, y) ? std::sqrt(static_cast<double>(m_distances.At(m_shape.At(x, y)))) : 0;
    }

    bool IsShape(int x, int y) const {
        return x >= 0 && y >= 0 && x < m_shape.Width() && y < m_shape.Height() &&
               m_shape.Get(m_shape.At(x, y));
    }

    /// How many pixels of the shape follow the pixel in a direction, at most `most`.
    int RunFrom(int x, int y, int dx, int dy, int most) const {
        int count = 0;
        while (count < most && IsShape(x + (count + 1) * dx, y + (count + 1) * dy)) ++count;
        return count;
    }

    /// Where the middle of a run lies, from the pixel that it is given around, and how long it is.
    struct Extent {
        double middle;
        double length;
    };

    /// The run of a pixel that has so many of the shape before and behind it in a direction.
    Extent Weigh(int x, int y, int dx, int dy, int behind, int ahead) const {
        const Extent whole{(ahead - behind) / 2.0, ahead + behind + 1.0};
        if (m_greys == nullptr) return whole;
        double sum = 0;
        double moment = 0;
        const auto add = [&](int at, double part) {
            sum += part;
            moment += part * at;
        };
        for (int at = -behind; at <= ahead; ++at) {
            const bool isInner = at - kFade >= -behind && at + kFade <= ahead;
            add(at, isInner ? 1 : m_greys->PartAt(x + at * dx, y + at * dy));
        }
        for (const int outwards : {-1, 1}) {
            int at = outwards < 0 ? -behind : ahead;
            double former = m_greys->PartAt(x + at * dx, y + at * dy);
            for (int k = 0; k < kFade; ++k) {
                at += outwards;
                const int u = x + at * dx;
                const int v = y + at * dy;
                if (u < 0 || v < 0 || u >= m_shape.Width() || v >= m_shape.Height() || IsShape(u, v)) break;
                const double part = m_greys->PartAt(u, v);
                if (part >= former) break;
                add(at, part);
                former = part;
            }
        }
        return sum > 0 ? Extent{moment / sum, sum} : whole;
    }

  private:
    const BitPlane& m_shape;
    const DistanceMap& m_distances;
    const ShapeGreys* m_greys;
};

class GraphBuilder {
  public:
    GraphBuilder(const BitPlane& lines, const Surroundings& field)
        : m_lines(lines), m_field(field), m_walked(lines.Width(), lines.Height()) {}

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
        if (CountAt(group.front()) == 0) node.radius = DotRadius(group.front());
        m_graph.nodes.push_back(node);
    }

    /// A quarter of what the two runs through a lone pixel have together.
    double DotRadius(Position p) const {
        const auto [x, y] = m_lines.Where(p);
        int pixels = 2;
        for (const auto& [dx, dy] : {std::pair(1, 0), {-1, 0}, {0, 1}, {0, -1}})
            pixels += m_field.RunFrom(x, y, dx, dy, INT32_MAX);
        return pixels / 4.0;
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
            former = std::exchange(p, Onwards(m_lines, p, former));
        }
        path.push_back(p);
        AddLine(path, node, *Entry(p));
    }

    void WalkLoop(Position start) {
        std::vector<Position> path{start};
        m_walked.Set(start);
        Position former = start;
        Position p = Onwards(m_lines, start, start);
        while (p != start) {
            m_walked.Set(p);
            path.push_back(p);
            former = std::exchange(p, Onwards(m_lines, p, former));
        }
        path.push_back(start);
        AddLine(path, -1, -1);
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
            SettleEnd(line, from);
            std::reverse(line.points.begin(), line.points.end());
            std::reverse(line.radii.begin(), line.radii.end());
            SettleEnd(line, to);
            std::reverse(line.points.begin(), line.points.end());
            std::reverse(line.radii.begin(), line.radii.end());
        }
        m_graph.lines.push_back(std::move(line));
    }

    /// Puts the first point of a line into its place: a junction's, or that of a free end.
    void SettleEnd(Line& line, int index) {
        Node& node = m_graph.nodes[static_cast<std::size_t>(index)];
        const auto x = static_cast<int>(node.at.x);
        const auto y = static_cast<int>(node.at.y);
        const bool isWhole = node.at.x == x && node.at.y == y;
        if (isWhole && CountAt(m_lines.At(x, y)) == 1) {
            PlaceFreeEnd(line);
            node.at = line.points.front();
        }
        line.points.front() = node.at;
    }

    void PlaceFreeEnd(Line& line) const {
        const auto inner = static_cast<std::size_t>(std::max(6.0, 3 * line.radii.front()));
        const std::size_t from = std::min(inner, line.points.size() - 1);
        const DPOINT along = Minus(line.points.front(), line.points[from]);
        const double length = Length(along);
        if (length < 2) return;
        const DPOINT outwards = Times(along, 1 / length);
        const double radius = line.radii[from / 2];
        const DPOINT end = line.points.front();
        double tip = 0;
        while (tip < radius + kMostEndShift && IsShapeAt(Plus(end, Times(outwards, tip)))) tip += 0.25;
        const double shift =
            std::clamp(tip - 0.125 - radius, -std::min(kMostEndShift, length / 2), kMostEndShift);
        const DPOINT place = Plus(end, Times(outwards, shift));
        std::size_t gone = 0;
        while (gone < from && Dot(Minus(line.points[gone + 1], place), outwards) > 0) ++gone;
        line.points.erase(line.points.begin(), line.points.begin() + static_cast<std::ptrdiff_t>(gone));
        line.radii.erase(line.radii.begin(), line.radii.begin() + static_cast<std::ptrdiff_t>(gone));
        line.points.front() = place;
        line.radii.front() = radius;
    }

    bool IsShapeAt(DPOINT p) const {
        return m_field.IsShape(static_cast<int>(std::floor(p.x + 0.5)),
                               static_cast<int>(std::floor(p.y + 0.5)));
    }

    /// Appends point `i` of the pixels' places, moved to the middle.
    void Centre(Line& line, const std::vector<DPOINT>& places, std::size_t i) const {
        const DPOINT along = Minus(PlaceAt(line, places, static_cast<std::ptrdiff_t>(i) + kReach),
                                   PlaceAt(line, places, static_cast<std::ptrdiff_t>(i) - kReach));
        const DPOINT here = places[i];
        const auto x = static_cast<int>(here.x);
        const auto y = static_cast<int>(here.y);
        const double distance = m_field.AtPixel(x, y);
        const bool isSteep = std::fabs(along.y) > std::fabs(along.x);
        const int dx = isSteep ? 1 : 0;
        const int dy = 1 - dx;
        const int most = static_cast<int>(std::min(1e6, 2 * distance)) + 1;
        const int ahead = m_field.RunFrom(x, y, dx, dy, most);
        const int behind = m_field.RunFrom(x, y, -dx, -dy, most);
        const double length = Length(along);
        const bool isCut = length == 0 || ahead == most || behind == most;
        if (isCut || std::abs(ahead - behind) > 2 * kMostShift) {
            line.points.push_back(here);
            line.radii.push_back(std::max(0.5, distance - 0.25));
            return;
        }
        const Surroundings::Extent run = m_field.Weigh(x, y, dx, dy, behind, ahead);
        line.points.push_back({here.x + dx * run.middle, here.y + dy * run.middle});
        const double cosine = (isSteep ? std::fabs(along.y) : std::fabs(along.x)) / length;
        line.radii.push_back(std::max(0.5, run.length * cosine / 2));
    }

    static DPOINT PlaceAt(const Line& line, const std::vector<DPOINT>& places, std::ptrdiff_t i) {
        const auto last = static_cast<std::ptrdiff_t>(places.size()) - 1;
        if (line.IsClosed()) i = ((i % last) + last) % last;
        return places[static_cast<std::size_t>(std::clamp(i, std::ptrdiff_t{0}, last))];
    }

    const BitPlane& m_lines;
    Surroundings m_field;
    BitPlane m_walked;
    std::vector<std::pair<Position, int>> m_nodeOf;  // sorted by position
    LineGraph m_graph;
};

}  // namespace

LineGraph FindLines(const BitPlane& lines, const BitPlane& shape, const DistanceMap& distances,
                    const ShapeGreys* greys) {
    return GraphBuilder(lines, Surroundings(shape, distances, greys)).Build();
}

}  // namespace tarvex::skeleton
