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
// Ranges so long that squares and their sums may be beyond the largest double are fitted in a unit of their
// own, a power of two near their extent: dividing by it changes no bit, but where something is so far below
// the last bit of the rest that its square vanishes. So are ranges of finite points whose candidate is no
// number, which takes a wild Newton step.
//
// Cost: ranges wait on a stack of their own, at most one per level, and all passes share six arrays as
// long as the run, so nothing is allocated per point, nor per range but for those in a unit of their own.
// The left part of a split starts where the whole did, so its running sums are there already. Only distances
// from points to points before them are needed, and they are computed once.
#include "bezier/fit.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <memory>
#include <optional>

#include "bezier/fit_kernels.h"
#include "bezier/vector.h"
#include "core/append.h"

namespace tarvex {
namespace {

constexpr int kMaxDepth = 1000;
constexpr int kNewtonPasses = 4;
constexpr double kLongestHandle = 0.618;   // of the chord
constexpr double kLongestPlain = 0x1p300;  // length of a range: leaves room for wild Newton steps

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

bool IsFinite(DPOINT p) { return std::isfinite(p.x) && std::isfinite(p.y); }

/// What squared lengths are compared with.
struct Tolerance {
    double fits;                     // a candidate that is nearer to all points is taken
    double hopeful;                  // a first candidate that is nearer is worth Newton steps
    double zero = GEOMETRY_EPSILON;  // denominators of Newton steps below it count as zero
    int passes = kNewtonPasses;
};

/// The last candidate tried for a range.
struct Attempt {
    Handles handles;
    double greatest;  // squared distance
    bool fits;
    bool isSound;  // the handles are finite, and some distance is a number
};

/// The last inner point of `count` at the greatest distance.
std::optional<std::size_t> LastWorst(const double* squares, std::size_t count, double greatest) {
    for (std::size_t i = count - 2; i > 0; --i) {
        if (squares[i] == greatest) return i;
    }
    return std::nullopt;
}

/// Tries candidates for a range of more than two points, given the lengths along it from its first point on.
Attempt Try(const RangeView& view, const double* along, const HandleSolver& solver, Tolerance tolerance,
            double* squares) {
    const DPOINT chord = view.Chord();
    Parameterize(view, along);
    for (int pass = 0;; ++pass) {
        const Handles handles = solver.Solve(SumUp(view));
        const auto cubic = OffsetCubic::FromHandles(handles.start, handles.end, chord);
        const double greatest = GreatestSquaredDistance(view, cubic, squares);
        const bool fits = greatest < tolerance.fits;
        const bool isHopeless = pass == 0 && !(greatest < tolerance.hopeful);
        if (fits || isHopeless || pass == tolerance.passes) {
            const bool isMeasured = greatest > 0 || LastWorst(squares, view.count, greatest).has_value();
            const bool isSound = isMeasured && IsFinite(handles.start) && IsFinite(handles.end);
            return {handles, greatest, fits, isSound};
        }
        Reparameterize(view, cubic, tolerance.zero);
    }
}

/// The unit vector of a difference of points, or of differences of points, that `difference` forms of the
/// points times a factor: also when it is too long for its length to be a number.
template <class Difference>
DPOINT UnitVector(Difference difference) {
    constexpr double factor = 0x1p-520;  // leaves the square of the longest finite and of the shortest not 0
    const DPOINT v = difference(1.0);
    return Normalized(std::isfinite(Length(v)) ? v : difference(factor));
}

DPOINT UnitStep(DPOINT from, DPOINT to) {
    return UnitVector([&](double factor) { return Minus(Times(to, factor), Times(from, factor)); });
}

/// A range in a unit of its own: its coordinates are at most 1 apart from its first point's.
class FarRange {
  public:
    FarRange(const double* x, const double* y, std::size_t count)
        : m_count(count), m_storage(std::make_unique_for_overwrite<double[]>(count * 5)) {
        double farthest = 0;  // by halves, since the distance itself can be beyond the largest double
        for (std::size_t i = 0; i < count; ++i)
            farthest = std::max({farthest, std::fabs(x[i] / 2 - x[0] / 2), std::fabs(y[i] / 2 - y[0] / 2)});
        static_cast<void>(std::frexp(farthest, &m_unit));
        m_unit += 1;
        for (std::size_t i = 0; i < count; ++i) {
            X()[i] = std::ldexp(x[i], -m_unit);
            Y()[i] = std::ldexp(y[i], -m_unit);
        }
    }

    /// The best candidate, in the caller's unit; for two points the fallback.
    Attempt Fit(DPOINT startTangent, DPOINT endTangent, double error) {
        const RangeView view{X(), Y(), U(), m_count};
        Attempt attempt{ThirdHandles(startTangent, endTangent, view.Chord()), 0, true, true};
        if (m_count > 2) {
            StepLengths(X(), Y(), Along(), m_count);
            Along()[0] = 0;
            for (std::size_t i = 1; i < m_count; ++i) Along()[i] += Along()[i - 1];
            const HandleSolver solver(startTangent, endTangent, view.Chord());
            const double worth = std::ldexp(error, -m_unit);
            Tolerance tolerance{Squared(error), worth * worth, Squared(GEOMETRY_EPSILON)};
            attempt = Try(view, Along(), solver, tolerance, Squares());
            if (!attempt.isSound) {  // wild Newton steps; the first candidate is always sound
                tolerance.passes = 0;
                attempt = Try(view, Along(), solver, tolerance, Squares());
            }
        }
        attempt.handles = {Back(attempt.handles.start), Back(attempt.handles.end)};
        return attempt;
    }

    double* Squares() { return m_storage.get() + 4 * m_count; }

  private:
    double* X() { return m_storage.get(); }
    double* Y() { return X() + m_count; }
    double* Along() { return Y() + m_count; }
    double* U() { return Along() + m_count; }

    /// A squared distance in this unit; what is above 0 stays there.
    double Squared(double square) const {
        const double scaled = std::ldexp(square, -2 * m_unit);
        return scaled == 0 && square > 0 ? std::numeric_limits<double>::denorm_min() : scaled;
    }
    DPOINT Back(DPOINT v) const { return {std::ldexp(v.x, m_unit), std::ldexp(v.y, m_unit)}; }

    std::size_t m_count;
    std::unique_ptr<double[]> m_storage;
    int m_unit = 0;  // as a power of two
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
            const Handles handles = ThirdHandles(range.startTangent, range.endTangent, chord);
            const bool isSound = IsFinite(handles.start) && IsFinite(handles.end);
            if (!isSound && IsAllFinite(range, view)) return FitFar(range, view);
            Emit(range, handles);
            return std::nullopt;
        }
        // A left half starts where the whole did: its lengths are summed up already.
        if (range.first != m_summedFrom) SumLengths(range.first, range.last);
        const bool isFar = !(m_along[range.last] < kLongestPlain);
        if (isFar && IsAllFinite(range, view)) return FitFar(range, view);
        const HandleSolver solver(range.startTangent, range.endTangent, chord);
        const Attempt attempt =
            Try(view, m_along + range.first, solver, {m_error, m_error * m_error}, m_squares + range.first);
        if (!attempt.isSound && IsAllFinite(range, view)) return FitFar(range, view);
        if (!attempt.fits) {
            const auto worst = LastWorst(m_squares + range.first, view.count, attempt.greatest);
            if (!worst && IsAllFinite(range, view)) return FitFar(range, view);
            // When no distance is a number, the number (from the start of the run) of half the points.
            return worst ? range.first + *worst : view.count / 2;
        }
        Emit(range, attempt.handles);
        return std::nullopt;
    }

    /// The same for a range of finite points whose distances are too large to be squared.
    std::optional<std::size_t> FitFar(const Range& range, const RangeView& view) {
        FarRange far(view.x, view.y, view.count);
        const Attempt attempt = far.Fit(range.startTangent, range.endTangent, m_error);
        if (!attempt.fits)
            return range.first +
                   LastWorst(far.Squares(), view.count, attempt.greatest).value_or(view.count / 2);
        Emit(range, attempt.handles);
        return std::nullopt;
    }

    static bool IsAllFinite(const Range& range, const RangeView& view) {
        if (!IsFinite(range.startTangent) || !IsFinite(range.endTangent)) return false;
        for (std::size_t i = 0; i < view.count; ++i) {
            if (!IsFinite(view.Point(i))) return false;
        }
        return true;
    }

    /// Sums up the lengths from `first` on.
    void SumLengths(std::size_t first, std::size_t last) {
        double along = 0;
        m_along[first] = 0;
        for (std::size_t i = first + 1; i <= last; ++i) m_along[i] = along += m_lengths[i];
        m_summedFrom = first;
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
        return UnitVector([this, i](double factor) {
            const DPOINT point = Times(m_points[i], factor);
            return Midpoint(Minus(Times(m_points[i - 1], factor), point),
                            Minus(point, Times(m_points[i + 1], factor)));
        });
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
    const DPOINT startTangent = UnitStep(run[0], run[1]);
    const DPOINT endTangent = UnitStep(run.back(), run[run.size() - 2]);
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
