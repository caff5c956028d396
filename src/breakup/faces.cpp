// Dividing a shape by cuts without computing anything: a walk along the outline that turns into every cut.
//
// The outline's contours are turned so that the shape lies on the left of each. Every contour edge is then
// walked once, forwards, and every cut twice, once in each direction. Where a walk comes to a point, it goes
// on along the first way out clockwise from where it came: the sharpest turn to the left. At a point of the
// outline all ways out lie in the wedge of the shape there, from the next edge counterclockwise to the last
// one; a cut that leaves the wedge (it leaves the shape for a moment, at a notch) is taken for one along the
// nearer side of it. So each edge has exactly one successor and one predecessor, the walks are closed, and
// every bit of the outline is on one of them: nothing is lost or counted twice, whatever the cuts do. The
// signed areas of all walks add up to that of the shape.
//
// Cuts that cross each other are split where they cross.
#include "breakup/faces.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <map>
#include <numbers>

#include "core/rounding.h"

namespace tarvex {
namespace {

constexpr double kTurn = 2 * std::numbers::pi;

/// An angle in [0, 2 pi).
double Folded(double angle) {
    const double folded = std::fmod(angle, kTurn);
    return folded < 0 ? folded + kTurn : folded;
}

double DirectionOf(const DPOINT& from, const DPOINT& to) { return std::atan2(to.y - from.y, to.x - from.x); }

struct Node {
    DPOINT at;
    int next = -1;  ///< along the contour; -1 where only cuts meet
    int last = -1;
};

struct Way {
    int to;
    int cut;     ///< -1 for the contour itself
    double key;  ///< ways out of a node are sorted by it, counterclockwise
    bool used = false;
};

/// A part of a cut between two nodes.
struct CutPart {
    int from;
    int to;
    int cut;
};

class Arrangement {
  public:
    Arrangement(const CPolyPolyDPoint& outline, std::span<const CUTLINE> cuts) {
        for (int i = 0; i < outline.GetCount(); ++i) {
            if (outline.GetAt(i) != nullptr) AddContour(outline[i]);
        }
        OrientContours();
        for (const auto& contour : m_contours) AddNodes(contour);
        for (std::size_t i = 0; i < cuts.size(); ++i) AddCut(cuts[i], static_cast<int>(i));
        SplitCrossings();
        MakeWays();
    }

    /// All walks.
    std::vector<Boundary> Walk() {
        std::vector<Boundary> walks;
        for (std::size_t node = 0; node < m_nodes.size(); ++node) {
            for (std::size_t way = 0; way < m_ways[node].size(); ++way) {
                if (!m_ways[node][way].used) walks.push_back(WalkFrom(node, way));
            }
        }
        return walks;
    }

  private:
    using Contour = std::vector<DPOINT>;

    void AddContour(const CArray<DPOINT, DPOINT>& polyline) {
        Contour contour;
        for (const DPOINT& p : polyline) {
            if (!std::isfinite(p.x) || !std::isfinite(p.y)) continue;
            if (contour.empty() || !(contour.back() == p)) contour.push_back(p);
        }
        while (contour.size() > 1 && contour.back() == contour.front()) contour.pop_back();
        if (contour.size() > 2) m_contours.push_back(std::move(contour));
    }

    /// Outer contours counterclockwise, those of holes clockwise: by how many others each lies in.
    void OrientContours() {
        std::vector<bool> isHole(m_contours.size());
        for (std::size_t i = 0; i < m_contours.size(); ++i) {
            bool inside = false;
            for (std::size_t k = 0; k < m_contours.size(); ++k) {
                if (k != i && IsInside(m_contours[k], m_contours[i].front())) inside = !inside;
            }
            isHole[i] = inside;
        }
        for (std::size_t i = 0; i < m_contours.size(); ++i) {
            if ((SignedArea(m_contours[i]) < 0) != isHole[i])
                std::reverse(m_contours[i].begin(), m_contours[i].end());
        }
    }

    static std::uint64_t Key(int x, int y) {
        return static_cast<std::uint64_t>(static_cast<std::uint32_t>(y)) << 32 |
               static_cast<std::uint32_t>(x);
    }

    void AddNodes(const Contour& contour) {
        const int first = static_cast<int>(m_nodes.size());
        const int count = static_cast<int>(contour.size());
        for (int i = 0; i < count; ++i) {
            const DPOINT& p = contour[static_cast<std::size_t>(i)];
            m_nodes.push_back({p, first + (i + 1) % count, first + (i + count - 1) % count});
            m_places.emplace(Key(RoundToInt(p.x), RoundToInt(p.y)), first + i);
        }
    }

    /// How far a direction lies in a node's wedge of the shape, counterclockwise from the next edge, and how
    /// far the wedge goes.
    std::pair<double, double> InWedge(const Node& node, double direction) const {
        const double start = DirectionOf(node.at, m_nodes[Index(node.next)].at);
        const double end = DirectionOf(node.at, m_nodes[Index(node.last)].at);
        return {Folded(direction - start), Folded(end - start)};
    }

    static std::size_t Index(int i) { return static_cast<std::size_t>(i); }

    /// The node that a cut ends at: of those that round to that place one whose wedge it lies in, if any.
    int NodeAt(int x, int y, const DPOINT& other) const {
        const auto [begin, end] = m_places.equal_range(Key(x, y));
        int found = -1;
        bool inWedge = false;
        for (auto it = begin; it != end; ++it) {
            const Node& node = m_nodes[Index(it->second)];
            const auto [angle, wedge] = InWedge(node, DirectionOf(node.at, other));
            const bool fits = angle > 0 && angle < wedge;
            if (found < 0 || (fits && !inWedge) || (fits == inWedge && it->second < found)) {
                found = it->second;
                inWedge = fits;
            }
        }
        return found;
    }

    void AddCut(const CUTLINE& cut, int index) {
        const DPOINT start{static_cast<double>(cut.x1), static_cast<double>(cut.y1)};
        const DPOINT end{static_cast<double>(cut.x2), static_cast<double>(cut.y2)};
        const int from = NodeAt(cut.x1, cut.y1, end);
        const int to = NodeAt(cut.x2, cut.y2, start);
        if (from < 0 || to < 0 || from == to) return;
        const auto same = [from, to](const CutPart& part) {
            return (part.from == from && part.to == to) || (part.from == to && part.to == from);
        };
        if (std::none_of(m_parts.begin(), m_parts.end(), same)) m_parts.push_back({from, to, index});
    }

    struct Crossing {
        double along;
        int node;
    };

    /// Where along part a the two cross, strictly inside both; NaN elsewhere.
    std::pair<double, double> Cross(const CutPart& a, const CutPart& b) const {
        const DPOINT p = m_nodes[Index(a.from)].at, q = m_nodes[Index(b.from)].at;
        const DPOINT u{m_nodes[Index(a.to)].at.x - p.x, m_nodes[Index(a.to)].at.y - p.y};
        const DPOINT v{m_nodes[Index(b.to)].at.x - q.x, m_nodes[Index(b.to)].at.y - q.y};
        const double det = u.x * v.y - u.y * v.x;
        const double s = ((q.x - p.x) * v.y - (q.y - p.y) * v.x) / det;
        const double t = ((q.x - p.x) * u.y - (q.y - p.y) * u.x) / det;
        return {s, t};
    }

    void SplitCrossings() {
        std::vector<std::vector<Crossing>> crossings(m_parts.size());
        for (std::size_t i = 0; i < m_parts.size(); ++i) {
            for (std::size_t k = i + 1; k < m_parts.size(); ++k) {
                const auto [s, t] = Cross(m_parts[i], m_parts[k]);
                if (!(s > 0 && s < 1 && t > 0 && t < 1)) continue;
                const CutPart& a = m_parts[i];
                const bool sharesEnd = a.from == m_parts[k].from || a.from == m_parts[k].to ||
                                       a.to == m_parts[k].from || a.to == m_parts[k].to;
                if (sharesEnd) continue;
                const DPOINT p = m_nodes[Index(a.from)].at, q = m_nodes[Index(a.to)].at;
                const int node = static_cast<int>(m_nodes.size());
                m_nodes.push_back({{p.x + s * (q.x - p.x), p.y + s * (q.y - p.y)}});
                crossings[i].push_back({s, node});
                crossings[k].push_back({t, node});
            }
        }
        std::vector<CutPart> split;
        for (std::size_t i = 0; i < m_parts.size(); ++i) {
            std::sort(crossings[i].begin(), crossings[i].end(),
                      [](const Crossing& a, const Crossing& b) { return a.along < b.along; });
            int from = m_parts[i].from;
            for (const Crossing& crossing : crossings[i]) {
                split.push_back({from, crossing.node, m_parts[i].cut});
                from = crossing.node;
            }
            split.push_back({from, m_parts[i].to, m_parts[i].cut});
        }
        m_parts = std::move(split);
    }

    double KeyOf(const Node& node, const DPOINT& to) const {
        const double direction = DirectionOf(node.at, to);
        if (node.next < 0) return Folded(direction);
        const auto [angle, wedge] = InWedge(node, direction);
        if (angle <= wedge) return angle;
        return angle - wedge < kTurn - angle ? wedge : 0.0;
    }

    void MakeWays() {
        m_ways.resize(m_nodes.size());
        for (std::size_t i = 0; i < m_nodes.size(); ++i) {
            if (m_nodes[i].next >= 0) m_ways[i].push_back({m_nodes[i].next, -1, -1.0});  // before all cuts
        }
        for (const CutPart& part : m_parts) {
            const Node& from = m_nodes[Index(part.from)];
            const Node& to = m_nodes[Index(part.to)];
            m_ways[Index(part.from)].push_back({part.to, part.cut, KeyOf(from, to.at)});
            m_ways[Index(part.to)].push_back({part.from, part.cut, KeyOf(to, from.at)});
        }
        for (auto& ways : m_ways)
            std::stable_sort(ways.begin(), ways.end(),
                             [](const Way& a, const Way& b) { return a.key < b.key; });
    }

    /// The way out of a node for a walk that comes from node `from` along a cut (or the contour, -1).
    std::size_t NextWay(std::size_t node, int from, int cut) const {
        const auto& ways = m_ways[node];
        std::size_t arrived = ways.size();  // the contour's last edge lies behind all ways
        if (cut >= 0) {
            for (std::size_t i = 0; i < ways.size(); ++i) {
                if (ways[i].to == from && ways[i].cut == cut) arrived = i;
            }
        }
        return (arrived + ways.size() - 1) % ways.size();
    }

    Boundary WalkFrom(std::size_t node, std::size_t way) {
        Boundary walk;
        while (!m_ways[node][way].used) {
            Way& taken = m_ways[node][way];
            taken.used = true;
            walk.points.push_back(m_nodes[node].at);
            walk.cuts.push_back(taken.cut);
            const auto to = Index(taken.to);
            way = NextWay(to, static_cast<int>(node), taken.cut);
            node = to;
        }
        walk.area = SignedArea(walk.points);
        return walk;
    }

    std::vector<Contour> m_contours;
    std::vector<Node> m_nodes;
    std::multimap<std::uint64_t, int> m_places;
    std::vector<CutPart> m_parts;
    std::vector<std::vector<Way>> m_ways;
};

/// A point beside the boundary's longest edge, on the shape's side.
DPOINT PointInside(const Boundary& boundary) {
    constexpr double away = 0.05;
    std::size_t longest = 0;
    double length = -1;
    const std::size_t count = boundary.points.size();
    for (std::size_t i = 0; i < count; ++i) {
        const DPOINT& a = boundary.points[i];
        const DPOINT& b = boundary.points[(i + 1) % count];
        const double candidate = std::hypot(b.x - a.x, b.y - a.y);
        if (candidate <= length) continue;
        longest = i;
        length = candidate;
    }
    const DPOINT& a = boundary.points[longest];
    const DPOINT& b = boundary.points[(longest + 1) % count];
    if (!(length > 0)) return a;
    return {(a.x + b.x) / 2 - away * (b.y - a.y) / length, (a.y + b.y) / 2 + away * (b.x - a.x) / length};
}

}  // namespace

double SignedArea(std::span<const DPOINT> points) {
    double twice = 0;
    for (std::size_t i = 0; i < points.size(); ++i) {
        const DPOINT& a = points[i];
        const DPOINT& b = points[(i + 1) % points.size()];
        twice += (a.x - points[0].x) * (b.y - points[0].y) - (b.x - points[0].x) * (a.y - points[0].y);
    }
    return twice / 2;
}

bool IsInside(std::span<const DPOINT> polygon, DPOINT p) {
    bool inside = false;
    for (std::size_t i = 0, k = polygon.size() - 1; i < polygon.size(); k = i++) {
        const DPOINT& a = polygon[i];
        const DPOINT& b = polygon[k];
        if ((a.y > p.y) != (b.y > p.y) && p.x < (b.x - a.x) * (p.y - a.y) / (b.y - a.y) + a.x)
            inside = !inside;
    }
    return inside;
}

std::vector<Piece> MakePieces(const CPolyPolyDPoint& outline, std::span<const CUTLINE> cuts) {
    std::vector<Boundary> walks = Arrangement(outline, cuts).Walk();
    std::vector<Piece> pieces;
    std::vector<Boundary> holes;
    for (Boundary& walk : walks) {
        if (walk.area > 0) {
            pieces.push_back({std::move(walk), {}});
        } else if (walk.area < 0) {
            holes.push_back(std::move(walk));
        }
    }
    for (Boundary& hole : holes) {
        const DPOINT p = PointInside(hole);
        Piece* around = nullptr;
        for (Piece& piece : pieces) {
            if (IsInside(piece.outer.points, p) &&
                (around == nullptr || piece.outer.area < around->outer.area))
                around = &piece;
        }
        if (around != nullptr) around->holes.push_back(std::move(hole));
    }
    return pieces;
}

}  // namespace tarvex
