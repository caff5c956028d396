// Segments and contours to try things on, and comparison of points bit for bit.
#pragma once

#include "support/contours.h"
#include "support/precompiled.h"
#include "tarvex/bezier.h"

namespace tarvex::test {

template <class List>  // or any other range of points
::testing::AssertionResult SamePoints(const List& a, const Points& b) {
    const auto size = static_cast<std::size_t>(std::distance(a.begin(), a.end()));
    if (size != b.size()) return ::testing::AssertionFailure() << size << " points against " << b.size();
    const auto [here, there] = std::mismatch(a.begin(), a.end(), b.begin(),
                                             [](const DPOINT& p, const DPOINT& q) { return SameBits(p, q); });
    if (here == a.end()) return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << "point " << there - b.begin() << ": (" << here->x << ", "
                                         << here->y << ") against (" << there->x << ", " << there->y << ")";
}

inline double PlainDistance(const DPOINT& a, const DPOINT& b) {
    const double dx = a.x - b.x;
    const double dy = a.y - b.y;
    return std::sqrt(dx * dx + dy * dy);
}

/// Segments of every kind, from a fixed seed.
class CurveSource {
  public:
    explicit CurveSource(unsigned seed) : m_random(seed) {}

    double Uniform(double low, double high) {
        return std::uniform_real_distribution<double>(low, high)(m_random);
    }
    int Integer(int low, int high) { return std::uniform_int_distribution<int>(low, high)(m_random); }
    DPOINT Point(double extent) { return {Uniform(-extent, extent), Uniform(-extent, extent)}; }

    CBezier Ordinary(double extent = 1000) {
        return {Point(extent), Point(extent), Point(extent), Point(extent)};
    }

    /// Coordinates are few and whole, so points coincide, align and tie.
    CBezier Degenerate() {
        const auto point = [&] { return DPOINT{double(Integer(0, 2)), double(Integer(0, 2))}; };
        return {point(), point(), point(), point()};
    }

    /// Some coordinates are NaN, infinite, huge, tiny or zero of either sign.
    CBezier Hostile() {
        CBezier curve = Ordinary();
        for (DPOINT* p : {&curve.p0, &curve.p1, &curve.p2, &curve.p3}) {
            for (double* v : {&p->x, &p->y}) {
                if (Integer(0, 3) == 0) *v = HostileValue();
            }
        }
        return curve;
    }

    double HostileValue() {
        static constexpr double kValues[] = {kNaN, kInfinity, -kInfinity, 1.7e308, -1.7e308, 1e200,  1e154,
                                             1e16, -1e9,      0.0,        -0.0,    1e-8,     1e-160, 5e-324};
        return kValues[Integer(0, std::size(kValues) - 1)];
    }

    CBezier Any() {
        switch (Integer(0, 4)) {
            case 0:
                return Degenerate();
            case 1:
                return Hostile();
            case 2:
                return Ordinary(1e6);
            case 3:
                return Ordinary(1e-3);
            default:
                return Ordinary();
        }
    }

  private:
    std::mt19937 m_random;
};

/// Curves and lines among points of some hundred units, closed or open; flags number the nodes.
inline Nodes RandomContour(CurveSource& source, bool isClosed) {
    const int count = source.Integer(2, 6);
    Nodes nodes;
    for (int i = 0; i < count; ++i) {
        const DPOINT at = source.Point(300);
        BPOINT node{at, at, at, static_cast<std::uint16_t>(i + 1)};
        if (source.Integer(0, 2) > 0) node.cp1 = source.Point(300);
        if (source.Integer(0, 2) > 0) node.cp2 = source.Point(300);
        nodes.Add(node);
    }
    if (isClosed) nodes.Add(nodes[0]);
    return nodes;
}

inline CBezier SegmentOfNodes(const Nodes& nodes, int i) { return {nodes[i], nodes[i + 1]}; }

}  // namespace tarvex::test
