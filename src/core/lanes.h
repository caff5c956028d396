// One or two doubles at a time.
//
// Loops over coordinates are written once for a type of lanes and run with two doubles in an SSE2
// register where there is one, with one double for an odd rest. Each lane is computed as plain double
// arithmetic computes it, so the answers are the same bits everywhere.
#pragma once

#include <cmath>
#include <cstddef>

#if defined(__SSE2__) || defined(_M_X64)
#define TARVEX_SSE2_LANES
#include <emmintrin.h>
#endif

namespace tarvex {

/// A single double, with the operations of the wider lanes.
struct OneLane {
    static constexpr std::size_t kCount = 1;

    static OneLane Load(const double* from) { return {*from}; }
    void Store(double* to) const { *to = value; }
    double Lane(std::size_t) const { return value; }

    friend OneLane operator+(OneLane a, OneLane b) { return {a.value + b.value}; }
    friend OneLane operator-(OneLane a, OneLane b) { return {a.value - b.value}; }
    friend OneLane operator*(OneLane a, OneLane b) { return {a.value * b.value}; }
    friend OneLane operator/(OneLane a, OneLane b) { return {a.value / b.value}; }
    friend OneLane SquareRoot(OneLane a) { return {std::sqrt(a.value)}; }
    /// The greater; `b` when one is NaN.
    friend OneLane Greater(OneLane a, OneLane b) { return a.value > b.value ? a : b; }
    /// The lesser; `b` when one is NaN.
    friend OneLane Lesser(OneLane a, OneLane b) { return a.value < b.value ? a : b; }
    /// `a` where |v| < bound, elsewhere (NaN included) `b`.
    friend OneLane WhereBelow(OneLane v, OneLane bound, OneLane a, OneLane b) {
        return std::fabs(v.value) < bound.value ? a : b;
    }

    double value;
};

/// Two doubles without the processor's help.
struct PlainLanes {
    static constexpr std::size_t kCount = 2;

    PlainLanes() = default;
    PlainLanes(double both) : low(both), high(both) {}
    PlainLanes(double first, double second) : low(first), high(second) {}
    static PlainLanes Load(const double* from) { return {from[0], from[1]}; }
    static PlainLanes Of(double first, double second) { return {first, second}; }
    void Store(double* to) const {
        to[0] = low;
        to[1] = high;
    }
    double Lane(std::size_t i) const { return i == 0 ? low : high; }

    friend PlainLanes operator+(PlainLanes a, PlainLanes b) { return {a.low + b.low, a.high + b.high}; }
    friend PlainLanes operator-(PlainLanes a, PlainLanes b) { return {a.low - b.low, a.high - b.high}; }
    friend PlainLanes operator*(PlainLanes a, PlainLanes b) { return {a.low * b.low, a.high * b.high}; }
    friend PlainLanes operator/(PlainLanes a, PlainLanes b) { return {a.low / b.low, a.high / b.high}; }
    friend PlainLanes SquareRoot(PlainLanes a) { return {std::sqrt(a.low), std::sqrt(a.high)}; }
    friend PlainLanes Greater(PlainLanes a, PlainLanes b) {
        return {a.low > b.low ? a.low : b.low, a.high > b.high ? a.high : b.high};
    }
    friend PlainLanes Lesser(PlainLanes a, PlainLanes b) {
        return {a.low < b.low ? a.low : b.low, a.high < b.high ? a.high : b.high};
    }
    /// Bit i for lane i: whether it is below 0.
    friend unsigned Negatives(PlainLanes a) { return (a.low < 0 ? 1U : 0U) | (a.high < 0 ? 2U : 0U); }
    friend PlainLanes WhereBelow(PlainLanes v, PlainLanes bound, PlainLanes a, PlainLanes b) {
        return {std::fabs(v.low) < bound.low ? a.low : b.low,
                std::fabs(v.high) < bound.high ? a.high : b.high};
    }

    double low = 0;
    double high = 0;
};

#if defined(TARVEX_SSE2_LANES)

/// Two doubles in a register.
struct Sse2Lanes {
    static constexpr std::size_t kCount = 2;

    Sse2Lanes() : both(_mm_setzero_pd()) {}
    Sse2Lanes(__m128d lanes) : both(lanes) {}
    Sse2Lanes(double value) : both(_mm_set1_pd(value)) {}
    static Sse2Lanes Load(const double* from) { return _mm_loadu_pd(from); }
    static Sse2Lanes Of(double first, double second) { return _mm_set_pd(second, first); }
    void Store(double* to) const { _mm_storeu_pd(to, both); }
    double Lane(std::size_t i) const { return _mm_cvtsd_f64(i == 0 ? both : _mm_unpackhi_pd(both, both)); }

    friend Sse2Lanes operator+(Sse2Lanes a, Sse2Lanes b) { return _mm_add_pd(a.both, b.both); }
    friend Sse2Lanes operator-(Sse2Lanes a, Sse2Lanes b) { return _mm_sub_pd(a.both, b.both); }
    friend Sse2Lanes operator*(Sse2Lanes a, Sse2Lanes b) { return _mm_mul_pd(a.both, b.both); }
    friend Sse2Lanes operator/(Sse2Lanes a, Sse2Lanes b) { return _mm_div_pd(a.both, b.both); }
    friend Sse2Lanes SquareRoot(Sse2Lanes a) { return _mm_sqrt_pd(a.both); }
    friend Sse2Lanes Greater(Sse2Lanes a, Sse2Lanes b) { return _mm_max_pd(a.both, b.both); }
    friend Sse2Lanes Lesser(Sse2Lanes a, Sse2Lanes b) { return _mm_min_pd(a.both, b.both); }
    friend unsigned Negatives(Sse2Lanes a) {
        return static_cast<unsigned>(_mm_movemask_pd(_mm_cmplt_pd(a.both, _mm_setzero_pd())));
    }
    friend Sse2Lanes WhereBelow(Sse2Lanes v, Sse2Lanes bound, Sse2Lanes a, Sse2Lanes b) {
        const __m128d below = _mm_cmplt_pd(_mm_andnot_pd(_mm_set1_pd(-0.0), v.both), bound.both);
        return _mm_or_pd(_mm_and_pd(below, a.both), _mm_andnot_pd(below, b.both));
    }

    __m128d both;
};

using TwoLanes = Sse2Lanes;
#else
using TwoLanes = PlainLanes;
#endif

/// Two of the lanes side by side: two chains of operations that do not wait for one another.
template <class Lanes>
struct Doubled {
    static constexpr std::size_t kCount = 2 * Lanes::kCount;

    Doubled() = default;
    Doubled(double all) : low(all), high(all) {}
    Doubled(Lanes first, Lanes second) : low(first), high(second) {}
    static Doubled Load(const double* from) { return {Lanes::Load(from), Lanes::Load(from + Lanes::kCount)}; }
    void Store(double* to) const {
        low.Store(to);
        high.Store(to + Lanes::kCount);
    }
    double Lane(std::size_t i) const {
        return i < Lanes::kCount ? low.Lane(i) : high.Lane(i - Lanes::kCount);
    }

    friend Doubled operator+(Doubled a, Doubled b) { return {a.low + b.low, a.high + b.high}; }
    friend Doubled operator-(Doubled a, Doubled b) { return {a.low - b.low, a.high - b.high}; }
    friend Doubled operator*(Doubled a, Doubled b) { return {a.low * b.low, a.high * b.high}; }
    friend Doubled operator/(Doubled a, Doubled b) { return {a.low / b.low, a.high / b.high}; }
    friend Doubled SquareRoot(Doubled a) { return {SquareRoot(a.low), SquareRoot(a.high)}; }
    friend Doubled Greater(Doubled a, Doubled b) { return {Greater(a.low, b.low), Greater(a.high, b.high)}; }
    friend Doubled WhereBelow(Doubled v, Doubled bound, Doubled a, Doubled b) {
        return {WhereBelow(v.low, bound.low, a.low, b.low), WhereBelow(v.high, bound.high, a.high, b.high)};
    }

    Lanes low;
    Lanes high;
};

/// Runs `pass(lanes tag, from, to)` over [from, to): four elements at a time, then two, then one.
template <class Two = TwoLanes, class Pass>
void InLanes(std::size_t from, std::size_t to, Pass&& pass) {
    if (from >= to) return;
    const std::size_t single = to - (to - from) % 2;
    const std::size_t pair = to - (to - from) % 4;
    if (from < pair) pass(Doubled<Two>{}, from, pair);
    if (pair < single) pass(Two{}, pair, single);
    if (single < to) pass(OneLane{}, single, to);
}

}  // namespace tarvex
