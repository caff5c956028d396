// The cubic segment: evaluation, nearest point, lengths.
#include "bezier/curves.h"

namespace tarvex {
namespace {

using namespace test;

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

// ---- Evaluation

TEST(BezierSegment, ComesFromNodesByTheirFacingHandles) {
    const BPOINT a{{1, 2}, {3, 4}, {5, 6}, 7};
    const BPOINT b{{11, 12}, {13, 14}, {15, 16}, 17};
    const CBezier c(a, b);
    EXPECT_TRUE(SamePoints(Points{c.p0, c.p1, c.p2, c.p3}, {{3, 4}, {5, 6}, {11, 12}, {13, 14}}));
    EXPECT_EQ(c.resolution, 1.0);
    EXPECT_TRUE(c.expandStraightLines);
}

TEST(BezierSegment, EvaluationSumsInTheStatedOrder) {
    CurveSource source(2);
    for (int i = 0; i < 1000; ++i) {
        const CBezier c = source.Any();
        const double t = i % 8 < 2 ? i % 8 : source.Uniform(-1, 2);
        EXPECT_TRUE(SameBits(c.GetCurvePoint(t), PlainPoint(c, t))) << "case " << i;
    }
    const CBezier known({0, 0}, {1, 0}, {2, 0}, {3, 27});  // x = 3t, y = 27t³
    for (const double t : {-1.0, 0.25, 4.0})
        EXPECT_LT(PlainDistance(known.GetCurvePoint(t), {3 * t, 27 * t * t * t}), 1e-11) << t;
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
        Points expected{c.p0};
        for (int k = 1; k < n; ++k) expected.push_back(PlainPoint(c, static_cast<double>(k) / n));
        expected.push_back(c.p3);
        DPoints points = Polyline({{1, 1}});
        c.GetPolylineEx(points);
        EXPECT_TRUE(SamePoints(points, expected));
    }
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
        if (i % 16 == 7) p = c.p3;
        const double t = PlainScan(c, p);
        EXPECT_TRUE(t >= 0 && t <= 1) << "case " << i;
        EXPECT_TRUE(SameBits(c._GetCurveT(p), t)) << "case " << i;
        EXPECT_TRUE(SameBits(c._GetCurvePoint(p), PlainPoint(c, t))) << "case " << i;
    }
    const CBezier point({0, 0}, {0, 0}, {0, 0}, {0, 0});
    for (const DPOINT& p : {DPOINT{3, 3}, {kNaN, 0}, {1e101, 0}})
        EXPECT_EQ(point._GetCurveT(p), 0) << "of equally far samples the earliest";
}

// ---- Nearest point exactly

TEST(BezierSegment, NearestPointIsNoFartherThanAnySample) {
    CurveSource source(7);
    for (int i = 0; i < 800; ++i) {
        const CBezier c = i % 4 == 0 ? source.Degenerate() : source.Ordinary();
        const double on = source.Uniform(0, 1);
        const DPOINT p = i % 4 == 0 ? source.Point(4) : i % 4 == 1 ? c.GetCurvePoint(on) : source.Point(1500);
        const double found = PlainDistance(c.GetNearestCurvePoint(p), p);
        double best = 0, least = kInfinity;
        const auto sample = [&](double from, double step, int steps) {
            for (int k = 0; k <= steps; ++k) {
                const double t = std::clamp(from + k * step, 0.0, 1.0);
                const double distance = PlainDistance(c.GetCurvePoint(t), p);
                if (distance < least) std::tie(least, best) = std::pair(distance, t);
            }
        };
        sample(0, 1e-3, 1000);
        // Around the best of them, so closely that nothing is left to find.
        for (double reach = 1e-3; reach > 1e-10; reach /= 4) sample(best - reach, reach / 4, 8);
        EXPECT_LE(found, least + 1e-9 * (1 + least)) << "case " << i << " at " << best;
        EXPECT_TRUE(i % 4 != 1 || found <= 1e-7) << "case " << i << ": a point of the curve";
    }
}

TEST(BezierSegment, NearestParameterOfSpecialPoints) {
    const CBezier arch({0, 0}, {0, 40}, {100, 40}, {100, 0});
    const CBezier point({5, 5}, {5, 5}, {5, 5}, {5, 5});
    const CBezier line({0, 0}, {1, 0}, {2, 0}, {3, 0});
    const CBezier nan({kNaN, 0}, {1, 0}, {2, 0}, {3, 0});
    // Products of these are subnormal, with hardly a digit.
    const CBezier tiny({-3.5225442443705094e-132, -3.522544795390783e-132}, {6.8e-304, 0}, {0, 0}, {0, 0});
    struct Case {
        const char* what;
        CBezier curve;
        DPOINT p;
        double t;
    };
    const Case cases[] = {
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
        {"the end among subnormal numbers", tiny, {0, 0}, 1},
    };
    for (const Case& c : cases) {
        const double t = c.curve.GetNearestCurvePointT(c.p);
        EXPECT_NEAR(t, c.t, 1e-12) << c.what;
        EXPECT_TRUE(t >= 0 && t <= 1) << c.what;
    }
}

}  // namespace
}  // namespace tarvex
