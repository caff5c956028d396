// The passes over the points of a range that curve fitting consists of.
//
// Coordinates stand in arrays of their own, so that a pass handles two points at a time. Everything is
// computed relative to the first point of the range, so that nothing is lost far from the origin.
// Passes that do little each are faster than fewer that do much: the processor overlaps the steps
// of a short chain of operations, not of a long one.
#pragma once

#include <algorithm>

#include "bezier/chords.h"
#include "bezier/vector.h"
#include "core/lanes.h"

namespace tarvex {

/// A candidate segment less its first point, as a polynomial: B(u) - p0 = ((a u + b) u + c) u.
struct OffsetCubic {
    DPOINT a, b, c;

    /// From the handles p1 - p0 and p2 - p3 and the chord p3 - p0.
    static OffsetCubic FromHandles(DPOINT startHandle, DPOINT endHandle, DPOINT chord) {
        const DPOINT p2 = Plus(chord, endHandle);
        const DPOINT c = Times(startHandle, 3);
        const DPOINT b = Minus(Times(Minus(p2, startHandle), 3), c);
        return {Minus(Minus(chord, c), b), b, c};
    }
};

/// The points of a range: `count` of them from `x` and `y`, their parameters from `u`.
struct RangeView {
    const double* x;
    const double* y;
    double* u;
    std::size_t count;

    DPOINT Point(std::size_t i) const { return {x[i], y[i]}; }
    DPOINT Chord() const { return Minus(Point(count - 1), Point(0)); }
};

/// What the least-squares equations are made of. With g1 = u(1-u)², g2 = u²(1-u), and r the point less
/// the curve without handles at its parameter.
struct LeastSquaresSums {
    double g11, g12, g22;  // sums of g1 g1, g1 g2, g2 g2
    DPOINT r1, r2;         // sums of g1 r, g2 r
};

/// Makes parameters of distances along the polyline: divided by the last unless that counts as zero.
template <class Two = TwoLanes>
void Parameterize(const RangeView& range, const double* along) {
    const double length = along[range.count - 1];
    const double divisor = length >= GEOMETRY_EPSILON ? length : 1;
    InLanes<Two>(0, range.count, [=, u = range.u]<class V>(V, std::size_t from, std::size_t to) {
        for (std::size_t i = from; i < to; i += V::kCount) (V::Load(along + i) / V{divisor}).Store(u + i);
    });
}

template <class V>
struct RunningSums {
    V g11, g12, g22, r1x, r1y, r2x, r2y;

    void AddAll(const RangeView& range, std::size_t from, std::size_t to) {
        const V originX{range.x[0]};
        const V originY{range.y[0]};
        const V chordX{range.Chord().x};
        const V chordY{range.Chord().y};
        const V one{1.0};
        const V three{3.0};
        for (std::size_t i = from; i < to; i += V::kCount) {
            const V u = V::Load(range.u + i);
            const V v = one - u;
            const V uv = u * v;
            const V g1 = uv * v;
            const V g2 = uv * u;
            const V along = u * u * (three - (u + u));
            const V rx = (V::Load(range.x + i) - originX) - chordX * along;
            const V ry = (V::Load(range.y + i) - originY) - chordY * along;
            g11 = g11 + g1 * g1;
            g12 = g12 + g1 * g2;
            g22 = g22 + g2 * g2;
            r1x = r1x + g1 * rx;
            r1y = r1y + g1 * ry;
            r2x = r2x + g2 * rx;
            r2y = r2y + g2 * ry;
        }
    }

    RunningSums<OneLane> Lane(std::size_t i) const {
        return {{g11.Lane(i)}, {g12.Lane(i)}, {g22.Lane(i)}, {r1x.Lane(i)},
                {r1y.Lane(i)}, {r2x.Lane(i)}, {r2y.Lane(i)}};
    }
};

/// Sums over all points: those of even and of odd number apart, then together.
template <class Two = TwoLanes>
LeastSquaresSums SumUp(const RangeView& range) {
    const std::size_t pairsEnd = range.count - range.count % 2;
    RunningSums<Two> sums{};
    sums.AddAll(range, 0, pairsEnd);
    RunningSums<OneLane> even = sums.Lane(0);
    const RunningSums<OneLane> odd = sums.Lane(1);
    even.AddAll(range, pairsEnd, range.count);
    const auto total = [](OneLane a, OneLane b) { return a.value + b.value; };
    return {total(even.g11, odd.g11),
            total(even.g12, odd.g12),
            total(even.g22, odd.g22),
            {total(even.r1x, odd.r1x), total(even.r1y, odd.r1y)},
            {total(even.r2x, odd.r2x), total(even.r2y, odd.r2y)}};
}

/// Improves each parameter by one Newton step towards the point of the curve nearest to its point,
/// unless the step's denominator is below `epsilon`.
template <class Two = TwoLanes>
void Reparameterize(const RangeView& range, const OffsetCubic& q, double epsilon = GEOMETRY_EPSILON) {
    InLanes<Two>(0, range.count, [&range, &q, epsilon]<class V>(V, std::size_t from, std::size_t to) {
        const V originX{range.x[0]}, originY{range.y[0]};
        const V ax{q.a.x}, ay{q.a.y}, bx{q.b.x}, by{q.b.y}, cx{q.c.x}, cy{q.c.y};
        const V a3x{3 * q.a.x}, a3y{3 * q.a.y}, a6x{6 * q.a.x}, a6y{6 * q.a.y}, b2x{2 * q.b.x},
            b2y{2 * q.b.y};
        const V zero{epsilon};
        const double* const x = range.x;
        const double* const y = range.y;
        double* const parameters = range.u;
        for (std::size_t i = from; i < to; i += V::kCount) {
            const V u = V::Load(parameters + i);
            const V rx = ((ax * u + bx) * u + cx) * u - (V::Load(x + i) - originX);
            const V ry = ((ay * u + by) * u + cy) * u - (V::Load(y + i) - originY);
            const V firstX = (a3x * u + b2x) * u + cx;
            const V firstY = (a3y * u + b2y) * u + cy;
            const V secondX = a6x * u + b2x;
            const V secondY = a6y * u + b2y;
            const V numerator = rx * firstX + ry * firstY;
            const V denominator = (firstX * firstX + firstY * firstY) + (rx * secondX + ry * secondY);
            WhereBelow(denominator, zero, u, u - numerator / denominator).Store(parameters + i);
        }
    });
}

/// Stores the squared distances between inner points and the curve at their parameters and returns the
/// greatest, 0 when none is a number.
template <class Two = TwoLanes>
double GreatestSquaredDistance(const RangeView& range, const OffsetCubic& q, double* squaredDistances) {
    double result = 0;
    InLanes<Two>(1, range.count - 1, [&, squaredDistances]<class V>(V, std::size_t from, std::size_t to) {
        const V originX{range.x[0]}, originY{range.y[0]};
        const V ax{q.a.x}, ay{q.a.y}, bx{q.b.x}, by{q.b.y}, cx{q.c.x}, cy{q.c.y};
        const double* const x = range.x;
        const double* const y = range.y;
        const double* const parameters = range.u;
        V greatest{0.0};
        for (std::size_t i = from; i < to; i += V::kCount) {
            const V u = V::Load(parameters + i);
            const V rx = ((ax * u + bx) * u + cx) * u - (V::Load(x + i) - originX);
            const V ry = ((ay * u + by) * u + cy) * u - (V::Load(y + i) - originY);
            const V square = rx * rx + ry * ry;
            square.Store(squaredDistances + i);
            greatest = Greater(square, greatest);
        }
        for (std::size_t lane = 0; lane < V::kCount; ++lane) result = std::max(result, greatest.Lane(lane));
    });
    return result;
}

}  // namespace tarvex
