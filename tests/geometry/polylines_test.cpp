// Arc length, orientation and integer lines.
#include "support/precompiled.h"

#include <climits>
#include <cstring>
#include <random>

#include "support/contours.h"
#include "support/records.h"
#include "tarvex/geometry.h"

namespace tarvex {
namespace {

using namespace test;

TEST(PolylineLength, SumsChordsInEveryKindOfArray) {
    EXPECT_EQ(GetPolylineLength(Polyline({})), 0);
    EXPECT_EQ(GetPolylineLength(Polyline({{3, 4}})), 0);
    const auto bent = Polyline({{0, 0}, {3, 4}, {3, 10}, {3, 10}, {5, 10}});
    EXPECT_EQ(GetPolylineLength(bent), 13);
    for (const auto& [count, length] : {std::pair{-1, 0.0},
                                        {0, 0},
                                        {1, 5},
                                        {2, 11},
                                        {3, 11},
                                        {4, 13},
                                        {99, 13},
                                        {INT_MAX, 13},
                                        {INT_MIN, 0}}) {
        EXPECT_EQ(GetPolylineLength(bent, count), length) << count;
    }

    EXPECT_EQ(GetPolylineLength(ArrayOf<tagPOINT>({{INT_MIN, 0}, {INT_MAX, 0}})), 4294967295.0)
        << "differences beyond an int";
    EXPECT_EQ(GetPolylineLength(MakeNodes({{{9, 9}, {0, 0}, {50, 50}}, {{7, 7}, {3, 4}, {1, 1}}})), 5)
        << "anchor to anchor";
}

TEST(PolylinePoint, LiesAtTheFractionMirroredBeforeTheStartAndExtendedPastTheEnd) {
    const Points bent{{0, 0}, {10, 0}, {10, 10}};
    struct Case {
        Points polyline;
        double t;
        DPOINT point;
        int segment;
    };
    for (const Case& c : {Case{bent, 0, {0, 0}, 0},
                          {bent, 0.25, {5, 0}, 0},
                          {bent, 0.5, {10, 0}, 0},
                          {bent, 0.75, {10, 5}, 1},
                          {bent, 1, {10, 10}, 1},
                          {bent, 1.5, {10, 20}, 1},
                          {bent, -0.1, {2, 0}, 0},
                          {bent, -1, {20, 0}, 0},
                          {{}, 0.5, {0, 0}, 0},
                          {{{3, 4}}, 2, {3, 4}, 0},
                          {{{3, 4}, {3, 4}}, 0.5, {3, 4}, 0}}) {
        int segment = 777;
        EXPECT_EQ(GetPolylinePoint(Polyline(c.polyline), c.t, &segment), c.point) << c.t;
        EXPECT_EQ(segment, c.segment) << c.t;
        EXPECT_EQ(GetPolylinePoint(Polyline(c.polyline), c.t, nullptr), c.point) << c.t;
    }
    for (const auto& [x, t] : {std::pair{1.0, kNaN}, {kNaN, 0.5}}) {
        int segment = 777;
        GetPolylinePoint(Polyline({{x, 4}, {3, 4}}), t, &segment);
        EXPECT_EQ(segment, 0) << x << ' ' << t;
    }
}

TEST(PolylinePoint, AndItsFractionAreInverse) {
    std::mt19937_64 random(1);
    std::uniform_real_distribution<double> coordinate(-100, 100), fraction(0, 1);
    for (int round = 0; round < 200; ++round) {
        DPoints polyline;
        for (int i = 0; i < 2 + round % 9; ++i) polyline.Add({coordinate(random), coordinate(random)});
        const double t = fraction(random);
        int segment = -1;
        const DPOINT p = GetPolylinePoint(polyline, t, &segment);
        EXPECT_NEAR(GetPolylineT(polyline, segment, p), t, 1e-12);
        DPOINT closest;
        int found = -1;
        EXPECT_TRUE(GetPolylineClosestPoint(polyline, p, &found, &closest));
        EXPECT_NEAR(std::hypot(closest.x - p.x, closest.y - p.y), 0, 1e-9);
    }
}

/// Every segment looked at in turn.
std::pair<int, DPOINT> PlainClosest(const DPoints& polyline, DPOINT p) {
    std::pair<int, DPOINT> best{0, {777, 777}};
    double least = 1e10;
    for (int i = 0; i + 1 < polyline.GetSize(); ++i) {
        const DPOINT a = polyline[i], b = polyline[i + 1];
        DPOINT foot = GetDistancePoint(a.x, a.y, b.x, b.y, p.x, p.y);
        if (!IsPointInLineRange(a.x, a.y, b.x, b.y, foot.x, foot.y))
            foot = std::hypot(b.x - p.x, b.y - p.y) < std::hypot(a.x - p.x, a.y - p.y) ? b : a;
        const double distance = std::hypot(foot.x - p.x, foot.y - p.y);
        if (!(distance < least)) continue;
        least = distance;
        best = {i, foot};
    }
    return best;
}

TEST(ClosestPoint, IsThatOfLookingAtEverySegmentBitForBit) {
    std::mt19937 random(8);
    const double hostile[] = {kNaN, kInfinity, -kInfinity, 1e10, -1e300, 1e-300, -0.0};
    for (int round = 0; round < 600; ++round) {
        // Few different coordinates give equal distances, small units feet on the range's edge.
        const int values = round % 3 == 0 ? 4 : 1000;
        const double unit = std::ldexp(1.0, static_cast<int>(random() % 60) - 40);
        const auto coordinate = [&] {
            if (round % 2 == 0 && random() % 12 == 0) return hostile[random() % std::size(hostile)];
            return unit * static_cast<double>(random() % static_cast<unsigned>(values));
        };
        DPoints polyline;
        for (int n = static_cast<int>(random() % 40); n > 0; --n) polyline.Add({coordinate(), coordinate()});
        const DPOINT p{coordinate(), coordinate()};
        const auto [segment, point] = PlainClosest(polyline, p);
        int found = 777;
        DPOINT closest{777, 777};
        EXPECT_TRUE(GetPolylineClosestPoint(polyline, p, &found, &closest));
        EXPECT_TRUE(GetPolylineClosestPoint(polyline, p, nullptr, nullptr));
        EXPECT_EQ(found, segment) << round;
        EXPECT_EQ(std::memcmp(&closest, &point, sizeof point), 0) << round;
    }
}

TEST(PolylineT, AddsTheStraightDistanceAndKnowsOnlySegmentsThatAreThere) {
    const auto bent = Polyline({{0, 0}, {10, 0}, {10, 10}});
    EXPECT_EQ(GetPolylineT(bent, 0, {5, 0}), 0.25);
    EXPECT_EQ(GetPolylineT(bent, 1, {10, 5}), 0.75);
    EXPECT_EQ(GetPolylineT(bent, 0, {3, 4}), 0.25) << "not projected";
    EXPECT_EQ(GetPolylineT(bent, 2, {0, 0}), 1);
    for (const int segment : {-1, 3, INT_MAX, INT_MIN}) EXPECT_EQ(GetPolylineT(bent, segment, {5, 0}), 0);
    const auto tiny = Polyline({{0, 0}, {0.999, 0}});
    EXPECT_EQ(GetPolylineT(tiny, 0, {0.5, 0}), 0);
    EXPECT_EQ(GetPolylineT(tiny, 1, {0.5, 0}), 1);
    EXPECT_EQ(GetPolylineT(Polyline({{0, 0}, {1, 0}}), 0, {0.5, 0}), 0.5);
}

TEST(Orientation, IsClockwiseOnAScreenAndReversesOnlyContoursThatRunTheOtherWay) {
    struct Case {
        const char* what;
        Points contour;
        bool isClockwise;
    };
    for (const Case& c : {Case{"clockwise on a screen", Box(0, 0, 10, 10), true},
                          {"the other way", {{0, 0}, {0, 10}, {10, 10}, {10, 0}, {0, 0}}, false},
                          {"open: wraps without being closed", {{0, 0}, {0, 10}, {10, 10}}, false},
                          {"nothing", {}, true},
                          {"a point", {{5, 5}}, true},
                          {"there and back", {{0, 0}, {5, 5}, {7, 7}}, true}}) {
        const Points reversed(c.contour.rbegin(), c.contour.rend());
        DPoints contour = Polyline(c.contour);
        EXPECT_EQ(IsClockwise(contour), c.isClockwise) << c.what;
        SetOrientation(contour, c.isClockwise);
        EXPECT_EQ(ListOf(contour), c.contour) << c.what;
        SetOrientation(contour, !c.isClockwise);
        EXPECT_EQ(ListOf(contour), reversed) << c.what;
        // What has no area is clockwise either way, and so reversed at every call.
        SetOrientation(contour, !c.isClockwise);
        EXPECT_EQ(ListOf(contour), IsClockwise(contour) == c.isClockwise ? c.contour : reversed) << c.what;
    }
}

TEST(Orientation, OfNodesKeepsTheCurveByExchangingHandles) {
    Nodes nodes =
        MakeNodes({{{-1, 0}, {0, 0}, {0, 1}}, {{0, 9}, {0, 10}, {1, 10}, 7}, {{9, 10}, {10, 10}, {10, 9}}});
    EXPECT_FALSE(IsClockwise(nodes));
    SetOrientation(nodes, true);
    EXPECT_TRUE(IsClockwise(nodes));
    EXPECT_EQ(ListOf(nodes),
              (std::vector<BPOINT>{
                  {{10, 9}, {10, 10}, {9, 10}}, {{1, 10}, {0, 10}, {0, 9}, 7}, {{0, 1}, {0, 0}, {-1, 0}}}))
        << "what came in now goes out";
}

std::vector<std::pair<int, int>> Pixels(tagPOINT from, tagPOINT to) {
    CArray<tagPOINT, tagPOINT> out;
    out.Add({777, 777});
    GetBresenhamPoints(from, to, out);
    std::vector<std::pair<int, int>> pixels;
    for (const tagPOINT& p : out) pixels.emplace_back(p.x, p.y);
    return pixels;
}

TEST(BresenhamPoints, FollowTheLineFromEndToEnd) {
    using P = std::pair<int, int>;
    using testing::ElementsAre;
    EXPECT_THAT(Pixels({0, 0}, {3, 1}), ElementsAre(P(0, 0), P(1, 0), P(2, 1), P(3, 1)));
    EXPECT_THAT(Pixels({0, 0}, {2, 1}), ElementsAre(P(0, 0), P(1, 0), P(2, 1))) << "a tie stays level";
    EXPECT_THAT(Pixels({3, 1}, {0, 0}), ElementsAre(P(3, 1), P(2, 1), P(1, 0), P(0, 0)));
    EXPECT_THAT(Pixels({0, 0}, {-1, -2}), ElementsAre(P(0, 0), P(0, -1), P(-1, -2)));
    EXPECT_THAT(Pixels({5, 5}, {5, 5}), ElementsAre(P(5, 5)));
    EXPECT_THAT(Pixels({0, 0}, {2, -2}), ElementsAre(P(0, 0), P(1, -1), P(2, -2)));
    EXPECT_THAT(Pixels({INT_MAX - 1, INT_MIN}, {INT_MAX, INT_MIN}),
                ElementsAre(P(INT_MAX - 1, INT_MIN), P(INT_MAX, INT_MIN)));
}

TEST(BresenhamPoints, StayWithinHalfAPixelOfTheLine) {
    std::mt19937 random(2);
    std::uniform_int_distribution<int> coordinate(-300, 300);
    for (int i = 0; i < 300; ++i) {
        const tagPOINT a{coordinate(random), coordinate(random)}, b{coordinate(random), coordinate(random)};
        const auto pixels = Pixels(a, b);
        const int dx = b.x - a.x, dy = b.y - a.y;
        const int longer = std::max(std::abs(dx), std::abs(dy));
        ASSERT_EQ(static_cast<int>(pixels.size()), longer + 1);
        EXPECT_EQ(pixels.back(), (std::pair<int, int>(b.x, b.y)));
        for (const auto& [x, y] : pixels) {
            ASSERT_LE(2 * std::abs(dx * (y - a.y) - dy * (x - a.x)), longer);
        }
    }
}

TEST(BresenhamPoints, RaiseWhereNoArrayHoldsThem) {
    CArray<tagPOINT, tagPOINT> out;
    EXPECT_THROW(GetBresenhamPoints({INT_MIN, 0}, {INT_MAX, 5}, out), CMemoryException);
    EXPECT_THROW(GetBresenhamPoints({0, INT_MAX}, {0, 0}, out), CMemoryException);
    EXPECT_TRUE(out.IsEmpty());
}

}  // namespace
}  // namespace tarvex
