// Points as vectors: the few operations that the Bezier code writes its formulas with, and the one
// rounding of a distance.
#pragma once

#include <cmath>

#include "tarvex/records.h"

namespace tarvex {

inline DPOINT Plus(DPOINT a, DPOINT b) { return {a.x + b.x, a.y + b.y}; }
inline DPOINT Minus(DPOINT a, DPOINT b) { return {a.x - b.x, a.y - b.y}; }
inline DPOINT Times(DPOINT a, double factor) { return {a.x * factor, a.y * factor}; }
inline DPOINT Midpoint(DPOINT a, DPOINT b) { return {(a.x + b.x) / 2, (a.y + b.y) / 2}; }
inline double Dot(DPOINT a, DPOINT b) { return a.x * b.x + a.y * b.y; }
inline double SquaredLength(DPOINT a) { return Dot(a, a); }
inline double Length(DPOINT a) { return std::sqrt(Dot(a, a)); }
inline double SquaredDistance(DPOINT a, DPOINT b) { return SquaredLength(Minus(a, b)); }
inline double Distance(DPOINT a, DPOINT b) { return Length(Minus(a, b)); }

}  // namespace tarvex
