// Offsets of contours and lines against distances computed edge by edge; loops, starting points, and what
// degenerate input gives.
#include "support/precompiled.h"

#include "support/contours.h"
#include "support/records.h"
#include "tarvex/geometry.h"

namespace tarvex {
namespace {

using namespace test;

std::vector<Points> ToVectors(const CPolyPolyDPoint& contours) {
    std::vector<Points> result;
    for (int i = 0; i < contours.GetSize(); ++i) result.push_back(ListOf(contours[i]));
    return result;
}

std::vector<Points> Shrunk(const Points& contour, double distance, const OffsetOptions& options = {}) {
    return ToVectors(ShrinkPolyline(Polyline(contour), distance, options));
}

std::vector<Points> WithoutLoops(const Points& line, double distance) {
    return ToVectors(RemovePolylineLoops(Polyline(line), distance));
}

double DistanceTo(const Points& polyline, DPOINT p) {
    double nearest = kInfinity;
    for (std::size_t i = 0; i + 1 < polyline.size(); ++i)
        nearest = std::min(nearest, DistanceFromSegment(p, polyline[i], polyline[i + 1]));
    return nearest;
}

int Winding(const Points& contour, DPOINT p) {
    int winding = 0;
    for (std::size_t i = 0; i + 1 < contour.size(); ++i) {
        const DPOINT a = contour[i], b = contour[i + 1];
        if ((a.y <= p.y) == (b.y <= p.y)) continue;
        if (a.x + (p.y - a.y) / (b.y - a.y) * (b.x - a.x) > p.x) winding += b.y > a.y ? 1 : -1;
    }
    return winding;
}

int Winding(const std::vector<Points>& contours, DPOINT p) {
    int winding = 0;
    for (const Points& contour : contours) winding += Winding(contour, p);
    return winding;
}

/// Positive for what is clockwise on a screen.
double Area(const Points& contour) {
    double area = 0;
    for (std::size_t i = 0; i + 1 < contour.size(); ++i)
        area += (contour[i].x * contour[i + 1].y - contour[i].y * contour[i + 1].x) / 2;
    return area;
}

/// Clockwise, 100 across, simple: corners at growing angles, at distances from the centre that vary.
Points Star(std::mt19937& random, int corners, double roughness) {
    std::uniform_real_distribution<double> part(0, 1);
    Points points;
    for (int i = 0; i < corners; ++i) {
        const double angle = 2 * kPi * (i + 0.8 * part(random)) / corners;
        const double radius = 50 * (1 - roughness * part(random));
        points.push_back({radius * std::cos(angle), radius * std::sin(angle)});
    }
    return Closed(points);
}

/// Corners anywhere within 30 of the origin.
Points Tangle(std::mt19937& random, std::size_t corners) {
    std::uniform_real_distribution<double> place(-30, 30);
    Points points(corners);
    for (DPOINT& p : points) p = {place(random), place(random)};
    return points;
}

/// Calls `visit` with corners and middles of sides.
template <class Visit>
void ForEachProbe(const std::vector<Points>& contours, Visit&& visit) {
    for (const Points& c : contours) {
        for (std::size_t i = 0; i + 1 < c.size(); ++i) {
            visit(c[i]);
            visit(DPOINT{(c[i].x + c[i + 1].x) / 2, (c[i].y + c[i + 1].y) / 2});
        }
    }
}

const Points kSquare = Box(0, 0, 10, 10);
const Points kDumbbell{{0, 0},   {10, 0}, {10, 4}, {20, 4},  {20, 0}, {30, 0}, {30, 10},
                       {20, 10}, {20, 6}, {10, 6}, {10, 10}, {0, 10}, {0, 0}};
const Points kClasp{{0, 0}, {30, 0}, {30, 30}, {18, 30}, {18, 25}, {25, 25}, {25, 5},
                    {5, 5}, {5, 25}, {15, 25}, {15, 30}, {0, 30},  {0, 0}};
const OffsetOptions kRound{.mitreLimit = 1, .corner = OffsetCorner::round, .tolerance = 1e-3};

TEST(Offset, ExamplesOfTheHeaderHold) {
    CArray<DPOINT, DPOINT> square;
    for (DPOINT p : {DPOINT{0, 0}, {10, 0}, {10, 10}, {0, 10}, {0, 0}}) square.Add(p);
    CPolyPolyDPoint smaller = ShrinkPolyline(square, 1);
    CPolyPolyDPoint larger = ShrinkPolyline(square, -1);
    CPolyPolyDPoint nothing = ShrinkPolyline(square, 5);
    EXPECT_EQ(ToVectors(smaller), (std::vector<Points>{{{1, 1}, {9, 1}, {9, 9}, {1, 9}, {1, 1}}}));
    EXPECT_EQ(ToVectors(larger), (std::vector<Points>{{{-1, -1}, {11, -1}, {11, 11}, {-1, 11}, {-1, -1}}}));
    EXPECT_EQ(nothing.GetSize(), 0);

    CPolyPolyDPoint parts = ShrinkPolyline(square, 2.5, {.mitreLimit = 2, .corner = OffsetCorner::round});
    EXPECT_EQ(parts.GetSize(), 1);

    CPolyPolyDPoint ring;
    AddTo(ring, Polyline(kSquare));
    AddTo(ring, Polyline(Box(4, 4, 6, 6)));
    CPolyPolyDPoint thinner = ShrinkPolyline(ring, 1);
    ASSERT_EQ(thinner.GetSize(), 2);
    EXPECT_DOUBLE_EQ(Area(ToVectors(thinner)[0]), 64);
    EXPECT_DOUBLE_EQ(Area(ToVectors(thinner)[1]), -16);

    CArray<DPOINT, DPOINT> moved;
    for (DPOINT p : {DPOINT{-2, 6}, {2, 2}, {-2, 2}, {2, 6}}) moved.Add(p);
    CPolyPolyDPoint line = RemovePolylineLoops(moved, 2);
    EXPECT_EQ(ToVectors(line), (std::vector<Points>{{{-2, 6}, {0, 4}, {2, 6}}}));

    ReorderPolyline(square, 2);
    EXPECT_EQ(ListOf(square), (Points{{10, 10}, {0, 10}, {0, 0}, {10, 0}, {10, 10}}));
    square = Polyline(kSquare);
    ReorderPolyline(square, DPOINT{5, -3}, ContourOrder::reversed);
    EXPECT_EQ(ListOf(square), (Points{{5, 0}, {0, 0}, {0, 10}, {10, 10}, {10, 0}, {5, 0}}));
}

TEST(Offset, ContainsExactlyWhatIsFarEnoughInsideOrNearEnoughOutside) {
    std::mt19937 random(11);
    std::uniform_real_distribution<double> place(-90, 90);
    // Few corners at distances small beside the sides, and so many that all sides are smaller by far.
    for (const auto& [corners, roughness] :
         {std::pair{5, 0.6}, {12, 0.8}, {40, 0.4}, {200, 0.1}, {400, 0.5}}) {
        for (const double distance : {0.3, 3.0, 12.0, 28.0, -0.3, -3.0, -20.0}) {
            const Points star = Star(random, corners, roughness);
            const std::vector<Points> result = Shrunk(star, distance, kRound);
            ForEachProbe(result, [&, n = corners](DPOINT p) {
                EXPECT_NEAR(DistanceTo(star, p), std::fabs(distance), 1.1e-3) << n << ' ' << distance;
            });
            for (int k = 0; k < 100; ++k) {
                const DPOINT p{place(random), place(random)};
                const double signedDistance = (Winding(star, p) != 0 ? 1 : -1) * DistanceTo(star, p);
                if (std::fabs(signedDistance - distance) < 2e-3) continue;
                EXPECT_EQ(Winding(result, p), signedDistance > distance ? 1 : 0)
                    << corners << ' ' << distance << " at " << p.x << ' ' << p.y;
            }
        }
    }
}

TEST(Offset, GrowingCoversWhatAContourThatCrossesItselfFillsAndPasses) {
    std::mt19937 random(3);
    std::uniform_real_distribution<double> place(-30, 30);
    for (int round = 0; round < 40; ++round) {
        Points tangle = Closed(Tangle(random, 3 + random() % 8));
        if (Area(tangle) < 0) std::reverse(tangle.begin(), tangle.end());
        const std::vector<Points> result = Shrunk(tangle, -4, kRound);
        for (int k = 0; k < 200; ++k) {
            const DPOINT p{1.3 * place(random), 1.3 * place(random)};
            const double distance = DistanceTo(tangle, p);
            if (std::fabs(distance - 4) < 2e-3) continue;
            EXPECT_EQ(Winding(result, p), Winding(tangle, p) != 0 || distance < 4 ? 1 : 0) << round;
        }
    }
}

TEST(Offset, CornersAreMitredToTheLimitAndNeverNearerThanTheDistance) {
    std::mt19937 random(7);
    for (const double distance : {2.0, -2.0}) {
        for (const OffsetCorner corner : {OffsetCorner::bevel, OffsetCorner::round}) {
            for (const double limit : {1.0, 1.5, 4.0}) {
                const Points star = Star(random, 14, 0.7);
                ForEachProbe(Shrunk(star, distance, {limit, corner, 1e-3}), [&](DPOINT p) {
                    const double d = DistanceTo(star, p);
                    EXPECT_GE(d, 2 - 1.1e-3);
                    // A bevel's ends stand out from the circle by at most 1 / cos 45 degrees.
                    EXPECT_LE(d, 2 * std::max(limit, corner == OffsetCorner::bevel ? 1.4143 : 1.001));
                });
            }
        }
    }
}

TEST(Offset, ConvexShapeShrunkAndGrownIsItselfAgain) {
    std::mt19937 random(1);
    for (int round = 0; round < 30; ++round) {
        const Points shape = Star(random, 3 + round, 0);  // on a circle
        double shortest = kInfinity;
        for (std::size_t i = 0; i + 1 < shape.size(); ++i)
            shortest =
                std::min(shortest, std::hypot(shape[i].x - shape[i + 1].x, shape[i].y - shape[i + 1].y));
        const OffsetOptions sharp{.mitreLimit = 100};
        const double distance = shortest / 10;
        const std::vector<Points> inner = Shrunk(shape, distance, sharp);
        ASSERT_EQ(inner.size(), 1U);
        EXPECT_LT(Area(inner[0]), Area(shape));
        const std::vector<Points> again = Shrunk(inner[0], -distance, sharp);
        EXPECT_EQ(again, std::vector<Points>{shape}) << round;
        // Rounded corners stay inside the mitred ones.
        EXPECT_LE(Area(Shrunk(inner[0], -distance, kRound)[0]), Area(shape) + 1e-9);
    }
}

TEST(Offset, StrokesOfAShapeGrowOnBothSides) {
    Points twice(kSquare.begin(), kSquare.end() - 1);
    twice.insert(twice.end(), kSquare.begin(), kSquare.end());  // by the even-odd rule it encloses nothing
    const Points bowTie{{0, 0}, {10, 10}, {10, 0}, {0, 10}, {0, 0}};  // two regions of three corners
    const Points bar{{50, 0}, {60, 0}, {50, 0}};
    struct Case {
        const char* name;
        std::vector<Points> contours;
        std::vector<double> areas;
    };
    for (const Case& c : std::vector<Case>{
             {"run through twice the same way", {twice}, {144, -64}},
             {"beside regions with as many corners as all contours",
              {bowTie, bar},
              {72 + 24 * std::sqrt(2.0), 24}},
         }) {
        CPolyPolyDPoint shape;
        for (const Points& contour : c.contours) AddTo(shape, Polyline(contour));
        std::vector<double> areas;
        for (const Points& part : ToVectors(ShrinkPolyline(shape, -1))) areas.push_back(Area(part));
        EXPECT_THAT(areas, testing::Pointwise(testing::DoubleNear(1e-9), c.areas)) << c.name;
    }
}

TEST(Offset, FineArcsThatNearlyCoincideKeepTheirDistance) {
    const Points tangle{{51, -1}, {40, 49}, {-10, 0}, {-1, 9}, {5, 50}, {0, 5}, {51, -1}};
    const Points stroke{{-113, 22}, {0, 16}, {97, 0}, {0, -1}, {-1, 0}, {-113, 22}};
    CPolyPolyDPoint shape;
    for (const Points& contour : {tangle, stroke}) AddTo(shape, Polyline(contour));
    const double distance = 15.6875;
    const double sag = distance * 4.8e-6;  // of 1024 chords to a full turn
    for (const Points& part :
         ToVectors(ShrinkPolyline(shape, -distance, {.corner = OffsetCorner::round, .tolerance = 0}))) {
        for (const DPOINT& p : part)
            EXPECT_GE(std::min(DistanceTo(tangle, p), DistanceTo(stroke, p)), distance - sag);
    }
}

TEST(Offset, OpenLinesKeepTheirSideAndDirectionAndNothingNearer) {
    const Points zigzag{{0, 0}, {10, 0}, {10, 10}, {20, 10}};
    EXPECT_EQ(Shrunk(zigzag, 1), (std::vector<Points>{{{0, 1}, {9, 1}, {9, 11}, {20, 11}}}));
    EXPECT_EQ(Shrunk(zigzag, -1), (std::vector<Points>{{{0, -1}, {11, -1}, {11, 9}, {20, 9}}}));
    // The end of a hook hides a part of its own beginning, or the whole inside.
    const Points hook{{0, 0}, {30, 0}, {30, 6}, {10, 6}, {10, 3}};
    EXPECT_EQ(Shrunk(hook, 2).size(), 2U);
    EXPECT_EQ(Shrunk({{0, 0}, {30, 0}, {30, 3}, {15, 3}, {15, 1}}, 4).size(), 1U);

    std::mt19937 random(2);
    for (int round = 0; round < 60; ++round) {
        const Points line = Tangle(random, 2 + random() % 60);
        const double distance = round % 2 == 0 ? 1.5 : -4;
        ForEachProbe(Shrunk(line, distance, kRound), [&](DPOINT p) {
            EXPECT_NEAR(DistanceTo(line, p), std::fabs(distance), 1.1e-3) << round;
        });
    }
}

TEST(Offset, PartsHolesDirectionsAndDegenerateInputGiveWhatTheHeaderSays) {
    struct Case {
        const char* name;
        Points contour;
        double distance;
        std::vector<double> areas;
    };
    const Points spiked{{0, 0}, {10, 0}, {10, 10}, {5, 10}, {5, 20}, {5, 10}, {0, 10}, {0, 0}};
    const Points slit{{0, 0}, {10, 0}, {10, 10}, {5, 10}, {5, 4}, {5, 10}, {0, 10}, {0, 0}};
    const Points repeated{{0, 0}, {0, 0}, {10, 0}, {10, 0}, {10, 10}, {0, 10}, {0, 10}, {0, 0}, {0, 0}};
    const Points counterClockwise(kSquare.rbegin(), kSquare.rend());
    for (const Case& c : std::vector<Case>{
             {"bar remains", kDumbbell, 0.5, {81 + 11 + 81}},
             {"falls apart", kDumbbell, 1, {64, 64}},
             {"vanishes", kDumbbell, 5, {}},
             {"closes around a hole", kClasp, -2, {34 * 34, -256}},
             {"fills its hole", kClasp, -10, {50 * 50}},
             {"positive grows the other way round", counterClockwise, 1, {-144}},
             {"negative shrinks it", counterClockwise, -1, {-64}},
             {"falls apart the other way round",
              Points(kDumbbell.rbegin(), kDumbbell.rend()),
              -1,
              {-64, -64}},
             {"empty", {}, 1, {}},
             {"one point", {{3, 4}}, -1, {}},
             {"one point, repeated", {{3, 4}, {3, 4}, {3, 4}}, -1, {}},
             {"repeated points", repeated, 1, {64}},
             {"collinear, shrunk", {{0, 0}, {4, 0}, {10, 0}, {0, 0}}, 1, {}},
             {"collinear, grown", {{0, 0}, {4, 0}, {10, 0}, {0, 0}}, -1, {24}},
             {"spike, shrunk", spiked, 1, {64}},
             {"spike, grown", spiked, -1, {144 + 20}},
             {"slit, shrunk", slit, 1, {64}},
             {"slit, grown", slit, -1, {144}},
             {"distance not a number", kSquare, kNaN, {}},
             {"infinite distance", kSquare, -kInfinity, {}},
             {"coordinate not a number", {{0, 0}, {kNaN, 0}, {10, 10}, {0, 0}}, 1, {}},
             {"infinite coordinate", {{0, 0}, {10, 0}, {10, kInfinity}, {0, 0}}, 0, {}},
             {"huge distance inwards", kSquare, 1e90, {}},
             {"all smaller than the tolerance", {{0, 0}, {1e-9, 0}, {1e-9, 1e-9}, {0, 0}}, -1e-9, {}},
         }) {
        std::vector<double> areas;
        for (const Points& part : Shrunk(c.contour, c.distance)) areas.push_back(Area(part));
        EXPECT_THAT(areas, testing::Pointwise(testing::DoubleNear(1e-9), c.areas)) << c.name;
    }
    EXPECT_EQ(Shrunk(repeated, 0), std::vector<Points>{repeated});
    // Far from the origin there are fewer digits; near it, at any size, as many as ever.
    for (const double size : {1e-6, 1.0, 1e12, 1e60}) {
        Points square = kSquare;
        for (DPOINT& p : square) p = {p.x * size, p.y * size};
        EXPECT_NEAR(Area(Shrunk(square, size).at(0)) / (size * size), 64, 1e-9) << size;
        for (DPOINT& p : square) p = {p.x + 1e6 * size, p.y - 1e6 * size};
        EXPECT_NEAR(Area(Shrunk(square, size).at(0)) / (size * size), 64, 1e-3) << size;
    }
    EXPECT_NEAR(Area(Shrunk(kSquare, -1e9).at(0)), 4e18, 1e11);
}

TEST(PolylineLoops, ClosedContourKeepsWhatItGoesRoundInItsOwnDirection) {
    std::mt19937 random(4);
    std::uniform_real_distribution<double> place(-30, 30);
    for (int round = 0; round < 60; ++round) {
        const Points tangle = Closed(Tangle(random, 3 + random() % 20));
        const int sense = Area(tangle) >= 0 ? 1 : -1;
        const std::vector<Points> result = WithoutLoops(tangle, 1);
        for (int k = 0; k < 100; ++k) {
            const DPOINT p{place(random), place(random)};
            EXPECT_EQ(Winding(result, p), Winding(tangle, p) * sense > 0 ? sense : 0) << round;
        }
    }
}

TEST(PolylineLoops, LeavesEverythingElseBitForBit) {
    std::mt19937 random(9);
    for (int round = 0; round < 20; ++round) {
        Points star = Star(random, 30, 0.6);
        if (round % 2 == 1) std::reverse(star.begin(), star.end());
        const std::vector<Points> result = WithoutLoops(star, 1);
        ASSERT_EQ(result.size(), 1U);
        EXPECT_EQ(std::memcmp(result[0].data(), star.data(), star.size() * sizeof(DPOINT)), 0);
    }
    // A loop to the right goes when moved to the left, one to the left stays; and the other way round.
    const Points right{{0, 0.1}, {10, 0.1}, {10, -5}, {5, -5}, {5, 7}};
    const Points cut{{0, 0.1}, {5, 0.1}, {5, 7}};
    EXPECT_EQ(WithoutLoops(right, 1), std::vector<Points>{cut});
    EXPECT_EQ(WithoutLoops(right, -1), std::vector<Points>{right});
    EXPECT_EQ(WithoutLoops(right, 0), std::vector<Points>{right});
    const Points within{{0, 0},  {10, 0}, {10, -8}, {2, -8}, {2, -4},
                        {6, -4}, {6, -2}, {4, -2},  {4, -9}, {4, 5}};
    EXPECT_EQ(WithoutLoops(within, 1), (std::vector<Points>{{{0, 0}, {4, 0}, {4, 5}}}));
}

TEST(ReorderPolyline, TurnsClosedContoursAndRefusesOthers) {
    struct Case {
        int start;
        ContourOrder order;
        Points expected;
    };
    const Points triangle{{0, 0}, {4, 0}, {4, 4}, {0, 0}};
    for (const Case& c : {Case{0, ContourOrder::kept, triangle}, Case{3, ContourOrder::kept, triangle},
                          Case{1, ContourOrder::kept, {{4, 0}, {4, 4}, {0, 0}, {4, 0}}},
                          Case{1, ContourOrder::reversed, {{4, 0}, {0, 0}, {4, 4}, {4, 0}}}}) {
        auto contour = Polyline(triangle);
        EXPECT_TRUE(ReorderPolyline(contour, c.start, c.order));
        EXPECT_EQ(ListOf(contour), c.expected);
    }
    for (const Points& refused : {Points{}, Points{{1, 1}}, Points{{0, 0}, {1, 0}, {1, 1}}}) {
        auto contour = Polyline(refused);
        EXPECT_FALSE(ReorderPolyline(contour, 0));
        EXPECT_FALSE(ReorderPolyline(contour, DPOINT{1, 1}));
        EXPECT_EQ(ListOf(contour), refused);
    }
    auto contour = Polyline(triangle);
    EXPECT_FALSE(ReorderPolyline(contour, -1));
    EXPECT_FALSE(ReorderPolyline(contour, 4));
    EXPECT_FALSE(ReorderPolyline(contour, DPOINT{kNaN, 0}));
    EXPECT_TRUE(ReorderPolyline(contour, DPOINT{9, -9}));  // a corner is nearest: none is added
    EXPECT_EQ(ListOf(contour), (Points{{4, 0}, {4, 4}, {0, 0}, {4, 0}}));
}

}  // namespace
}  // namespace tarvex
