// Evaluating one cubic at many parameters: the same bits as CBezier::GetCurvePoint, two at a time.
#pragma once

#include <cstddef>

#include "tarvex/bezier.h"

namespace tarvex {

/// Stores the coordinates of `curve` at `count` parameters, which increase from at least 0 to at most 1.
void SampleCurve(const CBezier& curve, const double* t, std::size_t count, double* x, double* y);

/// The squared distances of those points from `p`.
void SquaredDistances(const CBezier& curve, const DPOINT& p, const double* t, std::size_t count,
                      double* squares);

/// The number of chords that `CBezier::GetLength` and `CBezier::GetPolylineEx` settle on.
int SettledChordCount(const CBezier& curve);

}  // namespace tarvex
