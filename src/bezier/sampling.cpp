// Chord lengths, and the number of chords that measure a segment.
//
// The rule compares the n-chord length L(n), for n = 20, 40, 80, ..., with L(10) and takes the first n that
// is within the resolution. Halving the chords of a curve never shortens the polyline (the triangle
// inequality), so in exact arithmetic L(10) <= L(20) <= L(40) <= ..., and once L(20) exceeds L(10) by more
// than the resolution every later length does, and the rule ends at its largest n. Rounding
// blurs this by little. Let M be the greatest coordinate (in magnitude) of the control points and e = 2^-53.
// On [0, 1] a weight is off by less than 8e and the weighted sum of four of them by less than 64eM in
// each coordinate, a chord (not longer than 9M) by less than 256eM, and n chords, with the roundings of
// their sum, by less than 512neM: below 1.2e-9 M for the largest n, 20480. So when L(20) - L(10) exceeds
// the resolution by 5e-9 M, more than twice that bound for each of the two lengths compared, no later
// comparison can succeed, and they are not made. The bound needs squares that neither overflow nor lose
// digits to underflow: M stays below 1e150, and an absolute 1e-100 covers the rest. NaN fails every
// comparison here and goes the long way.
#include "bezier/sampling.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <utility>

#include "bezier/chords.h"
#include "bezier/vector.h"

namespace tarvex {
namespace {

constexpr int kFewestChords = 20;
constexpr int kMostChords = 20480;
constexpr std::size_t kBlock = 128;

/// B(i/n) for i = 1 .. n, in blocks.
class EvenSamples {
  public:
    EvenSamples(const CBezier& curve, int n) : m_curve(curve), m_n(std::max(n, 1)) {
        x[0] = curve.p0.x;
        y[0] = curve.p0.y;
    }

    /// Evaluates the next points, from index 1 of `x` and `y` on, and returns their number; 0 after
    /// the last. At index 0 stands the point before.
    std::size_t Next() {
        if (m_next > m_n) return 0;
        x[0] = x[m_count];
        y[0] = y[m_count];
        m_count = std::min(kBlock, static_cast<std::size_t>(m_n - m_next) + 1);
        std::array<double, kBlock> t;
        for (std::size_t k = 0; k < m_count; ++k)
            t[k] = static_cast<double>(m_next + static_cast<std::int64_t>(k));
        InLanes(0, m_count, [t = t.data(), n = m_n]<class V>(V, std::size_t from, std::size_t to) {
            const V divisor{static_cast<double>(n)};
            for (std::size_t i = from; i < to; i += V::kCount) (V::Load(t + i) / divisor).Store(t + i);
        });
        SampleCurve(m_curve, t.data(), m_count, x.data() + 1, y.data() + 1);
        m_next += static_cast<std::int64_t>(m_count);
        return m_count;
    }

    std::array<double, kBlock + 1> x;
    std::array<double, kBlock + 1> y;

  private:
    const CBezier& m_curve;
    std::int64_t m_n;
    std::int64_t m_next = 1;
    std::size_t m_count = 0;
};

double GreatestCoordinate(const CBezier& curve) {
    double greatest = 0;
    for (const DPOINT& p : {curve.p0, curve.p1, curve.p2, curve.p3}) {
        for (const double value : {p.x, p.y}) {
            if (!(std::fabs(value) <= greatest)) greatest = std::fabs(value);
        }
    }
    return greatest;
}

/// Whether no number of chords from 20 on can come within the resolution of `coarse`, the 10-chord length.
bool NeverSettles(const CBezier& curve, double coarse, double next) {
    if (!(curve.resolution >= 0)) return true;
    const double greatest = GreatestCoordinate(curve);
    return greatest < 1e150 && next - coarse > curve.resolution + 5e-9 * greatest + 1e-100;
}

template <class V>
struct CurveInLanes {
    explicit CurveInLanes(const CBezier& c)
        : x0{c.p0.x}, x1{c.p1.x}, x2{c.p2.x}, x3{c.p3.x}, y0{c.p0.y}, y1{c.p1.y}, y2{c.p2.y}, y3{c.p3.y} {}

    /// The points at these parameters, as CBezier::GetCurvePoint computes them inside the segment.
    std::pair<V, V> At(V t) const {
        const PointWeights<V> w(t);
        return Weighed(w.w0, w.w1, w.w2, w.w3);
    }
    std::pair<V, V> Weighed(V w0, V w1, V w2, V w3) const {
        return {w0 * x0 + w1 * x1 + w2 * x2 + w3 * x3, w0 * y0 + w1 * y1 + w2 * y2 + w3 * y3};
    }

    V x0, x1, x2, x3, y0, y1, y2, y3;
};

}  // namespace

void SampleCurve(const CBezier& curve, const double* t, std::size_t count, double* x, double* y) {
    if (count == 0) return;
    InLanes(0, count, [&curve, t, x, y]<class V>(V, std::size_t from, std::size_t to) {
        const CurveInLanes<V> inLanes(curve);
        for (std::size_t i = from; i < to; i += V::kCount) {
            const auto [px, py] = inLanes.At(V::Load(t + i));
            px.Store(x + i);
            py.Store(y + i);
        }
    });
    // The ends are the end points themselves; weights of 0 would let infinite control points spoil them.
    const auto place = [x, y](std::size_t i, const DPOINT& p) {
        x[i] = p.x;
        y[i] = p.y;
    };
    if (t[0] == 0) place(0, curve.p0);
    if (t[count - 1] == 1) place(count - 1, curve.p3);
}

void SquaredDistances(const CBezier& curve, const DPOINT& p, const double* t, std::size_t count,
                      double* squares) {
    if (count == 0) return;
    InLanes(0, count, [&curve, &p, t, squares]<class V>(V, std::size_t from, std::size_t to) {
        const CurveInLanes<V> inLanes(curve);
        for (std::size_t i = from; i < to; i += V::kCount) {
            const auto [x, y] = inLanes.At(V::Load(t + i));
            const V dx = x - V{p.x};
            const V dy = y - V{p.y};
            (dx * dx + dy * dy).Store(squares + i);
        }
    });
    if (t[0] == 0) squares[0] = SquaredDistance(curve.p0, p);
    if (t[count - 1] == 1) squares[count - 1] = SquaredDistance(curve.p3, p);
}

void SquaredDistances(const CBezier& curve, const DPOINT& p, const WeighedSamples& samples, double* squares) {
    using Lanes = Doubled<TwoLanes>;
    static_assert(WeighedSamples::kCount % Lanes::kCount == 0);
    const CurveInLanes<Lanes> inLanes(curve);
    const Lanes px{p.x}, py{p.y};
    const auto load = [](const auto& weights, std::size_t i) { return Lanes::Load(weights.data() + i); };
    for (std::size_t i = 0; i < WeighedSamples::kCount; i += Lanes::kCount) {
        const auto [x, y] = inLanes.Weighed(load(samples.w0, i), load(samples.w1, i), load(samples.w2, i),
                                            load(samples.w3, i));
        const Lanes dx = x - px;
        const Lanes dy = y - py;
        (dx * dx + dy * dy).Store(squares + i);
    }
    if (samples.t.front() == 0) squares[0] = SquaredDistance(curve.p0, p);
    if (samples.t.back() == 1) squares[WeighedSamples::kCount - 1] = SquaredDistance(curve.p3, p);
}

double CBezier::GetL(int n) const {
    EvenSamples samples(*this, n);
    std::array<double, kBlock + 1> lengths;
    double length = 0;
    while (const std::size_t count = samples.Next()) {
        StepLengths(samples.x.data(), samples.y.data(), lengths.data(), count + 1);
        for (std::size_t k = 1; k <= count; ++k) length += lengths[k];
    }
    return length;
}

int SettledChordCount(const CBezier& curve) {
    const double coarse = curve.GetL(10);
    double length = curve.GetL(kFewestChords);
    if (NeverSettles(curve, coarse, length)) return kMostChords;
    int n = kFewestChords;
    while (n < kMostChords && !(std::fabs(coarse - length) <= curve.resolution)) {
        n *= 2;
        if (n < kMostChords) length = curve.GetL(n);
    }
    return n;
}

double CBezier::GetLength() const { return GetL(SettledChordCount(*this)); }

void CBezier::GetPolylineEx(CArray<DPOINT, DPOINT>& out) const {
    const int n = SettledChordCount(*this);
    out.SetSize(n + 1);
    DPOINT* to = out.GetData();
    *to++ = p0;
    EvenSamples samples(*this, n);
    while (const std::size_t count = samples.Next()) {
        for (std::size_t k = 1; k <= count; ++k) *to++ = {samples.x[k], samples.y[k]};
    }
}

}  // namespace tarvex
