// Fitting runs of points whose end tangents the caller knows.
#pragma once

#include <span>
#include <vector>

#include "tarvex/bezier.h"

namespace tarvex {

/// Fits the run `points` as FitCurve does, with end tangents given by the caller (unit vectors: leaving
/// the first point; leaving the last point backwards), appending the segments to `out`. Fewer than two
/// points append nothing.
void FitRun(std::span<const DPOINT> points, DPOINT startTangent, DPOINT endTangent, double error,
            std::vector<BEZIER>& out);

/// The vector divided by its length; as it is when it is shorter than GEOMETRY_EPSILON.
DPOINT Normalized(DPOINT v);

}  // namespace tarvex
