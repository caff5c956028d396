// The one way from doubles to integers: saturating, so that no coordinate, however far away, and no
// NaN makes the conversion undefined.
#pragma once

#include <cmath>
#include <cstdint>
#include <limits>

namespace tarvex {

/// `v` truncated towards zero; beyond the range of `int` its nearest end; NaN gives 0.
inline int SaturatingInt(double v) {
    if (!(v > static_cast<double>(std::numeric_limits<int>::min()))) {
        return v < 0 ? std::numeric_limits<int>::min() : 0;
    }
    if (v >= static_cast<double>(std::numeric_limits<int>::max())) return std::numeric_limits<int>::max();
    return static_cast<int>(v);
}

/// The nearest integer, halves upwards (floor(v + 0.5)), saturating; NaN gives 0.
inline int RoundToInt(double v) { return SaturatingInt(std::floor(v + 0.5)); }

}  // namespace tarvex
