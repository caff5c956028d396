// Fitting chains of cubic segments to runs of points.
#include "bezier/fit.h"

#include <algorithm>
#include <array>
#include <cstdint>

#include "bezier/vector.h"

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

/// A candidate segment, relative to its first point.
struct Candidate {
    DPOINT startHandle;  // p1 - p0
    DPOINT endHandle;    // p2 - p3
    DPOINT chord;        // p3 - p0
};

/// The candidate less its first point as a polynomial ((a t + b) t + c) t.
struct Cubic {
    DPOINT a, b, c;
};

Cubic PolynomialOf(const Candidate& candidate) {
    const DPOINT p2 = Plus(candidate.chord, candidate.endHandle);
    const DPOINT c = Times(candidate.startHandle, 3);
    const DPOINT b = Minus(Times(Minus(p2, candidate.startHandle), 3), c);
    const DPOINT a = Minus(Minus(candidate.chord, c), b);
    return {a, b, c};
}

struct WorstPoint {
    double squaredDistance;
    std::size_t index;
};

class Fitter {
  public:
    Fitter(std::span<const DPOINT> points, double error, std::vector<BEZIER>& out)
        : m_points(points), m_error(error), m_out(out), m_u(points.size()) {}

    void Run(DPOINT startTangent, DPOINT endTangent) {
        std::vector<Range> waiting{{0, m_points.size() - 1, startTangent, endTangent, 0}};
        while (!waiting.empty()) {
            const Range range = waiting.back();
            waiting.pop_back();
            const std::size_t split = FitOrSplit(range);
            if (split <= range.first || split >= range.last || range.depth >= kMaxDepth) continue;
            const DPOINT tangent = CentreTangent(split);
            waiting.push_back(
                {split, range.last, {-tangent.x, -tangent.y}, range.endTangent, range.depth + 1});
            waiting.push_back({range.first, split, range.startTangent, tangent, range.depth + 1});
        }
    }

  private:
    /// Emits a segment for the range and returns 0, or returns the point to split it at.
    std::size_t FitOrSplit(const Range& range) {
        if (range.last - range.first == 1) {
            Emit(range, ThirdHandles(range));
            return 0;
        }
        Parameterize(range);
        Candidate candidate = Generate(range);
        WorstPoint worst = FindWorst(range, candidate);
        for (int pass = 0;; ++pass) {
            if (worst.squaredDistance < m_error) {
                Emit(range, candidate);
                return 0;
            }
            if (pass == kNewtonPasses) return worst.index;
            if (pass == 0 && !(worst.squaredDistance < m_error * m_error)) return worst.index;
            Reparameterize(range, candidate);
            candidate = Generate(range);
            worst = FindWorst(range, candidate);
        }
    }

    void Parameterize(const Range& range) {
        double length = 0;
        m_u[range.first] = 0;
        for (std::size_t i = range.first + 1; i <= range.last; ++i) {
            length += Distance(m_points[i], m_points[i - 1]);
            m_u[i] = length;
        }
        if (!(length >= GEOMETRY_EPSILON)) return;
        for (std::size_t i = range.first; i <= range.last; ++i) m_u[i] /= length;
    }

    Candidate Generate(const Range& range) const {
        const DPOINT origin = m_points[range.first];
        const DPOINT chord = Minus(m_points[range.last], origin);
        std::array<double, 2> s11{}, s12{}, s22{}, y1x{}, y1y{}, y2x{}, y2y{};
        for (std::size_t i = range.first; i <= range.last; ++i) {
            const std::size_t lane = (i - range.first) % 2;
            const double u = m_u[i];
            const double v = 1 - u;
            const double uv = u * v;
            const double g1 = uv * v;
            const double g2 = uv * u;
            const double along = u * u * (3 - (u + u));
            const double rx = (m_points[i].x - origin.x) - chord.x * along;
            const double ry = (m_points[i].y - origin.y) - chord.y * along;
            s11[lane] += g1 * g1;
            s12[lane] += g1 * g2;
            s22[lane] += g2 * g2;
            y1x[lane] += g1 * rx;
            y1y[lane] += g1 * ry;
            y2x[lane] += g2 * rx;
            y2y[lane] += g2 * ry;
        }
        const auto sum = [](const std::array<double, 2>& lanes) { return lanes[0] + lanes[1]; };
        const DPOINT t1 = range.startTangent;
        const DPOINT t2 = range.endTangent;
        const double c00 = 9 * sum(s11) * Dot(t1, t1);
        const double c01 = 9 * sum(s12) * Dot(t1, t2);
        const double c11 = 9 * sum(s22) * Dot(t2, t2);
        const double x0 = 3 * Dot(t1, {sum(y1x), sum(y1y)});
        const double x1 = 3 * Dot(t2, {sum(y2x), sum(y2y)});
        double det = c00 * c11 - c01 * c01;
        if (std::fabs(det) < GEOMETRY_EPSILON) det = c00 * c11 + GEOMETRY_EPSILON;
        double alpha1 = (x0 * c11 - x1 * c01) / det;
        double alpha2 = (c00 * x1 - c01 * x0) / det;
        const double length1 = Length(t1);
        const double length2 = Length(t2);
        if (length1 < GEOMETRY_EPSILON || length2 < GEOMETRY_EPSILON) return ThirdHandles(range);
        const double limit = kLongestHandle * Length(chord);
        if (std::fabs(alpha1) > limit / length1) alpha1 = limit / length1;
        if (std::fabs(alpha2) > limit / length2) alpha2 = limit / length2;
        if (alpha1 < 0 || alpha2 < 0) return ThirdHandles(range);
        return {Times(t1, alpha1), Times(t2, alpha2), chord};
    }

    Candidate ThirdHandles(const Range& range) const {
        const DPOINT chord = Minus(m_points[range.last], m_points[range.first]);
        const double third = Length(chord) / 3;
        return {Times(range.startTangent, third), Times(range.endTangent, third), chord};
    }

    WorstPoint FindWorst(const Range& range, const Candidate& candidate) const {
        const Cubic q = PolynomialOf(candidate);
        WorstPoint worst{0, (range.last - range.first + 1) / 2};
        for (std::size_t i = range.first + 1; i < range.last; ++i) {
            const double squaredDistance = SquaredLength(OffsetFromCurve(q, range, i));
            if (squaredDistance >= worst.squaredDistance) worst = {squaredDistance, i};
        }
        return worst;
    }

    void Reparameterize(const Range& range, const Candidate& candidate) {
        const Cubic q = PolynomialOf(candidate);
        for (std::size_t i = range.first; i <= range.last; ++i) {
            const double u = m_u[i];
            const DPOINT r = OffsetFromCurve(q, range, i);
            const DPOINT first{(3 * q.a.x * u + 2 * q.b.x) * u + q.c.x,
                               (3 * q.a.y * u + 2 * q.b.y) * u + q.c.y};
            const DPOINT second{6 * q.a.x * u + 2 * q.b.x, 6 * q.a.y * u + 2 * q.b.y};
            const double denominator = SquaredLength(first) + Dot(r, second);
            if (!(std::fabs(denominator) < GEOMETRY_EPSILON)) m_u[i] = u - Dot(r, first) / denominator;
        }
    }

    /// The curve at the point's parameter, less the point.
    DPOINT OffsetFromCurve(const Cubic& q, const Range& range, std::size_t i) const {
        const double u = m_u[i];
        const DPOINT d = Minus(m_points[i], m_points[range.first]);
        return {((q.a.x * u + q.b.x) * u + q.c.x) * u - d.x, ((q.a.y * u + q.b.y) * u + q.c.y) * u - d.y};
    }

    void Emit(const Range& range, const Candidate& candidate) {
        const DPOINT first = m_points[range.first];
        const DPOINT last = m_points[range.last];
        BEZIER& segment = m_out.emplace_back();
        segment.p0 = first;
        segment.p1 = Plus(first, candidate.startHandle);
        segment.p2 = Plus(last, candidate.endHandle);
        segment.p3 = last;
    }

    DPOINT CentreTangent(std::size_t i) const {
        return Normalized(Midpoint(Minus(m_points[i - 1], m_points[i]), Minus(m_points[i], m_points[i + 1])));
    }

    std::span<const DPOINT> m_points;
    double m_error;
    std::vector<BEZIER>& m_out;
    std::vector<double> m_u;
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
    const std::vector<BEZIER> segments = FitWithEndTangents(points, n, error);
    if (segments.empty()) return;
    const int old = out->GetSize();
    if (segments.size() > static_cast<std::size_t>(INT32_MAX - old)) AfxThrowMemoryException();
    out->SetSize(old + static_cast<int>(segments.size()));
    std::copy(segments.begin(), segments.end(), out->GetData() + old);
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
