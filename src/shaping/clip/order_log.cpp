// Whether another run of the sweep would decide as the one that kept this log did. Two things suffice:
// each vertex lies between the two pieces noted beside it, and the pieces that start at a vertex leave it
// in the order noted, all exactly and with nothing on a line.
//
// For suppose that the status, as the log has it, is in true order just above some vertex, and that two
// neighbours in it cross or touch before the next event at which they part. They are straight, so from
// there on they are in the wrong order, or they end there. What parts them is a vertex: an end of one of
// them, which the log has beside the other, or one between them, which it has beside both. In the wrong
// order that vertex cannot be on the right side of the piece or pieces beside it. So neighbours do not
// meet before they part, except in an end that they share; a vertex where pieces only start is where a
// search would find it; and what starts there is put in in the right order. Hence the status is in true
// order after that event too, and from the empty status on, always.
#include "shaping/clip/order_log.h"

#include <cstddef>

#include "shaping/clip/predicates.h"

namespace tarvex::clip {

bool OrderLog::Holds(const std::vector<Point>& vertices) const {
    const auto at = [&vertices](std::int32_t v) -> const Point& {
        return vertices[static_cast<std::size_t>(v)];
    };
    const auto turn = [&](const Ends& piece, const Point& p) { return Turn(at(piece.a), at(piece.b), p); };
    for (std::size_t v = 0; v < m_beside.size(); ++v) {
        const auto [left, right] = m_beside[v];
        if (left != none && turn(m_pieces[static_cast<std::size_t>(left)], vertices[v]) >= 0) return false;
        if (right != none && turn(m_pieces[static_cast<std::size_t>(right)], vertices[v]) <= 0) return false;
    }
    for (std::size_t i = 1; i < m_pieces.size(); ++i) {
        const Ends& left = m_pieces[i - 1];
        const Ends& right = m_pieces[i];
        if (left.a == right.a && turn(right, at(left.b)) <= 0) return false;
    }
    return true;
}

}  // namespace tarvex::clip
