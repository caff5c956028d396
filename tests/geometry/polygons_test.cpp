// Rectangles of polygons, points on and in them, and their crossings with lines.
#include "support/precompiled.h"

#include <climits>

#include "support/contours.h"
#include "support/records.h"
#include "tarvex/geometry.h"

namespace tarvex {

static void PrintTo(const CRect& r, std::ostream* out) {
    *out << "(" << r.left << ", " << r.top << ", " << r.right << ", " << r.bottom << ")";
}

namespace {

using namespace test;

TEST(PolygonRect, SpansThePointsAndIsZeroWithoutAny) {
    const tagPOINT integers[] = {{3, -4}, {-1, 9}, {2, 2}};
    EXPECT_EQ(GetPolygonRect(integers, 3), CRect(-1, -4, 3, 9));
    EXPECT_EQ(GetPolygonRect(integers, 1), CRect(3, -4, 3, -4));
    EXPECT_EQ(GetPolygonRect(integers, 0), CRect());
    EXPECT_EQ(GetPolygonRect(integers, -1), CRect());

    const DPOINT doubles[] = {{3.9, -4.9}, {-1.9, 1e300}, {0, kNaN}};
    EXPECT_EQ(GetPolygonRect(doubles, 3), CRect(-1, -4, 3, INT_MAX)) << "truncated towards zero, saturated";

    EXPECT_EQ(GetPolygonRect(Polyline({})), (DRECT{0, 0, 0, 0}));
    EXPECT_EQ(GetPolygonRect(Polyline({{1, 9}, {-3, 2}, {kNaN, 5}, {0, kInfinity}})),
              (DRECT{-3, 1, 2, kInfinity}));
}

TEST(PolygonRect, OfSeveralContoursSkipsEmptyOnes) {
    CPolyPolyDPoint contours;
    EXPECT_EQ(GetPolyPolygonRect(contours), (DRECT{0, 0, 0, 0}));
    AddTo(contours, Polyline({}));
    EXPECT_EQ(GetPolyPolygonRect(contours), (DRECT{0, 0, 0, 0}));
    AddTo(contours, Polyline({{5, 6}}));
    contours.SetAtGrow(2, nullptr);
    AddTo(contours, Polyline({{7, 3}, {8, 4}}));
    EXPECT_EQ(GetPolyPolygonRect(contours), (DRECT{5, 8, 3, 6}));
}

TEST(PointOnPolyline, IsWithinTheToleranceOfASegmentInclusive) {
    const auto bent = Polyline({{0, 0}, {10, 0}, {10, 10}});
    struct Case {
        DPOINT p;
        double tol;
        int expected;
    };
    for (const Case& c : {Case{{5, 0}, 0, 1},
                          {{5, 2}, 2, 1},
                          {{5, 2}, 1.999, 0},
                          {{10, 5}, 0, 1},
                          {{-3, 4}, 5, 1},
                          {{-3, 4}, 4.999, 0},
                          {{13, 14}, 5, 1},
                          {{5, 0}, -1, 0},
                          {{5, 0}, kNaN, 0},
                          {{kNaN, 0}, 5, 0}}) {
        EXPECT_EQ(IsPointOnPolyline(bent, c.p, c.tol), c.expected) << c.p.x << ", " << c.p.y << " " << c.tol;
    }
    EXPECT_EQ(IsPointOnPolyline(Polyline({{1, 1}}), {1, 1}, 5), 0) << "no segment";
    EXPECT_EQ(IsPointOnPolyline(Polyline({}), {1, 1}, 5), 0);
    EXPECT_EQ(IsPointOnPolyline(Polyline({{1, 1}, {1, 1}}), {1, 1}, 0), 1);
}

int Inside(const std::vector<tagPOINT>& polygon, tagPOINT p) {
    const int n = static_cast<int>(polygon.size());
    const CRect rc = GetPolygonRect(polygon.data(), n);
    return IsPointInPolygon(polygon.data(), n, p, &rc);
}

// Among the oddities that the contract keeps: a square's left edge is inside, and its right edge is not.
TEST(PointInPolygon, CountsAVertexOnTheRayOnlyWhereTheBoundaryCrosses) {
    const std::vector<tagPOINT> square{{0, 0}, {10, 0}, {10, 10}, {0, 10}, {0, 0}};
    const std::vector<tagPOINT> world{
        {INT_MIN, INT_MIN}, {INT_MAX, INT_MIN}, {INT_MAX, INT_MAX}, {INT_MIN, INT_MAX}, {INT_MIN, INT_MIN}};
    struct Case {
        const char* what;
        std::vector<tagPOINT> polygon;
        tagPOINT p;
        int expected;
    };
    for (const Case& c : {
             Case{"past an apex", {{0, 0}, {4, 5}, {8, 0}, {20, 0}, {20, 10}, {0, 10}, {0, 0}}, {10, 5}, 1},
             {"past two apexes",
              {{0, 0}, {3, 5}, {6, 0}, {9, 5}, {12, 0}, {20, 0}, {20, 10}, {0, 10}, {0, 0}},
              {15, 5},
              1},
             {"through a vertex that goes on",
              {{0, 0}, {4, 5}, {0, 10}, {20, 10}, {20, 0}, {0, 0}},
              {10, 5},
              1},
             {"the same the other way round",
              {{0, 0}, {20, 0}, {20, 10}, {0, 10}, {4, 5}, {0, 0}},
              {10, 5},
              1},
             {"outside, beyond a diamond's corner", {{0, 5}, {5, 0}, {10, 5}, {5, 10}, {0, 5}}, {10, 5}, 0},
             {"a diamond's middle", {{0, 5}, {5, 0}, {10, 5}, {5, 10}, {0, 5}}, {5, 5}, 1},
             {"a level step that goes on",
              {{0, 0}, {0, 5}, {5, 5}, {5, 10}, {20, 10}, {20, 0}, {0, 0}},
              {10, 5},
              1},
             {"a level step that turns back",
              {{0, 10}, {0, 5}, {5, 5}, {5, 10}, {7, 10}, {7, 0}, {20, 0}, {20, 12}, {0, 12}, {0, 10}},
              {10, 5},
              1},
             {"a step of several points",
              {{0, 0}, {0, 5}, {2, 5}, {3, 5}, {5, 5}, {5, 10}, {20, 10}, {20, 0}, {0, 0}},
              {10, 5},
              1},
             {"a step over the closing",
              {{3, 5}, {5, 5}, {5, 10}, {20, 10}, {20, 0}, {0, 0}, {0, 5}, {3, 5}},
              {10, 5},
              1},
             {"a step from the closing on",
              {{0, 5}, {5, 5}, {5, 10}, {20, 10}, {20, 0}, {0, 0}, {0, 5}},
              {10, 5},
              1},
             {"all on one level", {{0, 5}, {5, 5}, {9, 5}, {0, 5}}, {5, 5}, 0},
             {"a point", {{5, 5}}, {5, 5}, 0},
             {"a point twice", {{5, 5}, {5, 5}}, {5, 5}, 0},
             {"nothing", {}, {0, 0}, 0},
             {"its left edge, alone on the ray", square, {0, 5}, 1},
             {"its right edge: the ray meets both", square, {10, 5}, 0},
             {"all integers", world, {0, 0}, 1},
             {"the least", world, {INT_MIN, 0}, 1},
             {"the greatest", world, {INT_MAX, 0}, 0},
         }) {
        EXPECT_EQ(Inside(c.polygon, c.p), c.expected) << c.what;
    }
}

// Vertices at even y, points at odd y: no ray meets a vertex, and plain counting in integers is right. Some
// polygons are long, with stretches that stay below the ray.
TEST(PointInPolygon, AgreesWithIntegerCrossingCountsAwayFromVerticesAndEdges) {
    std::mt19937 random(11);
    std::uniform_int_distribution<int> coordinate(-50, 50);
    for (int round = 0; round < 300; ++round) {
        std::vector<tagPOINT> polygon;
        const int corners = round % 60 == 0 ? 200 * round : 3 + round % 20;
        for (int i = 0; i < std::max(corners, 3); ++i)
            polygon.push_back({coordinate(random), 2 * coordinate(random) + (i / 200 % 2 != 0 ? 300 : 0)});
        polygon.push_back(polygon.front());
        for (int i = 0; i < 50; ++i) {
            const tagPOINT p{coordinate(random), 2 * coordinate(random) + 1};
            int crossings = 0;
            bool onEdge = false;
            for (std::size_t j = 0; j + 1 < polygon.size(); ++j) {
                const auto [a, b] =
                    std::minmax(polygon[j], polygon[j + 1], [](auto& u, auto& v) { return u.y < v.y; });
                if (p.y < a.y || p.y > b.y) continue;
                const int cross = (b.x - a.x) * (p.y - a.y) - (b.y - a.y) * (p.x - a.x);
                onEdge = onEdge || cross == 0;
                crossings += cross < 0;
            }
            if (!onEdge) {
                ASSERT_EQ(Inside(polygon, p), crossings % 2);
            }
        }
    }
}

TEST(PointInPolygon, NeedsARectangleAndBelievesIt) {
    const auto array = ArrayOf<tagPOINT>({{0, 0}, {4, 0}, {4, 4}, {0, 4}, {0, 0}});
    const tagRECT rc{0, 0, 4, 4};
    const tagRECT elsewhere{3, 3, 4, 4};
    EXPECT_EQ(IsPointInPolygon(array, {2, 2}, &rc), 1);
    EXPECT_EQ(IsPointInPolygon(array, {2, 2}, &elsewhere), 0);
    EXPECT_EQ(IsPointInPolygon(array, {2, 2}, nullptr), 0);
}

TEST(PointInPolygon, RoundsDoublesToTheIntegerGrid) {
    const auto square = Polyline({{0, 0}, {10.4, 0}, {10.4, 9.6}, {-0.5, 10}, {0, 0}});
    const DRECT rc = GetPolygonRect(square);
    EXPECT_EQ(IsPointInPolygon(square, {5, 5}, &rc), 1);
    EXPECT_EQ(IsPointInPolygon(square, {-0.5, 5}, &rc), 1) << "rounds up to the left edge";
    EXPECT_EQ(IsPointInPolygon(square, {-0.51, 5}, &rc), 0);
    EXPECT_EQ(IsPointInPolygon(square, {9.49, 5}, &rc), 1);
    EXPECT_EQ(IsPointInPolygon(square, {9.5, 5}, &rc), 0) << "rounds up to the right edge";
    EXPECT_EQ(IsPointInPolygon(square, DPOINT{5, 5}, nullptr), 0);

    const auto wild = Polyline({{-kInfinity, -1e300},
                                {kInfinity, -1e300},
                                {1e300, kInfinity},
                                {kNaN, kInfinity},
                                {-kInfinity, -1e300}});
    const DRECT wildRect = GetPolygonRect(wild);
    IsPointInPolygon(wild, {0, 0}, &wildRect);
    IsPointInPolygon(wild, {kNaN, kInfinity}, &wildRect);
}

TEST(PointInPolygon, OfSeveralContoursIsEvenOdd) {
    CPolyPolyDPoint contours;
    AddTo(contours, Polyline({{0, 0}, {30, 0}, {30, 30}, {0, 30}, {0, 0}}));
    contours.SetAtGrow(1, nullptr);
    AddTo(contours, Polyline({{10, 10}, {20, 10}, {20, 20}, {10, 20}, {10, 10}}));
    EXPECT_EQ(IsPointInPolygon(contours, {5, 5}), 1);
    EXPECT_EQ(IsPointInPolygon(contours, {15, 15}), 0) << "a hole";
    EXPECT_EQ(IsPointInPolygon(contours, {35, 15}), 0);
    AddTo(contours, Polyline({{12, 12}, {18, 12}, {18, 18}, {12, 18}, {12, 12}}));
    EXPECT_EQ(IsPointInPolygon(contours, {15, 15}), 1) << "an island in the hole";
}

TEST(FirstCrossing, RangeChecksThePolylineAloneAndPresetsAnEnd) {
    const auto zigzag = Polyline({{0, 0}, {10, 10}, {20, 0}, {30, 10}});
    struct Case {
        const char* what;
        DLINE line;
        int from, result, index;
        DPOINT hit;
    };
    for (const Case& c : {
             Case{"the line is infinite", {{100, 5}, {101, 5}}, 0, 1, 0, {5, 5}},
             {"from a later segment", {{100, 5}, {101, 5}}, 1, 1, 1, {15, 5}},
             {"from the last", {{100, 5}, {101, 5}}, 2, 1, 2, {25, 5}},
             {"no hit, early start", {{0, 50}, {1, 50}}, 2, 0, 2, {0, 0}},
             {"no hit, late start", {{0, 50}, {1, 50}}, 3, 0, 3, {30, 10}},
             {"no hit, far beyond", {{0, 5}, {1, 5}}, INT_MAX, 0, INT_MAX, {30, 10}},
             {"before the start", {{100, 5}, {101, 5}}, INT_MIN, 1, 0, {5, 5}},
             {"at a vertex", {{10, 0}, {10, 1}}, 0, 1, 0, {10, 10}},
             {"no line", {{5, 5}, {5, 5}}, 0, 0, 0, {0, 0}},
         }) {
        DPOINT hit{777, 777};
        int index = c.from;
        EXPECT_EQ(GetPolyLineWithLineIntersectionFirst(zigzag, c.line, hit, index), c.result) << c.what;
        EXPECT_EQ(hit, c.hit) << c.what;
        EXPECT_EQ(index, c.index) << c.what;
    }
    DPOINT hit{777, 777};
    int index = 5;
    EXPECT_EQ(GetPolyLineWithLineIntersectionFirst(Polyline({}), {{0, 0}, {1, 1}}, hit, index), 0);
    EXPECT_EQ(hit, (DPOINT{0, 0}));
}

TEST(SegmentCrossings, TakeAVertexOnceAndAppend) {
    const auto zigzag = Polyline({{0, 0}, {10, 10}, {20, 0}, {30, 10}});
    DPoints hits;
    EXPECT_EQ(GetPolyLineWithLineSegIntersection(zigzag, {{0, 5}, {20, 5}}, hits), 1);
    ASSERT_EQ(hits.GetSize(), 2);
    EXPECT_EQ(hits[0], (DPOINT{5, 5}));
    EXPECT_EQ(hits[1], (DPOINT{15, 5}));

    EXPECT_EQ(GetPolyLineWithLineSegIntersection(zigzag, {{0, 10}, {25, 10}}, hits), 1);
    ASSERT_EQ(hits.GetSize(), 3) << "appended, the vertex once";
    EXPECT_EQ(hits[2], (DPOINT{10, 10}));

    EXPECT_EQ(GetPolyLineWithLineSegIntersection(zigzag, {{30, 0}, {30, 20}}, hits), 0)
        << "the very end is nobody's start";
    EXPECT_EQ(GetPolyLineWithLineSegIntersection(zigzag, {{0, 5}, {4, 5}}, hits), 0)
        << "the segment ends before";
    EXPECT_EQ(GetPolyLineWithLineSegIntersection(zigzag, {{-9, 5}, {-4, 5}}, hits), 0);
    EXPECT_EQ(hits.GetSize(), 3);
}

TEST(SegmentCrossings, PreferTheOneNearestToTheMiddleAndTheFirstOfEquals) {
    const auto zigzag = Polyline({{0, 0}, {10, 10}, {20, 0}, {30, 10}});
    struct Case {
        DLINE segment;
        int from, result, index;
        DPOINT hit;
    };
    for (const Case& c : {Case{{{0, 5}, {30, 5}}, 0, 1, 1, {15, 5}},
                          {{{0, 5}, {20, 5}}, 0, 1, 0, {5, 5}},
                          {{{0, 5}, {20, 5}}, 1, 1, 1, {15, 5}},
                          {{{0, 5}, {50, 5}}, 0, 1, 2, {25, 5}},
                          {{{0, 50}, {50, 50}}, -7, 0, -7, {777, 777}},
                          {{{0, 5}, {50, 5}}, 3, 0, 3, {777, 777}},
                          {{{0, 5}, {50, 5}}, INT_MAX, 0, INT_MAX, {777, 777}},
                          {{{0, 5}, {20, 5}}, INT_MIN, 1, 0, {5, 5}}}) {
        DPOINT hit{777, 777};
        int index = c.from;
        EXPECT_EQ(GetPolyLineWithLineSegIntersection(zigzag, c.segment, hit, index), c.result);
        EXPECT_EQ(hit, c.hit);
        EXPECT_EQ(index, c.index);
    }
}

}  // namespace
}  // namespace tarvex
