// Flattening segments and contours.
#include "bezier/flatten.h"
#include "bezier/curves.h"

namespace tarvex {
namespace {

using namespace testing_support;

using Points = CArray<DPOINT, DPOINT>;

/// The rule as it reads, by recursion.
struct PlainFlattening {
    double threshold;
    std::vector<DPOINT> points;

    void Halve(const DPOINT& p0, const DPOINT& p1, const DPOINT& p2, const DPOINT& p3, int depth = 0) {
        const bool flat = PlainDistance(p0, p1) <= threshold && PlainDistance(p1, p2) <= threshold &&
                          PlainDistance(p2, p3) <= threshold;
        if (flat || points.size() > 100000 || depth == 60) {
            points.insert(points.end(), {p1, p2, p3});
            return;
        }
        const auto middle = [](const DPOINT& a, const DPOINT& b) {
            return DPOINT{(a.x + b.x) / 2, (a.y + b.y) / 2};
        };
        const DPOINT m01 = middle(p0, p1), m12 = middle(p1, p2), m23 = middle(p2, p3);
        const DPOINT m012 = middle(m01, m12), m123 = middle(m12, m23), m = middle(m012, m123);
        Halve(p0, m01, m012, m, depth + 1);
        Halve(m, m123, m23, p3, depth + 1);
    }
};

/// What follows the start point.
std::vector<DPOINT> PlainPolyline(const CBezier& c) {
    if (!c.expandStraightLines && PlainDistance(c.p0, c.p1) < 1e-8 && PlainDistance(c.p2, c.p3) < 1e-8)
        return {c.p3};
    const double chord = PlainDistance(c.p0, c.p3);
    double coarsest = -kInfinity;
    if (chord > 2000) coarsest = 3;
    if (chord > 5000) coarsest = 5;
    if (chord > 10000) coarsest = 10;
    if (chord > 100000) coarsest = 20;
    PlainFlattening plain{c.resolution < coarsest ? coarsest : c.resolution, {}};
    plain.Halve(c.p0, c.p1, c.p2, c.p3);
    return plain.points;
}

TEST(Flattening, MatchesThePlainRecursion) {
    CurveSource source(11);
    for (int i = 0; i < 250; ++i) {
        CBezier c = i % 10 == 9 ? source.Hostile() : i % 2 == 0 ? source.Ordinary(3000) : source.Degenerate();
        c.SetResolution(source.Uniform(0.05, 8));
        if (i % 25 == 3) c.SetResolution(source.HostileValue());
        c.SetExpandStraightLines(i % 3 != 0);
        std::vector<DPOINT> expected = PlainPolyline(c);
        Points points;
        points.Add({-1, -1});
        c.GetPolyline(points);
        expected.insert(expected.begin(), {-1, -1});
        EXPECT_TRUE(SamePoints(points, expected)) << "case " << i;
    }
}

/// Legs whose length is the threshold, or the next double on either side, where only a rounded root decides.
TEST(Flattening, ALegExactlyAsLongAsTheThresholdIsFlat) {
    CurveSource source(12);
    for (int i = 0; i < 3000; ++i) {
        const double scale = std::ldexp(1.0, source.Integer(-560, 500));
        const DPOINT tip{source.Uniform(-1, 1) * scale, source.Uniform(-1, 1) * scale};
        const double leg = PlainDistance({0, 0}, tip);
        for (const double threshold : {leg, std::nextafter(leg, 0.0), std::nextafter(leg, kInfinity)}) {
            Points points;
            BEZIER work{{0, 0}, tip, tip, tip, threshold, &points, 0};
            CBezier({}, {}, {}, {}).GetBArray(&work);
            EXPECT_EQ(points.GetSize() == 3, leg <= threshold) << "case " << i << ", leg " << leg;
        }
    }
}

TEST(Flattening, AStraightSegmentGivesEvenlySpacedPointsOrItsEnd) {
    CBezier line({0, 0}, {0, 0}, {10, 0}, {10, 0});
    Points points;
    line.GetPolyline(points);
    ASSERT_GT(points.GetSize(), 10);
    EXPECT_TRUE(SameBits(points[0], DPOINT{0, 0}));
    EXPECT_TRUE(SameBits(points[points.GetUpperBound()], DPOINT{10, 0}));
    for (int i = 1; i < points.GetSize(); ++i) {
        EXPECT_EQ(points[i].y, 0);
        EXPECT_GE(points[i].x, points[i - 1].x);
        EXPECT_LE(points[i].x, points[i - 1].x + 1);
    }

    line.SetExpandStraightLines(false);
    points.RemoveAll();
    line.GetPolyline(points);
    EXPECT_TRUE(SamePoints(points, {{0, 0}, {10, 0}}));
}

TEST(Flattening, OnlyCollapsedHandlesMakeASegmentStraight) {
    for (const double handle : {0.0, 9e-9, 1e-8, 0.5}) {
        CBezier c({0, 0}, {handle, 0}, {10, 0}, {10, 0});
        c.SetExpandStraightLines(false);
        Points points;
        c.GetPolyline(points);
        EXPECT_EQ(points.GetSize() == 2, handle < 1e-8) << handle;
    }
}

TEST(Flattening, AppendingToPointsDoesNotRepeatTheStart) {
    const CBezier c({0, 0}, {3, 4}, {6, 4}, {9, 0});
    Points fresh, appended;
    c.GetPolyline(fresh);
    appended.Add({0, 0});
    c.GetPolyline(appended);
    EXPECT_TRUE(SamePoints(fresh.GetData(), appended.GetData(), static_cast<std::size_t>(fresh.GetSize()),
                           static_cast<std::size_t>(appended.GetSize())));
}

TEST(Flattening, APointGivesThreeCopies) {
    const CBezier c({2, 3}, {2, 3}, {2, 3}, {2, 3});
    Points points;
    c.GetPolyline(points);
    EXPECT_TRUE(SamePoints(points, {{2, 3}, {2, 3}, {2, 3}, {2, 3}}));
}

struct CoarseningCase {
    double chord, resolution, threshold;
};

TEST(Flattening, LongChordsCoarsenTheThreshold) {
    const CoarseningCase cases[] = {
        {2000, 0.5, 0.5}, {2000.5, 0.5, 3}, {3000, 0.5, 3},  {3000, 4, 4},    {5000, 1, 3},     {5001, 1, 5},
        {10000, 1, 5},    {10001, 1, 10},   {100000, 1, 10}, {100001, 1, 20}, {100001, 25, 25},
    };
    for (const CoarseningCase& c : cases) {
        CBezier curve({0, 0}, {c.chord / 3, 100}, {c.chord / 2, -50}, {c.chord, 0});
        curve.SetResolution(c.resolution);
        Points points, expected;
        curve.GetPolyline(points);
        expected.Add(curve.p0);
        BEZIER work{curve.p0, curve.p1, curve.p2, curve.p3, c.threshold, &expected, 1};
        curve.GetBArray(&work);
        EXPECT_TRUE(SamePoints(points.GetData(), expected.GetData(),
                               static_cast<std::size_t>(points.GetSize()),
                               static_cast<std::size_t>(expected.GetSize())))
            << "chord " << c.chord << ", resolution " << c.resolution;
        EXPECT_EQ(curve.resolution, c.resolution);
    }
}

TEST(Flattening, VerticesLieWithinTheResolutionOfTheCurveAndOfEachOther) {
    CurveSource source(13);
    for (int i = 0; i < 20; ++i) {
        CBezier c = source.Ordinary(300);
        const double resolution = source.Uniform(0.5, 5);
        c.SetResolution(resolution);
        Points points;
        c.GetPolyline(points);
        for (int k = 0; k < points.GetSize(); ++k) {
            EXPECT_LE(PlainDistance(c.GetNearestCurvePoint(points[k]), points[k]), resolution);
            if (k > 0) {
                EXPECT_LE(PlainDistance(points[k - 1], points[k]), resolution);
            }
        }
    }
}

TEST(Flattening, InputThatNeverBecomesFlatEndsAtTheLimit) {
    const CBezier nan({kNaN, 0}, {1, 1}, {2, 2}, {3, 3});
    const CBezier allNaN({kNaN, kNaN}, {kNaN, kNaN}, {kNaN, kNaN}, {kNaN, kNaN});
    const CBezier infinite({0, 0}, {kInfinity, 1}, {2, 2}, {3, 3});
    const CBezier huge({-1e308, 0}, {1e308, 1}, {-1e308, 2}, {1e308, 3});
    for (CBezier c : {nan, allNaN, infinite, huge, CBezier({0, 0}, {1, 2}, {3, 4}, {5, 0})}) {
        for (const double resolution : {1.0, 0.0, -1.0, kNaN}) {
            c.SetResolution(resolution);
            Points points;
            c.GetPolyline(points);
            EXPECT_LE(points.GetSize(), 100000 + 3 * 62);
            EXPECT_TRUE(SameBits(points[points.GetUpperBound()], c.p3));
        }
    }
}

TEST(Flattening, TheLimitCountsFromTheRecordsStart) {
    Points points;
    points.Add({0, 0});
    const CBezier unused({}, {}, {}, {});
    for (const auto& [startCount, appended] :
         {std::pair{-100000, 3}, {-99999, 9}, {INT32_MIN, 3}, {INT32_MAX, 12}}) {
        points.SetSize(1);
        BEZIER work{{0, 0}, {4, 0}, {4, 4}, {0, 4}, 1.7, &points, startCount};
        unused.GetBArray(&work);
        EXPECT_EQ(points.GetSize() - 1, appended) << startCount;
        EXPECT_EQ(work.startCount, startCount);
        EXPECT_TRUE(SameBits(work.p3, DPOINT{0, 4}));
    }
    unused.GetBArray(nullptr);
    BEZIER homeless{{0, 0}, {1, 0}, {2, 0}, {3, 0}, 1, nullptr, 0};
    unused.GetBArray(&homeless);
}

TEST(Flattening, AContourJoinsItsSegments) {
    CArray<BPOINT, BPOINT> nodes;
    Points points;
    points.Add({9, 9});
    GetPolyline(nodes, points, 1);
    EXPECT_TRUE(points.IsEmpty());
    nodes.Add({{0, 0}, {0, 0}, {0, 30}});
    points.Add({9, 9});
    GetPolyline(nodes, points, 1);
    EXPECT_TRUE(points.IsEmpty()) << "one node is no segment";

    nodes.Add({{50, 30}, {50, 0}, {50, -10}});
    nodes.Add({{0, 0}, {0, 0}, {0, 0}});
    std::vector<DPOINT> expected{{0, 0}};
    for (int i = 0; i < 2; ++i) {
        CBezier segment(nodes[i], nodes[i + 1]);
        segment.SetResolution(0.5);
        AppendFlattened(segment, expected);
    }
    GetPolyline(nodes, points, 0.5);
    EXPECT_TRUE(SamePoints(points, expected));
    EXPECT_TRUE(SameBits(points[points.GetUpperBound()], points[0]))
        << "a closed contour gives a closed polyline";
}

TEST(Flattening, StraightSegmentsOfAContourAreExpanded) {
    CArray<BPOINT, BPOINT> nodes;
    nodes.Add({{0, 0}, {0, 0}, {0, 0}});
    nodes.Add({{8, 0}, {8, 0}, {8, 0}});
    Points points;
    GetPolyline(nodes, points, 1);
    EXPECT_GT(points.GetSize(), 8);
}

}  // namespace
}  // namespace tarvex
