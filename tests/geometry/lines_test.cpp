// Lines, points moved in place, angles and comparisons.
#include "support/precompiled.h"

#include <climits>
#include <cstdlib>

#include "bezier/vector.h"
#include "support/contours.h"
#include "support/property.h"
#include "support/records.h"
#include "tarvex/geometry.h"

namespace tarvex {
namespace {

using test::kInfinity;
using test::kNaN;
using test::kPi;

/// A point of a drawing: thousandths between -1000 and 1000.
DPOINT AnyPoint() {
    const auto coordinate = [] { return *rc::gen::inRange(-1000000, 1000001) / 1000.0; };
    const double x = coordinate();
    return {x, coordinate()};
}

struct Meeting {
    int result;
    double x, y;
    friend bool operator==(const Meeting&, const Meeting&) = default;
    friend void PrintTo(const Meeting& m, std::ostream* out) {
        *out << m.result << " (" << m.x << ", " << m.y << ")";
    }
};

Meeting Meet(decltype(GetLinesIntersection) intersection, const DLINE& a, const DLINE& b) {
    Meeting m{-1, 777, 777};
    m.result = intersection(a.p1.x, a.p1.y, a.p2.x, a.p2.y, b.p1.x, b.p1.y, b.p2.x, b.p2.y, &m.x, &m.y);
    return m;
}

struct MeetingCase {
    const char* what;
    DLINE a, b;
    Meeting expected;
};

TEST(LinesIntersection, GivesTheCrossingOrTheStatedLeftovers) {
    const DLINE diagonal{{0, 0}, {10, 10}};
    const DLINE upright{{3, 0}, {3, 5}};
    for (const MeetingCase& c : {
             MeetingCase{"two slopes", diagonal, {{0, 10}, {10, 0}}, {1, 5, 5}},
             {"beyond both", diagonal, {{20, 0}, {20, 1}}, {1, 20, 20}},
             {"first vertical", upright, diagonal, {1, 3, 3}},
             {"second vertical", diagonal, upright, {1, 3, 3}},
             {"both vertical: x is left relative to the first line's end",
              upright,
              {{11, 7}, {11, 9}},
              {0, 8, 0}},
             {"the same vertical twice", upright, upright, {0, 0, 0}},
             {"nearly vertical counts as vertical",
              {{3, 0}, {3 + 0.9e-8, 5}},
              {{11, 7}, {11, 9}},
              {0, 11 - (3 + 0.9e-8), 0}},
             {"parallel", diagonal, {{0, 1}, {10, 11}}, {0, 0, 0}},
             {"coincident", diagonal, {{2, 2}, {7, 7}}, {0, 0, 0}},
             {"slopes a hair apart count as parallel",
              {{0, 0}, {1, 0}},
              {{0, 1}, {1, 1 + 0.9e-8}},
              {0, 0, 0}},
             {"first a point", {{4, 4}, {4, 4}}, upright, {0, 0, 0}},
             {"second a point", upright, {{4, 4}, {4, 4}}, {0, 0, 0}},
             {"two horizontals", {{0, 1}, {5, 1}}, {{0, 2}, {5, 2}}, {0, 0, 0}},
             {"a short upright line counts as vertical, not as a point",
              {{3, 0}, {3, 1e-9}},
              diagonal,
              {1, 3, 3}},
         }) {
        EXPECT_EQ(Meet(GetLinesIntersection, c.a, c.b), c.expected) << c.what;
    }
}

// The rounding is that of computing relative to the second point, slopes first; whoever rearranges the
// formula changes these bits.
TEST(LinesIntersection, RoundsAsComputedRelativeToTheSecondPoint) {
    std::mt19937_64 random(5);
    std::uniform_real_distribution<double> coordinate(-1000, 1000);
    for (int i = 0; i < 1000; ++i) {
        double c[8];
        for (double& v : c) v = coordinate(random);
        const auto [x1, y1, x2, y2, x3, y3, x4, y4] = c;
        const double m1 = (y1 - y2) / (x1 - x2);
        const double m2 = ((y3 - y2) - (y4 - y2)) / ((x3 - x2) - (x4 - x2));
        const double x = ((y4 - y2) - m2 * (x4 - x2)) / (m1 - m2);
        EXPECT_EQ(Meet(GetLinesIntersection, {{x1, y1}, {x2, y2}}, {{x3, y3}, {x4, y4}}),
                  (Meeting{1, x + x2, m1 * x + y2}));
    }
}

TEST(SegmentIntersection, NeedsThePointInBothBoxesAndKeepsItOtherwise) {
    for (const MeetingCase& c : {
             MeetingCase{"crossing", {{0, 0}, {10, 10}}, {{0, 10}, {10, 0}}, {1, 5, 5}},
             {"touching ends", {{0, 0}, {4, 4}}, {{4, 4}, {8, 0}}, {1, 4, 4}},
             {"lines cross outside both", {{0, 0}, {1, 1}}, {{4, 0}, {3, 1}}, {0, 2, 2}},
             {"outside the second only", {{0, 0}, {9, 9}}, {{4, 0}, {3, 1}}, {0, 2, 2}},
             {"outside the first only", {{4, 0}, {3, 1}}, {{0, 0}, {9, 9}}, {0, 2, 2}},
             {"collinear overlap", {{0, 0}, {4, 4}}, {{2, 2}, {8, 8}}, {0, 0, 0}},
             {"two verticals keep the relative x", {{1, 0}, {1, 4}}, {{5, 0}, {5, 4}}, {0, 4, 0}},
         }) {
        EXPECT_EQ(Meet(GetSegmentIntersection, c.a, c.b), c.expected) << c.what;
    }
}

TEST(PointInLineRange, IsTheWidenedBoxEndsIncluded) {
    EXPECT_EQ(IsPointInLineRange(0, 0, 10, 10, 9, 1), 1) << "off the segment, in its box";
    EXPECT_EQ(IsPointInLineRange(10, 10, 0, 0, 5, 5), 1) << "ends in any order";
    EXPECT_EQ(IsPointInLineRange(0, 0, 10, 0, 5, 1e-8), 1);
    EXPECT_EQ(IsPointInLineRange(0, 0, 10, 0, 5, -1e-8), 1);
    EXPECT_EQ(IsPointInLineRange(0, 0, 10, 0, 5, 1.1e-8), 0);
    EXPECT_EQ(IsPointInLineRange(0, 0, 10, 0, 10 + 0.9e-8, 0), 1);
    EXPECT_EQ(IsPointInLineRange(0, 0, 10, 0, -2e-8, 0), 0);
    EXPECT_EQ(IsPointInLineRange(0, 0, 10, 10, kNaN, 5), 0);
    EXPECT_EQ(IsPointInLineRange(-kInfinity, 0, kInfinity, 10, 5, 5), 1);
}

TEST(HalfPlane, IsOneOnTheLeftAndZeroWhereTheCrossProductIsSmall) {
    EXPECT_EQ(GetHalfPlane(5, 1, 0, 0, 10, 0), 1);
    EXPECT_EQ(GetHalfPlane(5, -1, 0, 0, 10, 0), -1);
    EXPECT_EQ(GetHalfPlane(5, 0, 0, 0, 10, 0), 0);
    EXPECT_EQ(GetHalfPlane(0, 1, 0, 0, 1e-8, 0), 1) << "the tolerance itself is not small";
    EXPECT_EQ(GetHalfPlane(0, 1, 0, 0, 0.9e-8, 0), 0);
    EXPECT_EQ(GetHalfPlane(0, 1e-6, 0, 0, 1e-3, 0), 0) << "an area, not a distance";
    EXPECT_EQ(GetHalfPlane(kNaN, 0, 0, 0, 1, 1), -1);
}

TEST(DistanceFromLine, IsThatOfTheFootOnTheInfiniteLineOrOfTheFirstPointWhenThereIsNone) {
    struct Case {
        DLINE line;
        DPOINT p, foot;
    };
    for (const Case& c : {Case{{{0, 0}, {10, 0}}, {50, 3}, {50, 0}},
                          {{{0, 0}, {10, 10}}, {10, 0}, {5, 5}},
                          {{{4, 1}, {4, 9}}, {-7, -3}, {4, -3}},
                          {{{2, 3}, {2, 3}}, {9, 9}, {2, 3}},
                          {{{2, 3}, {2, 3 + 0.9e-8}}, {9, 9}, {2, 3}}}) {
        const auto& [a, b] = c.line;
        const DPOINT foot = GetDistancePoint(a.x, a.y, b.x, b.y, c.p.x, c.p.y);
        EXPECT_TRUE(test::SameBits(foot, c.foot)) << c.p.x << ": " << foot.x << ", " << foot.y;
        EXPECT_DOUBLE_EQ(GetDistanceFromLine(a.x, a.y, b.x, b.y, c.p.x, c.p.y), Distance(c.p, c.foot))
            << c.p.x;
    }
    test::ExpectLaw([] {
        const DPOINT a = AnyPoint(), b = AnyPoint(), p = AnyPoint();
        RC_PRE(Distance(a, b) > 1);
        const DPOINT foot = GetDistancePoint(a.x, a.y, b.x, b.y, p.x, p.y);
        RC_ASSERT(GetDistanceFromLine(a.x, a.y, b.x, b.y, foot.x, foot.y) < 1e-7);
        RC_ASSERT(std::fabs(GetDistanceFromLine(a.x, a.y, b.x, b.y, p.x, p.y) - Distance(p, foot)) < 1e-7);
    });
}

TEST(DivideLine, ExtrapolatesAndSnapsSinglePrecisionToZero) {
    const DLINE line{{1, 2}, {5, 10}};
    EXPECT_EQ(DivideLine(line, 0), line.p1);
    EXPECT_EQ(DivideLine(line, 1), line.p2);
    EXPECT_EQ(DivideLine(line, 0.25), (DPOINT{2, 4}));
    EXPECT_EQ(DivideLine(line, -1), (DPOINT{-3, -6}));
    EXPECT_EQ(DivideLine(line, 2), (DPOINT{9, 18}));

    const FPOINT snapped = DivideLine(FLINE{{0.9e-8f, -0.9e-8f}, {0.9e-8f, 1}}, 0);
    EXPECT_EQ(snapped.x, 0);
    EXPECT_EQ(snapped.y, 0);
    const FPOINT kept = DivideLine(FLINE{{2e-8f, 3}, {2e-8f, 5}}, 0.5);
    EXPECT_EQ(kept.x, 2e-8f);
    EXPECT_EQ(kept.y, 4);
}

TEST(MovingAlongALine, ExpandsFromAndSetsTheDistanceToTheFirstPoint) {
    struct Case {
        DPOINT a, b;
        double d;
        DPOINT expanded, placed;
    };
    for (const Case& c : {Case{{0, 0}, {3, 4}, 5, {6, 8}, {3, 4}},
                          {{0, 0}, {3, 4}, 10, {9, 12}, {6, 8}},
                          {{0, 0}, {3, 4}, -10, {-3, -4}, {-6, -8}},
                          {{1, 1}, {1, 1}, 5, {1, 1}, {1, 1}},
                          {{1, 1}, {1, 1 + 0.9e-8}, 5, {1, 1 + 0.9e-8}, {1, 1 + 0.9e-8}}}) {
        DPOINT b = c.b;
        ExpandPoint(c.a, b, c.d);
        EXPECT_EQ(b, c.expanded);
        b = c.b;
        GetDistPoint(c.a, b, c.d);
        EXPECT_EQ(b, c.placed);
    }
}

TEST(MovingAPoint, TurnsByTheAngleFromXTowardsYAndBackAgain) {
    test::ExpectLaw([] {
        const DPOINT p = AnyPoint(), centre = AnyPoint();
        RC_PRE(Distance(p, centre) > 1);
        const double angle = *rc::gen::inRange(-3141, 3142) / 1000.0;
        DPOINT q = p;
        Rotate(&q.x, &q.y, centre.x, centre.y, angle);
        RC_ASSERT(std::fabs(Distance(q, centre) - Distance(p, centre)) < 1e-9);
        RC_ASSERT(std::fabs(GetLinesAngle(q.x, q.y, centre.x, centre.y, p.x, p.y) - angle) < 1e-9);
        Rotate(&q.x, &q.y, centre.x, centre.y, -angle);
        RC_ASSERT(Distance(p, q) < 1e-9);
    });
    float x = 1, y = 0;
    Rotate(&x, &y, 0.0f, 0.0f, kPi / 2);
    EXPECT_EQ(x, 0) << "6e-17 is snapped";
    EXPECT_EQ(y, 1);
}

TEST(MovingAPoint, StretchesAndFlipsAboutTheCentre) {
    double x = 3, y = 5;
    Stretch(&x, &y, 1, 1, 2, -0.5);
    EXPECT_EQ(x, 5);
    EXPECT_EQ(y, -1);
    FlipHor(&x, &y, 1, kNaN);
    EXPECT_EQ(x, -3);
    EXPECT_EQ(y, -1);
    FlipVer(&x, &y, kNaN, 2);
    EXPECT_EQ(x, -3);
    EXPECT_EQ(y, 5);

    float fx = 3e8f, fy = 5;
    Stretch(&fx, &fy, 0.0f, 1.0f, 0.9e-8, -0.5);
    EXPECT_EQ(fx, 0) << "a factor below the tolerance is 0";
    EXPECT_EQ(fy, -1);
    fx = 1e-8f;
    FlipHor(&fx, &fy, 0.9e-8, 0);
    EXPECT_EQ(fx, -1e-8f) << "a centre below the tolerance is 0";
    fx = 3, fy = 1e-8f;
    FlipVer(&fx, &fy, 0, -0.9e-8);
    EXPECT_EQ(fy, -1e-8f);
    EXPECT_EQ(fx, 3);
}

TEST(LinesAngle, IsSignedAndZeroForCoincidingPoints) {
    struct Case {
        DPOINT p0, vertex, p2;
        double expected;
    };
    for (const Case& c : {Case{{1, 0}, {0, 0}, {0, 1}, -kPi / 2},
                          {{0, 1}, {0, 0}, {1, 0}, kPi / 2},
                          {{-1, 0}, {0, 0}, {1, 0}, kPi},
                          {{1, 0}, {0, 0}, {-1, 0}, -kPi},
                          {{1, -1}, {0, 0}, {1, 1}, -kPi / 2},
                          {{5, 5}, {5, 5}, {9, 9}, 0},
                          {{9, 0}, {5, 5}, {9, 0}, 0},
                          {{9, 0}, {5, 5}, {5, 5 + 0.9e-8}, 0},
                          {{2, 2}, {0, 0}, {1, 1}, 0}}) {
        EXPECT_DOUBLE_EQ(GetLinesAngle(c.p0.x, c.p0.y, c.vertex.x, c.vertex.y, c.p2.x, c.p2.y), c.expected);
    }
}

TEST(BoundedAngles, AreFoldedOnceOnly) {
    EXPECT_EQ(BoundPI(kPi), kPi);
    EXPECT_EQ(BoundPI(-kPi), -kPi);
    EXPECT_EQ(BoundPI(4 * kPi), 2 * kPi);
    EXPECT_EQ(BoundPI(-4 * kPi), -2 * kPi);
    EXPECT_EQ(BoundPI(3.5), 3.5 - 2 * kPi);
    EXPECT_EQ(Bound2PI(-0.5), 2 * kPi - 0.5);
    EXPECT_EQ(Bound2PI(7), 7);
    EXPECT_EQ(Bound2PI(-20), -20 + 2 * kPi);
}

TEST(Comparisons, OfDistancesAreProportionsAndOfAnglesWrap) {
    EXPECT_EQ(AreDistancesEqual(0, 1e-9, 0.9), 1);
    EXPECT_EQ(AreDistancesEqual(9, 10, 0.9), 0) << "strictly more than the ratio";
    EXPECT_EQ(AreDistancesEqual(9.5, 10, 0.9), 1);
    EXPECT_EQ(AreDistancesEqual(-10, 9.5, -0.9), 1);
    EXPECT_EQ(AreDistancesEqual(0, 5, 0.9), 0);
    EXPECT_EQ(AreDistancesEqual(kInfinity, kInfinity, 0.9), 0);

    EXPECT_EQ(AreAnglesEqual(0.001, 2 * kPi - 0.001, 0.01), 1);
    EXPECT_EQ(AreAnglesEqual(-0.001, 0.001, 0.01), 1);
    EXPECT_EQ(AreAnglesEqual(1, 1.5, 0.5), 0) << "strictly less than the tolerance";
    EXPECT_EQ(AreAnglesEqual(1, 1, 0), 0);
    EXPECT_EQ(AreAnglesEqual(kNaN, 1, 10), 0);
}

TEST(Random, CoversItsRangeAndAnswersOneToAnEmptyOne) {
    EXPECT_EQ(GetRandom(5, 4), 1);
    EXPECT_EQ(GetRandom(INT_MIN + 1, INT_MIN), 1);
    EXPECT_EQ(GetRandom(3, 3), 3);
    EXPECT_EQ(GetRandom(INT_MAX, INT_MAX), INT_MAX);
    std::srand(1);
    std::vector<int> seen(11);
    for (int i = 0; i < 1000; ++i) {
        const int v = GetRandom(-5, 5);
        ASSERT_TRUE(-5 <= v && v <= 5) << v;
        ++seen[static_cast<std::size_t>(v + 5)];
    }
    EXPECT_THAT(seen, testing::Each(testing::Gt(0)));
    for (int i = 0; i < 1000; ++i) {
        EXPECT_GE(GetRandom(INT_MAX - 3, INT_MAX), INT_MAX - 3);
        EXPECT_LE(GetRandom(INT_MIN, INT_MIN + 3), INT_MIN + 3);
        GetRandom(INT_MIN, INT_MAX);
        GetRandom(INT_MAX, INT_MIN);  // any integer will do, as long as nothing overflows
    }
}

}  // namespace
}  // namespace tarvex
