// Flattening by halving.
//
// A cubic lies within its control polygon's hull, so when each leg of the polygon is at most the
// threshold long, the polygon is nowhere farther from the curve than that, and its vertices serve as
// the polyline's. Otherwise de Casteljau's construction at t = 0.5 gives two pieces with legs about half
// as long, the left of which is finished first.
//
// Two limits keep input that can never become flat (NaN, infinities, a threshold of 0, coordinates so
// large that their last place exceeds the threshold) from going on for ever: a number of points, which
// bounds the output, and a number of halvings, without which the left edge of the tree would never
// produce the first of those points. The right halves still to do wait on an explicit stack, at most one
// per level.
//
// The test "leg <= threshold" is decided without the square root, with the same answer: IEEE square
// roots are correctly rounded, therefore monotonic, so there is a largest double whose root does not
// exceed the threshold, and squared legs are compared with that.
//
// A point is worked on as two lanes of one register. Finished points collect in a small block, because a
// vector that grows by three points at a time spends as long on growing as the halving takes.
//
// The frame of the points is found without most of them: halving stays within the range of what is halved,
// in rounded arithmetic too, so a piece whose control points lie in the frame cannot widen it. That the order
// of points makes no difference is clear only for ordinary numbers, well away from the ends of the range, and
// that the limits make none only for segments that do not reach them, or lie in the frame whole; others are
// flattened.
#include "bezier/flatten.h"

#include <algorithm>
#include <cstdint>
#include <limits>

#include "bezier/vector.h"
#include "core/append.h"
#include "core/fixed_stack.h"
#include "core/lanes.h"

namespace tarvex {
namespace {

constexpr int kMaxHalvings = 60;
constexpr std::int64_t kMaxPoints = 100'000;
constexpr std::size_t kBlock = std::size_t{3} * 128;

/// Legs at most this many times the threshold are flat after 13 halvings, long before either limit.
constexpr double kOrdinaryLegs = 8192;
constexpr double kOrdinaryLeast = 1e-100;
constexpr double kOrdinaryMost = 1e100;

/// A point, x in the first lane.
using Lanes = TwoLanes;

Lanes LanesOf(const DPOINT& p) { return Lanes::Of(p.x, p.y); }
Lanes Middle(Lanes a, Lanes b) {
    return (a + b) * Lanes(0.5);
}  // halves are exact, as quotients and products
double Squared(Lanes a, Lanes b) {
    const Lanes d = a - b;
    const Lanes squares = d * d;
    return squares.Lane(0) + squares.Lane(1);
}

struct Piece {
    Lanes p0, p1, p2, p3;
    int halvings;
};

/// Right halves that wait, at most one of each size.
using Waiting = FixedStack<Piece, kMaxHalvings>;

Piece WholeOf(const CBezier& segment) {
    return {LanesOf(segment.p0), LanesOf(segment.p1), LanesOf(segment.p2), LanesOf(segment.p3), 0};
}

struct SquaredLegs {
    explicit SquaredLegs(const Piece& piece)
        : first(Squared(piece.p0, piece.p1)),
          second(Squared(piece.p1, piece.p2)),
          third(Squared(piece.p2, piece.p3)) {}

    /// In one branch; no number is never.
    bool AreAtMost(double bound) const {
        return static_cast<int>(first <= bound) + static_cast<int>(second <= bound) +
                   static_cast<int>(third <= bound) ==
               3;
    }

    double first, second, third;
};

/// Halves the piece: it becomes its left half, the right half is returned.
inline Piece SplitOffRight(Piece& piece) {
    const Lanes m01 = Middle(piece.p0, piece.p1);
    const Lanes m12 = Middle(piece.p1, piece.p2);
    const Lanes m23 = Middle(piece.p2, piece.p3);
    const Lanes m012 = Middle(m01, m12);
    const Lanes m123 = Middle(m12, m23);
    const Lanes middle = Middle(m012, m123);
    const int halvings = piece.halvings + 1;
    const Piece right{middle, m123, m23, piece.p3, halvings};
    piece = {piece.p0, m01, m012, middle, halvings};
    return right;
}

/// The largest s with sqrt(s) <= threshold; -1, below any squared length, when there is none.
double LargestSquare(double threshold) {
    if (!(threshold >= 0)) return -1;
    constexpr double infinity = std::numeric_limits<double>::infinity();
    double s = threshold * threshold;  // within a few units in the last place of the answer
    while (std::sqrt(s) > threshold) s = std::nextafter(s, 0.0);
    while (s < infinity) {
        const double next = std::nextafter(s, infinity);
        if (std::sqrt(next) > threshold) break;
        s = next;
    }
    return s;
}

/// The threshold for a chord of this length: long segments make do with coarser polylines.
double CoarsenedThreshold(double resolution, double chord) {
    double floor = 0;
    if (chord > 100000) {
        floor = 20;
    } else if (chord > 10000) {
        floor = 10;
    } else if (chord > 5000) {
        floor = 5;
    } else if (chord > 2000) {
        floor = 3;
    } else {
        return resolution;
    }
    return resolution < floor ? floor : resolution;
}

/// Legs half as long are flat, which saves the halves' own tests. Halving moves points by roundings too, of a
/// few units in the last place of the greatest coordinate M: negligible beside a threshold above 1e-9 M. -1,
/// which no square is at most, where that cannot be said.
double SquareOfLegsWithFlatHalves(const CBezier& segment, double largestSquare) {
    double greatest = 0;
    for (const DPOINT& p : {segment.p0, segment.p1, segment.p2, segment.p3})
        greatest = std::max({greatest, std::fabs(p.x), std::fabs(p.y)});
    const bool isSafe = greatest < kOrdinaryMost && greatest * greatest * 1e-18 <= largestSquare;
    return isSafe ? 3.9999 * largestSquare : -1;
}

/// The threshold's largest square, worked out anew only when the threshold changes.
class Flatness {
  public:
    double LargestSquareFor(const CBezier& segment) {
        return LargestSquareFor(CoarsenedThreshold(segment.resolution, Distance(segment.p0, segment.p3)));
    }
    double LargestSquareFor(double threshold) {
        if (threshold == m_threshold) return m_largestSquare;
        m_threshold = threshold;
        return m_largestSquare = LargestSquare(threshold);
    }

  private:
    double m_threshold = 0;
    double m_largestSquare = 0;
};

/// Distance < GEOMETRY_EPSILON, nearly always without the root.
bool AreNear(const DPOINT& a, const DPOINT& b) {
    constexpr double surelyFar = 2 * GEOMETRY_EPSILON * GEOMETRY_EPSILON;
    const double squared = SquaredDistance(a, b);
    return squared < surelyFar && std::sqrt(squared) < GEOMETRY_EPSILON;
}

bool IsStraight(const CBezier& segment) {
    return !segment.expandStraightLines && AreNear(segment.p0, segment.p1) && AreNear(segment.p2, segment.p3);
}

class Flattener {
  public:
    explicit Flattener(std::vector<DPOINT>& out) : m_out(out) {}
    Flattener(const Flattener&) = delete;
    Flattener& operator=(const Flattener&) = delete;
    ~Flattener() = default;

    void Add(const DPOINT& p) {
        if (!m_block.HasRoomFor(1)) Flush();
        m_block.Push(p);
    }

    void Segment(const CBezier& segment) {
        if (IsStraight(segment)) {
            Add(segment.p3);
        } else {
            Run(segment, m_flatness.LargestSquareFor(segment), 0);
        }
    }

    /// `given` is the number of points already counted towards the limit.
    void Run(const CBezier& segment, double largestSquare, std::int64_t given) {
        const double halvesAreFlat = SquareOfLegsWithFlatHalves(segment, largestSquare);
        Piece piece = WholeOf(segment);
        std::int64_t count = given;
        for (;;) {
            const SquaredLegs legs(piece);
            if (legs.AreAtMost(largestSquare) || piece.halvings == kMaxHalvings || count > kMaxPoints) {
                Add(piece);
                count += 3;
            } else {
                const Piece right = SplitOffRight(piece);
                if (!legs.AreAtMost(halvesAreFlat)) {
                    m_waiting.Push(right);
                    continue;
                }
                Add(piece);
                Add(right);
                count += 6;
            }
            if (m_waiting.IsEmpty()) return;
            piece = m_waiting.Pop();
        }
    }

    void Flush() {
        m_out.insert(m_out.end(), m_block.begin(), m_block.end());
        m_block.Clear();
    }

  private:
    void Add(const Piece& piece) {
        if (!m_block.HasRoomFor(3)) Flush();
        for (const Lanes p : {piece.p1, piece.p2, piece.p3}) m_block.Push({p.Lane(0), p.Lane(1)});
    }

    std::vector<DPOINT>& m_out;
    Flatness m_flatness;
    Waiting m_waiting;
    FixedStack<DPOINT, kBlock> m_block;
};

bool IsOrdinary(double v) {
    const double size = std::fabs(v);
    return (size >= kOrdinaryLeast && size <= kOrdinaryMost) || (v == 0 && !std::signbit(v));
}

bool HasOrdinaryPoints(const CBezier& segment) {
    bool all = true;
    for (const DPOINT& p : {segment.p0, segment.p1, segment.p2, segment.p3})
        all = all && IsOrdinary(p.x) && IsOrdinary(p.y);
    return all;
}

bool StaysWithinLimits(const CBezier& segment, double largestSquare) {
    return SquaredLegs(WholeOf(segment)).AreAtMost(largestSquare * (kOrdinaryLegs * kOrdinaryLegs));
}

DPOINT PointOf(Lanes lanes) { return {lanes.Lane(0), lanes.Lane(1)}; }

/// Widens the frame, which holds the segment's ends, by the points in between.
void Widen(PointFrame& frame, const CBezier& segment, double largestSquare) {
    Waiting waiting;
    Piece piece = WholeOf(segment);
    for (;;) {
        const bool canWiden = !frame.Holds(PointOf(piece.p1)) || !frame.Holds(PointOf(piece.p2)) ||
                              !frame.Holds(PointOf(piece.p0)) || !frame.Holds(PointOf(piece.p3));
        if (canWiden && !SquaredLegs(piece).AreAtMost(largestSquare)) {
            waiting.Push(SplitOffRight(piece));
            continue;
        }
        if (canWiden) {
            for (const Lanes p : {piece.p1, piece.p2, piece.p3}) frame.Include(PointOf(p));
        }
        if (waiting.IsEmpty()) return;
        piece = waiting.Pop();
    }
}

}  // namespace

void AppendFlattened(const CBezier& segment, std::vector<DPOINT>& out) {
    Flattener flattener(out);
    flattener.Segment(segment);
    flattener.Flush();
}

void IncludeFlattened(const CBezier& segment, PointFrame& frame) {
    if (IsStraight(segment)) {
        frame.Include(segment.p3);
        return;
    }
    const bool isOrdinary = HasOrdinaryPoints(segment);
    if (isOrdinary) {
        frame.Include(segment.p3);
        if (frame.Holds(segment.p1) && frame.Holds(segment.p2) && frame.Holds(segment.p0)) return;
    }
    const double largestSquare = Flatness().LargestSquareFor(segment);
    if (isOrdinary && StaysWithinLimits(segment, largestSquare)) {
        Widen(frame, segment, largestSquare);
        return;
    }
    std::vector<DPOINT> points;
    AppendFlattened(segment, points);
    for (const DPOINT& p : points) frame.Include(p);
}

void CBezier::GetPolyline(CArray<DPOINT, DPOINT>& out) const {
    std::vector<DPOINT> points;
    if (out.IsEmpty()) points.push_back(p0);
    AppendFlattened(*this, points);
    AppendAll(out, points);
}

void CBezier::GetBArray(BEZIER* work) const {
    if (work == nullptr || work->target == nullptr) return;
    const std::int64_t given = std::int64_t{work->target->GetSize()} - work->startCount;
    std::vector<DPOINT> points;
    Flattener flattener(points);
    const CBezier segment(work->p0, work->p1, work->p2, work->p3);
    flattener.Run(segment, LargestSquare(work->flatness), given);
    flattener.Flush();
    AppendAll(*work->target, points);
}

void GetPolyline(const CArray<BPOINT, BPOINT>& nodes, CArray<DPOINT, DPOINT>& out, double resolution) {
    std::vector<DPOINT> points;
    Flattener flattener(points);
    for (int i = 0; i + 1 < nodes.GetSize(); ++i) {
        CBezier segment(nodes[i], nodes[i + 1]);
        segment.SetResolution(resolution);
        if (i == 0) flattener.Add(segment.p0);
        flattener.Segment(segment);
    }
    flattener.Flush();
    out.RemoveAll();
    AppendAll(out, points);
}

}  // namespace tarvex
