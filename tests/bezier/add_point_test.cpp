// Nodes at points of contours, and handles put in order.
#include "support/precompiled.h"

#include "bezier/curves.h"
#include "support/property.h"
#include "support/records.h"
#include "tarvex/nodes.h"

namespace tarvex {
namespace {

using namespace test;

TEST(AddPointToPolyBezier, SplitsTheSegmentWithoutChangingTheCurve) {
    test::ExpectLaw([](unsigned seed) {
        CurveSource source(seed);
        Nodes contour;
        for (int n = source.Integer(2, 6); n > 0; --n)
            contour.Add({source.Point(500), source.Point(500), source.Point(500), 9});
        Nodes before;
        before.Copy(contour);
        const int segment = source.Integer(0, contour.GetSize() - 2);
        const double t = source.Uniform(0.05, 0.95);
        const CBezier whole(before[segment], before[segment + 1]);
        const DPOINT p = whole.GetCurvePoint(t);
        const bool exactly = source.Integer(0, 1) == 1;
        const int i = AddPointToPolyBezier(&contour, p, exactly);
        RC_ASSERT(contour.GetSize() == before.GetSize() + 1);
        RC_ASSERT(i == segment + 1 && contour[i].flags == 0);
        RC_ASSERT((exactly ? SameBits(contour[i].pt, p) : contour[i].pt == p));
        for (int k = 0; k <= 20; ++k) {
            const double u = k / 20.0;
            const DPOINT left = CBezier(contour[i - 1], contour[i]).GetCurvePoint(u);
            const DPOINT right = CBezier(contour[i], contour[i + 1]).GetCurvePoint(u);
            RC_ASSERT(PlainDistance(left, whole.GetCurvePoint(t * u)) < 1e-6);
            RC_ASSERT(PlainDistance(right, whole.GetCurvePoint(t + (1 - t) * u)) < 1e-6);
        }
        RC_ASSERT(AddPointToPolyBezier(&contour, p, exactly) == i);  // there is one now
    });
}

TEST(AddPointToPolyBezier, LinesStayLinesAndWhatCannotBeMeasuredIsRefused) {
    const DPOINT a{0, 0}, b{10, 0};
    Nodes line = MakeNodes({{a, a, a}, {b, b, b}});
    EXPECT_EQ(AddPointToPolyBezier(&line, {4, 1}, false), 1);
    EXPECT_EQ(line[1], (BPOINT{{4, 0}, {4, 0}, {4, 0}}));
    EXPECT_EQ(AddPointToPolyBezier(&line, {7, 1}, true), 2);
    EXPECT_EQ(line[2], (BPOINT{{7, 1}, {7, 1}, {7, 1}}));
    EXPECT_EQ(AddPointToPolyBezier(&line, {-5, 0}, false), 0);
    EXPECT_EQ(AddPointToPolyBezier(&line, {10, 5e-9}, true), 3);
    EXPECT_EQ(line.GetSize(), 4);

    Nodes lone = MakeNodes({{a, a, a}});
    EXPECT_EQ(AddPointToPolyBezier(nullptr, a, true), -1);
    EXPECT_EQ(AddPointToPolyBezier(&lone, a, true), -1);
    EXPECT_EQ(AddPointToPolyBezier(&line, {kNaN, 0}, true), -1);
    Nodes bad = MakeNodes({{a, {kNaN, 0}, a}, {b, {0, kNaN}, b}});
    EXPECT_EQ(AddPointToPolyBezier(&bad, a, true), -1);
    EXPECT_EQ(bad.GetSize(), 2);
}

TEST(FixBezierCP, SettlesHandlesAndTheSeamAndNothingElse) {
    const DPOINT p{1, 2}, q{50, 60}, far{9, 9};
    Nodes contour = MakeNodes(
        {{{kNaN, 0}, p, {p.x + 5e-9, p.y}}, {far, q, {kInfinity, 0}}, {far, {p.x, p.y + 5e-9}, far}});
    FixBezierCP(contour);
    EXPECT_TRUE(SameBits(contour[0].cp1, p) && SameBits(contour[0].cp2, p));
    EXPECT_TRUE(SameBits(contour[1].cp1, far) && SameBits(contour[1].cp2, q));
    EXPECT_TRUE(SameBits(contour[2].pt, p));
    EXPECT_EQ(contour[2].cp1, far);
    Nodes open = MakeNodes({{far, p, far}, {far, q, far}});
    FixBezierCP(open);
    EXPECT_TRUE(SameBits(open[0].cp1, far) && SameBits(open[1].cp2, far) && SameBits(open[1].pt, q));
}

}  // namespace
}  // namespace tarvex
