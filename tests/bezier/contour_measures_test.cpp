// Area, frame and arc length of contours, and everything that is asked by arc length.
#include "support/precompiled.h"

#include "bezier/curves.h"
#include "bezier/vector.h"
#include "support/property.h"
#include "support/records.h"
#include "tarvex/ellipse.h"
#include "tarvex/nodes.h"

namespace tarvex {
namespace {

using namespace test;

/// A circle of radius 100 about the origin, from its right end, clockwise on a screen; a quarter of it leaves
/// the true circle by at most 0.03.
Nodes Circle() {
    Nodes nodes;
    CEllipse({}, 100).GetBeziers(nodes);
    return nodes;
}

TEST(ContourMeasures, AgreeWithFineChords) {
    test::ExpectLaw(
        [](unsigned seed, bool isClosed) {
            CurveSource source(seed);
            Nodes nodes = RandomContour(source, isClosed);
            constexpr int chords = 4000;
            double length = 0, area = 0;
            DRECT box{1e9, -1e9, 1e9, -1e9};
            for (int i = 0; i + 1 < nodes.GetSize(); ++i) {
                const CBezier curve = SegmentOfNodes(nodes, i);
                for (int k = 0; k < chords; ++k) {
                    const DPOINT a = curve.GetCurvePoint(double(k) / chords),
                                 b = curve.GetCurvePoint((k + 1.0) / chords);
                    length += Distance(a, b);
                    area += (a.x * b.y - a.y * b.x) / 2;
                    box = {std::min({box.left, a.x, b.x}), std::max({box.right, a.x, b.x}),
                           std::min({box.top, a.y, b.y}), std::max({box.bottom, a.y, b.y})};
                }
            }
            const DPOINT end = nodes[nodes.GetUpperBound()].pt, start = nodes[0].pt;
            area += (end.x * start.y - end.y * start.x) / 2;
            // A chord of 1/4000 of a curve of some hundred units strays by less than 1e-4.
            RC_ASSERT(std::fabs(GetBezierLength(nodes) - length) < 1e-3);
            RC_ASSERT(std::fabs(GetBezierArea(nodes) - area) < 0.1);
            DRECT frame;
            RC_ASSERT(GetBezierFrame(nodes, frame));
            RC_ASSERT(std::fabs(frame.left - box.left) + std::fabs(frame.right - box.right) < 1e-3);
            RC_ASSERT(std::fabs(frame.top - box.top) + std::fabs(frame.bottom - box.bottom) < 1e-3);
            const double was = GetBezierArea(nodes);
            SwapPoints(nodes);
            RC_ASSERT(std::fabs(GetBezierArea(nodes) + was) < 1e-6);
        },
        40);
}

TEST(ContourMeasures, MeasureCuspsAndLinesThatTurnBack) {
    // x(t) = 9t - 24t² + 16t³ turns at t = 1/4 and 3/4: out 1, back 1, out 1.
    const Nodes back = MakeNodes({{{0, 0}, {0, 0}, {3, 0}}, {{-2, 0}, {1, 0}, {1, 0}}});
    EXPECT_NEAR(GetBezierLength(back), 3, 1e-10);
    // A cusp where the speed vanishes: x = 3t - 6t² + 4t³ and y = 3t(1-t)·4, B'(1/2) = 0 in x; compared with
    // chords.
    const Nodes cusp = MakeNodes({{{0, 0}, {0, 0}, {100, 100}}, {{0, 100}, {100, 0}, {100, 0}}});
    EXPECT_NEAR(GetBezierLength(cusp), CBezier(cusp[0], cusp[1]).GetL(200000), 1e-6);
    EXPECT_EQ(GetBezierLength(Corners({{0, 0}, {3, 4}})), 5);
    const CBPointArrayMath math(back);
    for (double s : {0.5, 1.0, 1.5, 2.0, 2.5}) EXPECT_NEAR(math.GetLengthAt(math.GetPlace(s)), s, 1e-9);
    EXPECT_NEAR(math.GetPoint(1.5).x, 0.5, 1e-9) << "on the way back";
    EXPECT_NEAR(math.GetTangent(1.5).x, -1, 1e-12);
    EXPECT_EQ(CBPointArrayMath(cusp).GetTangent(BPOINTPLACE{0, 0.5}), (DPOINT{0, -1})) << "out of the cusp";
}

TEST(ContourMeasures, FramesPassOverWhatIsNoNumber) {
    const double none = std::nan("");
    DRECT frame{1, 2, 3, 4};
    EXPECT_TRUE(GetBezierFrame(Corners({{none, 5}, {3, none}, {7, 8}}), frame));
    EXPECT_EQ(frame, (DRECT{3, 7, 5, 8}));
    for (const Nodes& nodes :
         {Corners({{none, 5}, {none, 6}}), Corners({{5, none}, {6, none}}), Corners({{5, 6}})})
        EXPECT_FALSE(GetBezierFrame(nodes, frame));
    EXPECT_EQ(frame, (DRECT{3, 7, 5, 8})) << "as it was";
}

TEST(ContourMeasures, FindPlacesByLengthAndBack) {
    test::ExpectLaw(
        [](unsigned seed, bool isClosed, std::uint16_t fraction) {
            CurveSource source(seed);
            const Nodes nodes = RandomContour(source, isClosed);
            const CBPointArrayMath math(nodes);
            const double whole = math.GetLength(), s = whole * fraction / 65536;
            RC_ASSERT(std::fabs(whole - GetBezierLength(nodes)) < 1e-9 * whole);
            const BPOINTPLACE place = math.GetPlace(s);
            RC_ASSERT(std::fabs(math.GetLengthAt(place) - s) < 1e-9 * whole);
            const DPOINT along = math.GetTangent(s), at = math.GetPoint(s);
            RC_ASSERT(std::fabs(Length(along) - 1) < 1e-12);
            // A short way along, the curve is where the tangent points, except across corners and sharp
            // bends.
            const double step = 1e-5, ahead = std::min(s + step, whole);
            if (math.GetPlace(ahead).segment == place.segment && ahead > s) {
                const DPOINT moved = math.GetPoint(ahead);
                RC_ASSERT(Distance(moved, at) <= ahead - s + 1e-9);
                const DPOINT tangentThen = math.GetTangent(ahead);
                if (Dot(along, tangentThen) > 0.9999)
                    RC_ASSERT(Dot(Minus(moved, at), along) > 0.99 * (ahead - s) - 1e-9);
            }
            RC_ASSERT(SameBits(math.GetPoint(whole), nodes[nodes.GetUpperBound()].pt));
            if (isClosed) RC_ASSERT(Distance(math.GetPoint(s - 3 * whole), at) < 1e-6);
        },
        200);
}

TEST(ContourMeasures, CutPartsOfTheStatedLength) {
    test::ExpectLaw(
        [](unsigned seed, bool isClosed, std::uint16_t a, std::uint16_t b) {
            CurveSource source(seed);
            const Nodes nodes = RandomContour(source, isClosed);
            const CBPointArrayMath math(nodes);
            const double whole = math.GetLength();
            double from = whole * a / 65536, to = whole * b / 65536;
            if (to < from && isClosed) to += whole;  // through the start
            Nodes part;
            RC_ASSERT(math.GetPart(from, to, part) == (to - from >= 1e-8));
            if (part.IsEmpty()) return;
            RC_ASSERT(std::fabs(GetBezierLength(part) - (to - from)) < 1e-7 * whole);
            RC_ASSERT(Distance(part[0].pt, math.GetPoint(from)) < 1e-6);
            RC_ASSERT(Distance(part[part.GetUpperBound()].pt, math.GetPoint(to)) < 1e-6);
            for (const BPOINT& node : part) {
                if (node.flags != 0) RC_ASSERT(node.pt == nodes[node.flags - 1].pt);
                const BPOINTPLACE place = math.GetNearest(node.pt);
                RC_ASSERT(Distance(math.GetPoint(place), node.pt) < 1e-6);
            }
        },
        200);
    const Nodes circle = Circle();
    const CBPointArrayMath math(circle);
    Nodes part;
    EXPECT_TRUE(math.GetPart(-1e9, 1e9, part)) << "at most once around";
    EXPECT_NEAR(GetBezierLength(part), math.GetLength(), 1e-6);
    EXPECT_TRUE(math.GetPart(0, math.GetLength(), part));
    EXPECT_EQ(part.GetSize(), 5);
    EXPECT_FALSE(math.GetPart(5, 5, part));
    EXPECT_TRUE(part.IsEmpty());
}

TEST(ContourMeasures, SpacePointsEvenly) {
    const Nodes nodes = Circle();
    const CBPointArrayMath circle(nodes);
    DPoints points;
    circle.GetEvenPoints(12, points);
    ASSERT_EQ(points.GetSize(), 12);
    for (int i = 0; i < 12; ++i) {
        const double angle = i * kPi / 6;
        EXPECT_LT(Distance(points[i], {100 * std::cos(angle), 100 * std::sin(angle)}), 0.05) << i;
    }
    const CBPointArrayMath line(Corners({{1, 1}, {7, 1}}));
    for (const Points& even : {Points{}, {{1, 1}}, {{1, 1}, {3, 1}, {5, 1}, {7, 1}}}) {
        line.GetEvenPoints(static_cast<int>(even.size()), points);
        EXPECT_EQ(ListOf(points), even);
    }
}

TEST(ContourMeasures, OfNothingAndOfNumbersThatAreNone) {
    EXPECT_EQ(CBPointArrayMath({}).GetLength(), 0);
    EXPECT_EQ(CBPointArrayMath({}).GetPlace(1).segment, -1);
    const CBPointArrayMath circle(Circle());
    for (const BPOINTPLACE& nowhere : {BPOINTPLACE{-1, 0.5}, {4, 0.5}, {0, kNaN}}) {
        EXPECT_TRUE(std::isnan(circle.GetLengthAt(nowhere))) << nowhere.segment;
        EXPECT_TRUE(SameBits(circle.GetPoint(nowhere), DPOINT{0, 0})) << nowhere.segment;
        EXPECT_TRUE(SameBits(circle.GetTangent(nowhere), DPOINT{0, 0})) << nowhere.segment;
    }
    const Nodes lost = MakeNodes({{{0, 0}, {0, 0}, {kNaN, 0}}, Corner(1, 1)});
    EXPECT_TRUE(std::isnan(GetBezierLength(lost)));
    EXPECT_EQ(CBPointArrayMath(lost).GetPlace(1).segment, -1);
}

}  // namespace
}  // namespace tarvex
