// Whether another run of the sweep would decide as this one does. One thing suffices: each vertex lies
// between the two pieces that the run found beside it, exactly and not on them, when these have got their
// last cuts.
//
// For suppose that the status, as this run has it, is in true order just above some vertex, and that two
// neighbours in it cross or touch before the next event at which they part. They are straight, so from
// there on they are in the wrong order, or they end there. What parts them is a vertex: an end of one of
// them, which was found beside the other, or one between them, which was found beside both. In the wrong
// order that vertex cannot be on the right side of the piece or pieces beside it. So neighbours do not
// meet before they part, except in an end that they share; and a vertex where pieces only start is where a
// search would find it.
//
// What starts at a vertex is put in in the right order, too: of two neighbours among those pieces, the
// vertex that parts them again is an end of one that lies on the right side of the other, or it lies
// between both. So they leave in different directions, and in this order. Only two pieces with both ends
// in common are parted by no such vertex; that is seen where they end. Hence the status is in true order
// after every event, from the empty status on.
#include "shaping/clip/order_check.h"

#include "shaping/clip/predicates.h"

namespace tarvex::clip {

void OrderCheck::Check(std::int32_t list, const Segment& piece, const std::vector<Point>& vertices) {
    for (std::int32_t note = list; note != none && m_holds; note = At(note).next) {
        const std::int32_t number = At(note).number;
        const bool left = number >= 0;
        const Point& vertex = vertices[static_cast<std::size_t>(left ? number : ~number)];
        const int turn = Turn(piece.a, piece.b, vertex);
        m_holds = left ? turn > 0 : turn < 0;
    }
    Release(list);
}

void OrderCheck::Release(std::int32_t list) {
    while (list != none) {
        const std::int32_t next = At(list).next;
        At(list).next = m_free;
        m_free = list;
        list = next;
    }
}

}  // namespace tarvex::clip
