// The cubic segment: construction, evaluation, and the scan for the nearest point.
#include "tarvex/bezier.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

#include "bezier/sampling.h"

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

namespace {

constexpr double kFirstStep = 0.01;
constexpr int kFinerPasses = 8;
constexpr std::size_t kMostSamples = 100;

/// The parameters of a scan: from `lower` by repeated addition. A fine scan, of an interval of at most 20
/// steps, takes up to 22; the first takes 100, as its last addition exceeds 1.
struct ScanParameters {
    constexpr ScanParameters(double lower, double upper, double step) {
        for (double t = lower; t <= upper && count < kMostSamples; t += step) values[count++] = t;
    }

    std::array<double, kMostSamples> values;
    std::size_t count = 0;
};

constexpr ScanParameters kFirstScan(0, 1, kFirstStep);
static_assert(kFirstScan.count == 100 && kFirstScan.values[99] < 1 && kFirstScan.values[99] + kFirstStep > 1);

/// The nearest of all samples so far.
class NearestSample {
  public:
    NearestSample(const CBezier& curve, const DPOINT& p) : m_curve(curve), m_p(p) {}

    void Scan(const ScanParameters& t) {
        std::array<double, kMostSamples> x, y;
        SampleCurve(m_curve, t.values.data(), t.count, x.data(), y.data());
        for (std::size_t k = 0; k < t.count; ++k) {
            const double dx = x[k] - m_p.x;
            const double dy = y[k] - m_p.y;
            const double square = dx * dx + dy * dy;
            // Roots are monotonic: without a smaller square there is no smaller distance. Different
            // squares can have one root, though, and then the earlier sample stays.
            if (!(square < m_square)) continue;
            const double distance = std::sqrt(square);
            if (distance < m_distance) {
                m_distance = distance;
                m_square = square;
                m_t = t.values[k];
            }
        }
    }

    double Parameter() const { return m_t; }

  private:
    const CBezier& m_curve;
    DPOINT m_p;
    double m_t = 0;
    double m_distance = 1e100;
    double m_square = std::numeric_limits<double>::infinity();
};

}  // namespace

double CBezier::_GetCurveT(const DPOINT& p) const {
    NearestSample nearest(*this, p);
    nearest.Scan(kFirstScan);
    double step = kFirstStep;
    for (int pass = 0; pass < kFinerPasses; ++pass) {
        const double lower = std::max(0.0, nearest.Parameter() - step);
        const double upper = std::min(1.0, nearest.Parameter() + step);
        step /= 10;
        nearest.Scan(ScanParameters(lower, upper, step));
    }
    return nearest.Parameter();
}

DPOINT CBezier::_GetCurvePoint(const DPOINT& p) const { return GetCurvePoint(_GetCurveT(p)); }
DPOINT CBezier::GetNearestCurvePoint(const DPOINT& p) const {
    return GetCurvePoint(GetNearestCurvePointT(p));
}

}  // namespace tarvex
