// The ellipse through five points, or nearest to more.
//
// A conic is the set A x^2 + B xy + C y^2 + D x + E y + F = 0. Each point is one linear equation in the six
// coefficients, and the points are first moved and scaled to lie around the origin at a mean distance near
// 1: without that the squares and the constant differ by the fourth power of the drawing's size, and the
// equations lose all their digits.
//
// Five points: five equations leave one solution up to a factor, found by elimination with full pivoting.
// When a pivot vanishes, points repeat or are so collinear that many conics pass through them. The conic
// may turn out to be no ellipse, which the caller is told.
//
// More points: least squares of the equations' left sides needs a norm, since all zeros would be best.
// Fitzgibbon, Pilu and Fisher ("Direct least square fitting of ellipses", 1999) fix 4 A C - B^2 = 1, which
// both normalises and admits only ellipses. With (A, B, C) = a, the constraint's matrix K and the scatter
// matrix in four blocks, the linear part (D, E, F) = T a follows from a (Halir and Flusser, "Numerically
// stable direct least squares fitting of ellipses", 1998), and a solves S a = lambda K a with S the reduced
// 3 x 3 scatter. S is positive semidefinite and K has one positive eigenvalue, so there is exactly one
// positive lambda: the ellipse. Exact data make S singular, where eigenvalues of K^-1 S are ill determined;
// so the pencil is taken the other way round, K a = mu S a for the largest mu, made symmetric by a
// Cholesky factor of S with a ridge of rounding size, and solved by Jacobi's rotations.
#include <algorithm>
#include <array>
#include <cmath>
#include <optional>
#include <utility>

#include "geometry/ellipse_axes.h"
#include "tarvex/ellipse.h"

namespace tarvex {

namespace {

using Vector3 = std::array<double, 3>;
using Matrix3 = std::array<Vector3, 3>;
using Conic = std::array<double, 6>;

constexpr double SMALLEST_PIVOT = 1e-12;  // of coordinates near 1
constexpr double RIDGE = 1e-15;           // relative to the trace of S
constexpr double THINNEST = 1e-10;        // ratio of squared radii

Conic EquationOf(DPOINT p) { return {p.x * p.x, p.x * p.y, p.y * p.y, p.x, p.y, 1}; }

struct Frame {
    DPOINT centre;
    double scale = 0;  // the points' mean distance from the centre

    DPOINT Normalised(DPOINT p) const { return {(p.x - centre.x) / scale, (p.y - centre.y) / scale}; }
};

std::optional<Frame> FrameOf(std::span<const DPOINT> points) {
    const double n = static_cast<double>(points.size());
    Frame frame;
    for (const DPOINT& p : points) {
        frame.centre.x += p.x / n;
        frame.centre.y += p.y / n;
    }
    for (const DPOINT& p : points) frame.scale += std::hypot(p.x - frame.centre.x, p.y - frame.centre.y) / n;
    if (!(frame.scale > 0) || !std::isfinite(frame.scale)) return std::nullopt;
    return frame;
}

/// The one conic through five points.
std::optional<Conic> ConicThrough(std::span<const DPOINT> points, const Frame& frame) {
    std::array<Conic, 5> rows;
    for (std::size_t i = 0; i < 5; ++i) rows[i] = EquationOf(frame.Normalised(points[i]));
    std::array<std::size_t, 6> order{0, 1, 2, 3, 4, 5};  // of the columns
    for (std::size_t k = 0; k < 5; ++k) {
        std::size_t row = k;
        std::size_t column = k;
        for (std::size_t i = k; i < 5; ++i) {
            for (std::size_t j = k; j < 6; ++j) {
                if (std::fabs(rows[i][order[j]]) > std::fabs(rows[row][order[column]])) {
                    row = i;
                    column = j;
                }
            }
        }
        std::swap(rows[k], rows[row]);
        std::swap(order[k], order[column]);
        const double pivot = rows[k][order[k]];
        if (!(std::fabs(pivot) > SMALLEST_PIVOT)) return std::nullopt;
        for (std::size_t i = 0; i < 5; ++i) {
            if (i == k) continue;
            const double factor = rows[i][order[k]] / pivot;
            for (std::size_t j = k; j < 6; ++j) rows[i][order[j]] -= factor * rows[k][order[j]];
        }
    }
    Conic conic{};
    conic[order[5]] = 1;
    for (std::size_t k = 0; k < 5; ++k) conic[order[k]] = -rows[k][order[5]] / rows[k][order[k]];
    return conic;
}

/// The lower Cholesky factor of a symmetric matrix; nothing unless it is positive definite.
std::optional<Matrix3> Cholesky(const Matrix3& m) {
    Matrix3 l{};
    for (std::size_t i = 0; i < 3; ++i) {
        for (std::size_t j = 0; j <= i; ++j) {
            double sum = m[i][j];
            for (std::size_t k = 0; k < j; ++k) sum -= l[i][k] * l[j][k];
            if (i != j) {
                l[i][j] = sum / l[j][j];
            } else if (sum > 0) {
                l[i][i] = std::sqrt(sum);
            } else {
                return std::nullopt;
            }
        }
    }
    return l;
}

Vector3 SolveLower(const Matrix3& l, Vector3 v) {
    for (std::size_t i = 0; i < 3; ++i) {
        for (std::size_t k = 0; k < i; ++k) v[i] -= l[i][k] * v[k];
        v[i] /= l[i][i];
    }
    return v;
}

/// Solves with the transpose of a lower factor.
Vector3 SolveUpper(const Matrix3& l, Vector3 v) {
    for (std::size_t i = 3; i-- > 0;) {
        for (std::size_t k = i + 1; k < 3; ++k) v[i] -= l[k][i] * v[k];
        v[i] /= l[i][i];
    }
    return v;
}

/// The eigenvector of a symmetric matrix's largest eigenvalue, by Jacobi's rotations.
Vector3 LargestEigenvector(Matrix3 m) {
    Matrix3 axes{{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}};  // by rows
    for (int sweep = 0; sweep < 30; ++sweep) {
        for (std::size_t p = 0; p < 2; ++p) {
            for (std::size_t q = p + 1; q < 3; ++q) {
                if (m[p][q] == 0) continue;
                const double angle = std::atan2(2 * m[p][q], m[q][q] - m[p][p]) / 2;
                const double c = std::cos(angle);
                const double s = std::sin(angle);
                for (std::size_t k = 0; k < 3; ++k) {
                    const double a = m[k][p];
                    m[k][p] = c * a - s * m[k][q];
                    m[k][q] = s * a + c * m[k][q];
                }
                for (std::size_t k = 0; k < 3; ++k) {
                    const double a = m[p][k];
                    m[p][k] = c * a - s * m[q][k];
                    m[q][k] = s * a + c * m[q][k];
                    const double b = axes[p][k];
                    axes[p][k] = c * b - s * axes[q][k];
                    axes[q][k] = s * b + c * axes[q][k];
                }
                m[p][q] = m[q][p] = 0;
            }
        }
    }
    std::size_t best = 0;
    for (std::size_t i = 1; i < 3; ++i) {
        if (m[i][i] > m[best][best]) best = i;
    }
    return axes[best];
}

/// The ellipse of least algebraic error.
std::optional<Conic> NearestConic(std::span<const DPOINT> points, const Frame& frame) {
    std::array<Conic, 6> scatter{};
    const double n = static_cast<double>(points.size());
    for (const DPOINT& p : points) {
        const Conic row = EquationOf(frame.Normalised(p));
        for (std::size_t i = 0; i < 6; ++i) {
            for (std::size_t j = 0; j < 6; ++j) scatter[i][j] += row[i] * row[j] / n;
        }
    }
    Matrix3 linear;
    for (std::size_t i = 0; i < 3; ++i) {
        for (std::size_t j = 0; j < 3; ++j) linear[i][j] = scatter[i + 3][j + 3];
    }
    const std::optional<Matrix3> factor = Cholesky(linear);
    if (!factor || !((*factor)[1][1] > 1e-7) || !((*factor)[0][0] > 1e-7)) return std::nullopt;

    Matrix3 t;  // column j: what (D, E, F) becomes for the j-th unit vector of (A, B, C)
    for (std::size_t j = 0; j < 3; ++j) {
        const Vector3 v = {-scatter[3][j], -scatter[4][j], -scatter[5][j]};
        t[j] = SolveUpper(*factor, SolveLower(*factor, v));
    }
    Matrix3 s;
    double trace = 0;
    for (std::size_t i = 0; i < 3; ++i) {
        for (std::size_t j = 0; j < 3; ++j) {
            s[i][j] = scatter[i][j];
            for (std::size_t k = 0; k < 3; ++k) s[i][j] += scatter[i][k + 3] * t[j][k];
        }
        trace += s[i][i];
    }
    for (std::size_t i = 0; i < 3; ++i) {
        for (std::size_t j = 0; j < i; ++j) s[i][j] = s[j][i] = (s[i][j] + s[j][i]) / 2;
        s[i][i] += RIDGE * std::max(trace, 1.0);
    }
    const std::optional<Matrix3> root = Cholesky(s);
    if (!root) return std::nullopt;

    const Matrix3 constraint{{{0, 0, 2}, {0, -1, 0}, {2, 0, 0}}};
    Matrix3 half;  // by rows: root^-1 times the columns of the constraint
    for (std::size_t j = 0; j < 3; ++j) half[j] = SolveLower(*root, constraint[j]);
    Matrix3 symmetric;
    for (std::size_t i = 0; i < 3; ++i) {
        symmetric[i] = SolveLower(*root, {half[0][i], half[1][i], half[2][i]});
    }
    const Vector3 a = SolveUpper(*root, LargestEigenvector(symmetric));
    Conic conic{a[0], a[1], a[2], 0, 0, 0};
    for (std::size_t k = 0; k < 3; ++k) conic[k + 3] = t[0][k] * a[0] + t[1][k] * a[1] + t[2][k] * a[2];
    return conic;
}

/// The ellipse that a conic in normalised coordinates is; nothing if it is another conic.
std::optional<CEllipse> EllipseOf(const Conic& conic, const Frame& frame) {
    const auto [a, b, c, d, e, f] = conic;
    const double mean = (a + c) / 2;
    const double spread = std::hypot((a - c) / 2, b / 2);
    const double large = std::fabs(mean) + spread;  // the eigenvalues' sizes
    const double determinant = a * c - b * b / 4;
    if (!(determinant > THINNEST * large * large)) return std::nullopt;
    const double small = determinant / large;

    const DPOINT centre{(b * e / 2 - c * d) / (2 * determinant), (b * d / 2 - a * e) / (2 * determinant)};
    const double level = -(f + (d * centre.x + e * centre.y) / 2) * (mean < 0 ? -1 : 1);
    if (!(level > 0)) return std::nullopt;
    // With both eigenvalues negative the signs of all coefficients turn over, and so does the direction.
    const double sign = mean < 0 ? -1 : 1;
    const double minorDirection = std::atan2(sign * b, sign * (a - c)) / 2;
    const CEllipse ellipse({frame.centre.x + centre.x * frame.scale, frame.centre.y + centre.y * frame.scale},
                           std::sqrt(level / small) * frame.scale, std::sqrt(level / large) * frame.scale,
                           AxisAngle(minorDirection + std::numbers::pi / 2));
    if (!ellipse.IsFinite() || !(ellipse.RadiusY() > SMALLEST_PIVOT * frame.scale)) return std::nullopt;
    return ellipse;
}

}  // namespace

bool CEllipse::FitPoints(std::span<const DPOINT> points) {
    if (points.size() < 5) return false;
    const std::optional<Frame> frame = FrameOf(points);
    if (!frame) return false;
    const std::optional<Conic> conic =
        points.size() == 5 ? ConicThrough(points, *frame) : NearestConic(points, *frame);
    if (!conic) return false;
    const std::optional<CEllipse> ellipse = EllipseOf(*conic, *frame);
    if (!ellipse) return false;
    *this = *ellipse;
    return true;
}

}  // namespace tarvex
