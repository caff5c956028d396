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
    std::int32_t lowest = 0;
    std::int32_t highest = 0;
};

class Tracer {
  public:
    Tracer(const Arrangement& arrangement, const Region& region);
    std::vector<Contour> Trace();

  private:
    void JoinAt(std::int32_t vertex, std::vector<std::int32_t>& around);
    bool IsKnot(std::int32_t vertex) const { return m_leaving[Index(vertex)] == several; }
    void Walk(std::int32_t link);
    void Close(std::size_t from, const Step& arrival);
    Contour Finished(const Loop& loop) const;
    const Point& At(std::int32_t vertex) const { return m_vertices[Index(vertex)]; }

    const std::vector<Point>& m_vertices;
    std::vector<Link> m_links;
    std::vector<std::int32_t> m_leaving;   ///< the link that leaves each vertex, none, or several
    std::vector<std::int32_t> m_position;  ///< of a vertex in the walk, or none
    std::vector<Step> m_walk;
    std::vector<Step> m_steps;
    std::vector<Loop> m_loops;
};

Tracer::Tracer(const Arrangement& arrangement, const Region& region)
    : m_vertices(arrangement.vertices),
      m_leaving(arrangement.vertices.size(), none),
      m_position(arrangement.vertices.size(), none) {
    for (const Piece& piece : arrangement.pieces) {
        const bool left = region[piece.left];
        const bool right = region[piece.left ^ piece.parity];
        if (left == right) continue;
        const auto number = static_cast<std::int32_t>(m_links.size());
        m_links.push_back({left ? piece.a : piece.b, left ? piece.b : piece.a, piece.edge, none});
        std::int32_t& leaving = m_leaving[Index(m_links.back().from)];
        leaving = leaving == none ? number : several;
    }
    std::vector<std::pair<std::int32_t, std::int32_t>> atKnots;  // vertex and link
    for (std::size_t i = 0; i < m_links.size(); ++i) {
        Link& link = m_links[i];
        link.next = m_leaving[Index(link.to)];
        if (link.next == several) atKnots.emplace_back(link.to, static_cast<std::int32_t>(i));
        if (IsKnot(link.from)) atKnots.emplace_back(link.from, static_cast<std::int32_t>(i));
    }
    std::sort(atKnots.begin(), atKnots.end());
    std::vector<std::int32_t> around;
    for (std::size_t i = 0; i < atKnots.size();) {
        const std::int32_t vertex = atKnots[i].first;
        around.clear();
        for (; i < atKnots.size() && atKnots[i].first == vertex; ++i) around.push_back(atKnots[i].second);
        JoinAt(vertex, around);
    }
}

/// Gives every link that arrives at a vertex with several leaving ones its successor.
void Tracer::JoinAt(std::int32_t vertex, std::vector<std::int32_t>& around) {
    const auto far = [this, vertex](std::int32_t link) {
        const Link& l = m_links[Index(link)];
        return l.from == vertex ? l.to : l.from;
    };
    // Clockwise, from the left: the upper ones from left to right, then the lower ones back.
    std::sort(around.begin(), around.end(), [this, vertex, &far](std::int32_t i, std::int32_t j) {
        const std::int32_t p = far(i);
        const std::int32_t q = far(j);
        if ((p > vertex) != (q > vertex)) return p > vertex;
        return Turn(At(vertex), At(q), At(p)) > 0;
    });
    for (std::size_t i = 0; i < around.size(); ++i) {
        Link& link = m_links[Index(around[i])];
        if (link.to == vertex) link.next = around[(i + 1) % around.size()];
    }
}

/// Follows the links from one back to itself, and closes a loop whenever a vertex comes again.
void Tracer::Walk(std::int32_t link) {
    while (m_links[Index(link)].next != none) {
        Link& l = m_links[Index(link)];
        if (m_position[Index(l.from)] == none) {
            m_position[Index(l.from)] = static_cast<std::int32_t>(m_walk.size());
            m_walk.push_back({l.from, l.edge});
        }
        const std::int32_t reached = m_position[Index(l.to)];
        if (reached != none) Close(Index(reached), {l.to, l.edge});
        link = std::exchange(l.next, none);
    }
}

void Tracer::Close(std::size_t from, const Step& arrival) {
    Loop loop{m_steps.size(), m_walk.size() - from, arrival.vertex, arrival.vertex};
    for (std::size_t i = from; i < m_walk.size(); ++i) {
        loop.lowest = std::min(loop.lowest, m_walk[i].vertex);
        loop.highest = std::max(loop.highest, m_walk[i].vertex);
        m_steps.push_back(m_walk[i]);
        m_position[Index(m_walk[i].vertex)] = none;
    }
    m_walk.resize(from);
    m_loops.push_back(loop);
}

Contour Tracer::Finished(const Loop& loop) const {
    const Step* const steps = m_steps.data() + loop.first;
    const std::size_t count = loop.count;
    const auto start = static_cast<std::size_t>(
        std::find_if(steps, steps + count, [&loop](const Step& s) { return s.vertex == loop.lowest; }) -
        steps);
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

std::vector<Contour> Tracer::Trace() {
    for (std::size_t i = 0; i < m_links.size(); ++i) Walk(static_cast<std::int32_t>(i));
    std::stable_sort(m_loops.begin(), m_loops.end(), [](const Loop& l, const Loop& m) {
        return l.highest != m.highest ? l.highest < m.highest : l.lowest < m.lowest;
    });
    std::vector<Contour> contours;
    contours.reserve(m_loops.size());
    for (const Loop& loop : m_loops) contours.push_back(Finished(loop));
    return contours;
}

}  // namespace

std::vector<Contour> TraceBoundary(const Arrangement& arrangement, const Region& region) {
    return Tracer(arrangement, region).Trace();
}

}  // namespace tarvex::clip
