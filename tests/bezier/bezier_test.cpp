// The cubic segment: evaluation, nearest point, length, flattening.
#include "tarvex/bezier.h"
#include "support/precompiled.h"

namespace tarvex {
namespace {

TEST(Bezier, FlatteningAStraightSegmentEitherExpandsItOrGivesItsEnd) {
    CBezier line({0, 0}, {0, 0}, {10, 0}, {10, 0});
    CArray<DPOINT, DPOINT> points;
    line.GetPolyline(points);
    ASSERT_GT(points.GetSize(), 2);
    for (int i = 1; i < points.GetSize(); ++i) {
        EXPECT_EQ(points[i].y, 0);
        EXPECT_LE(points[i].x - points[i - 1].x, 1);
    }
    EXPECT_EQ(points[0].x, 0);
    EXPECT_EQ(points[points.GetUpperBound()].x, 10);

    line.SetExpandStraightLines(false);
    points.RemoveAll();
    line.GetPolyline(points);
    ASSERT_EQ(points.GetSize(), 2);
    EXPECT_EQ(points[1].x, 10);
}

TEST(FitCurve, TwoPointsGiveOneSegmentWithHandlesOfAThird) {
    const DPOINT points[] = {{0, 0}, {9, 0}};
    CArray<BEZIER, BEZIER> segments;
    FitCurve(points, 2, &segments, 1);
    ASSERT_EQ(segments.GetSize(), 1);
    EXPECT_EQ(segments[0].p1.x, 3);
    EXPECT_EQ(segments[0].p2.x, 6);
    EXPECT_EQ(segments[0].p3.x, 9);
}

TEST(Bezier, NearestPointIsExactInTheMiddleOfASymmetricArch) {
    const CBezier arch({0, 0}, {0, 40}, {100, 40}, {100, 0});
    EXPECT_NEAR(arch.GetNearestCurvePointT({50, 100}), 0.5, 1e-12);
    EXPECT_NEAR(arch._GetCurveT({50, 100}), 0.5, 1e-9);
}

}  // namespace
}  // namespace tarvex
