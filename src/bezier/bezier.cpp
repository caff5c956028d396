// The cubic segment: evaluation, the scan for the nearest point, chord lengths.
#include "tarvex/bezier.h"

#include "bezier/vector.h"

namespace tarvex {

CBezier::CBezier(const BPOINT& a, const BPOINT& b) : p0(a.pt), p1(a.cp2), p2(b.cp1), p3(b.pt) {}

CBezier::CBezier(const DPOINT& start, const DPOINT& control1, const DPOINT& control2, const DPOINT& end)
    : p0(start), p1(control1), p2(control2), p3(end) {}

void CBezier::SetResolution(double value) { resolution = value; }
void CBezier::SetExpandStraightLines(bool value) { expandStraightLines = value; }

DPOINT CBezier::GetCurvePoint(double t) const {
    if (t == 0) return p0;
    if (t == 1) return p3;
    const double t2 = t * t;
    const double w0 = (3 - t) * t2 - 3 * t + 1;
    const double w1 = ((t - 2) * t2 + t) * 3;
    const double w2 = 3 * t2 * (1 - t);
    const double w3 = t2 * t;
    return {w0 * p0.x + w1 * p1.x + w2 * p2.x + w3 * p3.x, w0 * p0.y + w1 * p1.y + w2 * p2.y + w3 * p3.y};
}

double CBezier::_GetCurveT(const DPOINT& p) const {
    double best = 0;
    double bestDistance = 1e100;
    double lower = 0;
    double upper = 1;
    double step = 0.01;
    for (int pass = 0;; ++pass) {
        for (double t = lower; t <= upper; t += step) {
            const double distance = Distance(GetCurvePoint(t), p);
            if (distance < bestDistance) {
                bestDistance = distance;
                best = t;
            }
        }
        if (pass == 8) return best;
        lower = best - step < 0 ? 0 : best - step;
        upper = best + step > 1 ? 1 : best + step;
        step /= 10;
    }
}

DPOINT CBezier::_GetCurvePoint(const DPOINT& p) const { return GetCurvePoint(_GetCurveT(p)); }
DPOINT CBezier::GetNearestCurvePoint(const DPOINT& p) const {
    return GetCurvePoint(GetNearestCurvePointT(p));
}

double CBezier::GetL(int n) const {
    double length = 0;
    DPOINT from = p0;
    for (int i = 1; i < n; ++i) {
        const DPOINT to = GetCurvePoint(static_cast<double>(i) / n);
        length += Distance(from, to);
        from = to;
    }
    return length + Distance(from, p3);
}

namespace {

int ChordCount(const CBezier& segment) {
    const double coarse = segment.GetL(10);
    int n = 20;
    for (int doublings = 0; doublings < 10; ++doublings, n *= 2) {
        if (std::fabs(coarse - segment.GetL(n)) <= segment.resolution) break;
    }
    return n;
}

}  // namespace

double CBezier::GetLength() const { return GetL(ChordCount(*this)); }

void CBezier::GetPolylineEx(CArray<DPOINT, DPOINT>& out) const {
    const int n = ChordCount(*this);
    out.SetSize(n + 1);
    out[0] = p0;
    for (int i = 1; i < n; ++i) out[i] = GetCurvePoint(static_cast<double>(i) / n);
    out[n] = p3;
}

}  // namespace tarvex
