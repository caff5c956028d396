// Turning, stretching and mirroring a point in place.
#include <cmath>

#include "geometry/snap.h"
#include "tarvex/lines.h"

namespace tarvex {

void Rotate(double* x, double* y, double cx, double cy, double angle) {
    const double c = std::cos(angle);
    const double s = std::sin(angle);
    const double dx = *x - cx;
    const double dy = *y - cy;
    *x = dx * c - dy * s + cx;
    *y = dx * s + dy * c + cy;
}

void Rotate(float* x, float* y, float cx, float cy, double angle) {
    double wideX = *x;
    double wideY = *y;
    Rotate(&wideX, &wideY, double{cx}, double{cy}, angle);
    *x = SnapToFloat(wideX);
    *y = SnapToFloat(wideY);
}

void Stretch(double* x, double* y, double cx, double cy, double sx, double sy) {
    *x = (*x - cx) * sx + cx;
    *y = (*y - cy) * sy + cy;
}

void Stretch(float* x, float* y, float cx, float cy, double sx, double sy) {
    double wideX = *x;
    double wideY = *y;
    Stretch(&wideX, &wideY, double{cx}, double{cy}, SnapToZero(sx), SnapToZero(sy));
    *x = static_cast<float>(wideX);
    *y = static_cast<float>(wideY);
}

void FlipHor(double* x, double* /*y*/, double cx, double /*cy*/) { *x = -(*x - cx) + cx; }

void FlipHor(float* x, float* /*y*/, double cx, double /*cy*/) {
    const double centre = SnapToZero(cx);
    *x = static_cast<float>(-(*x - centre) + centre);
}

void FlipVer(double* /*x*/, double* y, double /*cx*/, double cy) { *y = -(*y - cy) + cy; }

void FlipVer(float* /*x*/, float* y, double /*cx*/, double cy) {
    const double centre = SnapToZero(cy);
    *y = static_cast<float>(-(*y - centre) + centre);
}

}  // namespace tarvex
