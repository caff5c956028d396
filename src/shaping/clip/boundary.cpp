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
    void JoinAt(std::int32_t vertex);
    void Walk(std::int32_t link);
    void Close(std::size_t from, const Step& arrival);
    Contour Finished(const Loop& loop) const;
    const Point& At(std::int32_t vertex) const { return m_vertices[Index(vertex)]; }

    const std::vector<Point>& m_vertices;
    std::vector<Link> m_links;
    std::vector<std::int32_t> m_first;     ///< where in m_around each vertex's links begin
    std::vector<std::int32_t> m_around;    ///< the links at each vertex
    std::vector<std::int32_t> m_position;  ///< of a vertex in the walk, or none
    std::vector<Step> m_walk;
    std::vector<Step> m_steps;
    std::vector<Loop> m_loops;
};

Tracer::Tracer(const Arrangement& arrangement, const Region& region)
    : m_vertices(arrangement.vertices),
      m_first(arrangement.vertices.size() + 1),
      m_position(arrangement.vertices.size(), none) {
    for (const Piece& piece : arrangement.pieces) {
        const bool left = region[piece.left];
        const bool right = region[piece.left ^ piece.parity];
        if (left == right) continue;
        m_links.push_back({left ? piece.a : piece.b, left ? piece.b : piece.a, piece.edge, none});
        ++m_first[Index(piece.a)];
        ++m_first[Index(piece.b)];
    }
    std::int32_t sum = 0;
    for (std::int32_t& first : m_first) first = sum += first;
    m_around.resize(m_links.size() * 2);
    for (std::size_t i = m_links.size(); i-- > 0;) {
        m_around[Index(--m_first[Index(m_links[i].from)])] = static_cast<std::int32_t>(i);
        m_around[Index(--m_first[Index(m_links[i].to)])] = static_cast<std::int32_t>(i);
    }
}

/// Gives every link that arrives at the vertex its successor.
void Tracer::JoinAt(std::int32_t vertex) {
    const auto begin = m_around.begin() + m_first[Index(vertex)];
    const auto end = m_around.begin() + m_first[Index(vertex) + 1];
    if (begin == end) return;
    const auto far = [this, vertex](std::int32_t link) {
        const Link& l = m_links[Index(link)];
        return l.from == vertex ? l.to : l.from;
    };
    if (end - begin > 2) {
        // Clockwise, from the left: the upper ones from left to right, then the lower ones back.
        std::sort(begin, end, [this, vertex, &far](std::int32_t i, std::int32_t j) {
            const std::int32_t p = far(i);
            const std::int32_t q = far(j);
            if ((p > vertex) != (q > vertex)) return p > vertex;
            return Turn(At(vertex), At(q), At(p)) > 0;
        });
    }
    for (auto it = begin; it != end; ++it) {
        const auto following = it + 1 == end ? begin : it + 1;
        if (m_links[Index(*it)].to == vertex) m_links[Index(*it)].next = *following;
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
    const auto begin = m_steps.begin() + static_cast<std::ptrdiff_t>(loop.first);
    std::vector<Step> steps(begin, begin + static_cast<std::ptrdiff_t>(loop.count));
    const auto lowest =
        std::find_if(steps.begin(), steps.end(), [&loop](const Step& s) { return s.vertex == loop.lowest; });
    std::rotate(steps.begin(), lowest, steps.end());

    Contour contour;
    contour.hole = Turn(At(loop.lowest), At(steps[1].vertex), At(steps.back().vertex)) < 0;
    contour.vertices.reserve(steps.size());
    std::int32_t previous = loop.lowest;
    for (std::size_t i = 0; i < steps.size(); ++i) {
        const Step& step = steps[i];
        const std::int32_t following = steps[(i + 1) % steps.size()].vertex;
        const bool needless = i > 0 && step.edge == steps[i - 1].edge &&
                              m_first[Index(step.vertex) + 1] - m_first[Index(step.vertex)] == 2 &&
                              Turn(At(previous), At(step.vertex), At(following)) == 0;
        if (needless) continue;
        contour.vertices.push_back({At(step.vertex).x, At(step.vertex).y});
        previous = step.vertex;
    }
    return contour;
}

std::vector<Contour> Tracer::Trace() {
    for (std::size_t v = 0; v + 1 < m_first.size(); ++v) JoinAt(static_cast<std::int32_t>(v));
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
