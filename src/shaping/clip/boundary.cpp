// Links the pieces between inside and outside into closed walks with the inside on the left, and cuts
// the walks into simple contours.
//
// At a vertex the walk goes on along the next boundary piece clockwise: what lies between the two is
// one wedge of the inside, so parts of the region that meet only in a vertex are walked separately. A
// walk can still come back to a vertex, where a hole touches the contour around it; it is cut there, the
// loop that is closed becoming a contour of its own. Walks do not cross themselves, so neither do the
// loops. Everything is decided by the exact turn or by counting.
#include "shaping/clip/boundary.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <numeric>
#include <span>
#include <utility>

#include "shaping/clip/predicates.h"

namespace tarvex::clip {
namespace {

constexpr std::int32_t none = -1;
constexpr std::int32_t several = -2;

std::size_t Index(std::int32_t i) { return static_cast<std::size_t>(i); }

/// A boundary piece in the direction that has the inside on its left.
struct Link {
    std::int32_t from = 0;
    std::int32_t to = 0;
    std::int32_t edge = 0;
    std::int32_t next = none;
};

/// A vertex of a contour under construction, and the input edge on which it is reached.
struct Step {
    std::int32_t vertex = 0;
    std::int32_t edge = 0;
};

struct Loop {
    std::size_t first = 0;  ///< among the steps of all loops
    std::size_t count = 0;
    std::size_t start = 0;  ///< the lowest vertex's place among them
    std::int32_t lowest = 0;
    std::int32_t highest = 0;
};

class Tracer {
  public:
    Tracer(const Arrangement& arrangement, const Region& region);
    std::vector<Contour> Trace();

  private:
    /// A link at a knot and the vertex at its other end.
    struct Spoke {
        std::int32_t link;
        std::int32_t far;
    };

    void JoinLinks();
    void JoinAt(std::int32_t vertex, std::span<Spoke> around);
    std::vector<Loop> InSweepOrder() const;
    bool StartsLeftOf(const Loop& loop, const Loop& other) const;
    bool IsKnot(std::int32_t vertex) const { return m_leaving[Index(vertex)] == several; }
    void Walk(std::int32_t link);
    void Close(std::size_t from, const Step& arrival);
    Contour Finished(const Loop& loop) const;
    const Point& At(std::int32_t vertex) const { return m_vertices[Index(vertex)]; }

    const std::vector<Point>& m_vertices;
    std::vector<Link> m_links;
    std::vector<std::int32_t> m_leaving;   ///< the link that leaves each vertex, none, or several
    std::vector<std::int32_t> m_position;  ///< of a knot in the walk, or none
    std::vector<Step> m_walk;
    std::vector<Step> m_steps;
    std::vector<Loop> m_loops;
};

Tracer::Tracer(const Arrangement& arrangement, const Region& region)
    : m_vertices(arrangement.vertices),
      m_leaving(arrangement.vertices.size(), none),
      m_position(arrangement.vertices.size(), none) {
    m_links.reserve(arrangement.pieces.size());
    for (const Piece& piece : arrangement.pieces) {
        const bool left = region[piece.left];
        const bool right = region[piece.left ^ piece.parity];
        if (left == right) continue;
        const auto number = static_cast<std::int32_t>(m_links.size());
        m_links.push_back({left ? piece.a : piece.b, left ? piece.b : piece.a, piece.edge, none});
        std::int32_t& leaving = m_leaving[Index(m_links.back().from)];
        leaving = leaving == none ? number : several;
    }
    JoinLinks();
}

/// Gives every link its successor: the only one that leaves where it arrives, or, at a knot, the next one
/// around it.
void Tracer::JoinLinks() {
    // The links at each knot are brought together by counting. A knot's number stands in `m_position`.
    std::vector<std::int32_t> knots;
    std::vector<std::int32_t> first{0};
    const auto count = [&](std::int32_t vertex) {
        if (!IsKnot(vertex)) return;
        std::int32_t& knot = m_position[Index(vertex)];
        if (knot == none) {
            knot = static_cast<std::int32_t>(knots.size());
            knots.push_back(vertex);
            first.push_back(0);
        }
        ++first[Index(knot) + 1];
    };
    for (Link& link : m_links) {
        link.next = m_leaving[Index(link.to)];
        count(link.from);
        count(link.to);
    }
    std::partial_sum(first.begin(), first.end(), first.begin());
    std::vector<Spoke> spokes(Index(first.back()));
    std::vector<std::int32_t> filled(first.begin(), first.end() - 1);
    const auto fill = [&](std::int32_t vertex, std::int32_t link, std::int32_t far) {
        if (IsKnot(vertex)) spokes[Index(filled[Index(m_position[Index(vertex)])]++)] = {link, far};
    };
    for (std::size_t i = 0; i < m_links.size(); ++i) {
        const Link& link = m_links[i];
        fill(link.from, static_cast<std::int32_t>(i), link.to);
        fill(link.to, static_cast<std::int32_t>(i), link.from);
    }
    for (std::size_t i = 0; i < knots.size(); ++i) {
        JoinAt(knots[i], std::span(spokes).subspan(Index(first[i]), Index(first[i + 1] - first[i])));
        m_position[Index(knots[i])] = none;
    }
}

/// Gives every link that arrives at a knot its successor.
void Tracer::JoinAt(std::int32_t vertex, std::span<Spoke> around) {
    // Clockwise, from the left: the upper ones from left to right, then the lower ones back.
    std::sort(around.begin(), around.end(), [this, vertex](const Spoke& s, const Spoke& t) {
        if ((s.far > vertex) != (t.far > vertex)) return s.far > vertex;
        return Turn(At(vertex), At(t.far), At(s.far)) > 0;
    });
    for (std::size_t i = 0; i < around.size(); ++i) {
        Link& link = m_links[Index(around[i].link)];
        if (link.to == vertex) link.next = around[(i + 1) % around.size()].link;
    }
}

/// Follows the links from one back to itself, and closes a loop whenever a vertex comes again: a knot, or
/// the one where the walk began.
void Tracer::Walk(std::int32_t link) {
    while (m_links[Index(link)].next != none) {
        Link& l = m_links[Index(link)];
        const bool knot = IsKnot(l.from);
        if (!knot || m_position[Index(l.from)] == none) {
            if (knot) m_position[Index(l.from)] = static_cast<std::int32_t>(m_walk.size());
            m_walk.push_back({l.from, l.edge});
        }
        const std::int32_t start = l.to == m_walk.front().vertex ? 0 : none;
        const std::int32_t reached = IsKnot(l.to) ? m_position[Index(l.to)] : start;
        if (reached != none) Close(Index(reached), {l.to, l.edge});
        link = std::exchange(l.next, none);
    }
}

void Tracer::Close(std::size_t from, const Step& arrival) {
    Loop loop{m_steps.size(), m_walk.size() - from, 0, arrival.vertex, arrival.vertex};
    for (std::size_t i = from; i < m_walk.size(); ++i) {
        const std::int32_t vertex = m_walk[i].vertex;
        if (vertex < loop.lowest) loop.start = i - from;
        loop.lowest = std::min(loop.lowest, vertex);
        loop.highest = std::max(loop.highest, vertex);
        m_steps.push_back(m_walk[i]);
        if (IsKnot(vertex)) m_position[Index(vertex)] = none;
    }
    m_walk.resize(from);
    m_loops.push_back(loop);
}

Contour Tracer::Finished(const Loop& loop) const {
    const Step* const steps = m_steps.data() + loop.first;
    const std::size_t count = loop.count;
    const std::size_t start = loop.start;
    const auto at = [=](std::size_t i) -> const Step& {
        return steps[i + start < count ? i + start : i + start - count];
    };

    Contour contour;
    contour.hole = Turn(At(loop.lowest), At(at(1).vertex), At(at(count - 1).vertex)) < 0;
    contour.vertices.reserve(count);
    std::int32_t previous = loop.lowest;
    for (std::size_t i = 0; i < count; ++i) {
        const Step& step = at(i);
        const std::int32_t following = i + 1 == count ? loop.lowest : at(i + 1).vertex;
        const bool needless = i > 0 && step.edge == at(i - 1).edge && !IsKnot(step.vertex) &&
                              Turn(At(previous), At(step.vertex), At(following)) == 0;
        if (needless) continue;
        contour.vertices.push_back({At(step.vertex).x, At(step.vertex).y});
        previous = step.vertex;
    }
    return contour;
}

/// Whether the first edge of a loop lies to the left of that of another from the same vertex.
bool Tracer::StartsLeftOf(const Loop& loop, const Loop& other) const {
    const auto second = [this](const Loop& l) -> const Point& {
        return At(m_steps[l.first + (l.start + 1) % l.count].vertex);
    };
    return Turn(At(loop.lowest), second(other), second(loop)) > 0;
}

/// The loops by their highest vertices, and then by their lowest, and from left to right where both are the
/// same: an order that is seen from the loops alone, however they were found. Brought together by counting
/// too.
std::vector<Loop> Tracer::InSweepOrder() const {
    std::vector<std::int32_t> first(m_vertices.size() + 1);
    for (const Loop& loop : m_loops) ++first[Index(loop.highest)];
    std::partial_sum(first.begin(), first.end(), first.begin());
    std::vector<Loop> ordered(m_loops.size());
    for (std::size_t i = m_loops.size(); i-- > 0;)
        ordered[Index(--first[Index(m_loops[i].highest)])] = m_loops[i];
    for (std::size_t i = 0; i < ordered.size();) {
        const std::size_t begin = i;
        while (i < ordered.size() && ordered[i].highest == ordered[begin].highest) ++i;
        if (i - begin < 2) continue;
        const auto at = [&ordered](std::size_t k) {
            return ordered.begin() + static_cast<std::ptrdiff_t>(k);
        };
        std::sort(at(begin), at(i), [this](const Loop& l, const Loop& m) {
            return l.lowest != m.lowest ? l.lowest < m.lowest : StartsLeftOf(l, m);
        });
    }
    return ordered;
}

std::vector<Contour> Tracer::Trace() {
    m_steps.reserve(m_links.size());
    for (std::size_t i = 0; i < m_links.size(); ++i) Walk(static_cast<std::int32_t>(i));
    std::vector<Contour> contours;
    contours.reserve(m_loops.size());
    for (const Loop& loop : InSweepOrder()) contours.push_back(Finished(loop));
    return contours;
}

}  // namespace

std::vector<Contour> TraceBoundary(const Arrangement& arrangement, const Region& region) {
    return Tracer(arrangement, region).Trace();
}

}  // namespace tarvex::clip
