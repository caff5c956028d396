// Values so small that single precision gets them as exactly 0.
#pragma once

#include <cmath>

#include "tarvex/records.h"

namespace tarvex {

inline double SnapToZero(double v) { return std::fabs(v) < GEOMETRY_EPSILON ? 0.0 : v; }

inline float SnapToFloat(double v) { return static_cast<float>(SnapToZero(v)); }

}  // namespace tarvex
