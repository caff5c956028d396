// Pieces and their polylines.
//
// Once the curves are cut at all of their crossings, pieces meet at their ends only. Their polylines need
// not be so well-behaved: the vertices between a polyline's ends lie beside the curve, and where two
// curves come closer to each other than that, or part in the same direction, the polylines may cross. So
// polylines that do are refined. Each three edges of a polyline are the control polygon of a small cubic;
// halving it leaves two, four times closer to the curve. After ten rounds what is still crossing is
// about a millionth as wide as it was, and left to the clipper.
#include "shaping/pieces.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <unordered_map>
#include <utility>

#include "bezier/flatten.h"
#include "shaping/box_tree.h"
#include "shaping/curve_crossings.h"

namespace tarvex::shaping {

namespace {

constexpr int MAX_ROUNDS = 10;
constexpr double TOUCHING = GEOMETRY_EPSILON / 10;  // edges nearer than this touch, and do not cross

double Cross(DPOINT a, DPOINT b) { return a.x * b.y - a.y * b.x; }

class CourseFinder {
  public:
    explicit CourseFinder(PieceList& list) : m_list(list) {}

    /// Sets the piece's course: an earlier one that it runs along, or a new one.
    void Assign(Piece& piece, const Cubic& curve) {
        piece.course = -1;
        piece.isReversed = false;
        if (piece.start == piece.end && IsPoint(curve)) return;
        const auto [low, high] = std::minmax(piece.start, piece.end);
        std::vector<int>& candidates =
            m_byEnds[(static_cast<std::uint64_t>(low) << 32) | static_cast<std::uint64_t>(high)];
        for (const int course : candidates) {
            const Cubic& known = m_list.courses[static_cast<std::size_t>(course)].curve;
            piece.isReversed = !SameCourse(known, curve);
            if (piece.isReversed && !SameCourse(Reversed(known), curve)) continue;
            piece.course = course;
            return;
        }
        piece.isReversed = false;
        piece.course = static_cast<int>(m_list.courses.size());
        candidates.push_back(piece.course);
        m_list.courses.push_back({curve, {}});
    }

  private:
    static bool IsPoint(const Cubic& c) {
        const Box b = BoxOf(c);
        return b.right - b.left < POINT_EPSILON && b.bottom - b.top < POINT_EPSILON;
    }

    PieceList& m_list;
    std::unordered_map<std::uint64_t, std::vector<int>> m_byEnds;
};

/// One edge, or three: a small cubic of a polyline.
struct Span {
    Cubic curve;
    int course;
    bool isEdge;
    int firstHalf = -1;  ///< the other one follows it
};

/// Whether an end of one edge lies on the other one, on the inside of it.
bool IsInside(DPOINT p, DPOINT a, DPOINT ab) {
    const double along = Dot(ab, Minus(p, a));
    const double slack = TOUCHING * Length(ab);
    return along > slack && along < SquaredLength(ab) - slack;
}

/// Whether two edges have a point in common other than an end of both: the curves have none.
bool Crosses(DPOINT a, DPOINT b, DPOINT c, DPOINT d) {
    const auto side = [](DPOINT from, DPOINT along, DPOINT p) {
        const double turn = Cross(along, Minus(p, from));
        const double slack = TOUCHING * Length(along);
        return turn > slack ? 1 : turn < -slack ? -1 : 0;
    };
    const DPOINT ab = Minus(b, a);
    const int sideC = side(a, ab, c);
    const int sideD = side(a, ab, d);
    if (sideC * sideD > 0) return false;
    const DPOINT cd = Minus(d, c);
    const int sideA = side(c, cd, a);
    const int sideB = side(c, cd, b);
    if (sideA * sideB > 0) return false;
    if (sideC * sideD < 0 && sideA * sideB < 0) return true;
    if (sideC == 0 && sideD == 0) return false;  // one line: they can run along each other
    return (sideC == 0 && IsInside(c, a, ab)) || (sideD == 0 && IsInside(d, a, ab)) ||
           (sideA == 0 && IsInside(a, c, cd)) || (sideB == 0 && IsInside(b, c, cd));
}

bool PolygonsCross(const Span& s, const Span& t) {
    const DPOINT ps[] = {s.curve.p0, s.curve.p1, s.curve.p2, s.curve.p3};
    const DPOINT pt[] = {t.curve.p0, t.curve.p1, t.curve.p2, t.curve.p3};
    const int stepS = s.isEdge ? 3 : 1;
    const int stepT = t.isEdge ? 3 : 1;
    for (int i = 0; i < 3; i += stepS) {
        for (int j = 0; j < 3; j += stepT) {
            if (Crosses(ps[i], ps[i + stepS], pt[j], pt[j + stepT])) return true;
        }
    }
    return false;
}

class Refinery {
  public:
    void Add(const Course& course, int index) {
        const auto& points = course.points;
        if (points.size() == 2) {
            m_spans.push_back({{points[0], points[0], points[1], points[1]}, index, true});
        } else {
            for (std::size_t k = 0; k + 3 < points.size(); k += 3)
                m_spans.push_back({{points[k], points[k + 1], points[k + 2], points[k + 3]}, index, false});
        }
    }

    void Run() {
        m_roots = m_spans.size();
        FindPairs();
        const std::size_t mostSpans = 8 * m_roots + 10000;
        for (int round = 0; round < MAX_ROUNDS && m_spans.size() < mostSpans; ++round) {
            if (!SplitCrossing()) return;
            FollowSplits();
        }
    }

    /// Replaces the polylines of the courses that were refined.
    void Deliver(std::vector<Course>& courses) const {
        if (m_spans.size() == m_roots) return;
        for (std::size_t k = 0; k < m_roots;) {
            const int index = m_spans[k].course;
            std::size_t end = k;
            bool isRefined = false;
            for (; end < m_roots && m_spans[end].course == index; ++end)
                isRefined = isRefined || m_spans[end].firstHalf >= 0;
            if (isRefined) {
                auto& points = courses[static_cast<std::size_t>(index)].points;
                points.resize(1);
                for (; k < end; ++k) AppendLeaves(static_cast<int>(k), points);
            }
            k = end;
        }
    }

  private:
    struct SpanPair {
        int first, second;
    };

    const Span& At(int i) const { return m_spans[static_cast<std::size_t>(i)]; }

    void FindPairs() {
        std::vector<Box> boxes;
        boxes.reserve(m_spans.size());
        for (const Span& span : m_spans) boxes.push_back(BoxOf(span.curve));
        BoxTree(boxes).ForOwnPairs([this](int i, int j) {
            if (!At(i).isEdge || !At(j).isEdge) m_fresh.push_back({i, j});
        });
    }

    /// Halves all spans whose polygons cross; false when there are none.
    bool SplitCrossing() {
        const std::size_t before = m_spans.size();
        for (const SpanPair& pair : m_fresh) {
            if (!PolygonsCross(At(pair.first), At(pair.second))) continue;
            Halve(pair.first);
            Halve(pair.second);
        }
        m_pairs.insert(m_pairs.end(), m_fresh.begin(), m_fresh.end());
        m_fresh.clear();
        return m_spans.size() > before;
    }

    void Halve(int index) {
        Span span = At(index);
        if (span.isEdge || span.firstHalf >= 0) return;
        m_spans[static_cast<std::size_t>(index)].firstHalf = static_cast<int>(m_spans.size());
        const Cubic whole = span.curve;
        span.curve = PartOf(whole, 0, 0.5);
        m_spans.push_back(span);
        const DPOINT middle = span.curve.p3;
        span.curve = PartOf(whole, 0.5, 1);
        span.curve.p0 = middle;
        m_spans.push_back(span);
    }

    /// Pairs with a halved span become pairs of its halves.
    void FollowSplits() {
        std::vector<SpanPair> kept;
        for (const SpanPair& pair : m_pairs) {
            const int first = At(pair.first).firstHalf;
            const int second = At(pair.second).firstHalf;
            if (first < 0 && second < 0) {
                kept.push_back(pair);
                continue;
            }
            for (int i = 0; i < (first < 0 ? 1 : 2); ++i) {
                for (int j = 0; j < (second < 0 ? 1 : 2); ++j) {
                    const SpanPair half{first < 0 ? pair.first : first + i,
                                        second < 0 ? pair.second : second + j};
                    if (Meet(BoxOf(At(half.first).curve), BoxOf(At(half.second).curve)))
                        m_fresh.push_back(half);
                }
            }
        }
        m_pairs = std::move(kept);
    }

    void AppendLeaves(int index, std::vector<DPOINT>& points) const {
        const Span& span = At(index);
        if (span.firstHalf >= 0) {
            AppendLeaves(span.firstHalf, points);
            AppendLeaves(span.firstHalf + 1, points);
        } else {
            points.insert(points.end(), {span.curve.p1, span.curve.p2, span.curve.p3});
        }
    }

    std::vector<Span> m_spans;
    std::size_t m_roots = 0;
    std::vector<SpanPair> m_fresh;  // to be looked at
    std::vector<SpanPair> m_pairs;  // found not to cross, as long as they are not halved
};

}  // namespace

PieceList CutIntoPieces(const SegmentList& list, std::span<const Split> splits) {
    PieceList out;
    for (const Segment& segment : list.segments) out.ends.FindOrAdd(segment.curve.p0);
    CourseFinder finder(out);
    auto split = splits.begin();
    for (int i = 0; i < list.Size(); ++i) {
        const Segment& segment = list[i];
        double from = 0;
        int start = out.ends.FindOrAdd(segment.curve.p0);
        for (;;) {
            const bool isLast = split == splits.end() || split->segment != i;
            const double to = isLast ? 1 : split->t;
            const int end = out.ends.FindOrAdd(isLast ? segment.curve.p3 : split->point);
            Piece piece{i, from, to, start, end, -1, false};
            finder.Assign(piece, PieceOf(segment, from, to, out.ends[start], out.ends[end]));
            out.pieces.push_back(piece);
            if (isLast) break;
            from = to;
            start = end;
            ++split;
        }
    }
    return out;
}

void FlattenCourses(PieceList& pieces, double resolution) {
    Refinery refinery;
    for (std::size_t i = 0; i < pieces.courses.size(); ++i) {
        Course& course = pieces.courses[i];
        const Cubic& c = course.curve;
        course.points.assign({c.p0});
        if (IsLine(c)) {
            course.points.push_back(c.p3);
        } else {
            CBezier segment(c.p0, c.p1, c.p2, c.p3);
            segment.SetResolution(resolution);
            AppendFlattened(segment, course.points);
        }
        refinery.Add(course, static_cast<int>(i));
    }
    refinery.Run();
    refinery.Deliver(pieces.courses);
}

}  // namespace tarvex::shaping
