// Fitting chains of segments to runs of points.
#include "bezier/fit.h"
#include "bezier/curves.h"
#include "bezier/fit_kernels.h"

namespace tarvex {
namespace {

using namespace test;

using Chain = std::vector<BEZIER>;

// ---- The method, plainly

DPOINT Sum(DPOINT a, DPOINT b) { return {a.x + b.x, a.y + b.y}; }
DPOINT Difference(DPOINT a, DPOINT b) { return {a.x - b.x, a.y - b.y}; }
DPOINT Scaled(DPOINT a, double s) { return {a.x * s, a.y * s}; }
double Product(DPOINT a, DPOINT b) { return a.x * b.x + a.y * b.y; }

DPOINT Unit(DPOINT v) {
    const double length = std::sqrt(Product(v, v));
    return length < 1e-8 ? v : DPOINT{v.x / length, v.y / length};
}

struct Equations {
    double c00, c01, c11, x0, x1;
};

/// At a parameter, the curve less the point, and the first two derivatives.
struct Local {
    DPOINT offset, first, second;
};

/// The formulas as they were published: Bernstein polynomials on absolute coordinates.
struct PublishedArithmetic {
    static DPOINT At(const BEZIER& q, double u) { return CBezier(q.p0, q.p1, q.p2, q.p3).GetCurvePoint(u); }

    static Equations Sums(const Points& d, std::size_t first, std::size_t last, const std::vector<double>& u,
                          DPOINT t1, DPOINT t2) {
        Equations e{};
        const BEZIER straight{d[first], d[first], d[last], d[last]};
        for (std::size_t i = 0; i < u.size(); ++i) {
            const DPOINT a1 = Scaled(t1, 3 * u[i] * (1 - u[i]) * (1 - u[i]));
            const DPOINT a2 = Scaled(t2, 3 * u[i] * u[i] * (1 - u[i]));
            const DPOINT rest = Difference(d[first + i], At(straight, u[i]));
            e.c00 += Product(a1, a1);
            e.c01 += Product(a1, a2);
            e.c11 += Product(a2, a2);
            e.x0 += Product(rest, a1);
            e.x1 += Product(rest, a2);
        }
        return e;
    }

    static Local Evaluate(const BEZIER& q, DPOINT, DPOINT, DPOINT p, double u) {
        const double v = 1 - u;
        const DPOINT d0 = Scaled(Difference(q.p1, q.p0), 3), d1 = Scaled(Difference(q.p2, q.p1), 3),
                     d2 = Scaled(Difference(q.p3, q.p2), 3);
        const DPOINT e0 = Scaled(Difference(d1, d0), 2), e1 = Scaled(Difference(d2, d1), 2);
        return {Difference(At(q, u), p),
                Sum(Sum(Scaled(d0, v * v), Scaled(d1, 2 * u * v)), Scaled(d2, u * u)),
                Sum(Scaled(e0, v), Scaled(e1, u))};
    }
};

/// The library's own order of operations: relative to the first point, polynomials by Horner's rule, sums
/// over points of even and of odd number apart.
struct LibraryArithmetic {
    static Equations Sums(const Points& d, std::size_t first, std::size_t last, const std::vector<double>& u,
                          DPOINT t1, DPOINT t2) {
        double g11[2]{}, g12[2]{}, g22[2]{};
        DPOINT r1[2]{}, r2[2]{};
        const DPOINT chord = Difference(d[last], d[first]);
        for (std::size_t i = 0; i < u.size(); ++i) {
            const double uv = u[i] * (1 - u[i]);
            const double g1 = uv * (1 - u[i]);
            const double g2 = uv * u[i];
            const double along = u[i] * u[i] * (3 - (u[i] + u[i]));
            const DPOINT r = Difference(Difference(d[first + i], d[first]), Scaled(chord, along));
            g11[i % 2] += g1 * g1;
            g12[i % 2] += g1 * g2;
            g22[i % 2] += g2 * g2;
            r1[i % 2] = Sum(r1[i % 2], Scaled(r, g1));
            r2[i % 2] = Sum(r2[i % 2], Scaled(r, g2));
        }
        return {9 * (g11[0] + g11[1]) * Product(t1, t1), 9 * (g12[0] + g12[1]) * Product(t1, t2),
                9 * (g22[0] + g22[1]) * Product(t2, t2), 3 * Product(t1, Sum(r1[0], r1[1])),
                3 * Product(t2, Sum(r2[0], r2[1]))};
    }

    static Local Evaluate(const BEZIER& q, DPOINT handle1, DPOINT handle2, DPOINT p, double u) {
        const DPOINT chord = Difference(q.p3, q.p0);
        const DPOINT c = Scaled(handle1, 3);
        const DPOINT b = Difference(Scaled(Difference(Sum(chord, handle2), handle1), 3), c);
        const DPOINT a = Difference(Difference(chord, c), b);
        const DPOINT curve = Scaled(Sum(Scaled(Sum(Scaled(a, u), b), u), c), u);
        const DPOINT first = Sum(Scaled(Sum(Scaled(Scaled(a, 3), u), Scaled(b, 2)), u), c);
        const DPOINT second = Sum(Scaled(Scaled(a, 6), u), Scaled(b, 2));
        return {Difference(curve, Difference(p, q.p0)), first, second};
    }
};

/// The recursive fit, step by step.
template <class Arithmetic>
class PlainFit {
  public:
    /// For points that stand for themselves times 2^power.
    PlainFit(Points points, double error, int power = 0)
        : d(std::move(points)),
          m_error(std::ldexp(error, -2 * power)),
          m_hopeful(std::pow(std::ldexp(error, -power), 2)),
          m_zero(std::max(std::ldexp(1e-8, -2 * power), 5e-324)) {}

    /// Whether finite points were so far apart that a number overflowed, after fitting.
    bool Overflowed() const { return m_overflowed; }

    Chain Fit(DPOINT t1, DPOINT t2) {
        Cubic(0, d.size() - 1, t1, t2, 0);
        return out;
    }

    Chain Fit() {
        NoteOverflow(0, 1, PlainDistance(d[0], d[1]));
        NoteOverflow(d.size() - 2, d.size() - 1, PlainDistance(d[d.size() - 2], d.back()));
        return Fit(Unit(Difference(d[1], d[0])), Unit(Difference(d[d.size() - 2], d.back())));
    }

  private:
    struct Candidate {
        BEZIER q;
        DPOINT handle1, handle2;
    };

    void NoteOverflow(std::size_t first, std::size_t last, double result) {
        const auto isFinite = [](const DPOINT& p) { return std::isfinite(p.x) && std::isfinite(p.y); };
        m_overflowed = m_overflowed || (!std::isfinite(result) &&
                                        std::all_of(d.data() + first, d.data() + last + 1, isFinite));
    }

    Candidate WithHandles(std::size_t first, std::size_t last, DPOINT h1, DPOINT h2) const {
        return {BEZIER{d[first], Sum(d[first], h1), Sum(d[last], h2), d[last]}, h1, h2};
    }

    Candidate Thirds(std::size_t first, std::size_t last, DPOINT t1, DPOINT t2) const {
        const double third = PlainDistance(d[last], d[first]) / 3;
        return WithHandles(first, last, Scaled(t1, third), Scaled(t2, third));
    }

    Candidate Generate(std::size_t first, std::size_t last, const std::vector<double>& u, DPOINT t1,
                       DPOINT t2) const {
        const Equations e = Arithmetic::Sums(d, first, last, u, t1, t2);
        double det = e.c00 * e.c11 - e.c01 * e.c01;
        if (std::fabs(det) < 1e-8) det = e.c00 * e.c11 + 1e-8;
        double alpha1 = (e.x0 * e.c11 - e.x1 * e.c01) / det;
        double alpha2 = (e.c00 * e.x1 - e.c01 * e.x0) / det;
        const double limit = 0.618 * PlainDistance(d[last], d[first]);
        const double length1 = std::sqrt(Product(t1, t1));
        const double length2 = std::sqrt(Product(t2, t2));
        if (length1 < 1e-8 || length2 < 1e-8) {
            alpha1 = alpha2 = -1;
        } else {
            if (std::fabs(alpha1) > limit / length1) alpha1 = limit / length1;
            if (std::fabs(alpha2) > limit / length2) alpha2 = limit / length2;
        }
        if (alpha1 < 0 || alpha2 < 0) return Thirds(first, last, t1, t2);
        return WithHandles(first, last, Scaled(t1, alpha1), Scaled(t2, alpha2));
    }

    std::pair<double, std::size_t> MaxError(std::size_t first, std::size_t last, const std::vector<double>& u,
                                            const Candidate& c) const {
        double greatest = 0;
        std::size_t split = (last - first + 1) / 2;
        for (std::size_t i = first + 1; i < last; ++i) {
            const DPOINT r = Arithmetic::Evaluate(c.q, c.handle1, c.handle2, d[i], u[i - first]).offset;
            const double square = Product(r, r);
            if (square >= greatest) {
                greatest = square;
                split = i;
            }
        }
        return {greatest, split};
    }

    void Cubic(std::size_t first, std::size_t last, DPOINT t1, DPOINT t2, int depth) {
        if (last - first == 1) {
            out.push_back(Thirds(first, last, t1, t2).q);
            NoteOverflow(first, last, PlainDistance(d[first], d[last]));
            return;
        }
        std::vector<double> u{0};
        for (std::size_t i = first + 1; i <= last; ++i) u.push_back(u.back() + PlainDistance(d[i], d[i - 1]));
        const double total = u.back();
        NoteOverflow(first, last, total);
        if (total >= 1e-8) {
            for (double& v : u) v /= total;
        }
        Candidate c = Generate(first, last, u, t1, t2);
        auto [greatest, split] = MaxError(first, last, u, c);
        NoteOverflow(first, last, greatest);
        const bool iterate = !(greatest < m_error) && greatest < m_hopeful;
        for (int pass = 0; pass < 4 && iterate && !(greatest < m_error); ++pass) {
            for (std::size_t i = 0; i < u.size(); ++i) {
                const Local at = Arithmetic::Evaluate(c.q, c.handle1, c.handle2, d[first + i], u[i]);
                const double denominator = Product(at.first, at.first) + Product(at.offset, at.second);
                if (!(std::fabs(denominator) < m_zero)) u[i] -= Product(at.offset, at.first) / denominator;
            }
            c = Generate(first, last, u, t1, t2);
            std::tie(greatest, split) = MaxError(first, last, u, c);
        }
        if (greatest < m_error) {
            out.push_back(c.q);
            return;
        }
        if (depth >= 1000 || split <= first || split >= last) return;
        const DPOINT before = Difference(d[split - 1], d[split]), after = Difference(d[split], d[split + 1]);
        const DPOINT tangent = Unit({(before.x + after.x) / 2, (before.y + after.y) / 2});
        Cubic(first, split, t1, tangent, depth + 1);
        Cubic(split, last, {-tangent.x, -tangent.y}, t2, depth + 1);
    }

    Points d;
    double m_error;
    double m_hopeful;  // worst squared distance worth Newton steps
    double m_zero;     // of Newton steps' denominators
    bool m_overflowed = false;
    Chain out;
};

// ---- Runs

Points Noise(CurveSource& source, int n, double extent) {
    Points run;
    for (int i = 0; i < n; ++i) run.push_back(source.Point(extent));
    return run;
}

Points WholeNumberWalk(CurveSource& source, int n) {
    Points run;
    DPOINT at{};
    for (int i = 0; i < n; ++i) {
        run.push_back(at);
        at.x += source.Integer(-1, 1);
        at.y += source.Integer(-1, 1);
    }
    return run;
}

/// A smooth closed outline; rounded to whole pixels or not.
Points Outline(CurveSource& source, int n, bool pixels) {
    const double radius = source.Uniform(3, 120), wave = source.Uniform(0, 0.4), phase = source.Uniform(0, 6);
    const DPOINT centre = source.Point(2000);
    Points run;
    for (int i = 0; i < n; ++i) {
        const double angle = 6.283185307179586 * i / n;
        const double r = radius * (1 + wave * std::sin(3 * angle + phase) + wave / 3 * std::sin(angle));
        const DPOINT p{centre.x + r * std::cos(angle), centre.y + r * std::sin(angle)};
        run.push_back(pixels ? DPOINT{std::floor(p.x), std::floor(p.y)} : p);
    }
    return run;
}

Points AnyRun(CurveSource& source) {
    const int n = source.Integer(2, 90);
    switch (source.Integer(0, 5)) {
        case 0:
            return Noise(source, n, 50);
        case 1:
            return WholeNumberWalk(source, n);
        case 2:
            return Outline(source, n, true);
        case 3:
            return Points(static_cast<std::size_t>(n), DPOINT{3, 4});
        case 4: {
            Points run = Noise(source, n, 5);
            for (int i = 0; i < n; i += source.Integer(1, 40))
                run[static_cast<std::size_t>(i)].x = source.HostileValue();
            return run;
        }
        default:
            return Outline(source, n, false);
    }
}

Chain Fitted(const Points& run, double error) {
    CArray<BEZIER, BEZIER> out;
    FitCurve(run.data(), static_cast<int>(run.size()), &out, error);
    return {out.GetData(), out.GetData() + out.GetSize()};
}

Points PointsOf(const Chain& chain) {
    Points points;
    for (const BEZIER& q : chain) points.insert(points.end(), {q.p0, q.p1, q.p2, q.p3});
    return points;
}

::testing::AssertionResult SameChains(const Chain& a, const Chain& b) {
    return SamePoints(PointsOf(a), PointsOf(b));
}

// ---- Against the plain fits

TEST(FitCurve, MatchesThePlainFitBitForBit) {
    CurveSource source(21);
    static constexpr double kErrors[] = {5, 1, 4, 0.3, 30, 0, -1, kNaN, kInfinity, 1e-20};
    int compared = 0;
    for (int i = 0; i < 1500; ++i) {
        const Points run = AnyRun(source);
        const double error = kErrors[static_cast<std::size_t>(i) % std::size(kErrors)];
        PlainFit<LibraryArithmetic> plain(run, error);
        const Chain expected = plain.Fit();
        if (plain.Overflowed()) continue;
        ++compared;
        EXPECT_TRUE(SameChains(Fitted(run, error), expected))
            << "case " << i << ", " << run.size() << " points, error " << error;
    }
    EXPECT_GT(compared, 1400);
}

TEST(FitCurve, GivenTangentsAreTheOnesUsed) {
    CurveSource source(23);
    int compared = 0;
    for (int i = 0; i < 200; ++i) {
        const Points run = AnyRun(source);
        const DPOINT t1 = i % 7 == 0 ? DPOINT{} : Unit(source.Point(1));
        const DPOINT t2 = Unit(source.Point(1));
        Chain chain(1);
        FitRun(run, t1, t2, 3, chain);
        chain.erase(chain.begin());
        PlainFit<LibraryArithmetic> plain(run, 3);
        const Chain expected = plain.Fit(t1, t2);
        if (plain.Overflowed()) continue;
        ++compared;
        EXPECT_TRUE(SameChains(chain, expected)) << "case " << i;
    }
    EXPECT_GT(compared, 180);
}

TEST(FitCurve, MatchesThePublishedFormulasWithinRounding) {
    CurveSource source(22);
    std::size_t segments = 0;
    for (int i = 0; i < 400; ++i) {
        const Points run =
            i % 2 == 0 ? Outline(source, source.Integer(3, 200), false) : Noise(source, 40, 50);
        const double error = source.Uniform(0.5, 30);
        const std::vector<DPOINT> found = PointsOf(Fitted(run, error));
        const std::vector<DPOINT> expected = PointsOf(PlainFit<PublishedArithmetic>(run, error).Fit());
        ASSERT_EQ(found.size(), expected.size()) << "case " << i;
        for (std::size_t k = 0; k < found.size(); ++k) {
            EXPECT_LE(PlainDistance(found[k], expected[k]), 1e-6) << "case " << i << ", point " << k;
        }
        segments += found.size() / 4;
    }
    EXPECT_GT(segments, 4000u) << "the runs must need splitting";
}

/// Multiplying by a power of two changes no digit, so a run too large for its distances to be squared has the
/// chain of its image of ordinary size.
TEST(FitCurve, HugeRunsHaveTheChainsOfTheirSmallImages) {
    CurveSource source(29);
    for (int i = 0; i < 300; ++i) {
        const Points run = i % 2 == 0 ? Outline(source, source.Integer(2, 90), true)
                                      : Noise(source, source.Integer(2, 60), 50);
        // Up to 2^509 there are doubles for errors that ask for curves; beyond, nothing but steps is near.
        const int power = i % 3 == 0 ? source.Integer(511, 1010) : source.Integer(280, 509);
        const double error = power < 510 ? std::ldexp(source.Uniform(1, 30), 2 * power) : 1e300;
        Points huge;
        for (const DPOINT& p : run) huge.push_back({std::ldexp(p.x, power), std::ldexp(p.y, power)});
        Chain expected = PlainFit<LibraryArithmetic>(run, error, power).Fit();
        for (BEZIER& q : expected) {
            for (DPOINT* p : {&q.p0, &q.p1, &q.p2, &q.p3})
                *p = {std::ldexp(p->x, power), std::ldexp(p->y, power)};
        }
        EXPECT_TRUE(SameChains(Fitted(huge, error), expected)) << "case " << i << ", 2^" << power;
    }
}

/// The processor's two lanes against the same passes in plain doubles.
TEST(FitCurve, PassesGiveTheSameBitsInAnyLanes) {
    CurveSource source(24);
    for (int i = 0; i < 300; ++i) {
        const Points run = AnyRun(source);
        const std::size_t n = run.size();
        if (n < 3) continue;
        std::vector<double> x, y;
        for (const DPOINT& p : run) {
            x.push_back(p.x);
            y.push_back(p.y);
        }
        const OffsetCubic q =
            OffsetCubic::FromHandles(source.Point(9), source.Point(9), Difference(run[n - 1], run[0]));
        const auto results = [&]<class Two>(Two) {
            std::vector<double> along(n, 0.0), u(n), squares(n, 0.0), all;
            StepLengths<Two>(x.data(), y.data(), along.data(), n);
            std::partial_sum(along.begin(), along.end(), along.begin());
            const RangeView range{x.data(), y.data(), u.data(), n};
            Parameterize<Two>(range, along.data());
            for (int pass = 0; pass < 2; ++pass) {
                const LeastSquaresSums s = SumUp<Two>(range);
                all.insert(all.end(), {s.g11, s.g12, s.g22, s.r1.x, s.r1.y, s.r2.x, s.r2.y});
                all.push_back(GreatestSquaredDistance<Two>(range, q, squares.data()));
                all.insert(all.end(), squares.begin(), squares.end());
                Reparameterize<Two>(range, q);
                all.insert(all.end(), u.begin(), u.end());
            }
            return all;
        };
        const std::vector<double> plain = results(PlainLanes{}), fast = results(TwoLanes{});
        ASSERT_EQ(plain.size(), fast.size());
        for (std::size_t k = 0; k < plain.size(); ++k)
            ASSERT_TRUE(SameBits(plain[k], fast[k])) << "case " << i;
    }
}

// ---- Promises

TEST(FitCurve, ChainsAreContinuousFromTheFirstPointToTheLast) {
    CurveSource source(25);
    for (int i = 0; i < 400; ++i) {
        Points run =
            i % 40 == 0 ? Noise(source, 5000, 100) : Outline(source, source.Integer(2, 300), i % 2 == 0);
        for (std::size_t k = 0; i % 5 == 0 && k < run.size(); k += 3)  // any finite numbers
            run[k] = {std::ldexp(run[k].x, source.Integer(-1080, 1010)), std::ldexp(run[k].y, 9 * (i - 290))};
        const Chain chain = Fitted(run, source.Uniform(0.1, 20));
        ASSERT_FALSE(chain.empty());
        for (const DPOINT& p : PointsOf(chain)) EXPECT_TRUE(std::isfinite(p.x) && std::isfinite(p.y));
        EXPECT_TRUE(SameBits(chain.front().p0, run.front()));
        EXPECT_TRUE(SameBits(chain.back().p3, run.back()));
        for (std::size_t k = 1; k < chain.size(); ++k) EXPECT_TRUE(SameBits(chain[k].p0, chain[k - 1].p3));
    }
}

TEST(FitCurve, EveryPointLiesWithinTheRootOfTheErrorOfTheChain) {
    CurveSource source(26);
    for (int i = 0; i < 60; ++i) {
        const Points run =
            i % 3 == 0 ? Noise(source, 60, 40) : Outline(source, source.Integer(10, 300), i % 2 == 0);
        const double error = source.Uniform(0.2, 20);
        const Chain chain = Fitted(run, error);
        for (const DPOINT& p : run) {
            double nearest = kInfinity;
            for (const BEZIER& q : chain) {
                nearest = std::min(nearest,
                                   PlainDistance(CBezier(q.p0, q.p1, q.p2, q.p3).GetNearestCurvePoint(p), p));
            }
            EXPECT_LE(nearest, std::sqrt(error) + 1e-9) << "case " << i;
        }
    }
}

/// Equal points with no tolerance: the last inner point is always the worst, so each split leaves two.
TEST(FitCurve, RangesBeyondAThousandSplitsAreLeftOut) {
    for (const auto& [points, segments] : {std::pair{1002u, 1001u}, {1003u, 1000u}, {3000u, 1000u}}) {
        EXPECT_EQ(Fitted(Points(points, DPOINT{1, 2}), 0).size(), segments) << points;
    }
}

TEST(FitCurve, AppendsSegmentsButReplacesNodesAndNeedsTwoPoints) {
    const Points run{{0, 0}, {9, 0}};
    CArray<BEZIER, BEZIER> out;
    FitCurve(run.data(), 2, &out, 1);
    FitCurve(run.data(), 2, &out, 1);
    ASSERT_EQ(out.GetSize(), 2);
    EXPECT_TRUE(out[1].flatness == 0 && out[1].target == nullptr && out[1].startCount == 0);
    for (const int n : {1, 0, -7, INT32_MIN}) {
        FitCurve(run.data(), n, &out, 1);
        EXPECT_EQ(out.GetSize(), 2) << n;
        Nodes nodes = Corners({{4, 4}});
        FitCurve(run.data(), n, &nodes, 5);
        EXPECT_TRUE(nodes.IsEmpty()) << n;
    }
}

TEST(FitCurve, NodesCarryTheChainWithoutOuterHandles) {
    CurveSource source(28);
    for (int i = 0; i < 50; ++i) {
        const Points run = i == 0 ? Points{{0, 0}, {9, 0}} : AnyRun(source);
        const Chain chain = Fitted(run, 5);
        Nodes nodes = Corners({{1, 1}});
        FitCurve(run.data(), static_cast<int>(run.size()), &nodes, 5);
        Points expected, found;
        for (const BEZIER& q : chain) {
            if (expected.empty()) expected = {q.p0, q.p0};
            expected.insert(expected.end(), {q.p1, q.p2, q.p3});
        }
        if (!chain.empty()) expected.push_back(chain.back().p3);
        for (const BPOINT& node : nodes) {
            found.insert(found.end(), {node.cp1, node.pt, node.cp2});
            EXPECT_EQ(node.flags, 0);
        }
        EXPECT_TRUE(SamePoints(found, expected)) << "case " << i;
    }
}

}  // namespace
}  // namespace tarvex
