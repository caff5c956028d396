// Moving paths sideways, and the joins at their corners.
#include "geometry/offset_raw.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>

#include "core/rounding.h"

namespace tarvex::offsetting {

namespace {

constexpr int MOST_ARC_STEPS = 1024;  // of a full turn

}  // namespace

/// A unit vector along an edge, and the edge's length.
struct RawOffset::Direction {
    double x = 0;
    double y = 0;
    double length = 0;

    static Direction Of(const GridPoint& from, const GridPoint& to) {
        const double dx = to.x - from.x;
        const double dy = to.y - from.y;
        const double reach = std::hypot(dx, dy);
        return {dx / reach, dy / reach, reach};
    }
};

/// A corner with the edges before and after it.
struct RawOffset::Turn {
    GridPoint at;
    Direction in;
    Direction out;
    int sourceIn = 0;
    int sourceOut = 0;

    double Cross() const { return in.x * out.y - in.y * out.x; }
    double Dot() const { return in.x * out.x + in.y * out.y; }
    /// Whether the corner opens on the side moved to; where it turns right back it does on both.
    bool Opens(double distance) const {
        return (Dot() < 0 && std::fabs(Cross()) < 1e-12) || Cross() * distance < 0;
    }
    double Angle() const { return std::atan2(std::fabs(Cross()), Dot()); }
};

void RawOffset::Append(double x, double y, const RawEdge& edge) {
    m_contour.push_back({{std::nearbyint(x), std::nearbyint(y)}, static_cast<int>(m_edges.size())});
    m_edges.push_back(edge);
}

int RawOffset::AddEdge(int source) {
    m_edges.push_back({RawEdge::Kind::straight, RawEdge::Side::wanted, source, {}});
    return static_cast<int>(m_edges.size()) - 1;
}

/// Appends the points at which the offset goes from the edge before the corner to the one after it; the
/// last of them begins the latter's own edge.
void RawOffset::AppendCorner(const Turn& turn, double distance, Join join, RawEdge::Side side) {
    const double cross = turn.Cross();
    const double dot = turn.Dot();
    if (turn.Opens(distance)) {
        AppendGap(turn, distance, join, side);
        return;
    }
    const RawEdge parallel{RawEdge::Kind::parallel, side, turn.sourceOut, {}};
    const double cut = std::fabs(distance) * std::fabs(cross) / (1 + dot);
    if (cut <= std::min(turn.in.length, turn.out.length) / 2) {
        const double reach = distance / (1 + dot);
        Append(turn.at.x - (turn.in.y + turn.out.y) * reach, turn.at.y + (turn.in.x + turn.out.x) * reach,
               parallel);
        return;
    }
    const RawEdge spoke{RawEdge::Kind::straight, side, turn.sourceIn, {}};
    Append(turn.at.x - turn.in.y * distance, turn.at.y + turn.in.x * distance, spoke);
    Append(turn.at.x, turn.at.y, spoke);
    Append(turn.at.x - turn.out.y * distance, turn.at.y + turn.out.x * distance, parallel);
}

void RawOffset::AppendGap(const Turn& turn, double distance, Join join, RawEdge::Side side) {
    const RawEdge parallel{RawEdge::Kind::parallel, side, turn.sourceOut, {}};
    const RawEdge straight{RawEdge::Kind::straight, side, turn.sourceIn, {}};
    const double ax = turn.at.x - turn.in.y * distance;
    const double ay = turn.at.y + turn.in.x * distance;
    const double bx = turn.at.x - turn.out.y * distance;
    const double by = turn.at.y + turn.out.x * distance;
    if (join == Join::none) {
        Append(ax, ay, straight);
        Append(turn.at.x, turn.at.y, straight);
        Append(bx, by, parallel);
        return;
    }
    // The mitre's tip is `ratio` times the distance away from the corner.
    const double ratio = 1 / std::cos(turn.Angle() / 2);
    const double limit = join == Join::asWanted ? m_manner.mitreLimit : 1;
    const bool isNearlyStraight = turn.Dot() > 0 && std::fabs(distance) * (ratio - 1) <= m_manner.tolerance;
    if (ratio <= limit || isNearlyStraight) {
        const double reach = distance / (1 + turn.Dot());
        Append(turn.at.x - (turn.in.y + turn.out.y) * reach, turn.at.y + (turn.in.x + turn.out.x) * reach,
               parallel);
    } else if (join == Join::asWanted && m_manner.corner == OffsetCorner::bevel) {
        const double reach = std::fabs(distance) * std::tan(turn.Angle() / 4);
        Append(ax + turn.in.x * reach, ay + turn.in.y * reach, straight);
        Append(bx - turn.out.x * reach, by - turn.out.y * reach, parallel);
    } else {
        AppendArc(turn, distance, side);
        Append(bx, by, parallel);
    }
}

/// The arc about the corner without its end.
void RawOffset::AppendArc(const Turn& turn, double distance, RawEdge::Side side) {
    const double radius = std::fabs(distance);
    const double sag = std::min(1.0, m_manner.tolerance / radius);
    const double step = std::max(2 * std::acos(1 - sag), 2 * std::numbers::pi / MOST_ARC_STEPS);
    const double angle = turn.Angle();
    const int steps = std::max(1, SaturatingInt(std::ceil(angle / step)));
    const RawEdge arc{RawEdge::Kind::arc, side, turn.sourceIn, turn.at};
    // Turns right when moved to the left, and left when moved to the right.
    const double sense = distance > 0 ? -1 : 1;
    for (int k = 0; k < steps; ++k) {
        const double part = sense * angle * k / steps;
        const double c = std::cos(part);
        const double s = std::sin(part);
        const double nx = -turn.in.y * c - turn.in.x * s;
        const double ny = -turn.in.y * s + turn.in.x * c;
        Append(turn.at.x + nx * distance, turn.at.y + ny * distance, arc);
    }
}

Contour RawOffset::OfLoop(const Path& path) {
    m_contour.clear();
    const std::size_t n = path.size();
    Turn turn;
    turn.out = Direction::Of(path[n - 1].at, path[0].at);
    turn.sourceOut = path[n - 1].tag;
    for (std::size_t i = 0; i < n; ++i) {
        turn.at = path[i].at;
        turn.in = turn.out;
        turn.out = Direction::Of(path[i].at, path[i + 1 < n ? i + 1 : 0].at);
        turn.sourceIn = std::exchange(turn.sourceOut, path[i].tag);
        AppendCorner(turn, m_manner.distance, Join::asWanted, RawEdge::Side::wanted);
    }
    return std::move(m_contour);
}

// Chains are walked forth and back, and moved to the right both times; which of the two is wanted
// depends on the distance's sign.

/// The inner corner `i` of a chain that is walked forth or back.
RawOffset::Turn RawOffset::TurnAt(std::span<const Corner> chain, std::size_t i, Way way) const {
    const bool isForth = way == Way::forth;
    const std::size_t before = isForth ? i - 1 : i + 1;
    const std::size_t after = isForth ? i + 1 : i - 1;
    return {chain[i].at, Direction::Of(chain[before].at, chain[i].at),
            Direction::Of(chain[i].at, chain[after].at), chain[std::min(before, i)].tag,
            chain[std::min(i, after)].tag};
}

/// Appends the point at the distance to the right of one that is passed in a direction.
void RawOffset::AppendBeside(const GridPoint& at, const Direction& along, const RawEdge& edge) {
    const double distance = -std::fabs(m_manner.distance);
    Append(at.x - along.y * distance, at.y + along.x * distance, edge);
}

Contour RawOffset::AroundChain(std::span<const Corner> chain, Tip start, Tip end) {
    m_contour.clear();
    const double distance = -std::fabs(m_manner.distance);
    const std::size_t last = chain.size() - 1;
    for (const Way way : {Way::forth, Way::back}) {
        const bool isForth = way == Way::forth;
        const RawEdge::Side side = way == WantedWay() ? RawEdge::Side::wanted : RawEdge::Side::other;
        // The tip where this side begins; its last point begins the side itself.
        const Corner& tip = isForth ? chain.front() : chain[last];
        const int source = isForth ? chain.front().tag : chain[last - 1].tag;
        const Direction out = Direction::Of(tip.at, isForth ? chain[1].at : chain[last - 1].at);
        const Turn reversal{tip.at, {-out.x, -out.y, out.length}, out, source, source};
        const bool isRound = (isForth ? start : end) == Tip::round;
        AppendCorner(reversal, distance, isRound ? Join::round : Join::none, RawEdge::Side::other);
        m_edges.back().side = side;
        for (std::size_t k = 1; k < last; ++k) {
            AppendCorner(TurnAt(chain, isForth ? k : last - k, way), distance,
                         side == RawEdge::Side::wanted ? Join::asWanted : Join::round, side);
        }
    }
    return std::move(m_contour);
}

Contour RawOffset::BesideChain(std::span<const Corner> chain) {
    m_contour.clear();
    const double distance = -std::fabs(m_manner.distance);
    const std::size_t last = chain.size() - 1;
    const Way way = WantedWay();
    const auto corner = [&](std::size_t k) -> const Corner& {
        return chain[way == Way::forth ? k : last - k];
    };
    const auto sourceAfter = [&](std::size_t k) { return chain[way == Way::forth ? k : last - k - 1].tag; };
    AppendBeside(corner(0).at, Direction::Of(corner(0).at, corner(1).at),
                 {RawEdge::Kind::parallel, RawEdge::Side::wanted, sourceAfter(0), {}});
    for (std::size_t k = 1; k < last; ++k)
        AppendCorner(TurnAt(chain, way == Way::forth ? k : last - k, way), distance, Join::asWanted,
                     RawEdge::Side::wanted);
    AppendBeside(corner(last).at, Direction::Of(corner(last - 1).at, corner(last).at),
                 {RawEdge::Kind::straight, RawEdge::Side::wanted, sourceAfter(last - 1), {}});
    for (std::size_t k = last + 1; k-- > 0;) {
        const GridPoint& p = corner(k).at;
        Append(p.x, p.y, {RawEdge::Kind::straight, RawEdge::Side::other, sourceAfter(k > 0 ? k - 1 : 0), {}});
    }
    return std::move(m_contour);
}

Contour RawOffset::Sector(std::span<const Corner> corners, RawEdge::Side side) {
    m_contour.clear();
    const double distance = -std::fabs(m_manner.distance);
    const bool isWanted = side == RawEdge::Side::wanted;
    const Way way = (WantedWay() == Way::forth) == isWanted ? Way::forth : Way::back;
    const Turn turn = TurnAt(corners, 1, way);
    if (!turn.Opens(distance)) return {};
    const RawEdge straight{RawEdge::Kind::straight, side, turn.sourceIn, {}};
    AppendBeside(turn.at, turn.in, {RawEdge::Kind::parallel, side, turn.sourceIn, {}});
    AppendGap(turn, distance, isWanted ? Join::asWanted : Join::round, side);
    AppendBeside(turn.at, turn.out, straight);
    Append(turn.at.x, turn.at.y, straight);
    return std::move(m_contour);
}

}  // namespace tarvex::offsetting
