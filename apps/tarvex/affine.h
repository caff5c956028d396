// Affine maps of the plane, as SVG writes them: matrix(a b c d e f).
#pragma once

#include <cmath>

#include "tarvex/records.h"

namespace tarvex::app {

/// x' = a x + c y + e, y' = b x + d y + f.
struct Affine {
    double a = 1;
    double b = 0;
    double c = 0;
    double d = 1;
    double e = 0;
    double f = 0;

    DPOINT operator()(const DPOINT& p) const { return {a * p.x + c * p.y + e, b * p.x + d * p.y + f}; }

    /// How much lengths grow, on the average of all directions: what widths of strokes grow by.
    double Scale() const { return std::sqrt(std::fabs(a * d - b * c)); }
};

/// `inner` acts first.
inline Affine operator*(const Affine& outer, const Affine& inner) {
    return {outer.a * inner.a + outer.c * inner.b,           outer.b * inner.a + outer.d * inner.b,
            outer.a * inner.c + outer.c * inner.d,           outer.b * inner.c + outer.d * inner.d,
            outer.a * inner.e + outer.c * inner.f + outer.e, outer.b * inner.e + outer.d * inner.f + outer.f};
}

}  // namespace tarvex::app
