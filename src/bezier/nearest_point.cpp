// The exact nearest point on a cubic.
//
// At the point of the curve nearest to P, unless it is an end, the vector from P to the curve is
// perpendicular to the tangent: f(t) = (B(t) - P)·B'(t) = 0. f is the product of a cubic and a quadratic,
// so it has degree five, and its Bezier coefficients follow from the products of the coefficients
// of the factors: with c_j = p_j - P and d_i = 3 (p_{i+1} - p_i),
//
//     w_k = sum over i + j = k of  C(2,i) C(3,j) / C(5,k) · d_i·c_j,     k = 0 .. 5.
//
// Drawn over t = k/5 these coefficients are a control polygon whose curve is the graph of f. A
// Bezier curve crosses the axis at most as often as its polygon does, so a piece whose polygon does not
// change sign holds no root, and one that changes it once holds exactly one. Halving by de Casteljau's
// construction separates the roots; a piece with one change ends when it is flat (all its polygon in a
// band around the line between its ends that crosses the axis within the tolerance), with the
// crossing of that line for a root. Halving never adds sign changes, in rounded arithmetic neither: the
// rounded midpoint of two numbers of one sign has that sign. So no level has more than five pieces to
// look at, however ill the coefficients are, and the depth limit bounds the work.
//
// Published by P. J. Schneider, "Solving the Nearest-Point-on-Curve Problem", Graphics Gems, 1990.
// Here the depth limit also ends pieces with several sign changes (multiple roots), in their middle.
//
// A vertex of the polygon is worked on as two lanes of one register, which halves the operations; what is
// computed is the same.
#include <algorithm>
#include <array>
#include <bit>

#include "bezier/vector.h"
#include "core/lanes.h"
#include "tarvex/bezier.h"

namespace tarvex {
namespace {

constexpr int kDegree = 5;
constexpr int kMaxDepth = 64;
constexpr double kFlatness = 0x1p-65;  // 2 to the power -(kMaxDepth + 1)

/// The control polygon of f over a part of [0, 1]: in each vertex first the parameter x, then f's y.
struct Polygon {
    double X(std::size_t k) const { return vertices[k].Lane(0); }
    double Y(std::size_t k) const { return vertices[k].Lane(1); }

    std::array<TwoLanes, kDegree + 1> vertices;
};

Polygon PerpendicularityPolygon(const CBezier& curve, DPOINT p) {
    // C(2,i) C(3,j) / C(5,i+j)
    static constexpr double kProductWeights[3][4] = {
        {1.0, 0.6, 0.3, 0.1}, {0.4, 0.6, 0.6, 0.4}, {0.1, 0.3, 0.6, 1.0}};
    const std::array<DPOINT, 4> c{Minus(curve.p0, p), Minus(curve.p1, p), Minus(curve.p2, p),
                                  Minus(curve.p3, p)};
    const std::array<DPOINT, 3> d{Times(Minus(curve.p1, curve.p0), 3), Times(Minus(curve.p2, curve.p1), 3),
                                  Times(Minus(curve.p3, curve.p2), 3)};
    std::array<double, kDegree + 1> y{};
    for (std::size_t i = 0; i < d.size(); ++i) {
        for (std::size_t j = 0; j < c.size(); ++j) y[i + j] += Dot(d[i], c[j]) * kProductWeights[i][j];
    }
    Polygon w;
    for (std::size_t k = 0; k < y.size(); ++k)
        w.vertices[k] = TwoLanes::Of(static_cast<double>(k) / kDegree, y[k]);
    return w;
}

int SignChanges(const Polygon& w) {
    unsigned below = 0;
    for (std::size_t k = 0; k <= kDegree; ++k) below |= (Negatives(w.vertices[k]) >> 1) << k;
    return std::popcount((below ^ (below >> 1)) & ((1U << kDegree) - 1));
}

/// Whether the band around the line between the ends that holds the polygon crosses the axis within
/// the tolerance. The line is a x + b y + c = 0; the ends lie on different sides of the axis.
bool IsFlat(const Polygon& w) {
    const double a = w.Y(0) - w.Y(kDegree);
    const double b = w.X(kDegree) - w.X(0);
    const double c = w.X(0) * w.Y(kDegree) - w.X(kDegree) * w.Y(0);
    const auto offLine = [&](std::size_t k) { return a * w.X(k) + b * w.Y(k) + c; };
    // Most bands are wider by far than roundings and tolerance together: one vertex shows it, and no
    // division.
    const double middle = std::fabs(offLine(2));
    if (middle > 0x1p-39 * std::fabs(c) && middle > 0x1p-60 * std::fabs(a)) return false;
    double above = 0;
    double below = 0;
    for (std::size_t k = 1; k < kDegree; ++k) {
        const double value = offLine(k);
        if (value > above) above = value;
        if (value < below) below = value;
    }
    return std::fabs((above - c) / a - (below - c) / a) < kFlatness;
}

/// Where the line between the ends crosses the axis: on the curve, also where the smallest numbers there are
/// leave the quotient no digits.
double AxisCrossing(const Polygon& w) {
    return std::clamp(w.X(0) - w.Y(0) * (w.X(kDegree) - w.X(0)) / (w.Y(kDegree) - w.Y(0)), 0.0, 1.0);
}

/// Halves the polygon: it becomes its left half, the right half is returned.
inline Polygon SplitOffRight(Polygon& w) {
    Polygon right;
    for (std::size_t level = 0; level <= kDegree; ++level) {
        right.vertices[kDegree - level] = w.vertices[kDegree];
        for (std::size_t k = kDegree; k > level; --k)
            w.vertices[k] = (w.vertices[k - 1] + w.vertices[k]) * TwoLanes(0.5);
    }
    return right;
}

/// Calls `visit` with the roots of f in increasing order. Uses up the polygon.
template <class Visit>
void ForEachRoot(Polygon& w, int depth, Visit&& visit) {
    const int changes = SignChanges(w);
    if (changes == 0) return;
    if (depth >= kMaxDepth) {
        visit((w.X(0) + w.X(kDegree)) / 2);
    } else if (changes == 1 && IsFlat(w)) {
        visit(AxisCrossing(w));
    } else {
        Polygon right = SplitOffRight(w);
        ForEachRoot(w, depth + 1, visit);
        ForEachRoot(right, depth + 1, visit);
    }
}

}  // namespace

double CBezier::GetNearestCurvePointT(const DPOINT& p) const {
    double best = 0;
    double bestSquare = SquaredDistance(p0, p);
    const auto consider = [&](double t) {
        const double square = SquaredDistance(GetCurvePoint(t), p);
        if (square < bestSquare) {
            bestSquare = square;
            best = t;
        }
    };
    Polygon polygon = PerpendicularityPolygon(*this, p);
    ForEachRoot(polygon, 0, consider);
    consider(1);
    return best;
}

}  // namespace tarvex
