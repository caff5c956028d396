// The sweep that finds all crossings of a tangle of edges and the winding numbers beside them.
//
// The idea is Bentley and Ottmann's: a vertical line moves from left to right and keeps the edges that it
// crosses in order; only neighbours can be the next to cross. The obvious version fails on a computer,
// because a crossing has to be rounded, the two edges are then bent a little where they meet, and
// may now pass a vertex or a third edge on the other side. The order that the sweep relies on is wrong
// from there on, and what is built on it crashes or loses edges.
//
// Here everything lies on a grid (offset_grid.h) on which the side of a vertex is decided exactly, and
// the sweep is repeated. One pass cuts neighbours that cross at the grid point nearest to the crossing; the
// pieces beyond enter the sweep there as new edges. Whenever a cut has bent an edge, however little, the
// pass's findings are dropped and the pieces are swept again. A pass that bends nothing has met no crossing
// but at vertices: by the same exact tests its order was right from beginning to end, so its winding
// numbers are those of the pieces. Bends are of the order of the grid's step, so new crossings are rare:
// two passes are the rule, three are seen, and six where arcs of a thousand chords lie nearly upon one
// another several times. Should bends go on, the grid is made coarser, slowly, since edges that were apart
// meet on a coarse one; after `MOST_PASSES` the last findings are taken as they are. Within a pass nothing
// depends on the order being right but the answer: edges are taken out of the status by number, not by
// comparison.
//
// A cut that falls on or before the vertex just met (rounding can do that) is made after the pass.
//
// Where edges overlap, the longer is cut at the end of the shorter, and equal pieces become one with
// the sum of their weights: the number of edges that run to the right less those that run to the left, by
// which the winding number grows from below to above. What cancels out never enters the status.
//
// Cost: O((n + k) log n) for n edges with k crossings, for each pass.
#include "geometry/offset_sweep.h"

#include <algorithm>
#include <queue>
#include <utility>

#include "geometry/offset_status.h"

namespace tarvex::offsetting {

namespace {

constexpr int NONE = Status::NONE;
constexpr int FINE_PASSES = 12;
constexpr int MOST_PASSES = 24;
constexpr double COARSENING = 4;
constexpr double NEAR_END = 2;  // steps from an end at which a crossing counts as that end

/// An edge or a part of one, from its left to its right end.
struct Piece {
    GridPoint left;
    GridPoint right;
    int weight = 0;  ///< what the winding number grows by from below to above
    int below = 0;   ///< the winding number below
    int tag = 0;
    bool isActive = false;    ///< in the status
    bool isAbsorbed = false;  ///< part of another piece now
};

struct Event {
    GridPoint at;
    int piece;
    bool isStart;
};

struct Later {
    bool operator()(const Event& a, const Event& b) const { return Before(b.at, a.at); }
};

GridPoint Snapped(const GridPoint& p, double grain) {
    return {std::nearbyint(p.x / grain) * grain, std::nearbyint(p.y / grain) * grain};
}

/// Where the lines of two pieces that cross meet, on the grid and in the boxes of both.
GridPoint CrossingOf(const Piece& a, const Piece& b, double grain) {
    const double ax = a.right.x - a.left.x;
    const double ay = a.right.y - a.left.y;
    const double bx = b.right.x - b.left.x;
    const double by = b.right.y - b.left.y;
    const double across = ax * by - ay * bx;
    const double part = ((b.left.x - a.left.x) * by - (b.left.y - a.left.y) * bx) / across;
    const double t = part >= 0 && part <= 1 ? part : 0.5;
    const double lowX = std::max(a.left.x, b.left.x);
    const double highX = std::max(lowX, std::min(a.right.x, b.right.x));
    const double lowY = std::max(std::min(a.left.y, a.right.y), std::min(b.left.y, b.right.y));
    const double highY =
        std::max(lowY, std::min(std::max(a.left.y, a.right.y), std::max(b.left.y, b.right.y)));
    const GridPoint at{std::clamp(a.left.x + t * ax, lowX, highX),
                       std::clamp(a.left.y + t * ay, lowY, highY)};
    for (const GridPoint& end : {a.left, a.right, b.left, b.right}) {
        if (std::max(std::fabs(end.x - at.x), std::fabs(end.y - at.y)) <= NEAR_END * grain) return end;
    }
    return Snapped(at, grain);
}

/// One sweep over the pieces, which it cuts.
class Pass {
  public:
    Pass(std::vector<Piece>& pieces, double grain, std::size_t mostCrossings)
        : m_pieces(pieces), m_grain(grain), m_mostCrossings(mostCrossings), m_status(pieces.size()) {}

    enum class Outcome { exact, bent, tooMany };

    Outcome Run() {
        ListEvents();
        while (m_crossings <= m_mostCrossings && NextVertex()) Meet();
        // Rounding may have put these outside their piece's columns: a part then runs backwards.
        for (const auto& [piece, at] : m_lateCuts) SplitOff(piece, at);
        if (m_crossings > m_mostCrossings) return Outcome::tooMany;
        return m_bent ? Outcome::bent : Outcome::exact;
    }

  private:
    Piece& At(int piece) { return m_pieces[static_cast<std::size_t>(piece)]; }

    void ListEvents() {
        m_ends.reserve(2 * m_pieces.size());
        for (std::size_t i = 0; i < m_pieces.size(); ++i) {
            const int piece = static_cast<int>(i);
            m_ends.push_back({m_pieces[i].left, piece, true});
            m_ends.push_back({m_pieces[i].right, piece, false});
        }
        std::sort(m_ends.begin(), m_ends.end(), [](const Event& a, const Event& b) {
            if (!(a.at == b.at)) return Before(a.at, b.at);
            return a.piece < b.piece;
        });
    }

    /// Collects what ends and starts at the next vertex; false when there is none.
    bool NextVertex() {
        m_ending.clear();
        m_starting.clear();
        const bool fromList = m_nextEnd < m_ends.size();
        if (!fromList && m_cutEnds.empty()) return false;
        m_now = fromList ? m_ends[m_nextEnd].at : m_cutEnds.top().at;
        if (!m_cutEnds.empty() && Before(m_cutEnds.top().at, m_now)) m_now = m_cutEnds.top().at;
        for (; m_nextEnd < m_ends.size() && m_ends[m_nextEnd].at == m_now; ++m_nextEnd)
            Take(m_ends[m_nextEnd]);
        for (; !m_cutEnds.empty() && m_cutEnds.top().at == m_now; m_cutEnds.pop()) Take(m_cutEnds.top());
        return true;
    }

    void Take(const Event& event) {
        if (event.isStart) {
            m_starting.push_back(event.piece);
        } else if (At(event.piece).isActive && At(event.piece).right == m_now) {
            m_ending.push_back(event.piece);
        }
    }

    /// Replaces what ends at the vertex by what starts there.
    void Meet() {
        int below = NONE;
        int above = NONE;
        FindPlace(below, above);
        for (const int piece : m_ending) {
            m_status.Remove(piece);
            At(piece).isActive = false;
        }
        SortStarting();
        int winding = below == NONE ? 0 : At(below).below + At(below).weight;
        int last = below;
        for (const int piece : m_starting) {
            At(piece).below = winding;
            winding += At(piece).weight;
            At(piece).isActive = true;
            m_status.InsertAbove(last, piece);
            last = piece;
        }
        if (m_starting.empty()) {
            CutIfCrossing(below, above);
        } else {
            CutIfCrossing(below, m_starting.front());
            CutIfCrossing(last, above);
        }
    }

    /// The neighbours of the vertex that do not end there. Edges that pass through it are cut and made
    /// to end there.
    void FindPlace(int& below, int& above) {
        const std::size_t known = m_ending.size();
        if (known == 0) {
            above = m_status.Lowest([&](int piece) { return SideOfNow(piece) < 0; });
            below = above == NONE ? m_status.Highest() : m_status.Below(above);
        } else {
            below = m_status.Below(m_ending.front());
            above = m_status.Above(m_ending.front());
        }
        std::size_t met = known == 0 ? 0 : 1;
        for (; below != NONE && EndsHere(below); below = m_status.Below(below)) ++met;
        for (; above != NONE && EndsHere(above); above = m_status.Above(above)) ++met;
        if (met != m_ending.size()) m_bent = true;  // another edge lies between those that end here
        while (below != NONE && At(below).right == m_now) below = m_status.Below(below);
        while (above != NONE && At(above).right == m_now) above = m_status.Above(above);
    }

    int SideOfNow(int piece) { return SideOf(At(piece).left, At(piece).right, m_now); }

    /// Whether the piece passes the vertex within a step of the grid, so that it is drawn to it. Otherwise
    /// edges that nearly coincide would be bent across one another again and again.
    bool PassesNow(int piece) {
        const GridPoint& from = At(piece).left;
        const double ax = At(piece).right.x - from.x;
        const double ay = At(piece).right.y - from.y;
        const double px = m_now.x - from.x;
        const double py = m_now.y - from.y;
        const double area = ax * py - ay * px;
        if (std::fabs(area) > m_grain * (std::fabs(ax) + std::fabs(ay))) return false;
        const double square = ax * ax + ay * ay;
        if (area * area > m_grain * m_grain * square) return false;
        // A steep edge can end before it comes to a vertex in the column of its end.
        const double along = ax * px + ay * py;
        if (along <= 0 || along >= square) return false;
        if (SideOfNow(piece) != 0) m_bent = true;
        return true;
    }

    bool EndsHere(int piece) {
        if (At(piece).right == m_now) return true;
        if (!Before(m_now, At(piece).right) || !PassesNow(piece)) return false;
        m_starting.push_back(SplitOff(piece, m_now));
        m_ending.push_back(piece);
        return true;
    }

    /// Orders what starts at the vertex from bottom to top; pieces that overlap become one.
    void SortStarting() {
        const auto lower = [&](int i, int k) {
            const int side = SideOf(m_now, At(i).right, At(k).right);
            if (side != 0) return side > 0;
            if (!(At(i).right == At(k).right)) return Before(At(i).right, At(k).right);
            return At(i).tag < At(k).tag;
        };
        if (m_starting.size() > 1) std::sort(m_starting.begin(), m_starting.end(), lower);
        std::size_t kept = 0;
        for (std::size_t first = 0; first < m_starting.size();) {
            std::size_t last = first + 1;
            const GridPoint direction = At(m_starting[first]).right;
            while (last < m_starting.size() && SideOf(m_now, direction, At(m_starting[last]).right) == 0)
                ++last;
            const int nearest = m_starting[first];
            if (last - first > 1) Unstack(std::span(m_starting).subspan(first, last - first));
            if (At(nearest).weight != 0) m_starting[kept++] = nearest;
            first = last;
        }
        m_starting.resize(kept);
    }

    /// Pieces that overlap from the vertex on, the shortest first, become one behind the other: each the
    /// part from where the one before ends, with the weights of all that lie there, and with the tag
    /// of one that runs as the sum does.
    void Unstack(std::span<const int> pieces) {
        int weight = 0;
        int rightwardTag = 0;
        int leftwardTag = 0;
        for (std::size_t k = pieces.size(); k-- > 0;) {
            Piece& piece = At(pieces[k]);
            (piece.weight > 0 ? rightwardTag : leftwardTag) = piece.tag;
            weight += piece.weight;
            piece.weight = weight;
            piece.tag = weight > 0 ? rightwardTag : leftwardTag;
        }
        for (std::size_t k = 1; k < pieces.size(); ++k) {
            Piece& piece = At(pieces[k]);
            const GridPoint start = At(pieces[k - 1]).right;
            if (piece.right == start) {
                piece.isAbsorbed = true;
            } else {
                piece.left = start;
                m_cutEnds.push({start, pieces[k], true});
            }
        }
    }

    void CutIfCrossing(int lower, int upper) {
        if (lower == NONE || upper == NONE) return;
        const Piece& a = At(lower);
        const Piece& b = At(upper);
        if (a.right == b.right) return;
        const bool lowerEndsFirst = Before(a.right, b.right);
        const int wrong =
            lowerEndsFirst ? SideOf(b.left, b.right, a.right) : -SideOf(a.left, a.right, b.right);
        if (wrong < 0) return;
        if (wrong == 0) {
            if (lowerEndsFirst) {
                Cut(upper, a.right);
            } else {
                Cut(lower, b.right);
            }
            return;
        }
        // Out of order at their next end. When they do cross, they are cut there; when they do not, a cut
        // before has put them out of order already, and the next pass finds them in order.
        const int leftSide = SideOf(a.left, a.right, b.left);
        const int rightSide = SideOf(a.left, a.right, b.right);
        const int lowerLeftSide = SideOf(b.left, b.right, a.left);
        const int lowerRightSide = SideOf(b.left, b.right, a.right);
        if (leftSide * rightSide >= 0 || lowerLeftSide * lowerRightSide >= 0) {
            m_bent = true;
            return;
        }
        ++m_crossings;
        const GridPoint at = CrossingOf(a, b, m_grain);
        Cut(lower, at);
        Cut(upper, at);
    }

    /// Cuts a piece of the status at a point on it or next to it, unless that is one of its ends.
    void Cut(int piece, GridPoint at) {
        if (at == At(piece).left || at == At(piece).right) return;
        if (SideOf(At(piece).left, At(piece).right, at) != 0) m_bent = true;
        if (!Before(m_now, at) || !Before(at, At(piece).right)) {
            m_bent = true;  // only a new pass can put this in order
            m_lateCuts.emplace_back(piece, at);
            return;
        }
        const int rest = SplitOff(piece, at);
        m_cutEnds.push({at, piece, false});
        m_cutEnds.push({at, rest, true});
    }

    /// Shortens the piece to end at `at`, and returns the rest, whose end is an event already.
    int SplitOff(int piece, GridPoint at) {
        const int rest = static_cast<int>(m_pieces.size());
        Piece part = At(piece);
        part.left = at;
        part.isActive = false;
        At(piece).right = at;
        m_pieces.push_back(part);
        m_status.Grow(m_pieces.size());
        m_cutEnds.push({part.right, rest, false});
        return rest;
    }

    std::vector<Piece>& m_pieces;
    const double m_grain;
    const std::size_t m_mostCrossings;
    std::size_t m_crossings = 0;
    bool m_bent = false;
    Status m_status;
    GridPoint m_now;
    std::vector<Event> m_ends;
    std::size_t m_nextEnd = 0;
    std::priority_queue<Event, std::vector<Event>, Later> m_cutEnds;
    std::vector<int> m_ending;
    std::vector<int> m_starting;
    std::vector<std::pair<int, GridPoint>> m_lateCuts;
};

/// Adds an edge as a piece, unless it is a point.
void AddPiece(const GridPoint& from, const GridPoint& to, int weight, int tag, std::vector<Piece>& pieces) {
    if (from == to) return;
    Piece piece;
    const bool isRightward = Before(from, to);
    piece.left = isRightward ? from : to;
    piece.right = isRightward ? to : from;
    piece.weight = isRightward ? weight : -weight;
    piece.tag = tag;
    pieces.push_back(piece);
}

/// The edges cut at all crossings, with their winding numbers; nothing when there are too many.
std::optional<std::vector<Piece>> Arrange(std::span<const Edge> edges, std::size_t mostCrossings) {
    std::vector<Piece> pieces;
    pieces.reserve(edges.size() + edges.size() / 4);
    for (const Edge& edge : edges) AddPiece(edge.from, edge.to, 1, edge.tag, pieces);
    double grain = 1;
    for (int pass = 1; !pieces.empty(); ++pass) {
        const Pass::Outcome outcome = Pass(pieces, grain, mostCrossings).Run();
        if (outcome == Pass::Outcome::tooMany) return std::nullopt;
        if (outcome == Pass::Outcome::exact || pass == MOST_PASSES) break;
        if (pass >= FINE_PASSES) grain *= COARSENING;
        std::vector<Piece> next;
        next.reserve(pieces.size());
        for (const Piece& piece : pieces) {
            if (piece.weight == 0 || piece.isAbsorbed) continue;
            if (grain == 1) {
                AddPiece(piece.left, piece.right, piece.weight, piece.tag, next);
            } else {
                AddPiece(Snapped(piece.left, grain), Snapped(piece.right, grain), piece.weight, piece.tag,
                         next);
            }
        }
        pieces = std::move(next);
    }
    return pieces;
}

bool IsInside(int winding, Inside rule) {
    switch (rule) {
        case Inside::positive:
            return winding > 0;
        case Inside::nonZero:
            return winding != 0;
        case Inside::evenOdd:
            return winding % 2 != 0;
    }
    return false;
}

/// Orders directions from +x counter-clockwise (y upwards).
bool TurnsLess(const GridPoint& centre, const GridPoint& a, const GridPoint& b) {
    const auto isUpper = [&](const GridPoint& p) {
        return p.y > centre.y || (p.y == centre.y && p.x > centre.x);
    };
    if (isUpper(a) != isUpper(b)) return isUpper(a);
    return SideOf(centre, a, b) > 0;
}

/// For each edge, the one that goes on from its end with the region to the left: the first that is met
/// when turning clockwise from where the edge came. The edges come out ordered by their start.
std::vector<std::size_t> Successors(std::vector<Edge>& edges) {
    std::sort(edges.begin(), edges.end(), [](const Edge& a, const Edge& b) {
        if (!(a.from == b.from)) return Before(a.from, b.from);
        if (a.to == b.to) return a.tag < b.tag;
        return TurnsLess(a.from, a.to, b.to);
    });
    std::vector<std::size_t> successors(edges.size());
    for (std::size_t i = 0; i < edges.size(); ++i) {
        const Edge& edge = edges[i];
        const auto first =
            std::lower_bound(edges.begin(), edges.end(), edge.to,
                             [](const Edge& e, const GridPoint& p) { return Before(e.from, p); });
        auto last = first;
        // Nearly always one edge starts there; of many the range is found by halving.
        if (last != edges.end() && last->from == edge.to) {
            ++last;
            if (last != edges.end() && last->from == edge.to)
                last = std::upper_bound(last, edges.end(), edge.to,
                                        [](const GridPoint& p, const Edge& e) { return Before(p, e.from); });
        }
        if (first == last) {
            successors[i] = edges.size();
            continue;
        }
        auto next = first;
        if (last - first > 1) {
            next = std::lower_bound(first, last, edge.from, [&](const Edge& e, const GridPoint& came) {
                return TurnsLess(edge.to, e.to, came);
            });
            next = next == first ? last - 1 : next - 1;
        }
        successors[i] = static_cast<std::size_t>(next - edges.begin());
    }
    return successors;
}

/// Joins pieces of one edge and turns the contour to start with its least tag; nothing for less than a
/// triangle.
Contour Tidied(const Contour& chain) {
    const std::size_t n = chain.size();
    std::size_t start = n;
    for (std::size_t i = 0; i < n; ++i) {
        const bool isJoint = chain[i].tag == chain[i > 0 ? i - 1 : n - 1].tag;
        if (!isJoint && (start == n || chain[i].tag < chain[start].tag)) start = i;
    }
    Contour contour;
    if (start == n) return contour;
    for (std::size_t k = 0; k < n; ++k) {
        const Corner& corner = chain[start + k < n ? start + k : start + k - n];
        if (contour.empty() || corner.tag != contour.back().tag) contour.push_back(corner);
    }
    if (contour.size() < 3) contour.clear();
    return contour;
}

std::vector<Contour> Chained(std::vector<Edge> edges) {
    const std::vector<std::size_t> successors = Successors(edges);
    std::vector<bool> isUsed(edges.size());
    std::vector<Contour> contours;
    Contour chain;
    for (std::size_t i = 0; i < edges.size(); ++i) {
        if (isUsed[i]) continue;
        chain.clear();
        std::size_t at = i;
        for (; at < edges.size() && !isUsed[at]; at = successors[at]) {
            isUsed[at] = true;
            chain.push_back({edges[at].from, edges[at].tag});
        }
        if (at != i) continue;
        Contour contour = Tidied(chain);
        if (!contour.empty()) contours.push_back(std::move(contour));
    }
    std::stable_sort(contours.begin(), contours.end(),
                     [](const Contour& a, const Contour& b) { return a.front().tag < b.front().tag; });
    return contours;
}

}  // namespace

void AppendEdges(const Contour& contour, Sense sense, std::vector<Edge>& edges) {
    for (std::size_t i = 0; i < contour.size(); ++i) {
        const Corner& corner = contour[i];
        const GridPoint& next = contour[i + 1 < contour.size() ? i + 1 : 0].at;
        if (sense == Sense::forwards) {
            edges.push_back({corner.at, next, corner.tag});
        } else {
            edges.push_back({next, corner.at, corner.tag});
        }
    }
}

std::optional<std::vector<Contour>> Outline(std::span<const Edge> edges, Inside rule,
                                            std::size_t mostCrossings) {
    const std::optional<std::vector<Piece>> pieces = Arrange(edges, mostCrossings);
    if (!pieces) return std::nullopt;
    std::vector<Edge> kept;
    for (const Piece& piece : *pieces) {
        if (piece.isAbsorbed || piece.weight == 0) continue;
        const bool below = IsInside(piece.below, rule);
        const bool above = IsInside(piece.below + piece.weight, rule);
        if (below == above) continue;
        if (above) {
            kept.push_back({piece.left, piece.right, piece.tag});
        } else {
            kept.push_back({piece.right, piece.left, piece.tag});
        }
    }
    return Chained(std::move(kept));
}

std::vector<Edge> CutAtCrossings(std::span<const Edge> edges) {
    const std::optional<std::vector<Piece>> pieces = Arrange(edges, NO_LIMIT);
    std::vector<Edge> cut;
    if (!pieces) return cut;
    for (const Piece& piece : *pieces) {
        if (piece.weight < 0) {
            cut.push_back({piece.right, piece.left, piece.tag});
        } else {
            cut.push_back({piece.left, piece.right, piece.tag});
        }
    }
    return cut;
}

}  // namespace tarvex::offsetting
