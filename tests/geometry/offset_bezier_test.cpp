// Offsets of Bezier contours: how far from the true offset, what stays straight, how many nodes.
#include "support/precompiled.h"

#include "bezier/vector.h"
#include "support/contours.h"
#include "tarvex/bezier.h"
#include "tarvex/geometry.h"

namespace tarvex {
namespace {

using namespace test;

/// Points of the contour, `perSegment` to each segment.
std::vector<DPOINT> Sampled(const Nodes& nodes, int perSegment) {
    std::vector<DPOINT> points;
    for (int i = 0; i + 1 < nodes.GetSize(); ++i) {
        const CBezier curve(nodes[i], nodes[i + 1]);
        for (int k = 0; k < perSegment; ++k) points.push_back(curve.GetCurvePoint(double(k) / perSegment));
    }
    if (!nodes.IsEmpty()) points.push_back(nodes[nodes.GetUpperBound()].pt);
    return points;
}

double DistanceTo(const Nodes& nodes, DPOINT p) {
    double nearest = 1e300;
    for (int i = 0; i + 1 < nodes.GetSize(); ++i) {
        nearest = std::min(nearest, Distance(CBezier(nodes[i], nodes[i + 1]).GetNearestCurvePoint(p), p));
    }
    return nearest;
}

/// A blob with smooth joints and a few corners, clockwise.
Nodes Blob(std::mt19937& random, int count) {
    std::uniform_real_distribution<double> part(0, 1);
    Nodes nodes;
    for (int i = 0; i < count; ++i) {
        const double angle = 6.283185307 * i / count;
        const double radius = 30 + 20 * part(random);
        const DPOINT p{radius * std::cos(angle), radius * std::sin(angle)};
        const double handle = 60.0 / count;
        const double in = angle + 1.57 + (part(random) - 0.5);
        const double out = i % 3 == 0 ? angle + 1.57 + (part(random) - 0.5) : in;
        nodes.Add({{p.x - handle * std::cos(in), p.y - handle * std::sin(in)},
                   p,
                   {p.x + handle * std::cos(out), p.y + handle * std::sin(out)}});
    }
    nodes.Add(BPOINT(nodes[0]));
    return nodes;
}

TEST(OffsetBezier, ExampleOfTheHeaderHolds) {
    Nodes circle;
    CEllipse({0, 0}, 10).GetBeziers(circle);
    CPolyPolyBezier smaller = ShrinkBezier(circle, 4);
    ASSERT_EQ(smaller.GetSize(), 1);
    EXPECT_LE(smaller[0].GetSize(), 17);
    for (const DPOINT& p : Sampled(smaller[0], 20)) EXPECT_NEAR(std::hypot(p.x, p.y), 6, 0.01);
    EXPECT_EQ(smaller[0][0].pt, smaller[0][smaller[0].GetUpperBound()].pt);
    EXPECT_EQ(ShrinkBezier(circle, 10.01).GetSize(), 0);
}

TEST(OffsetBezier, IsWithinTheToleranceOfTheTrueOffset) {
    std::mt19937 random(6);
    for (int round = 0; round < 12; ++round) {
        const Nodes blob = Blob(random, 5 + round);
        for (const double distance : {0.5, 6.0, -0.5, -15.0}) {
            for (const double tolerance : {0.1, 0.01}) {
                const OffsetOptions options{
                    .mitreLimit = 1, .corner = OffsetCorner::round, .tolerance = tolerance};
                CPolyPolyBezier result = ShrinkBezier(blob, distance, options);
                ASSERT_GE(result.GetSize(), 1);
                for (int i = 0; i < result.GetSize(); ++i) {
                    EXPECT_LE(result[i].GetSize(), 200);
                    for (const DPOINT& p : Sampled(result[i], 7))
                        EXPECT_NEAR(DistanceTo(blob, p), std::fabs(distance), tolerance)
                            << round << ' ' << distance << " at " << p.x << ' ' << p.y;
                }
            }
        }
    }
}

TEST(OffsetBezier, StraightSegmentsStayStraight) {
    // Three sides of a square, one with handles along it, and an arch for the fourth.
    CPolyPolyBezier result = ShrinkBezier(MakeNodes({Corner(0, 0),
                                                     {{20, 0}, {20, 0}, {20, 5}},
                                                     {{20, 15}, {20, 20}, {20, 34}},
                                                     {{0, 34}, {0, 20}, {0, 20}},
                                                     Corner(0, 0)}),
                                          2);
    ASSERT_EQ(result.GetSize(), 1);
    const Nodes& nodes = result[0];
    double straight = 0;
    for (int i = 0; i + 1 < nodes.GetSize(); ++i) {
        if (!(nodes[i].cp2 == nodes[i].pt && nodes[i + 1].cp1 == nodes[i + 1].pt)) continue;
        const DPOINT a = nodes[i].pt, b = nodes[i + 1].pt;
        EXPECT_TRUE(std::fabs(a.x - b.x) < 1e-9 || std::fabs(a.y - b.y) < 1e-9);
        straight += std::hypot(a.x - b.x, a.y - b.y);
    }
    EXPECT_NEAR(straight, 16 + 18 + 18, 0.3);
    EXPECT_LE(nodes.GetSize(), 10);
}

TEST(OffsetBezier, OpenCurvesAndShapesWithHolesAndUnusableInput) {
    Nodes line = MakeNodes({{{0, 0}, {0, 0}, {0, 30}}, {{40, 30}, {40, 0}, {40, 0}}});
    CPolyPolyBezier moved = ShrinkBezier(line, -3);
    ASSERT_EQ(moved.GetSize(), 1);
    EXPECT_EQ(moved[0][0].pt, (DPOINT{3, 0}));
    for (const DPOINT& p : Sampled(moved[0], 30)) EXPECT_NEAR(DistanceTo(line, p), 3, 0.01);

    CPolyPolyBezier ring;
    for (const double radius : {20.0, 10.0}) {
        Nodes circle;
        CEllipse({5, 5}, radius).GetBeziers(circle);
        AddTo(ring, std::move(circle));
    }
    CPolyPolyBezier thinner = ShrinkBezier(ring, 3);
    ASSERT_EQ(thinner.GetSize(), 2);
    for (const DPOINT& p : Sampled(thinner[0], 9)) EXPECT_NEAR(Distance(p, {5, 5}), 17, 0.01);
    for (const DPOINT& p : Sampled(thinner[1], 9)) EXPECT_NEAR(Distance(p, {5, 5}), 13, 0.01);
    EXPECT_EQ(ShrinkBezier(ring, 5.01).GetSize(), 0);

    EXPECT_EQ(ShrinkBezier(line, kNaN).GetSize(), 0);
    EXPECT_EQ(ShrinkBezier(Nodes(), 1).GetSize(), 0);
    EXPECT_EQ(ShrinkBezier(line, 1e300).GetSize(), 0);
    line[1].cp1.x = kNaN;
    EXPECT_EQ(ShrinkBezier(line, 1).GetSize(), 0);
}

}  // namespace
}  // namespace tarvex
