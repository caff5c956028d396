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
    const PointWeights<double> w(t);
    return {w.w0 * p0.x + w.w1 * p1.x + w.w2 * p2.x + w.w3 * p3.x,
            w.w0 * p0.y + w.w1 * p1.y + w.w2 * p2.y + w.w3 * p3.y};
}

namespace {

constexpr double kFirstStep = 0.01;
constexpr int kFinerPasses = 8;

/// The parameters of the first scan: from 0 by repeated addition, the last of which exceeds 1.
constexpr std::array<double, WeighedSamples::kCount> FirstParameters() {
    std::array<double, WeighedSamples::kCount> values{};
    for (std::size_t i = 1; i < values.size(); ++i) values[i] = values[i - 1] + kFirstStep;
    return values;
}

constexpr WeighedSamples kFirstScan(FirstParameters().data());
static_assert(kFirstScan.t.back() < 1 && kFirstScan.t.back() + kFirstStep > 1);

/// The parameters of a fine scan, of an interval of at most 20 steps: from `lower` by repeated addition, up
/// to 22. They are stored by twos, as they are read, which need not wait for memory then.
struct FineParameters {
    static constexpr std::size_t kMost = 24;

    FineParameters(double lower, double upper, double step) {
        for (double t = lower; t <= upper && count + 2 <= kMost;) {
            const double next = t + step;
            TwoLanes::Of(t, next).Store(values.data() + count);
            count += next <= upper ? 2 : 1;
            t = next + step;
        }
    }

    std::array<double, kMost> values;
    std::size_t count = 0;
};

/// The nearest of all samples so far.
class NearestSample {
  public:
    NearestSample(const CBezier& curve, const DPOINT& p) : m_curve(curve), m_p(p) {}

    /// Takes the first of the samples at the least distance, if that is less than before. Roots are
    /// monotonic, so the least square has the least root; different squares can have one root, though, and
    /// then the earlier sample counts.
    void Scan(const FineParameters& t) {
        std::array<double, FineParameters::kMost> squares;
        SquaredDistances(m_curve, m_p, t.values.data(), t.count, squares.data());
        Take(t.values.data(), squares.data(), t.count);
    }
    void Scan(const WeighedSamples& samples) {
        std::array<double, WeighedSamples::kCount> squares;
        SquaredDistances(m_curve, m_p, samples, squares.data());
        Take(samples.t.data(), squares.data(), squares.size());
    }

    double Parameter() const { return m_t; }

  private:
    void Take(const double* t, const double* squares, std::size_t count) {
        const double least = Least(squares, count);
        const double distance = std::sqrt(least);
        if (!(distance < m_distance)) return;
        const double sameRoot = least * (1 + 0x1p-50);  // none above has this root
        std::size_t k = 0;
        while (!(squares[k] <= sameRoot && std::sqrt(squares[k]) <= distance)) ++k;
        m_distance = distance;
        m_t = t[k];
    }

    /// Infinity when none is a number.
    static double Least(const double* squares, std::size_t count) {
        TwoLanes one(std::numeric_limits<double>::infinity()), other = one;
        const std::size_t rest = count % 4;
        for (std::size_t k = 0; k < count - rest; k += 4) {
            one = Lesser(TwoLanes::Load(squares + k), one);
            other = Lesser(TwoLanes::Load(squares + k + 2), other);
        }
        one = Lesser(one, other);
        double least = std::min(one.Lane(0), one.Lane(1));
        for (std::size_t k = count - rest; k < count; ++k) least = squares[k] < least ? squares[k] : least;
        return least;
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
        nearest.Scan(FineParameters(lower, upper, step));
    }
    return nearest.Parameter();
}

DPOINT CBezier::_GetCurvePoint(const DPOINT& p) const { return GetCurvePoint(_GetCurveT(p)); }
DPOINT CBezier::GetNearestCurvePoint(const DPOINT& p) const {
    return GetCurvePoint(GetNearestCurvePointT(p));
}

}  // namespace tarvex
