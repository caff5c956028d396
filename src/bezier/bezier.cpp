// The cubic segment: construction, evaluation, and the scan for the nearest point.
#include "tarvex/bezier.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

#include "bezier/sampling.h"
#include "core/lanes.h"

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

    /// Takes the first of the samples at the least distance, if that is less than before. Roots are
    /// monotonic, so the least square has the least root; different squares can have one root, though, and
    /// then the earlier sample counts.
    void Scan(const ScanParameters& t) {
        std::array<double, kMostSamples> squares;
        SquaredDistances(m_curve, m_p, t.values.data(), t.count, squares.data());
        const double least = Least(squares.data(), t.count);
        const double distance = std::sqrt(least);
        if (!(distance < m_distance)) return;
        const double sameRoot = least * (1 + 0x1p-50);  // none above has this root
        std::size_t k = 0;
        while (!(squares[k] <= sameRoot && std::sqrt(squares[k]) <= distance)) ++k;
        m_distance = distance;
        m_t = t.values[k];
    }

    double Parameter() const { return m_t; }

  private:
    /// Infinity when none is a number.
    static double Least(const double* squares, std::size_t count) {
        TwoLanes least(std::numeric_limits<double>::infinity());
        std::size_t k = 0;
        for (; k + 2 <= count; k += 2) least = Lesser(TwoLanes::Load(squares + k), least);
        double one = std::min(least.Lane(0), least.Lane(1));
        if (k < count && squares[k] < one) one = squares[k];
        return one;
    }

    const CBezier& m_curve;
    DPOINT m_p;
    double m_t = 0;
    double m_distance = 1e100;
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
