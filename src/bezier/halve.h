// A cubic in two halves, by De Casteljau's midpoints.
#pragma once

#include "bezier/vector.h"

namespace tarvex {

/// The halves are (the start, p01, p012, middle) and (middle, p123, p23, the end).
struct CubicHalves {
    DPOINT p01, p012, middle, p123, p23;
};

inline CubicHalves Halve(DPOINT p0, DPOINT p1, DPOINT p2, DPOINT p3) {
    const DPOINT p01 = Midpoint(p0, p1);
    const DPOINT p12 = Midpoint(p1, p2);
    const DPOINT p23 = Midpoint(p2, p3);
    const DPOINT p012 = Midpoint(p01, p12);
    const DPOINT p123 = Midpoint(p12, p23);
    return {p01, p012, Midpoint(p012, p123), p123, p23};
}

}  // namespace tarvex
