// Splitting a region's boundary into rails.
//
// The line along a region's middle ends where the largest disc touches the region's end, half a width before
// it, and its last points lean to wherever that disc leans. So each end is continued in the direction that
// the line has over about one and a half half-widths, and what the continuation meets is the region's end:
//   - a cut: the whole cut is the end edge, also when the continuation narrowly misses it;
//   - the outline, crossed squarely: the end edge is as much of the outline there as is straight, as at the
//     square end of a stroke. A round end is straight nowhere, and the rails meet at its tip;
//   - the outline, met along its side, as at a tapering end: the farthest point ahead, near by, is the tip.
// Only what is straight to within a fraction of a unit becomes an edge, so that rails and edges are still the
// whole boundary.
#include "breakup/columns.h"

#include <algorithm>
#include <cmath>

#include "breakup/polyline_place.h"

namespace tarvex {
namespace {

constexpr double kLeastLookBack = 8;    ///< of points, for a direction out of pixels
constexpr double kWidthLookBack = 1.5;  ///< in half widths
constexpr double kStraightness = 0.75;  ///< how far an end edge may stray from straight
constexpr double kSquareness = 0.6;     ///< least sine between an end edge and the line's direction
constexpr double kLeastChord = 3;       ///< shorter ones have no direction to speak of
constexpr double kReach = 3;            ///< how far the end may be, in half widths
constexpr double kCutReach = 1.4;       ///< and how far a cut that ends the region
constexpr double kCutSquareness = 0.4;  ///< least sine between such a cut and the line's direction

/// A place on a closed boundary by edge and part of it, comparable along a walk.
struct Spot {
    std::size_t edge = 0;
    double t = 0;
    DPOINT at;
};

/// The part of the boundary that ends a region: from one spot forwards to another, or one spot twice.
struct EndEdge {
    Spot from;
    Spot to;
    Spot middle;  ///< where the line leaves through it
};

class Splitter {
  public:
    Splitter(const Boundary& boundary, const ColumnSettings& settings)
        : m_points(boundary.points), m_cuts(boundary.cuts), m_settings(settings) {}

    /// The edge at which a line that comes from its other end leaves the region.
    EndEdge FindEnd(std::span<const DPOINT> line) const {
        const Tail tail = TailOf(line);
        const auto hit = Shoot(tail);
        if (hit && m_cuts[hit->edge] >= 0) return WholeEdge(hit->edge);
        if (const auto cut = NearCut(tail)) return WholeEdge(*cut);
        // A line's last pixel can lie outside by a fraction, as at a tip.
        const Spot met = hit ? *hit : NearestSpot(tail.end);
        if (const auto edge = StraightEdge(met, tail)) return *edge;
        const Spot tip = FarthestAhead(met, tail);
        if (const auto edge = StraightEdge(tip, tail)) return *edge;
        return EndEdge{tip, tip, tip};
    }

    PointList Walk(const Spot& from, const Spot& to) const {
        PointList way{from.at};
        std::size_t edge = from.edge;
        const bool wraps = to.edge < from.edge || (to.edge == from.edge && to.t < from.t);
        for (std::size_t steps = Steps(from.edge, to.edge, wraps); steps > 0; --steps) {
            edge = Next(edge);
            Append(way, m_points[edge]);
        }
        Append(way, to.at);
        return way;
    }

  private:
    /// A line's end, the direction it leaves in, and half the region's width there.
    struct Tail {
        DPOINT end;
        DPOINT ahead;
        double halfWidth = 0;
    };

    static void Append(PointList& way, const DPOINT& p) {
        if (!(way.back() == p)) way.push_back(p);
    }
    std::size_t Next(std::size_t i) const { return i + 1 < m_points.size() ? i + 1 : 0; }
    std::size_t Previous(std::size_t i) const { return i > 0 ? i - 1 : m_points.size() - 1; }
    std::size_t Steps(std::size_t from, std::size_t to, bool wraps) const {
        if (!wraps) return to - from;
        return to + m_points.size() - from;
    }
    const DPOINT& Start(std::size_t edge) const { return m_points[edge]; }
    const DPOINT& End(std::size_t edge) const { return m_points[Next(edge)]; }

    EndEdge WholeEdge(std::size_t edge) const {
        return {{edge, 0, Start(edge)},
                {Next(edge), 0, End(edge)},
                {edge, 0.5, Between(Start(edge), End(edge), 0.5)}};
    }

    Spot NearestSpot(const DPOINT& p) const {
        Place nearest;
        for (std::size_t i = 0; i < m_points.size(); ++i) {
            const Place place = NearestOnSegment(Start(i), End(i), p, i);
            if (place.distance < nearest.distance) nearest = place;
        }
        if (nearest.t < 1) return {nearest.segment, nearest.t, nearest.at};
        return SpotOf(Next(nearest.segment));
    }

    Tail TailOf(std::span<const DPOINT> line) const {
        Tail tail;
        const auto trim = static_cast<std::size_t>(std::max(m_settings.trim, 0));
        const std::size_t last = line.size() > trim ? line.size() - 1 - trim : line.size() - 1;
        tail.end = line[last];
        tail.halfWidth = Length(Minus(NearestSpot(tail.end).at, tail.end));
        const double reach = std::max(kLeastLookBack, kWidthLookBack * tail.halfWidth);
        std::size_t back = last;
        while (back > 0 && Length(Minus(line[back], tail.end)) < reach) --back;
        DPOINT direction = Minus(tail.end, line[back]);
        if (!(Length(direction) > 0)) direction = Minus(line.back(), line.front());
        const double length = Length(direction);
        tail.ahead = length > 0 ? DPOINT{direction.x / length, direction.y / length} : DPOINT{1, 0};
        return tail;
    }

    /// What the ray ahead meets first.
    std::optional<Spot> Shoot(const Tail& tail) const {
        std::optional<Spot> first;
        double nearest = std::numeric_limits<double>::infinity();
        for (std::size_t i = 0; i < m_points.size(); ++i) {
            const DPOINT edge = Minus(End(i), Start(i));
            const DPOINT offset = Minus(Start(i), tail.end);
            const double det = CrossProduct(tail.ahead, edge);
            if (!(det > 0)) continue;  // leads inside: the other side of a cut that closes a ring
            const double along = CrossProduct(offset, edge) / det;
            const double t = CrossProduct(offset, tail.ahead) / det;
            if (!(along > 0 && along < nearest && t >= 0 && t < 1)) continue;
            nearest = along;
            first = Spot{i, t, Between(Start(i), End(i), t)};
        }
        return first;
    }

    /// A cut just ahead that lies across the line's direction.
    std::optional<std::size_t> NearCut(const Tail& tail) const {
        std::optional<std::size_t> found;
        double nearest = std::max(kCutReach * tail.halfWidth, tail.halfWidth + 4);
        for (std::size_t i = 0; i < m_points.size(); ++i) {
            if (m_cuts[i] < 0) continue;
            const DPOINT edge = Minus(End(i), Start(i));
            const double length = Length(edge);
            if (!(length > 0) || CrossProduct(tail.ahead, edge) < kCutSquareness * length) continue;
            const Place place = NearestOnSegment(Start(i), End(i), tail.end, i);
            if (place.distance >= nearest || Dot(Minus(place.at, tail.end), tail.ahead) < 0) continue;
            nearest = place.distance;
            found = i;
        }
        return found;
    }

    /// Grows an edge across the line's direction around a spot, for as long as the outline is straight there.
    std::optional<EndEdge> StraightEdge(const Spot& spot, const Tail& tail) const {
        const double reach = kReach * std::max(tail.halfWidth, m_settings.edgeLimit);
        EndEdge best{spot, spot, spot};
        const std::vector<std::size_t> ahead = Ahead(spot, reach);
        const std::vector<std::size_t> behind = Behind(spot, reach);
        const std::size_t right = Straight(spot.at, ahead, tail);
        const std::size_t left = Straight(spot.at, behind, tail);
        if (right > 0) best.to = SpotOf(ahead[right - 1]);
        if (left > 0) best.from = SpotOf(behind[left - 1]);
        const double width = Length(Minus(best.to.at, best.from.at));
        if (width < m_settings.edgeLimit || !IsSquare(Minus(best.to.at, best.from.at), tail))
            return std::nullopt;
        if (!IsStraightBetween(best, spot, ahead, right, behind, left)) return std::nullopt;
        return best;
    }

    Spot SpotOf(std::size_t point) const { return {point, 0, m_points[point]}; }

    /// The points that follow a spot on the outline, no farther along it than `reach`, up to the next cut.
    std::vector<std::size_t> Ahead(const Spot& spot, double reach) const {
        std::vector<std::size_t> points;
        DPOINT at = spot.at;
        for (std::size_t edge = spot.edge; points.size() < m_points.size() && m_cuts[edge] < 0;
             edge = Next(edge)) {
            reach -= Length(Minus(End(edge), at));
            if (reach < 0) break;
            at = End(edge);
            points.push_back(Next(edge));
        }
        return points;
    }
    std::vector<std::size_t> Behind(const Spot& spot, double reach) const {
        std::vector<std::size_t> points;
        DPOINT at = spot.at;
        std::size_t edge = spot.edge;
        if (spot.t == 0) edge = Previous(edge);
        for (; points.size() < m_points.size() && m_cuts[edge] < 0; edge = Previous(edge)) {
            reach -= Length(Minus(Start(edge), at));
            if (reach < 0) break;
            at = Start(edge);
            points.push_back(edge);
        }
        return points;
    }

    static bool IsSquare(const DPOINT& edge, const Tail& tail) {
        return std::fabs(CrossProduct(edge, tail.ahead)) >= kSquareness * Length(edge);
    }

    /// How many of the points can be reached in a straight line from the spot, across the line's direction:
    /// up to where that leads farthest aside, which is the corner and not somewhat beyond it.
    std::size_t Straight(const DPOINT& spot, const std::vector<std::size_t>& points, const Tail& tail) const {
        std::size_t count = 0;
        double farthest = 0;
        for (std::size_t n = 1; n <= points.size(); ++n) {
            const DPOINT chord = Minus(m_points[points[n - 1]], spot);
            const double length = Length(chord);
            if (!(length > 0) || (length > kLeastChord && !IsSquare(chord, tail))) continue;
            double strays = 0;
            bool isAhead = true;
            for (std::size_t k = 0; k < n; ++k) {
                const DPOINT p = Minus(m_points[points[k]], spot);
                strays = std::max(strays, std::fabs(CrossProduct(p, chord)) / length);
                isAhead = isAhead && Dot(p, chord) <= length * length + kStraightness * length;
            }
            const double aside = std::fabs(CrossProduct(chord, tail.ahead)) - 2 * strays;
            if (!isAhead || strays > kStraightness || aside <= farthest) continue;
            count = n;
            farthest = aside;
        }
        return count;
    }

    bool IsStraightBetween(const EndEdge& edge, const Spot& spot, const std::vector<std::size_t>& ahead,
                           std::size_t right, const std::vector<std::size_t>& behind,
                           std::size_t left) const {
        const DPOINT chord = Minus(edge.to.at, edge.from.at);
        const double most = kStraightness * Length(chord);
        const auto strays = [&](const DPOINT& p) {
            return std::fabs(CrossProduct(Minus(p, edge.from.at), chord)) > most;
        };
        if (strays(spot.at)) return false;
        for (std::size_t i = 0; i < right; ++i) {
            if (strays(m_points[ahead[i]])) return false;
        }
        for (std::size_t i = 0; i < left; ++i) {
            if (strays(m_points[behind[i]])) return false;
        }
        return true;
    }

    /// The outline's farthest point in the line's direction, near a spot.
    Spot FarthestAhead(const Spot& spot, const Tail& tail) const {
        const double reach = kReach * tail.halfWidth + m_settings.edgeLimit;
        Spot best = spot;
        for (const auto& points : {Ahead(spot, reach), Behind(spot, reach)}) {
            for (const std::size_t i : points) {
                if (Dot(Minus(m_points[i], best.at), tail.ahead) > 1e-9) best = SpotOf(i);
            }
        }
        return best;
    }

    const PointList& m_points;
    const std::vector<int>& m_cuts;
    ColumnSettings m_settings;
};

double LengthOf(const PointList& line) {
    double length = 0;
    for (std::size_t i = 1; i < line.size(); ++i) length += Length(Minus(line[i], line[i - 1]));
    return length;
}

double Perimeter(const PointList& points) {
    return LengthOf(points) + Length(Minus(points.front(), points.back()));
}

/// A closed boundary from its place nearest to p, as a polyline that repeats its first point.
PointList StartOutline(PointList points, const DPOINT& p) {
    points.push_back(points.front());
    const Place place = NearestPlace(points, p);
    PointList turned{place.at};
    const std::size_t count = points.size() - 1;
    for (std::size_t k = 1; k <= count; ++k) {
        const DPOINT& next = points[(place.segment + k) % count];
        if (!(turned.back() == next)) turned.push_back(next);
    }
    if (turned.back() == turned.front()) turned.pop_back();
    turned.push_back(turned.front());
    return turned;
}

}  // namespace

std::optional<Rails> SplitAlong(const Boundary& boundary, std::span<const DPOINT> line,
                                const ColumnSettings& settings) {
    if (boundary.points.size() < 3 || line.empty()) return std::nullopt;
    const Splitter splitter(boundary, settings);
    const PointList backwards(line.rbegin(), line.rend());
    const EndEdge start = splitter.FindEnd(backwards);
    const EndEdge end = splitter.FindEnd(line);
    Rails rails{splitter.Walk(start.to, end.from), splitter.Walk(end.to, start.from)};
    const double around = Perimeter(boundary.points) * (1 + 1e-9);
    if (LengthOf(rails.first) + LengthOf(rails.second) > around) {
        // The end edges overlap, as in a region no longer than it is wide: let the rails meet in points.
        rails = {splitter.Walk(start.middle, end.middle), splitter.Walk(end.middle, start.middle)};
    }
    std::reverse(rails.second.begin(), rails.second.end());
    if (rails.first.size() < 2 || rails.second.size() < 2) return std::nullopt;
    return rails;
}

std::optional<Rails> RingRails(const Boundary& outer, const Boundary& inner, std::span<const DPOINT> line) {
    if (outer.points.size() < 3 || inner.points.size() < 3 || line.empty()) return std::nullopt;
    const bool forwards = SignedArea(line) >= 0;
    const auto turned = [forwards](const Boundary& boundary) {
        PointList points = boundary.points;
        if ((SignedArea(points) >= 0) != forwards) std::reverse(points.begin(), points.end());
        return points;
    };
    return Rails{StartOutline(turned(outer), line.front()), StartOutline(turned(inner), line.front())};
}

}  // namespace tarvex
