// The divisor that is kept away from zero where a nearly vanishing one is part of ordinary use.
#pragma once

#include <cmath>

#include "tarvex/records.h"

namespace tarvex {

/// `v`, pushed out to GEOMETRY_EPSILON with its sign when it is smaller than that. Exactly 0 stays 0 and
/// NaN stays NaN: dividing by the result can still give infinities or NaN, and callers say so.
inline double GuardedDivisor(double v) {
    if (std::fabs(v) >= GEOMETRY_EPSILON || v == 0 || std::isnan(v)) return v;
    return std::copysign(GEOMETRY_EPSILON, v);
}

}  // namespace tarvex
