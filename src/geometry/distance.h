// The distance of two points as the plane-geometry functions round it.
#pragma once

#include <cmath>

#include "tarvex/records.h"

namespace tarvex {

inline double PointDistance(const DPOINT& a, const DPOINT& b) { return std::hypot(a.x - b.x, a.y - b.y); }

}  // namespace tarvex
