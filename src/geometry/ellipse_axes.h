// The direction of an axis, which is the same half a turn further.
#pragma once

namespace tarvex {

/// `angle` turned by half turns into (-pi/2, pi/2].
double AxisAngle(double angle);

}  // namespace tarvex
