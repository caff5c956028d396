// The cubic segment: evaluation, nearest point, lengths.
#include "bezier/curves.h"

namespace tarvex {
namespace {

using namespace testing_support;

// ---- Plain transcriptions of the rules

DPOINT PlainPoint(const CBezier& c, double t) {
    if (t == 0) return c.p0;
    if (t == 1) return c.p3;
    const double w0 = (3 - t) * (t * t) - 3 * t + 1;
    const double w1 = ((t - 2) * (t * t) + t) * 3;
    const double w2 = 3 * (t * t) * (1 - t);
    const double w3 = (t * t) * t;
    return {w0 * c.p0.x + w1 * c.p1.x + w2 * c.p2.x + w3 * c.p3.x,
            w0 * c.p0.y + w1 * c.p1.y + w2 * c.p2.y + w3 * c.p3.y};
}

double PlainChords(const CBezier& c, int n) {
    double length = 0;
    DPOINT from = c.p0;
    for (int i = 1; i < n; ++i) {
        const DPOINT to = PlainPoint(c, static_cast<double>(i) / n);
        length += PlainDistance(to, from);
        from = to;
    }
    return length + PlainDistance(c.p3, from);
}

int PlainChordCount(const CBezier& c) {
    const double coarse = PlainChords(c, 10);
    int n = 20;
    double length = PlainChords(c, n);
    for (int doublings = 0; doublings < 10; ++doublings) {
        if (std::fabs(coarse - length) <= c.resolution) return n;
        n *= 2;
        length = PlainChords(c, n);
    }
    return n;
}

double PlainScan(const CBezier& c, const DPOINT& p) {
    double best = 0;
    double bestDistance = 1e100;
    const auto scan = [&](double lower, double upper, double step) {
        for (double t = lower; t <= upper; t += step) {
            const double distance = PlainDistance(PlainPoint(c, t), p);
            if (distance < bestDistance) {
                bestDistance = distance;
                best = t;
            }
        }
    };
    double step = 0.01;
    scan(0, 1, step);
    for (int pass = 0; pass < 8; ++pass) {
        const double lower = std::max(0.0, best - step);
        const double upper = std::min(1.0, best + step);
        step = step / 10;
        scan(lower, upper, step);
    }
    return best;
}

double Apart(const DPOINT& a, const DPOINT& b) { return std::hypot(a.x - b.x, a.y - b.y); }

// ---- Evaluation

TEST(BezierSegment, ComesFromNodesByTheirFacingHandles) {
    const BPOINT a{{1, 2}, {3, 4}, {5, 6}, 7};
    const BPOINT b{{11, 12}, {13, 14}, {15, 16}, 17};
    const CBezier c(a, b);
    EXPECT_TRUE(SameBits(c.p0, DPOINT{3, 4}));
    EXPECT_TRUE(SameBits(c.p1, DPOINT{5, 6}));
    EXPECT_TRUE(SameBits(c.p2, DPOINT{11, 12}));
    EXPECT_TRUE(SameBits(c.p3, DPOINT{13, 14}));
    EXPECT_EQ(c.resolution, 1.0);
    EXPECT_TRUE(c.expandStraightLines);
}

TEST(BezierSegment, EndParametersGiveTheEndPointsWhateverTheHandles) {
    CurveSource source(1);
    for (int i = 0; i < 300; ++i) {
        const CBezier c = source.Any();
        EXPECT_TRUE(SameBits(c.GetCurvePoint(0), c.p0));
        EXPECT_TRUE(SameBits(c.GetCurvePoint(1), c.p3));
    }
}

TEST(BezierSegment, ParametersOutsideTheRangeFollowThePolynomial) {
    const CBezier c({0, 0}, {1, 0}, {2, 0}, {3, 27});  // x = 3t, y = 27t³
    for (const double t : {-1.0, -0.5, 0.25, 1.5, 4.0}) {
        EXPECT_NEAR(c.GetCurvePoint(t).x, 3 * t, 1e-12) << t;
        EXPECT_NEAR(c.GetCurvePoint(t).y, 27 * t * t * t, 1e-11) << t;
    }
}

TEST(BezierSegment, EvaluationSumsInTheStatedOrder) {
    CurveSource source(2);
    for (int i = 0; i < 1000; ++i) {
        const CBezier c = source.Any();
        const double t = source.Uniform(-1, 2);
        EXPECT_TRUE(SameBits(c.GetCurvePoint(t), PlainPoint(c, t))) << "case " << i;
    }
}

// ---- Lengths

TEST(BezierSegment, ChordLengthsMatchThePlainSum) {
    CurveSource source(3);
    for (int i = 0; i < 200; ++i) {
        const CBezier c = source.Any();
        for (const int n : {-5, 0, 1, 2, 3, 10, 20, 127, 128, 129, 130, 500}) {
            EXPECT_TRUE(SameBits(c.GetL(n), PlainChords(c, n))) << "case " << i << ", " << n << " chords";
        }
    }
}

/// Curves with resolutions around the differences that decide, where rounding could decide otherwise.
TEST(BezierSegment, LengthAndEvenSamplesSettleOnThePlainChordCount) {
    CurveSource source(4);
    for (int i = 0; i < 60; ++i) {
        CBezier c = source.Any();
        const double coarse = PlainChords(c, 10);
        switch (i % 6) {
            case 0:
                c.resolution = std::fabs(coarse - PlainChords(c, 20));
                break;
            case 1:
                c.resolution = std::nextafter(std::fabs(coarse - PlainChords(c, 20)), 0.0);
                break;
            case 2:
                c.resolution = std::fabs(coarse - PlainChords(c, 20 << source.Integer(0, 10)));
                break;
            case 3:
                c.resolution = source.HostileValue();
                break;
            case 4:
                c.resolution = std::fabs(coarse) * 1e-16;
                break;
            default:
                c.resolution = source.Uniform(0, 2);
                break;
        }
        SCOPED_TRACE(i);
        const int n = PlainChordCount(c);
        EXPECT_TRUE(SameBits(c.GetLength(), PlainChords(c, n)));
        std::vector<DPOINT> expected{c.p0};
        for (int k = 1; k < n; ++k) expected.push_back(PlainPoint(c, static_cast<double>(k) / n));
        expected.push_back(c.p3);
        CArray<DPOINT, DPOINT> points;
        points.Add({1, 1});
        c.GetPolylineEx(points);
        EXPECT_TRUE(SamePoints(points, expected));
    }
}

TEST(BezierSegment, LengthsOfKnownCurves) {
    const CBezier line({0, 0}, {10.0 / 3, 0}, {20.0 / 3, 0}, {10, 0});
    EXPECT_NEAR(line.GetLength(), 10, 1e-12);
    EXPECT_EQ(line.GetLength(), line.GetL(20)) << "the first comparison settles it";

    CBezier parabola({0, 0}, {2.0 / 3, 4.0 / 3}, {4.0 / 3, 4.0 / 3}, {2, 0});  // y = 2x - x²
    parabola.SetResolution(1e-9);
    const double exact = std::sqrt(5.0) + std::asinh(2.0) / 2;
    EXPECT_NEAR(parabola.GetLength(), exact, 1e-8);
    EXPECT_EQ(parabola.GetLength(), parabola.GetL(20480));
}

// ---- Nearest point by scanning

TEST(BezierSegment, TheScanVisitsThePlainParameters) {
    CurveSource source(5);
    for (int i = 0; i < 400; ++i) {
        const CBezier c = source.Any();
        DPOINT p = source.Point(1500);
        if (i % 4 == 1) p = c.GetCurvePoint(source.Uniform(0, 1));
        if (i % 4 == 2) p = {double(source.Integer(0, 2)), double(source.Integer(0, 2))};
        if (i % 16 == 3) p.x = source.HostileValue();
        EXPECT_TRUE(SameBits(c._GetCurveT(p), PlainScan(c, p))) << "case " << i;
    }
}

TEST(BezierSegment, TheScanReachesBothEndsAndStaysBetweenThem) {
    const CBezier arch({0, 0}, {0, 40}, {100, 40}, {100, 0});
    EXPECT_NEAR(arch._GetCurveT({100, 0}), 1, 1e-9);
    EXPECT_NEAR(arch._GetCurveT({120, -50}), 1, 1e-9);
    CurveSource source(6);
    for (int i = 0; i < 200; ++i) {
        const CBezier c = source.Ordinary();
        EXPECT_EQ(c._GetCurveT(c.p0), 0);
        const double t = c._GetCurveT(source.Point(5000));
        EXPECT_GE(t, 0);
        EXPECT_LE(t, 1);
        EXPECT_TRUE(SameBits(c._GetCurvePoint(c.p0), c.p0));
    }
}

TEST(BezierSegment, TheScanOfEquallyFarSamplesGivesTheEarliest) {
    const CBezier point({0, 0}, {0, 0}, {0, 0}, {0, 0});
    EXPECT_EQ(point._GetCurveT({3, 3}), 0);
    EXPECT_EQ(point._GetCurveT({kNaN, 0}), 0);
    EXPECT_EQ(point._GetCurveT({1e101, 0}), 0);
}

// ---- Nearest point exactly

TEST(BezierSegment, NearestPointIsNoFartherThanAnySample) {
    CurveSource source(7);
    for (int i = 0; i < 400; ++i) {
        const CBezier c = i % 4 == 0 ? source.Degenerate() : source.Ordinary();
        const DPOINT p = i % 4 == 0 ? source.Point(4) : source.Point(1500);
        const double found = Apart(c.GetNearestCurvePoint(p), p);
        for (int k = 0; k <= 1000; ++k) {
            const double sample = Apart(c.GetCurvePoint(k / 1000.0), p);
            EXPECT_LE(found, sample + 1e-9 * (1 + sample)) << "case " << i << " at " << k / 1000.0;
        }
    }
}

TEST(BezierSegment, NearestPointOfACurvePointIsThatPoint) {
    CurveSource source(8);
    for (int i = 0; i < 400; ++i) {
        const CBezier c = source.Ordinary();
        const DPOINT p = c.GetCurvePoint(source.Uniform(0, 1));
        EXPECT_LE(Apart(c.GetNearestCurvePoint(p), p), 1e-7) << "case " << i;
    }
}

TEST(BezierSegment, NearestDistanceIsThatOfTheNearerHalf) {
    CurveSource source(9);
    const auto middle = [](const DPOINT& a, const DPOINT& b) {
        return DPOINT{(a.x + b.x) / 2, (a.y + b.y) / 2};
    };
    for (int i = 0; i < 300; ++i) {
        const CBezier c = source.Ordinary();
        const DPOINT m01 = middle(c.p0, c.p1), m12 = middle(c.p1, c.p2), m23 = middle(c.p2, c.p3);
        const DPOINT m012 = middle(m01, m12), m123 = middle(m12, m23), m = middle(m012, m123);
        const CBezier left(c.p0, m01, m012, m), right(m, m123, m23, c.p3);
        const DPOINT p = source.Point(1500);
        const double whole = Apart(c.GetNearestCurvePoint(p), p);
        const double halves =
            std::min(Apart(left.GetNearestCurvePoint(p), p), Apart(right.GetNearestCurvePoint(p), p));
        EXPECT_NEAR(whole, halves, 1e-9 * (1 + whole)) << "case " << i;
    }
}

struct NearestCase {
    const char* what;
    CBezier curve;
    DPOINT p;
    double t;
};

TEST(BezierSegment, NearestParameterOfSpecialPoints) {
    const CBezier arch({0, 0}, {0, 40}, {100, 40}, {100, 0});
    const CBezier point({5, 5}, {5, 5}, {5, 5}, {5, 5});
    const CBezier line({0, 0}, {1, 0}, {2, 0}, {3, 0});
    const CBezier nan({kNaN, 0}, {1, 0}, {2, 0}, {3, 0});
    const NearestCase cases[] = {
        {"above the top", arch, {50, 100}, 0.5},
        {"equally far from both ends, which are nearest", arch, {50, -1000}, 0},
        {"the start", arch, {0, 0}, 0},
        {"the end", arch, {100, 0}, 1},
        {"beyond the end", line, {9, 0}, 1},
        {"before the start", line, {-9, 1}, 0},
        {"beside a line", line, {2.25, 7}, 0.75},
        {"a point is everywhere equally near", point, {0, 0}, 0},
        {"a point from itself", point, {5, 5}, 0},
        {"NaN on the curve", nan, {1, 1}, 0},
        {"NaN asked for", arch, {kNaN, 1}, 0},
        {"infinitely far", arch, {kInfinity, 1}, 0},
        {"overflowing squares", arch, {1e300, 1e300}, 0},
    };
    for (const NearestCase& c : cases) {
        EXPECT_NEAR(c.curve.GetNearestCurvePointT(c.p), c.t, 1e-12) << c.what;
    }
}

TEST(BezierSegment, NearestParameterOfAnyInputLiesOnTheSegment) {
    CurveSource source(10);
    for (int i = 0; i < 2000; ++i) {
        const CBezier c = i % 2 == 0 ? source.Hostile() : source.Degenerate();
        const DPOINT p{i % 3 == 0 ? source.HostileValue() : 1.0, source.Uniform(-3, 3)};
        const double t = c.GetNearestCurvePointT(p);
        EXPECT_TRUE(t >= 0 && t <= 1) << t;
    }
}

}  // namespace
}  // namespace tarvex
