// Evaluating one cubic at many parameters: the same bits as CBezier::GetCurvePoint, two at a time.
#pragma once

#include <array>
#include <cstddef>

#include "tarvex/bezier.h"

namespace tarvex {

/// The weights of the four points at parameter `t` inside the segment, for a double or for lanes of them.
template <class V>
struct PointWeights {
    constexpr explicit PointWeights(V t) {
        const V one{1.0}, two{2.0}, three{3.0};
        const V t2 = t * t;
        w0 = (three - t) * t2 - three * t + one;
        w1 = ((t - two) * t2 + t) * three;
        w2 = three * t2 * (one - t);
        w3 = t2 * t;
    }

    V w0, w1, w2, w3;
};

/// Stores the coordinates of `curve` at `count` parameters, which increase from at least 0 to at most 1.
void SampleCurve(const CBezier& curve, const double* t, std::size_t count, double* x, double* y);

/// The squared distances of those points from `p`.
void SquaredDistances(const CBezier& curve, const DPOINT& p, const double* t, std::size_t count,
                      double* squares);

/// Parameters of a scan and what they weigh the points with, worked out beforehand.
struct WeighedSamples {
    static constexpr std::size_t kCount = 100;

    constexpr explicit WeighedSamples(const double* parameters) {
        for (std::size_t i = 0; i < kCount; ++i) {
            t[i] = parameters[i];
            const PointWeights<double> w(t[i]);
            w0[i] = w.w0;
            w1[i] = w.w1;
            w2[i] = w.w2;
            w3[i] = w.w3;
        }
    }

    std::array<double, kCount> t{}, w0{}, w1{}, w2{}, w3{};
};

/// The squared distances at these.
void SquaredDistances(const CBezier& curve, const DPOINT& p, const WeighedSamples& samples, double* squares);

/// The number of chords that `CBezier::GetLength` and `CBezier::GetPolylineEx` settle on.
int SettledChordCount(const CBezier& curve);

}  // namespace tarvex
