// Segments to try things on, and comparison of coordinates bit for bit.
#pragma once

#include "support/precompiled.h"
#include "tarvex/bezier.h"

namespace tarvex::testing_support {

inline constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
inline constexpr double kInfinity = std::numeric_limits<double>::infinity();

/// The same bits, or both NaN.
inline bool SameBits(double a, double b) {
    return (std::isnan(a) && std::isnan(b)) || std::memcmp(&a, &b, sizeof a) == 0;
}
inline bool SameBits(const DPOINT& a, const DPOINT& b) { return SameBits(a.x, b.x) && SameBits(a.y, b.y); }

template <class A, class B>
::testing::AssertionResult SamePoints(const A& a, const B& b, std::size_t sizeA, std::size_t sizeB) {
    if (sizeA != sizeB) return ::testing::AssertionFailure() << sizeA << " points against " << sizeB;
    for (std::size_t i = 0; i < sizeA; ++i) {
        if (SameBits(a[i], b[i])) continue;
        return ::testing::AssertionFailure() << "point " << i << ": (" << a[i].x << ", " << a[i].y
                                             << ") against (" << b[i].x << ", " << b[i].y << ")";
    }
    return ::testing::AssertionSuccess();
}

inline ::testing::AssertionResult SamePoints(const CArray<DPOINT, DPOINT>& a, const std::vector<DPOINT>& b) {
    return SamePoints(a.GetData(), b.data(), static_cast<std::size_t>(a.GetSize()), b.size());
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

}  // namespace tarvex::testing_support
