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
#include "bezier/flatten.h"

#include <array>
#include <cstdint>
#include <limits>

#include "bezier/vector.h"
#include "core/append.h"

namespace tarvex {
namespace {

constexpr int kMaxHalvings = 60;
constexpr std::int64_t kMaxPoints = 100'000;

struct Piece {
    DPOINT p0, p1, p2, p3;
    int halvings;
};

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

class Flattener {
  public:
    /// `given` is the number of points already counted towards the limit.
    Flattener(double threshold, std::int64_t given, std::vector<DPOINT>& out)
        : m_largestSquare(LargestSquare(threshold)),
          m_out(out),
          m_limit(static_cast<std::int64_t>(out.size()) + kMaxPoints - given) {}

    void Run(const DPOINT& p0, const DPOINT& p1, const DPOINT& p2, const DPOINT& p3) {
        std::array<Piece, kMaxHalvings> waiting;
        std::size_t waitingCount = 0;
        Piece piece{p0, p1, p2, p3, 0};
        for (;;) {
            while (!IsFinal(piece)) waiting[waitingCount++] = SplitOffRight(piece);
            m_out.insert(m_out.end(), {piece.p1, piece.p2, piece.p3});
            if (waitingCount == 0) return;
            piece = waiting[--waitingCount];
        }
    }

  private:
    bool IsFinal(const Piece& piece) const {
        const bool flat = SquaredDistance(piece.p0, piece.p1) <= m_largestSquare &&
                          SquaredDistance(piece.p1, piece.p2) <= m_largestSquare &&
                          SquaredDistance(piece.p2, piece.p3) <= m_largestSquare;
        return flat || piece.halvings == kMaxHalvings || static_cast<std::int64_t>(m_out.size()) > m_limit;
    }

    /// Halves the piece: it becomes its left half, the right half is returned.
    static Piece SplitOffRight(Piece& piece) {
        const DPOINT m01 = Midpoint(piece.p0, piece.p1);
        const DPOINT m12 = Midpoint(piece.p1, piece.p2);
        const DPOINT m23 = Midpoint(piece.p2, piece.p3);
        const DPOINT m012 = Midpoint(m01, m12);
        const DPOINT m123 = Midpoint(m12, m23);
        const DPOINT middle = Midpoint(m012, m123);
        const int halvings = piece.halvings + 1;
        const Piece right{middle, m123, m23, piece.p3, halvings};
        piece = {piece.p0, m01, m012, middle, halvings};
        return right;
    }

    double m_largestSquare;
    std::vector<DPOINT>& m_out;
    std::int64_t m_limit;  // a piece met when there are more points than this is final
};

}  // namespace

void AppendFlattened(const CBezier& segment, std::vector<DPOINT>& out) {
    if (!segment.expandStraightLines && Distance(segment.p0, segment.p1) < GEOMETRY_EPSILON &&
        Distance(segment.p2, segment.p3) < GEOMETRY_EPSILON) {
        out.push_back(segment.p3);
        return;
    }
    const double threshold = CoarsenedThreshold(segment.resolution, Distance(segment.p0, segment.p3));
    Flattener(threshold, 0, out).Run(segment.p0, segment.p1, segment.p2, segment.p3);
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
    Flattener(work->flatness, given, points).Run(work->p0, work->p1, work->p2, work->p3);
    AppendAll(*work->target, points);
}

void GetPolyline(const CArray<BPOINT, BPOINT>& nodes, CArray<DPOINT, DPOINT>& out, double resolution) {
    std::vector<DPOINT> points;
    for (int i = 0; i + 1 < nodes.GetSize(); ++i) {
        CBezier segment(nodes[i], nodes[i + 1]);
        segment.SetResolution(resolution);
        if (i == 0) points.push_back(segment.p0);
        AppendFlattened(segment, points);
    }
    out.RemoveAll();
    AppendAll(out, points);
}

}  // namespace tarvex
