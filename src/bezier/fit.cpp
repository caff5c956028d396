// Fitting chains of cubic segments to runs of points.
//
// Published by P. J. Schneider, "An Algorithm for Automatically Fitting Digitized Curves", Graphics Gems,
// 1990. With both end points and the directions of both handles given, a cubic has two unknowns left:
// the lengths of the handles. Given a parameter for every point (first: its share of the polyline's
// length), the best lengths solve two linear equations. What is left of the distance comes partly from
// unsuitable parameters, so when it is not too large each parameter is moved by one Newton step to where
// the curve passes closest, and the equations are solved again. When that does not help either, the worst
// point becomes a joint, with the direction between its neighbours for a common tangent.
//
// Where this fit differs from the published one is written in the header. The reasons: digitised
// points are whole numbers and repeat, so all tests for zero have a tolerance; a handle longer than its
// chord by the golden section makes loops and cusps on short ranges, so it is cut; the depth of the
// splitting is bounded, since each split may take off just one point.
//
// The bits of the result are defined by this order of operations, which tests hold by a plain twin:
// - parameters are running sums of sqrt(dx*dx + dy*dy), divided by the last;
// - with g1 = (u(1-u))(1-u), g2 = (u(1-u))u and r = (d - d_first) - chord·(u·u·(3 - (u+u))), the sums
//   of g1 g1, g1 g2, g2 g2, g1 r and g2 r run over the points of even number and over those of odd
//   number, and are then added; the factors 9 and 3 and the tangents multiply the sums;
// - the curve less its first point is evaluated as ((a u + b) u + c) u.
//
// Cost: ranges wait on a stack of their own, at most one per level, and all passes share six arrays as
// long as the run, so nothing is allocated per point or per range. The left part of a split
// starts where the whole did, so its running sums are there already. Only distances from points to
// points before them are needed, and they are computed once.
#include "bezier/fit.h"

#include <algorithm>
#include <cstdint>
#include <memory>
#include <optional>

#include "bezier/fit_kernels.h"
#include "bezier/vector.h"
#include "core/append.h"

namespace tarvex {
namespace {

constexpr int kMaxDepth = 1000;
constexpr int kNewtonPasses = 4;
constexpr double kLongestHandle = 0.618;  // of the chord

/// A range of the run still to fit.
struct Range {
    std::size_t first;
    std::size_t last;
    DPOINT startTangent;
    DPOINT endTangent;
    int depth;
};

/// A candidate segment, relative to its ends.
struct Handles {
    DPOINT start;  // p1 - p0
    DPOINT end;    // p2 - p3
};

/// Handles a third of the chord long: the fallback.
Handles ThirdHandles(DPOINT startTangent, DPOINT endTangent, DPOINT chord) {
    const double third = Length(chord) / 3;
    return {Times(startTangent, third), Times(endTangent, third)};
}

/// The least-squares problem of a range: what of it does not depend on the parameters.
class HandleSolver {
  public:
    HandleSolver(DPOINT startTangent, DPOINT endTangent, DPOINT chord)
        : m_t1(startTangent),
          m_t2(endTangent),
          m_fallback(ThirdHandles(startTangent, endTangent, chord)),
          m_t11(Dot(m_t1, m_t1)),
          m_t12(Dot(m_t1, m_t2)),
          m_t22(Dot(m_t2, m_t2)) {
        const double length1 = Length(m_t1);
        const double length2 = Length(m_t2);
        const double longest = kLongestHandle * Length(chord);
        m_solvable = !(length1 < GEOMETRY_EPSILON || length2 < GEOMETRY_EPSILON);
        m_limit1 = longest / length1;
        m_limit2 = longest / length2;
    }

    Handles Solve(const LeastSquaresSums& sums) const {
        if (!m_solvable) return m_fallback;
        const double c00 = 9 * sums.g11 * m_t11;
        const double c01 = 9 * sums.g12 * m_t12;
        const double c11 = 9 * sums.g22 * m_t22;
        const double x0 = 3 * Dot(m_t1, sums.r1);
        const double x1 = 3 * Dot(m_t2, sums.r2);
        double det = c00 * c11 - c01 * c01;
        if (std::fabs(det) < GEOMETRY_EPSILON) det = c00 * c11 + GEOMETRY_EPSILON;
        double alpha1 = (x0 * c11 - x1 * c01) / det;
        double alpha2 = (c00 * x1 - c01 * x0) / det;
        if (std::fabs(alpha1) > m_limit1) alpha1 = m_limit1;
        if (std::fabs(alpha2) > m_limit2) alpha2 = m_limit2;
        if (alpha1 < 0 || alpha2 < 0) return m_fallback;
        return {Times(m_t1, alpha1), Times(m_t2, alpha2)};
    }

  private:
    DPOINT m_t1;
    DPOINT m_t2;
    Handles m_fallback;
    double m_t11, m_t12, m_t22;
    double m_limit1, m_limit2;
    bool m_solvable;
};

class Fitter {
  public:
    Fitter(std::span<const DPOINT> points, double error, std::vector<BEZIER>& out)
        : m_points(points),
          m_error(error),
          m_out(out),
          m_storage(std::make_unique_for_overwrite<double[]>(points.size() * 6)),
          m_x(m_storage.get()),
          m_y(m_x + points.size()),
          m_lengths(m_y + points.size()),
          m_along(m_lengths + points.size()),
          m_u(m_along + points.size()),
          m_squares(m_u + points.size()) {
        for (std::size_t i = 0; i < points.size(); ++i) {
            m_x[i] = points[i].x;
            m_y[i] = points[i].y;
        }
        StepLengths(m_x, m_y, m_lengths, points.size());
    }

    void Run(DPOINT startTangent, DPOINT endTangent) {
        SumLengths(0, m_points.size() - 1);
        m_waiting.push_back({0, m_points.size() - 1, startTangent, endTangent, 0});
        while (!m_waiting.empty()) {
            const Range range = m_waiting.back();
            m_waiting.pop_back();
            const std::optional<std::size_t> split = FitOrFindSplit(range);
            if (!split || *split <= range.first || *split >= range.last || range.depth >= kMaxDepth) continue;
            const DPOINT tangent = CentreTangent(*split);
            m_waiting.push_back(
                {*split, range.last, {-tangent.x, -tangent.y}, range.endTangent, range.depth + 1});
            m_waiting.push_back({range.first, *split, range.startTangent, tangent, range.depth + 1});
        }
    }

  private:
    /// Emits a segment for the range, or returns the point to split it at.
    std::optional<std::size_t> FitOrFindSplit(const Range& range) {
        const RangeView view{m_x + range.first, m_y + range.first, m_u + range.first,
                             range.last - range.first + 1};
        const DPOINT chord = view.Chord();
        if (view.count == 2) {
            Emit(range, ThirdHandles(range.startTangent, range.endTangent, chord));
            return std::nullopt;
        }
        // A left half starts where the whole did: its lengths are summed up already.
        if (range.first != m_summedFrom) SumLengths(range.first, range.last);
        Parameterize(view, m_along + range.first);
        const HandleSolver solver(range.startTangent, range.endTangent, chord);
        for (int pass = 0;; ++pass) {
            const Handles handles = solver.Solve(SumUp(view));
            const auto cubic = OffsetCubic::FromHandles(handles.start, handles.end, chord);
            const double greatest = GreatestSquaredDistance(view, cubic, m_squares + range.first);
            if (greatest < m_error) {
                Emit(range, handles);
                return std::nullopt;
            }
            const bool hopeless = pass == 0 && !(greatest < m_error * m_error);
            if (hopeless || pass == kNewtonPasses) return LastWorst(range, greatest);
            Reparameterize(view, cubic);
        }
    }

    /// Sums up the lengths from `first` on.
    void SumLengths(std::size_t first, std::size_t last) {
        double along = 0;
        m_along[first] = 0;
        for (std::size_t i = first + 1; i <= last; ++i) m_along[i] = along += m_lengths[i];
        m_summedFrom = first;
    }

    /// The last inner point at the greatest distance. When no distance is a number, the number (from the
    /// start of the run) of half the range's points.
    std::size_t LastWorst(const Range& range, double greatest) const {
        for (std::size_t i = range.last - 1; i > range.first; --i) {
            if (m_squares[i] == greatest) return i;
        }
        return (range.last - range.first + 1) / 2;
    }

    void Emit(const Range& range, const Handles& handles) {
        const DPOINT first = m_points[range.first];
        const DPOINT last = m_points[range.last];
        BEZIER& segment = m_out.emplace_back();
        segment.p0 = first;
        segment.p1 = Plus(first, handles.start);
        segment.p2 = Plus(last, handles.end);
        segment.p3 = last;
    }

    DPOINT CentreTangent(std::size_t i) const {
        return Normalized(Midpoint(Minus(m_points[i - 1], m_points[i]), Minus(m_points[i], m_points[i + 1])));
    }

    std::span<const DPOINT> m_points;
    double m_error;
    std::vector<BEZIER>& m_out;
    std::vector<Range> m_waiting;
    std::unique_ptr<double[]> m_storage;
    double* m_x;
    double* m_y;
    double* m_lengths;  // from the point before
    double* m_along;    // from m_summedFrom
    double* m_u;
    double* m_squares;  // squared distances from the candidate
    std::size_t m_summedFrom = 0;
};

std::vector<BEZIER> FitWithEndTangents(const DPOINT* points, int n, double error) {
    std::vector<BEZIER> segments;
    if (points == nullptr || n < 2) return segments;
    const std::span<const DPOINT> run(points, static_cast<std::size_t>(n));
    const DPOINT startTangent = Normalized(Minus(run[1], run[0]));
    const DPOINT endTangent = Normalized(Minus(run[run.size() - 2], run.back()));
    FitRun(run, startTangent, endTangent, error, segments);
    return segments;
}

}  // namespace

DPOINT Normalized(DPOINT v) {
    const double length = Length(v);
    return length < GEOMETRY_EPSILON ? v : DPOINT{v.x / length, v.y / length};
}

void FitRun(std::span<const DPOINT> points, DPOINT startTangent, DPOINT endTangent, double error,
            std::vector<BEZIER>& out) {
    if (points.size() < 2) return;
    Fitter(points, error, out).Run(startTangent, endTangent);
}

void FitCurve(const DPOINT* points, int n, CArray<BEZIER, BEZIER>* out, double error) {
    if (out == nullptr) return;
    AppendAll(*out, FitWithEndTangents(points, n, error));
}

void FitCurve(const DPOINT* points, int n, CArray<BPOINT, BPOINT>* out, double error) {
    if (out == nullptr) return;
    const std::vector<BEZIER> segments = FitWithEndTangents(points, n, error);
    out->RemoveAll();
    if (segments.empty()) return;
    out->SetSize(static_cast<int>(segments.size()) + 1);
    BPOINT* node = out->GetData();
    node->cp1 = node->pt = segments.front().p0;
    for (const BEZIER& segment : segments) {
        node->cp2 = segment.p1;
        ++node;
        node->cp1 = segment.p2;
        node->pt = node->cp2 = segment.p3;
    }
}

}  // namespace tarvex
