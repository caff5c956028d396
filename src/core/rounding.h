// The one way from doubles to integers, 32 and 64 bits wide: saturating, so that no coordinate, however far
// away, and no NaN makes the conversion undefined.
#pragma once

#include <cmath>
#include <cstdint>
#include <limits>

namespace tarvex {

/// `v` truncated towards zero; beyond the range of `Integer` its nearest end; NaN gives 0.
template <class Integer>
Integer Saturating(double v) {
    using Limits = std::numeric_limits<Integer>;
    static_assert(Limits::is_signed);
    constexpr auto lowest = static_cast<double>(Limits::min());  // a power of two: exact
    if (!(v > lowest)) return v < 0 ? Limits::min() : 0;
    if (v >= -lowest) return Limits::max();
    return static_cast<Integer>(v);
}

inline int SaturatingInt(double v) { return Saturating<int>(v); }

/// The nearest integer, halves upwards (floor(v + 0.5)), saturating; NaN gives 0.
inline int RoundToInt(double v) { return SaturatingInt(std::floor(v + 0.5)); }

/// The same in 64 bits.
inline std::int64_t RoundToInt64(double v) { return Saturating<std::int64_t>(std::floor(v + 0.5)); }

}  // namespace tarvex
