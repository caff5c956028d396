// CBezierPoint: what moves together, what counts as smooth, and how a node is made so.
#include "support/precompiled.h"

#include "bezier/curves.h"
#include "bezier/vector.h"
#include "support/property.h"
#include "support/records.h"
#include "tarvex/nodes.h"

namespace tarvex {
namespace {

using test::CurveSource;

constexpr BPOINT kNode = {{-1, 0}, {0, 0}, {1, 0}, 77};

TEST(BezierPoint, MovesItsPointsTogetherAndKeepsItsFlags) {
    CBezierPoint point(kNode);
    point.Move(10, 0);
    EXPECT_EQ(point.GetNode(), (BPOINT{{-11, 0}, {-10, 0}, {-9, 0}, 77})) << "the offset is subtracted";
    point.Move(DPOINT{-10, 5});
    EXPECT_EQ(point.GetNode(), (BPOINT{{-1, -5}, {0, -5}, {1, -5}, 77}));
    point.Stretch({1, -4}, 2, -3);
    EXPECT_EQ(point.GetNode(), (BPOINT{{-3, -1}, {-1, -1}, {1, -1}, 77}));
    point.Rotate(-1, 0, std::acos(-1.0) / 2);
    EXPECT_EQ(point.GetNode(), (BPOINT{{0, -2}, {0, 0}, {0, 2}, 77}));
    point.Rotate(5, 6, 0);
    EXPECT_EQ(point.GetNode(), (BPOINT{{0, -2}, {0, 0}, {0, 2}, 77}));
    const CBezierPoint copy = point;
    EXPECT_EQ(copy.GetNode(), point.GetNode());
}

TEST(BezierPoint, IsSmoothWithinATenthOfAUnit) {
    const std::pair<BPOINT, int> cases[] = {
        {kNode, 1},
        {{{0, 0}, {0, 0}, {0, 0}}, 0},
        {{{-0.09, 0}, {0, 0}, {1, 0}}, 0},
        {{{-1, 0}, {0, 0}, {0, 0.09}}, 0},
        {{{-1, 0}, {0, 0.09}, {1, 0}}, 1},
        {{{-1, 0}, {0, 0.11}, {1, 0}}, 0},
        {{{1, 0}, {0, 0}, {2, 0}}, 1},
        {{{5, 5}, {0, 0}, {5, 5}}, 0},
    };
    for (const auto& [node, smooth] : cases) EXPECT_EQ(CBezierPoint(node).IsSmooth(), smooth);
}

TEST(BezierPoint, SmoothHandlesAreOppositeAndAThirdAsLongAsTheirSides) {
    CBezierPoint flat({{9, 9}, {0, 0}, {9, 9}, 77});
    flat.Smooth({-3, 0}, {3, 0});
    EXPECT_EQ(flat.GetNode(), kNode);
    test::ExpectLaw([](unsigned seed) {
        CurveSource source(seed);
        const DPOINT prev = source.Point(100), at = source.Point(100), next = source.Point(100);
        CBezierPoint point({{}, at, {}});
        point.Smooth(prev, next);
        const DPOINT in = Minus(point.GetNode().cp1, at), out = Minus(point.GetNode().cp2, at);
        RC_ASSERT(std::fabs(Length(in) - Distance(prev, at) / 3) < 1e-9);
        RC_ASSERT(std::fabs(Length(out) - Distance(next, at) / 3) < 1e-9);
        RC_ASSERT(Dot(in, out) <= -Length(in) * Length(out) * (1 - 1e-12));
        // Neither handle points away from its own neighbour.
        RC_ASSERT(Dot(in, Minus(prev, at)) > -1e-9);
        RC_ASSERT(Dot(out, Minus(next, at)) > -1e-9);
    });
    for (const DPOINT& prev : {DPOINT{0, 0}, DPOINT{2, 2}}) {
        CBezierPoint point({{}, {0, 0}, {}});
        point.Smooth(prev, {2, 2});
        EXPECT_NEAR(Length(point.GetNode().cp2), std::sqrt(8) / 3, 1e-12);
    }
}

}  // namespace
}  // namespace tarvex
