// Tangents at nodes, cutting and turning of contours.
#include "support/precompiled.h"

#include "bezier/curves.h"
#include "bezier/vector.h"
#include "support/property.h"
#include "support/records.h"
#include "tarvex/lines.h"
#include "tarvex/nodes.h"

namespace tarvex {
namespace {

using namespace test;

constexpr double kRoot = 0.70710678118654752;

TEST(NodeArrays, TellSmoothNodesAndBisectCorners) {
    const std::vector<BPOINT> square = {Corner(0, 0), Corner(9, 0), Corner(9, 9), Corner(0, 9), Corner(0, 0)};
    struct Row {
        std::vector<BPOINT> nodes;
        int i, smooth;
        DPOINT bisector;
    };
    for (const Row& row : {
             Row{square, 1, 0, {-kRoot, kRoot}},
             Row{square, 0, 0, {kRoot, kRoot}},  // the closing node is the first
             Row{square, 4, 0, {kRoot, kRoot}},
             Row{{Corner(0, 0), Corner(9, 0), Corner(9, 9)}, 0, 0, {0, 1}},  // ends: one tangent
             Row{{Corner(0, 0), Corner(9, 0), Corner(9, 9)}, 2, 0, {-1, 0}},
             Row{{Corner(0, 0), Corner(5, 0), Corner(9, 0)}, 1, 1, {0, 1}},
             Row{{Corner(0, 0), {{4, 0.01}, {5, 0}, {6, 0}}, Corner(9, 9)}, 1, 1, {0.005, 1}},
             Row{{Corner(0, 0), {{4, 0.03}, {5, 0}, {6, 0}}, Corner(9, 9)}, 1, 0, {0.015, 1}},
             Row{{Corner(0, 0), {{6, 0}, {5, 0}, {7, 0}}, Corner(9, 9)}, 1, 0, {1, 0}},  // a cusp
             // Collapsed handles: the direction is that to the next control point that is elsewhere.
             Row{{{{0, 0}, {0, 0}, {5, -3}}, {{5, 0}, {5, 0}, {5, 0}}, {{5, 3}, {9, 0}, {9, 0}}},
                 1,
                 1,
                 {-1, 0}},
             Row{{Corner(0, 0), Corner(5, 0), Corner(5, 0), Corner(5, 0), Corner(5, 9)},
                 2,
                 0,
                 {-kRoot, kRoot}},
         }) {
        const Nodes nodes = MakeNodes(row.nodes);
        DPOINT bisector;
        EXPECT_EQ(IsSmooth(nodes, row.i), row.smooth);
        EXPECT_TRUE(GetBisector(nodes, row.i, bisector));
        EXPECT_NEAR(bisector.x, row.bisector.x, 1e-3);
        EXPECT_NEAR(bisector.y, row.bisector.y, 1e-3);
    }
    const Nodes flat = MakeNodes({Corner(1, 1), Corner(1, 1), Corner(1, 1)});
    for (int i : {-1, 0, 1, 3, std::numeric_limits<int>::max()}) {
        DPOINT bisector{7, 7};
        EXPECT_EQ(IsSmooth(flat, i), 0);
        EXPECT_FALSE(GetBisector(flat, i, bisector));
        EXPECT_EQ(bisector, (DPOINT{0, 0}));
    }
}

TEST(NodeArrays, BisectorsTurnWithTheContourAndChangeSideWithItsDirection) {
    test::ExpectLaw([](unsigned seed, bool isClosed) {
        CurveSource source(seed);
        Nodes nodes = RandomContour(source, isClosed);
        const int last = nodes.GetUpperBound(), i = source.Integer(0, last);
        const double angle = source.Uniform(-3, 3);
        DPOINT before, turned, reversed;
        RC_ASSERT(GetBisector(nodes, i, before));
        const int wasSmooth = IsSmooth(nodes, i);
        SwapPoints(nodes);
        RC_ASSERT(GetBisector(nodes, last - i, reversed));
        RC_ASSERT(Distance(reversed, Times(before, -1)) < 1e-9);
        RC_ASSERT(IsSmooth(nodes, last - i) == wasSmooth);
        SwapPoints(nodes);
        for (BPOINT& node : nodes) {
            CBezierPoint point(node);
            point.Rotate(5, 6, angle);
            node = point.GetNode();
        }
        RC_ASSERT(GetBisector(nodes, i, turned));
        Rotate(&before.x, &before.y, 0, 0, angle);
        RC_ASSERT(Distance(turned, before) < 1e-9);
    });
}

TEST(NodeArrays, SplitIntoTwoThatTraceTheSameCurve) {
    test::ExpectLaw([](unsigned seed, bool isClosed) {
        CurveSource source(seed);
        const Nodes nodes = RandomContour(source, isClosed);
        const int segment = source.Integer(0, nodes.GetUpperBound() - 1);
        const double t = source.Uniform(0.05, 0.95);
        Nodes first, second;
        RC_ASSERT(SplitBPointArray(nodes, segment, t, first, second));
        RC_ASSERT(first.GetSize() == segment + 2);
        RC_ASSERT(second.GetSize() == nodes.GetSize() - segment);
        RC_ASSERT(SameBits(first[segment + 1].pt, second[0].pt));
        RC_ASSERT(first[segment + 1].flags == 0 && second[1].flags == nodes[segment + 1].flags);
        for (int i = 0; i < segment; ++i)
            RC_ASSERT(first[i].cp1 == nodes[i].cp1 && first[i].pt == nodes[i].pt);
        const CBezier whole = SegmentOfNodes(nodes, segment);
        const CBezier left = SegmentOfNodes(first, segment), right = SegmentOfNodes(second, 0);
        const bool isLine = whole.p0 == whole.p1 && whole.p2 == whole.p3;
        for (double u : {0.0, 0.3, 0.7, 1.0}) {
            if (isLine) {
                RC_ASSERT(GetDistanceFromLine(whole.p0.x, whole.p0.y, whole.p3.x, whole.p3.y,
                                              left.GetCurvePoint(u).x, left.GetCurvePoint(u).y) < 1e-9);
                continue;
            }
            RC_ASSERT(Distance(left.GetCurvePoint(u), whole.GetCurvePoint(u * t)) < 1e-9);
            RC_ASSERT(Distance(right.GetCurvePoint(u), whole.GetCurvePoint(t + u * (1 - t))) < 1e-9);
        }
        const DPOINT cut = second[0].pt;
        Nodes near1, near2;
        RC_ASSERT(SplitBPointArray(nodes, cut, near1, near2));
        RC_ASSERT(Distance(near2[0].pt, cut) < 1e-6);
    });
}

TEST(NodeArrays, SplitAtNodesKeepsThemAndEndsOfContoursAreNoCut) {
    const Nodes nodes = MakeNodes(
        {{{0, 0}, {0, 0}, {0, 5}, 1}, {{5, 9}, {9, 9}, {12, 9}, 2}, {{15, 5}, {15, 0}, {15, 0}, 3}});
    for (const auto& [segment, t] : {std::pair{0, 1.0}, {1, 0.0}, {0, 1 - 1e-12}, {1, 1e-12}}) {
        Nodes first, second;
        EXPECT_TRUE(SplitBPointArray(nodes, segment, t, first, second));
        EXPECT_THAT(first, testing::ElementsAre(nodes[0], BPOINT{{5, 9}, {9, 9}, {9, 9}, 2}));
        EXPECT_THAT(second, testing::ElementsAre(BPOINT{{9, 9}, {9, 9}, {12, 9}, 2}, nodes[2]));
    }
    for (const auto& [segment, t] :
         {std::pair{0, 0.0}, {1, 1.0}, {-1, 0.5}, {2, 0.5}, {0, -0.1}, {0, 1.1}, {0, kNaN}}) {
        Nodes first = MakeNodes({Corner(1, 1)}), second = MakeNodes({Corner(1, 1)});
        EXPECT_FALSE(SplitBPointArray(nodes, segment, t, first, second));
        EXPECT_TRUE(first.IsEmpty() && second.IsEmpty());
    }
    Nodes own = MakeNodes({Corner(0, 0), Corner(8, 0)}), rest;
    EXPECT_TRUE(SplitBPointArray(own, 0, 0.25, own, rest)) << "the contour itself may be an output";
    EXPECT_THAT(own, testing::ElementsAre(Corner(0, 0), Corner(2, 0)));
    EXPECT_THAT(rest, testing::ElementsAre(Corner(2, 0), Corner(8, 0)));
    EXPECT_FALSE(SplitBPointArray(rest, DPOINT{kNaN, 0}, own, rest));
}

TEST(NodeArrays, SwapPointsTurnsARangeRound) {
    Nodes nodes =
        MakeNodes({{{1, 0}, {2, 0}, {3, 0}, 1}, {{4, 0}, {5, 0}, {6, 0}, 2}, {{7, 0}, {8, 0}, {9, 0}, 3}});
    EXPECT_TRUE(SwapPoints(nodes, 1, 2));
    EXPECT_THAT(nodes,
                testing::ElementsAre(BPOINT{{1, 0}, {2, 0}, {3, 0}, 1}, BPOINT{{9, 0}, {8, 0}, {7, 0}, 3},
                                     BPOINT{{6, 0}, {5, 0}, {4, 0}, 2}));
    for (const auto& [first, last] : {std::pair{-1, 1}, {2, 1}, {0, 3}})
        EXPECT_FALSE(SwapPoints(nodes, first, last));
    EXPECT_EQ(nodes[1].flags, 3);
    Nodes none;
    SwapPoints(none);
    EXPECT_TRUE(none.IsEmpty());
}

}  // namespace
}  // namespace tarvex
