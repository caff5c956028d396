// One or four floats at a time.
//
// Loops over rows are written once for a type of lanes and run with four floats in an SSE2 register where
// there is one, with one float for the rest. Each lane is computed as plain float arithmetic computes it, so
// the answers are the same bits everywhere.
#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>

#if defined(__SSE2__) || defined(_M_X64)
#define TARVEX_SSE2_FLOATS
#include <emmintrin.h>
#endif

namespace tarvex {

/// A single float, with the operations of the wider lanes.
struct OneFloat {
    static constexpr std::size_t kCount = 1;
    using Mask = bool;

    OneFloat(float v) : value(v) {}
    static OneFloat Load(const float* from) { return *from; }
    void Store(float* to) const { *to = value; }
    /// The whole part of a value from 0 to 65535.
    void StoreWhole(std::uint16_t* to) const { *to = static_cast<std::uint16_t>(value); }

    friend OneFloat operator+(OneFloat a, OneFloat b) { return a.value + b.value; }
    friend OneFloat operator-(OneFloat a, OneFloat b) { return a.value - b.value; }
    friend OneFloat operator*(OneFloat a, OneFloat b) { return a.value * b.value; }
    friend OneFloat operator/(OneFloat a, OneFloat b) { return a.value / b.value; }
    friend OneFloat SquareRoot(OneFloat a) { return std::sqrt(a.value); }
    friend OneFloat Magnitude(OneFloat a) { return std::fabs(a.value); }
    friend OneFloat Lesser(OneFloat a, OneFloat b) { return a.value < b.value ? a : b; }
    friend OneFloat Greater(OneFloat a, OneFloat b) { return a.value > b.value ? a : b; }
    friend Mask operator>(OneFloat a, OneFloat b) { return a.value > b.value; }
    friend Mask operator>=(OneFloat a, OneFloat b) { return a.value >= b.value; }
    static Mask Both(Mask a, Mask b) { return a && b; }
    static Mask Either(Mask a, Mask b) { return a || b; }
    /// The value where the mask is set, 0 elsewhere.
    static OneFloat Only(Mask mask, OneFloat a) { return mask ? a.value : 0.0F; }
    static OneFloat Choose(Mask mask, OneFloat a, OneFloat b) { return mask ? a : b; }

    float value;
};

#ifdef TARVEX_SSE2_FLOATS

struct FourFloats {
    static constexpr std::size_t kCount = 4;
    using Mask = __m128;

    FourFloats(__m128 v) : value(v) {}
    FourFloats(float all) : value(_mm_set1_ps(all)) {}
    static FourFloats Load(const float* from) { return _mm_loadu_ps(from); }
    void Store(float* to) const { _mm_storeu_ps(to, value); }
    void StoreWhole(std::uint16_t* to) const {
        // There is no packing to unsigned words; so about their middle, as signed ones.
        const __m128i middle = _mm_sub_epi32(_mm_cvttps_epi32(value), _mm_set1_epi32(0x8000));
        const __m128i words = _mm_xor_si128(_mm_packs_epi32(middle, middle), _mm_set1_epi16(-0x8000));
        _mm_storel_epi64(reinterpret_cast<__m128i*>(to), words);
    }

    friend FourFloats operator+(FourFloats a, FourFloats b) { return _mm_add_ps(a.value, b.value); }
    friend FourFloats operator-(FourFloats a, FourFloats b) { return _mm_sub_ps(a.value, b.value); }
    friend FourFloats operator*(FourFloats a, FourFloats b) { return _mm_mul_ps(a.value, b.value); }
    friend FourFloats operator/(FourFloats a, FourFloats b) { return _mm_div_ps(a.value, b.value); }
    friend FourFloats SquareRoot(FourFloats a) { return _mm_sqrt_ps(a.value); }
    friend FourFloats Magnitude(FourFloats a) { return _mm_andnot_ps(_mm_set1_ps(-0.0F), a.value); }
    friend FourFloats Lesser(FourFloats a, FourFloats b) { return _mm_min_ps(a.value, b.value); }
    friend FourFloats Greater(FourFloats a, FourFloats b) { return _mm_max_ps(a.value, b.value); }
    friend Mask operator>(FourFloats a, FourFloats b) { return _mm_cmpgt_ps(a.value, b.value); }
    friend Mask operator>=(FourFloats a, FourFloats b) { return _mm_cmpge_ps(a.value, b.value); }
    static Mask Both(Mask a, Mask b) { return _mm_and_ps(a, b); }
    static Mask Either(Mask a, Mask b) { return _mm_or_ps(a, b); }
    static FourFloats Only(Mask mask, FourFloats a) { return _mm_and_ps(mask, a.value); }
    static FourFloats Choose(Mask mask, FourFloats a, FourFloats b) {
        return _mm_or_ps(_mm_and_ps(mask, a.value), _mm_andnot_ps(mask, b.value));
    }

    __m128 value;
};

using WideFloats = FourFloats;

#else

using WideFloats = OneFloat;

#endif

/// Calls `work` with a value of a type of lanes and the first index, for all of `from` to `to`.
template <class Work>
void ForLanes(std::size_t from, std::size_t to, Work work) {
    std::size_t i = from;
    for (; i + WideFloats::kCount <= to; i += WideFloats::kCount) work(WideFloats(0.0F), i);
    for (; i < to; ++i) work(OneFloat(0.0F), i);
}

}  // namespace tarvex
