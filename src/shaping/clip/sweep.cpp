// Cuts edges where they meet and finds what is inside beside each piece, by sweeping a line upwards over
// them (Bentley and Ottmann 1979), and stays consistent for every input by one rule: nothing is decided
// by a point that was computed. The only question asked is on which side of a line through two vertices a
// third vertex lies, and its answer is exact.
//
// Where two edges cross, the crossing is rounded to doubles, once, and becomes a vertex like any other:
// both edges are cut there and from then on are the two pieces that meet in it. That moves them by a
// rounding, and a piece moved so may pass a vertex on the other side than before. Therefore the cuts of
// one run are only a proposal. The sweep runs again over the pieces, with all its decisions exact; if it
// finds nothing to cut, the pieces meet at their ends only, in the coordinates that are returned, and the
// sides found in that very run are theirs. If it finds something, it cuts and runs once more. A run that
// only cut where no rounding was needed (at vertices on edges, along overlaps, in crossings that are
// doubles) is final at once. So is the first run when the pieces as they were moved still lie as it took
// them to lie: the second would then only repeat it, and a look at each vertex and its neighbours says so
// (order_check.cpp). So the answer is exact for edges that were moved by roundings, never an
// approximate answer for edges that were not. In a run that moved something the order in the status can
// be wrong; the run then only has to keep every piece's ends, so that the boundaries stay closed.
//
// Why not order crossings by their exact rational coordinates and round on output, as is usual? Because
// rounded results cross themselves a little, and results are clipped again.
//
// It ends. A cut is made inside both pieces' bounding boxes and at no end of the piece cut, so the steps
// between doubles along a piece's box are shared out between its parts; they are finitely many. That they
// are not walked one by one is the work of snap.cpp, which from the third run on leads pieces through
// vertices that they pass within a rounding, and each time within twice as much. Ordinary sets take one
// run, sets of edges a rounding apart three or four; the most that random trials have shown is ten.
//
// Edges that overlap need no special case: pieces that leave a vertex in one direction are cut at the
// nearest end among them and become one, whose parity is the sum of theirs; if that is even for both
// sets, it bounds nothing and goes. Level edges need none either: points at one height are met from left to
// right, as though the line were tilted a little, so a level edge is one that goes up steeply to the right.
//
// Cost: O(log n) for each vertex of the operands, O(log n) for each crossing, in each run. A crossing is
// found when its edges become neighbours, and needs no search: its edges know their places.
#include "shaping/clip/sweep.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <span>
#include <utility>

#include "shaping/clip/crossing.h"
#include "shaping/clip/event_queue.h"
#include "shaping/clip/incidence.h"
#include "shaping/clip/order_check.h"
#include "shaping/clip/predicates.h"
#include "shaping/clip/snap.h"
#include "shaping/clip/sort_vertices.h"
#include "shaping/clip/status.h"
#include "tarvex/framework.h"

namespace tarvex::clip {
namespace {

constexpr std::int32_t none = -1;

/// The size of a vector as a number for its next element.
template <class T>
std::int32_t NextNumber(const std::vector<T>& elements) {
    if (elements.size() >= std::numeric_limits<std::int32_t>::max()) AfxThrowMemoryException();
    return static_cast<std::int32_t>(elements.size());
}

/// One run of the sweep over the pieces of an arrangement.
class Sweep {
  public:
    explicit Sweep(const Arrangement& input);

    /// Whether nothing was moved: then the output is final, sides included.
    bool Run();
    /// Whether another run would find nothing to cut, although something was moved.
    bool Holds() const { return !m_tangled && m_ordered && m_order.Holds(); }
    /// The pieces and vertices after the run.
    void Take(Arrangement& output);

  private:
    enum class State : std::uint8_t {
        waiting,  ///< starts at a later event
        joining,  ///< starts at the event at hand
        active,   ///< in the status
        leaving,  ///< in the status, ends at the event at hand
        done
    };

    struct alignas(64) Item {
        Point a;
        Point b;
        std::int32_t place = none;     ///< in the status
        std::int32_t follower = none;  ///< the piece of the same edge that starts where this one ends
        std::int32_t aVertex = none;
        std::int32_t edge = 0;
        std::int32_t beside = none;  ///< the vertices found beside it since it became active
        std::uint8_t parity = 0;
        std::uint8_t left = 0;
        State state = State::waiting;
    };

    bool NextEvent();
    void Start(std::int32_t piece);
    void Attend(std::int32_t item);
    void Process();
    void Locate();
    void OrderJoining();
    void MergeOverlaps();
    bool Overlap(const Item& i, const Item& j) const;
    bool ResolveNeighbours();
    void Resolve(std::int32_t& l, std::int32_t& r);
    std::int32_t Cut(std::int32_t item, const Point& at, bool inexact);
    void LeaveAtEvent(std::int32_t item);
    void Announce();
    void Replace();
    bool EndsPair() const;
    void Finish(std::int32_t item, std::int32_t atVertex);
    std::int32_t NewItem();
    std::int32_t AddItem(const Item& item);
    void Drop(std::int32_t item);
    std::int32_t AddVertex(const Point& p);
    void MakeRoom();
    void Push(const Point& at, std::int32_t first, std::int32_t second = none);
    bool ProperlyCross(const Item& l, const Item& r) const;

    Item& At(std::int32_t i) { return m_items[Index(i)]; }
    const Item& At(std::int32_t i) const { return m_items[Index(i)]; }

    const Arrangement& m_input;
    Incidence m_starts;
    Incidence m_ends;
    std::size_t m_nextVertex = 0;
    std::vector<std::int32_t> m_itemOf;  ///< of each input piece, once it has started
    std::vector<Item> m_items;
    std::vector<std::int32_t> m_free;  ///< items that are done, whose numbers are given out again
    EventQueue m_events;
    Status m_status;

    Point m_at;  ///< the event at hand
    std::int32_t m_atVertex = none;
    std::vector<std::int32_t> m_leaving;  ///< items that end here
    std::vector<std::int32_t> m_joining;  ///< items that start here, later from left to right
    std::int32_t m_firstPlace = none;     ///< the run of places that leaving items have
    std::int32_t m_lastPlace = none;
    std::int32_t m_leftPlace = none;  ///< the places beside the event
    std::int32_t m_rightPlace = none;

    std::int32_t m_announced = none;  ///< the first part of a cut whose event is still to be made

    bool m_moved = false;    ///< some piece was not cut exactly
    bool m_tangled = false;  ///< and was met again in a place or order that it should not have
    OrderCheck m_order;
    bool m_ordered = true;  ///< the output's vertices are in sweep order
    std::vector<Point> m_vertices;
    std::vector<Piece> m_pieces;
};

Sweep::Sweep(const Arrangement& input)
    : m_input(input),
      m_starts(input.vertices.size(), input.pieces, &Piece::a),
      m_ends(input.vertices.size(), input.pieces, &Piece::b),
      m_itemOf(input.pieces.size(), none) {
    m_vertices.reserve(input.vertices.size());
    m_pieces.reserve(input.pieces.size());
}

bool Sweep::Run() {
    while (NextEvent()) {
        if (!m_leaving.empty() || !m_joining.empty()) Process();
    }
    return !m_moved;
}

/// Goes to the next point and gathers what starts and ends there; false after the last one.
bool Sweep::NextEvent() {
    m_leaving.clear();
    m_joining.clear();
    const bool given = m_nextVertex < m_input.vertices.size();
    if (!given && m_events.IsEmpty()) return false;
    m_at = given ? m_input.vertices[m_nextVertex] : m_events.Next().at;
    if (!m_events.IsEmpty() && Before(m_events.Next().at, m_at)) m_at = m_events.Next().at;
    if (given && Same(m_input.vertices[m_nextVertex], m_at)) {
        for (const std::int32_t piece : m_ends.At(m_nextVertex)) Attend(m_itemOf[Index(piece)]);
        for (const std::int32_t piece : m_starts.At(m_nextVertex)) Start(piece);
        ++m_nextVertex;
    }
    while (!m_events.IsEmpty() && Same(m_events.Next().at, m_at)) {
        const Event event = m_events.Next();
        m_events.Pop();
        Attend(event.first);
        Attend(event.second);
    }
    return true;
}

/// Makes an item of a piece that starts at the event.
void Sweep::Start(std::int32_t piece) {
    const Piece& p = m_input.pieces[Index(piece)];
    Item item;
    item.a = m_at;
    item.b = m_input.vertices[Index(p.b)];
    item.edge = p.edge;
    item.parity = p.parity;
    item.state = State::joining;
    const std::int32_t number = AddItem(item);
    m_itemOf[Index(piece)] = number;
    m_joining.push_back(number);
}

/// Notes that an item starts or ends at the event, if it does: after cuts, some announced at the event
/// no longer do.
void Sweep::Attend(std::int32_t item) {
    while (item != none) {
        Item& i = At(item);
        if (i.state == State::active && Same(i.b, m_at)) {
            i.state = State::leaving;
            m_leaving.push_back(item);
            item = i.follower;
        } else {
            if (i.state == State::waiting && Same(i.a, m_at)) {
                i.state = State::joining;
                m_joining.push_back(item);
            }
            return;
        }
    }
}

void Sweep::Process() {
    m_atVertex = AddVertex(m_at);
    Locate();
    do {
        for (const std::int32_t item : m_joining) {
            if (At(item).aVertex == none) At(item).aVertex = m_atVertex;
        }
        OrderJoining();
    } while (!ResolveNeighbours());
    Replace();
}

/// Finds the places beside the event. A piece that the event is found to lie on is cut there.
void Sweep::Locate() {
    m_firstPlace = m_lastPlace = none;
    if (m_leaving.empty()) {
        const Status::Gap gap = m_status.Find([this](std::int32_t piece) {
            const Item& i = At(piece);
            return Turn(i.a, i.b, m_at);
        });
        m_leftPlace = gap.left;
        m_rightPlace = gap.right;
        if (gap.on == none) return;
        m_firstPlace = m_lastPlace = gap.on;
        LeaveAtEvent(m_status.PieceAt(gap.on));
    } else {
        m_firstPlace = m_lastPlace = At(m_leaving.front()).place;
    }
    const auto leaves = [this](std::int32_t place) {
        return place != none && At(m_status.PieceAt(place)).state == State::leaving;
    };
    std::size_t count = 1;
    for (; leaves(m_status.Left(m_firstPlace)); ++count) m_firstPlace = m_status.Left(m_firstPlace);
    for (; leaves(m_status.Right(m_lastPlace)); ++count) m_lastPlace = m_status.Right(m_lastPlace);
    m_leftPlace = m_status.Left(m_firstPlace);
    m_rightPlace = m_status.Right(m_lastPlace);
    if (count == m_leaving.size()) return;

    // Only after pieces were moved: what leaves does not stand together. Take out what stands elsewhere.
    m_moved = m_tangled = true;
    std::vector<std::int32_t> run;
    for (std::int32_t place = m_firstPlace;; place = m_status.Right(place)) {
        run.push_back(m_status.PieceAt(place));
        if (place == m_lastPlace) break;
    }
    for (const std::int32_t item : m_leaving) {
        if (std::find(run.begin(), run.end(), item) != run.end()) continue;
        m_status.Remove(At(item).place);
        Finish(item, m_atVertex);
    }
    m_leaving = run;
    m_leftPlace = m_status.Left(m_firstPlace);
    m_rightPlace = m_status.Right(m_lastPlace);
}

/// Cuts an active item at the event; the first part leaves, the second joins.
void Sweep::LeaveAtEvent(std::int32_t item) {
    Item rest = At(item);
    rest.a = m_at;
    rest.place = none;
    rest.beside = none;
    rest.state = State::joining;
    // The item keeps its number for the part that goes on, because events name it; its place goes to the part
    // that leaves.
    Item ended = At(item);
    ended.b = m_at;
    ended.follower = none;
    ended.state = State::leaving;
    At(item) = rest;
    const std::int32_t number = AddItem(ended);
    m_status.SetPiece(ended.place, number);
    m_leaving.push_back(number);
    m_joining.push_back(item);
    At(item).aVertex = m_atVertex;
}

/// Sorts what joins from left to right, and merges what coincides.
void Sweep::OrderJoining() {
    if (m_joining.size() < 2) return;
    if (m_joining.size() == 2) {
        const int turn = Turn(m_at, At(m_joining[1]).b, At(m_joining[0]).b);
        if (turn < 0) std::swap(m_joining[0], m_joining[1]);
        if (turn != 0) return;
    }
    std::sort(m_joining.begin(), m_joining.end(), [this](std::int32_t i, std::int32_t j) {
        if (i == j) return false;
        const int turn = Turn(m_at, At(j).b, At(i).b);
        if (turn != 0) return turn > 0;
        return Before(At(i).b, At(j).b);
    });
    MergeOverlaps();
}

/// Whether two joining items start in the same direction. (After moves, some do not start at the event.)
bool Sweep::Overlap(const Item& i, const Item& j) const {
    return Same(i.a, m_at) && Same(j.a, m_at) && Turn(m_at, i.b, j.b) == 0;
}

/// Of items that leave the event in the same direction, the longer ones are cut at the end of the
/// shortest and start there; what remains here is one item, or none when nothing changes across it.
void Sweep::MergeOverlaps() {
    std::size_t kept = 0;
    for (std::size_t i = 0; i < m_joining.size();) {
        const std::int32_t item = m_joining[i];
        std::size_t j = i + 1;
        for (; j < m_joining.size() && Overlap(At(item), At(m_joining[j])); ++j) {
            const std::int32_t other = m_joining[j];
            Item& o = At(other);
            At(item).parity ^= o.parity;
            At(item).edge = std::min(At(item).edge, o.edge);
            if (Same(o.b, At(item).b)) {
                if (o.follower != none) Push(o.b, o.follower);
                Drop(other);
            } else {
                o.a = At(item).b;
                o.aVertex = none;
                o.state = State::waiting;
                Push(o.a, other);
            }
        }
        Item& merged = At(item);
        if (merged.parity != 0) {
            m_joining[kept++] = item;
        } else {
            if (merged.follower != none) Push(merged.b, merged.follower);
            Drop(item);
        }
        i = j;
    }
    m_joining.resize(kept);
}

/// Cuts what crosses among the new neighbours. False when something was cut at the event itself, which
/// then takes part in it.
bool Sweep::ResolveNeighbours() {
    const std::size_t joiningBefore = m_joining.size();
    std::int32_t l = m_leftPlace == none ? none : m_status.PieceAt(m_leftPlace);
    std::int32_t r = m_rightPlace == none ? none : m_status.PieceAt(m_rightPlace);
    if (m_joining.empty()) {
        if (l != none && r != none) Resolve(l, r);
    } else {
        if (l != none) {
            std::int32_t first = m_joining.front();  // a copy: a cut at the event makes the list grow
            Resolve(l, first);
            m_joining.front() = first;
        }
        if (r != none && m_joining.size() == joiningBefore) {
            std::int32_t last = m_joining.back();
            Resolve(last, r);
            m_joining[joiningBefore - 1] = last;
        }
    }
    return m_joining.size() == joiningBefore;
}

bool Sweep::ProperlyCross(const Item& l, const Item& r) const {
    if (!m_moved) return true;  // their order is right at the event and wrong at the lower of their ends
    return Turn(l.a, l.b, r.a) * Turn(l.a, l.b, r.b) < 0 && Turn(r.a, r.b, l.a) * Turn(r.a, r.b, l.b) < 0;
}

/// Cuts two pieces, `l` left of `r` at the event, if they meet later on.
void Sweep::Resolve(std::int32_t& l, std::int32_t& r) {
    const Item& left = At(l);
    const Item& right = At(r);
    if (Same(left.b, right.b)) return;
    const bool leftEndsFirst = Before(left.b, right.b);
    const Item& shorter = leftEndsFirst ? left : right;
    const Item& longer = leftEndsFirst ? right : left;
    const int turn = Turn(longer.a, longer.b, shorter.b);
    const int side = leftEndsFirst ? turn : -turn;
    if (side > 0) return;
    if (side == 0) {
        if (leftEndsFirst)
            r = Cut(r, Point(left.b), false);
        else
            l = Cut(l, Point(right.b), false);
        Announce();
        return;
    }
    if (!ProperlyCross(left, right)) {
        m_moved = m_tangled = true;  // their order is not what it seems: an effect of earlier moves
        return;
    }
    const Point at = CutPoint({left.a, left.b}, m_input.edges[Index(left.edge)], {right.a, right.b},
                              m_input.edges[Index(right.edge)]);
    const bool cutLeft = !Same(at, left.a) && !Same(at, left.b);
    const bool cutRight = !Same(at, right.a) && !Same(at, right.b);
    if (cutLeft) l = Cut(l, at, true);
    if (cutRight) r = Cut(r, at, true);
    Announce();
}

/// Makes an event of a cut that has no companion to share one with.
void Sweep::Announce() {
    if (m_announced != none) Push(At(m_announced).b, m_announced);
    m_announced = none;
}

/// Cuts an item, active or joining, at a point other than its ends, and returns the number of the part
/// that crosses the sweep line now.
std::int32_t Sweep::Cut(std::int32_t item, const Point& at, bool inexact) {
    if (inexact && !m_moved && Turn(At(item).a, At(item).b, at) != 0) m_moved = true;
    const Item& whole = At(item);
    if (Same(at, m_at) && whole.state == State::active) {
        const std::int32_t place = whole.place;
        LeaveAtEvent(item);
        if (place == m_leftPlace) {
            m_firstPlace = place;
            if (m_lastPlace == none) m_lastPlace = place;
            m_leftPlace = m_status.Left(place);
        } else if (place == m_rightPlace) {
            m_lastPlace = place;
            if (m_firstPlace == none) m_firstPlace = place;
            m_rightPlace = m_status.Right(place);
        }
        return item;
    }
    if (Before(m_at, at) && Before(at, whole.b)) {
        const std::int32_t number = NewItem();
        Item& first = At(number);
        Item& rest = At(item);
        first = rest;
        first.b = at;
        first.follower = item;
        rest.a = at;
        rest.place = none;
        rest.aVertex = none;
        rest.beside = none;
        rest.state = State::waiting;
        if (first.state == State::active) m_status.SetPiece(first.place, number);
        if (m_announced == none) {
            m_announced = number;
        } else {
            Push(at, m_announced, number);
            m_announced = none;
        }
        return number;
    }
    m_moved = m_tangled = true;
    if (!Before(m_at, at)) {  // rounded to a point the sweep has passed
        const std::int32_t vertex = AddVertex(at);
        m_pieces.push_back({whole.aVertex, vertex, whole.edge, whole.parity, 0});
        At(item).a = at;
        At(item).aVertex = vertex;
        return item;
    }
    // An almost horizontal piece whose cutting point rounded to a point later than its end.
    const Point end = whole.b;
    const std::int32_t follower = whole.follower;
    Item beyond = whole;
    beyond.a = end;
    beyond.b = at;
    beyond.follower = none;
    beyond.place = none;
    beyond.aVertex = none;
    beyond.beside = none;
    beyond.state = State::waiting;
    const std::int32_t number = AddItem(beyond);  // which may move the other items
    Push(end, number, follower);
    Push(at, number, item);
    At(item).b = at;
    At(item).follower = none;
    return item;
}

/// Exchanges in the status what leaves for what joins.
void Sweep::Replace() {
    if (m_moved && EndsPair()) m_order.Fail();
    for (const std::int32_t item : m_leaving) Finish(item, m_atVertex);
    std::int32_t place = m_firstPlace;
    std::int32_t last = m_leftPlace;
    std::uint8_t side = 0;
    if (m_leftPlace != none) {
        Item& l = At(m_status.PieceAt(m_leftPlace));
        side = l.left ^ l.parity;
        m_order.Note(l.beside, OrderCheck::Side::right, m_atVertex);
    }
    if (m_rightPlace != none)
        m_order.Note(At(m_status.PieceAt(m_rightPlace)).beside, OrderCheck::Side::left, m_atVertex);
    std::size_t left = m_leaving.size();
    for (const std::int32_t item : m_joining) {
        if (left > 0) {
            last = place;
            --left;
            m_status.SetPiece(last, item);
            if (left > 0) place = m_status.Right(place);
        } else {
            last = m_status.InsertAfter(last, item);
        }
        Item& i = At(item);
        i.place = last;
        i.state = State::active;
        i.left = side;
        side ^= i.parity;
    }
    for (; left > 0; --left) {
        const std::int32_t next = m_status.Right(place);
        m_status.Remove(place);
        place = next;
    }
}

/// Whether two neighbours that end at the event have started together, too.
bool Sweep::EndsPair() const {
    std::int32_t place = m_firstPlace;
    std::int32_t before = none;
    for (std::size_t i = 0; i < m_leaving.size(); ++i, place = m_status.Right(place)) {
        const std::int32_t start = At(m_status.PieceAt(place)).aVertex;
        if (start == before) return true;
        before = start;
    }
    return false;
}

void Sweep::Finish(std::int32_t item, std::int32_t atVertex) {
    const Item& i = At(item);
    if (m_moved)
        m_order.Check(i.beside, {i.a, i.b}, m_vertices);
    else
        m_order.Release(i.beside);  // so far everything is exact, and in order
    if (m_pieces.size() == m_pieces.capacity()) MakeRoom();
    m_pieces.push_back({i.aVertex, atVertex, i.edge, i.parity, i.left});
    Drop(item);
}

/// Numbers are used again, so that memory stays near what is active. An event that still names a former
/// item does no harm: what starts or ends at its point now has been or will be announced there anyway.
std::int32_t Sweep::NewItem() {
    if (!m_free.empty()) {
        const std::int32_t number = m_free.back();
        m_free.pop_back();
        return number;
    }
    const std::int32_t number = NextNumber(m_items);
    m_items.emplace_back();
    return number;
}

std::int32_t Sweep::AddItem(const Item& item) {
    const std::int32_t number = NewItem();
    At(number) = item;
    return number;
}

void Sweep::Drop(std::int32_t item) {
    At(item).state = State::done;
    m_free.push_back(item);
}

std::int32_t Sweep::AddVertex(const Point& p) {
    if (!m_vertices.empty() && !Before(m_vertices.back(), p)) m_ordered = false;
    const std::int32_t number = NextNumber(m_vertices);
    if (m_vertices.size() == m_vertices.capacity()) MakeRoom();
    m_vertices.push_back(p);
    return number;
}

/// For all that will come if the rest of the input cuts half as much again as what is done, so that the
/// output is seldom copied on its way: fresh memory costs more than the copying. What is reserved and not
/// used is never touched.
void Sweep::MakeRoom() {
    const double done = static_cast<double>(m_nextVertex + 1) / static_cast<double>(m_input.vertices.size());
    const double growth = std::clamp(1.7 / done, 2.0, 20.0);
    const auto grown = [growth](std::size_t size) {
        return static_cast<std::size_t>(growth * static_cast<double>(size)) + 16;
    };
    m_vertices.reserve(grown(m_vertices.size()));
    m_pieces.reserve(grown(m_pieces.size()));
}

void Sweep::Push(const Point& at, std::int32_t first, std::int32_t second) {
    m_events.Push({at, first, second});
}

void Sweep::Take(Arrangement& output) {
    output.vertices = std::move(m_vertices);
    output.pieces = std::move(m_pieces);
    if (!m_ordered) SortVertices(output);
}

}  // namespace

void Arrange(Arrangement& arrangement) {
    constexpr int plainRuns = 2;
    double reach = 0.5;
    for (int run = 1;; ++run) {
        Sweep sweep(arrangement);
        const bool settled = sweep.Run() || (run < plainRuns && sweep.Holds());
        sweep.Take(arrangement);
        if (settled) return;
        if (run < plainRuns) continue;
        LeadThroughVertices(arrangement, reach);
        reach *= 2;
    }
}

}  // namespace tarvex::clip
