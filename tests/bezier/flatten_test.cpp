// Flattening segments and contours.
#include "bezier/flatten.h"
#include "bezier/curves.h"

namespace tarvex {
namespace {

using namespace test;

/// The rule as it reads, by recursion.
struct PlainFlattening {
    double threshold;
    Points points;

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
Points PlainPolyline(const CBezier& c) {
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

/// Among them chords on both sides of where the threshold grows, a point, and straight segments.
TEST(Flattening, MatchesThePlainRecursion) {
    CurveSource source(11);
    const double chords[] = {2000, 2000.5, 5000, 5001, 10000, 10001, 100000, 100001};
    for (std::size_t i = 0; i < 260; ++i) {
        CBezier c = i % 10 == 9 ? source.Hostile() : i % 2 == 0 ? source.Ordinary(3000) : source.Degenerate();
        if (i % 10 == 4) c = {{0, 0}, {300, 100}, {900, -50}, {chords[i / 10 % std::size(chords)], 0}};
        if (i % 50 == 5) c.p1 = c.p2 = c.p3 = c.p0;
        if (i % 10 == 7) c.p1 = c.p0, c.p2 = c.p3;
        const double resolution =
            i % 25 == 3 ? source.HostileValue() : source.Uniform(0.05, i % 20 == 4 ? 30 : 8);
        c.SetResolution(resolution);
        c.SetExpandStraightLines(i % 3 != 0);
        Points expected = PlainPolyline(c);
        // Only into an empty array goes the start point, too.
        expected.insert(expected.begin(), i % 4 == 0 ? c.p0 : DPOINT{-1, -1});
        DPoints points;
        if (i % 4 != 0) points.Add({-1, -1});
        c.GetPolyline(points);
        EXPECT_TRUE(SamePoints(points, expected)) << "case " << i;
        EXPECT_TRUE(SameBits(c.resolution, resolution)) << "case " << i;
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
            DPoints points;
            BEZIER work{{0, 0}, tip, tip, tip, threshold, &points, 0};
            CBezier({}, {}, {}, {}).GetBArray(&work);
            EXPECT_EQ(points.GetSize() == 3, leg <= threshold) << "case " << i << ", leg " << leg;
        }
    }
}

TEST(Flattening, OnlyCollapsedHandlesMakeASegmentStraight) {
    for (const double handle : {0.0, 9e-9, 1e-8, 0.5}) {
        CBezier c({0, 0}, {handle, 0}, {10, 0}, {10, 0});
        c.SetExpandStraightLines(false);
        DPoints points;
        c.GetPolyline(points);
        EXPECT_EQ(points.GetSize() == 2, handle < 1e-8) << handle;
    }
}

TEST(Flattening, TheLimitCountsFromTheRecordsStart) {
    DPoints points = Polyline({{0, 0}});
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
    for (const int tooFew : {0, 1}) {
        Nodes nodes;
        nodes.SetSize(tooFew);
        DPoints points = Polyline({{9, 9}});
        GetPolyline(nodes, points, 1);
        EXPECT_TRUE(points.IsEmpty()) << tooFew << " nodes are no segment";
    }
    // The second segment is straight: it is divided too.
    const Nodes nodes = MakeNodes(
        {{{0, 0}, {0, 0}, {0, 30}}, {{50, 30}, {50, 0}, {50, 0}}, {{8, 0}, {8, 0}, {8, 9}}, Corner(0, 0)});
    DPoints points;
    Points expected{{0, 0}};
    for (int i = 0; i < 3; ++i) {
        CBezier segment(nodes[i], nodes[i + 1]);
        segment.SetResolution(0.5);
        segment.SetExpandStraightLines(true);
        AppendFlattened(segment, expected);
    }
    GetPolyline(nodes, points, 0.5);
    EXPECT_TRUE(SamePoints(points, expected));
    EXPECT_TRUE(SameBits(points[points.GetUpperBound()], points[0]))
        << "a closed contour gives a closed polyline";
}

}  // namespace
}  // namespace tarvex
