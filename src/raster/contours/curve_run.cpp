// Fewest segments by longest pieces.
//
// Schneider's method halves a run where it fits worst until every part fits; what it leaves are often
// twice the segments that are needed, since a split made early is never taken back. Here a piece is
// grown instead: from where the last one ended, as far as one cubic still follows the points within
// the looseness, found by doubling and then halving the step. Each trial is one small least-squares
// problem with a few corrections of the parameters, on at most `sampleLimit` points whatever the
// piece's length, so a run of n points costs O(n + segments · log n) of them; a piece that is accepted
// is checked against all its points.
//
// At a corner the curve is free to leave in any direction: the control point there has two unknowns.
// At a joint within a run the direction is the chain's own, taken symmetrically about the joint, and
// the control point has one unknown, its distance. So joints are smooth by construction, and corners
// do not inherit the direction of the first pixel beside them.
//
// The least-squares problem and the correction of parameters are those of P. Schneider, "An algorithm
// for automatically fitting digitized curves", Graphics Gems (1990), with the free end added.
#include "raster/contours/curve_run.h"

#include <algorithm>
#include <cmath>

#include "bezier/vector.h"

namespace tarvex::contours {

namespace {

constexpr int corrections = 3;

/// One coordinate of a cubic in powers of the parameter.
struct Powers {
    double a, b, c, d;

    Powers(double p0, double p1, double p2, double p3)
        : a(p0), b(3 * (p1 - p0)), c(3 * (p2 - 2 * p1 + p0)), d(p3 - p0 - 3 * (p2 - p1)) {}
    double At(double u) const { return ((d * u + c) * u + b) * u + a; }
    double First(double u) const { return (3 * d * u + 2 * c) * u + b; }
    double Second(double u) const { return 6 * d * u + 2 * c; }
};

double SquareAt(const Powers& x, const Powers& y, double px, double py, double u) {
    const double offX = x.At(u) - px;
    const double offY = y.At(u) - py;
    return offX * offX + offY * offY;
}

/// The parameter after one Newton step from `u` towards that of the curve's point nearest to a point.
double Corrected(const Powers& x, const Powers& y, double px, double py, double u) {
    const double offX = x.At(u) - px;
    const double offY = y.At(u) - py;
    const double firstX = x.First(u);
    const double firstY = y.First(u);
    const double slope = firstX * firstX + firstY * firstY + offX * x.Second(u) + offY * y.Second(u);
    const double step = slope > 1e-12 ? (offX * firstX + offY * firstY) / slope : 0;
    return std::clamp(u - step, 0.0, 1.0);
}

}  // namespace

void RunFitter::TakeSamples(int first, int last) {
    m_stride = (last - first - 2) / sampleLimit + 1;
    const double from = m_length[static_cast<std::size_t>(first)];
    const double all = m_length[static_cast<std::size_t>(last)] - from;
    std::size_t k = 0;
    for (int i = first + (m_stride + 1) / 2; i < last; i += m_stride, ++k) {
        const Crossing p = m_points[static_cast<std::size_t>(i)];
        m_x[k] = p.x;
        m_y[k] = p.y;
        m_u[k] = (m_length[static_cast<std::size_t>(i)] - from) / all;
    }
    m_sampleCount = static_cast<int>(k);
}

/// The control points with the least sum of squares at the samples' present parameters; false when a
/// handle would point backwards or be longer than the piece.
bool RunFitter::Solve(double length, const End& start, const End& finish, Cubic& c) const {
    double c11 = 0, c12 = 0, c22 = 0;
    Crossing r1{}, r2{};
    const auto count = static_cast<std::size_t>(m_sampleCount);
    for (std::size_t k = 0; k < count; ++k) {
        const double u = m_u[k];
        const double v = 1 - u;
        const double b1 = 3 * u * v * v;
        const double b2 = 3 * u * u * v;
        const double early = v * v * (1 + 2 * u);  // what is left of the start with p1 = p0
        const double qx = m_x[k] - early * c.p0.x - (1 - early) * c.p3.x;
        const double qy = m_y[k] - early * c.p0.y - (1 - early) * c.p3.y;
        c11 += b1 * b1;
        c12 += b1 * b2;
        c22 += b2 * b2;
        r1.x += b1 * qx;
        r1.y += b1 * qy;
        r2.x += b2 * qx;
        r2.y += b2 * qy;
    }
    // Unknowns: the handles h1 = p1 - p0 and h2 = p2 - p3, whole or along their tangents.
    Crossing h1{}, h2{};
    if (start.tangent && finish.tangent) {
        const double off = -c12 * Dot(*start.tangent, *finish.tangent);
        const double det = c11 * c22 - off * off;
        if (det < 1e-9 * c11 * c22) return false;
        const double b1 = Dot(*start.tangent, r1);
        const double b2 = -Dot(*finish.tangent, r2);
        h1 = Times(*start.tangent, (b1 * c22 - off * b2) / det);
        h2 = Times(*finish.tangent, -(c11 * b2 - off * b1) / det);
    } else {
        const double det = c11 * c22 - c12 * c12;
        if (det < 1e-9 * c11 * c22) return false;
        if (start.tangent) {
            const Crossing reduced = Minus(r1, Times(r2, c12 / c22));
            h1 = Times(*start.tangent, Dot(*start.tangent, reduced) * c22 / det);
            h2 = Times(Minus(r2, Times(h1, c12)), 1 / c22);
        } else if (finish.tangent) {
            const Crossing reduced = Minus(r2, Times(r1, c12 / c11));
            h2 = Times(*finish.tangent, Dot(*finish.tangent, reduced) * c11 / det);
            h1 = Times(Minus(r1, Times(h2, c12)), 1 / c11);
        } else {
            h1 = Times(Minus(Times(r1, c22), Times(r2, c12)), 1 / det);
            h2 = Times(Minus(Times(r2, c11), Times(r1, c12)), 1 / det);
        }
    }
    c.p1 = Plus(c.p0, h1);
    c.p2 = Plus(c.p3, h2);
    if (!(Length(h1) <= length) || !(Length(h2) <= length)) return false;
    const Crossing early = start.tangent ? *start.tangent : Minus({m_x[0], m_y[0]}, c.p0);
    const Crossing late =
        finish.tangent ? Times(*finish.tangent, -1) : Minus({m_x[count - 1], m_y[count - 1]}, c.p3);
    return Dot(h1, early) > 0 && Dot(h2, late) > 0;
}

/// The largest squared distance of a sample from the curve at its parameter.
double RunFitter::WorstSquare(const Cubic& c) const {
    const Powers x(c.p0.x, c.p1.x, c.p2.x, c.p3.x);
    const Powers y(c.p0.y, c.p1.y, c.p2.y, c.p3.y);
    const auto count = static_cast<std::size_t>(m_sampleCount);
    double worst = 0;
    for (std::size_t k = 0; k < count; ++k) {
        const double square = SquareAt(x, y, m_x[k], m_y[k], m_u[k]);
        worst = square > worst ? square : worst;
    }
    return worst;
}

void RunFitter::CorrectParameters(const Cubic& c) {
    const Powers x(c.p0.x, c.p1.x, c.p2.x, c.p3.x);
    const Powers y(c.p0.y, c.p1.y, c.p2.y, c.p3.y);
    const auto count = static_cast<std::size_t>(m_sampleCount);
    for (std::size_t k = 0; k < count; ++k) m_u[k] = Corrected(x, y, m_x[k], m_y[k], m_u[k]);
}

/// Whether the points between the samples are followed as well.
bool RunFitter::FollowsAll(int first, int last, const Cubic& c, double limit) const {
    if (m_stride == 1) return true;
    const Powers x(c.p0.x, c.p1.x, c.p2.x, c.p3.x);
    const Powers y(c.p0.y, c.p1.y, c.p2.y, c.p3.y);
    double before = 0;
    int i = first + 1;
    for (int k = 0; k <= m_sampleCount; ++k) {
        const int sample = k < m_sampleCount ? first + (m_stride + 1) / 2 + k * m_stride : last;
        const double at = k < m_sampleCount ? m_u[static_cast<std::size_t>(k)] : 1.0;
        const int gap = sample - i + 1;
        for (int j = 1; j < gap; ++j, ++i) {
            const Crossing p = m_points[static_cast<std::size_t>(i)];
            const double u = before + (at - before) * j / gap;
            if (SquareAt(x, y, p.x, p.y, Corrected(x, y, p.x, p.y, u)) > limit) return false;
        }
        ++i;
        before = at;
    }
    return true;
}

/// The squared distance allowed to a piece of this length. Along a long piece some stair or some grey
/// is always as far off as can be; along a short one a point that far off is more likely shape.
double RunFitter::LimitFor(double length) const {
    const double part = std::clamp((length / m_tuning.unit - 8) / 24, 0.0, 1.0);
    const double limit = m_tuning.shortCurve + part * (m_tuning.longCurve - m_tuning.shortCurve);
    return limit * limit;
}

bool RunFitter::FitPiece(int first, int last, const End& start, const End& finish, Cubic& c) {
    c = {start.point, start.point, finish.point, finish.point};
    if (last == first + 1 && !start.tangent && !finish.tangent) return true;
    if (last - first < 3) {
        const Crossing third = Times(Minus(c.p3, c.p0), 1.0 / 3);
        c.p1 = Plus(c.p0, start.tangent ? Times(*start.tangent, Length(third)) : third);
        c.p2 = Plus(c.p3, finish.tangent ? Times(*finish.tangent, -Length(third)) : Times(third, -1));
        return true;
    }
    TakeSamples(first, last);
    const double length =
        m_length[static_cast<std::size_t>(last)] - m_length[static_cast<std::size_t>(first)];
    const double limit = LimitFor(length);
    double before = 16 * limit;
    for (int pass = 0; pass <= corrections; ++pass) {
        if (!Solve(length, start, finish, c)) return false;
        const double worst = WorstSquare(c);
        if (worst <= limit) return FollowsAll(first, last, c, limit);
        // A correction that gained less than this will not get there in the passes that are left.
        if (worst > 0.9 * before) return false;
        before = worst;
        CorrectParameters(c);
    }
    return false;
}

/// The place and direction of the curve at point i: the parabola nearest to the points around, as many
/// on one side as on the other and no more than go round a gentle bend.
RunFitter::End RunFitter::JointAt(int i) const {
    const int n = static_cast<int>(m_points.size());
    const auto point = [&](int k) {
        if (m_loop) k = k < 0 ? k + n - 1 : k >= n ? k - (n - 1) : k;
        return m_points[static_cast<std::size_t>(k)];
    };
    const Crossing here = point(i);
    int reach = m_loop ? std::min(m_tuning.window, (n - 1) / 4) : std::min({m_tuning.window, i, n - 1 - i});
    for (; reach > 2; reach -= 2) {
        const Crossing back = Minus(here, point(i - reach));
        const Crossing forward = Minus(point(i + reach), here);
        if (Dot(back, forward) > 0.8 * Length(back) * Length(forward)) break;
    }
    Crossing along = Minus(point(i + reach), point(i - reach));
    const double length = Length(along);
    if (length == 0) return {here, Crossing{1, 0}};
    along = Times(along, 1 / length);
    if (reach < 3) return {here, along};
    double count = 0, u1 = 0, u2 = 0, u3 = 0, u4 = 0, v0 = 0, v1 = 0, v2 = 0;
    for (int k = -reach; k <= reach; ++k) {
        const Crossing d = Minus(point(i + k), here);
        const double u = Dot(d, along);
        const double v = along.x * d.y - along.y * d.x;
        count += 1;
        u1 += u;
        u2 += u * u;
        u3 += u * u * u;
        u4 += u * u * u * u;
        v0 += v;
        v1 += u * v;
        v2 += u * u * v;
    }
    // Cramer's rule for v = a + b u + c u².
    const double m0 = u2 * u4 - u3 * u3;
    const double m1 = u1 * u4 - u2 * u3;
    const double m2 = u1 * u3 - u2 * u2;
    const double det = count * m0 - u1 * m1 + u2 * m2;
    if (!(std::fabs(det) > 1e-9)) return {here, along};
    const double a = (v0 * m0 - v1 * m1 + v2 * m2) / det;
    const double b = (count * (v1 * u4 - v2 * u3) - v0 * m1 + u2 * (u1 * v2 - u2 * v1)) / det;
    const Crossing normal{-along.y, along.x};
    const Crossing tangent = Plus(along, Times(normal, b));
    return {Plus(here, Times(normal, a)), Times(tangent, 1 / Length(tangent))};
}

/// The last point of the longest piece from `first`, with its cubic.
int RunFitter::LongestPiece(int first, int guess, const End& start, const End& finish, Cubic& piece) {
    const int end = static_cast<int>(m_points.size()) - 1;
    const int farthest = m_loop ? std::min(end, first + std::max(2, end * 5 / 8)) : end;
    const auto fits = [&](int last, Cubic& c) {
        return FitPiece(first, last, start, last < end ? JointAt(last) : finish, c);
    };
    int good = std::min(first + 2, farthest);
    fits(good, piece);
    int step = std::max(4, guess);
    int bad = farthest + 1;
    Cubic trial;
    while (good < farthest) {
        const int last = std::min(first + step, farthest);
        if (!fits(last, trial)) {
            bad = last;
            break;
        }
        good = last;
        piece = trial;
        step *= 2;
    }
    while (bad - good > 1 + (good - first) / 16) {
        const int middle = good + (bad - good) / 2;
        if (fits(middle, trial)) {
            good = middle;
            piece = trial;
        } else {
            bad = middle;
        }
    }
    return good;
}

void RunFitter::Fit(const Run& run, std::vector<Cubic>& out) {
    m_points = run.points;
    m_loop = run.loop;
    const int end = static_cast<int>(m_points.size()) - 1;
    m_length.resize(m_points.size());
    m_length[0] = 0;
    for (std::size_t i = 1; i < m_points.size(); ++i)
        m_length[i] = m_length[i - 1] + Length(Minus(m_points[i], m_points[i - 1]));

    End start = m_loop ? JointAt(0) : End{m_points.front(), {}};
    const End finish = m_loop ? start : End{m_points.back(), {}};
    Cubic piece;
    int guess = std::min(end, 24);
    for (int first = 0; first < end;) {
        const int last = LongestPiece(first, guess, start, finish, piece);
        out.push_back(piece);
        guess = last - first;
        if (last < end) start = JointAt(last);
        first = last;
    }
}

}  // namespace tarvex::contours
