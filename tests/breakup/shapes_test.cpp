// Whole shapes: what their regions cover, and how their inclinations lie.
#include "support/precompiled.h"

#include "breakup/measures.h"
#include "breakup/shapes.h"
#include "support/property.h"
#include "tarvex/breakup.h"

namespace tarvex {
namespace {

using test::operator-;
using test::operator|;

/// All regions of a shape, which must be one island that was broken up.
IslandBreakUp BrokenUp(const test::NamedShape& shape) {
    CPolyPolyBezier outlines;
    test::TraceShape(shape, outlines);
    auto islands = BreakUpShape(outlines, {});
    EXPECT_EQ(islands.size(), 1U) << shape.name;
    return islands.empty() ? IslandBreakUp{} : std::move(islands[0]);
}

class FixedShape : public testing::TestWithParam<test::NamedShape> {};

TEST_P(FixedShape, IsCoveredByColumnsWithSquareInclinations) {
    const IslandBreakUp island = BrokenUp(GetParam());
    EXPECT_EQ(island.end, BreakUpEnd::Done);
    EXPECT_EQ(static_cast<int>(island.regions.size()), GetParam().regions);
    const test::Coverage coverage = test::MeasureCoverage(island);
    EXPECT_LT(coverage.missed, 0.01);
    EXPECT_LT(coverage.doubled, 0.005);
    const test::InclinationMeasures lie = test::MeasureInclinations(island.regions);
    EXPECT_EQ(lie.crossings, 0);
    EXPECT_TRUE(lie.isOrdered);
    EXPECT_EQ(lie.emptyRegions, 0);
    EXPECT_LT(lie.medianTilt, GetParam().medianTilt);
    EXPECT_LT(lie.worstTurn, GetParam().worstTurn);
}

INSTANTIATE_TEST_SUITE_P(Shapes, FixedShape, testing::ValuesIn(test::FixedShapes()),
                         [](const auto& instance) {
                             std::string name = instance.param.name;
                             std::replace(name.begin(), name.end(), ' ', '_');
                             return name;
                         });

TEST(BreakUpShape, GivesARingItsTwoOutlinesWithInclinationsAllRound) {
    for (const test::NamedShape& shape : test::FixedShapes()) {
        if (shape.name != "ring") continue;
        const IslandBreakUp island = BrokenUp(shape);
        ASSERT_EQ(island.regions.size(), 1U);
        const StitchRegion& ring = island.regions[0];
        EXPECT_TRUE(ring.isRing);
        EXPECT_NEAR(test::AreaOf(ring.first), std::numbers::pi * 80 * 80, 60);
        EXPECT_NEAR(test::AreaOf(ring.second), std::numbers::pi * 54 * 54, 60);
        EXPECT_GT(ring.inclinations.size(), 60U);
    }
}

TEST(BreakUpShape, TakesIslandsAndHolesApart) {
    // A ring with a bar inside it, and a contour that is too small to be anything.
    const test::NamedShape shape{"nested", 240,
                                 (test::Disc({120, 120}, 110) - test::Disc({120, 120}, 85)) |
                                     test::Stroke({{70, 120}, {170, 120}}, 24, test::Caps::Square),
                                 0};
    CPolyPolyBezier outlines;
    test::TraceShape(shape, outlines);
    outlines.Add(std::make_unique<CArray<BPOINT, BPOINT>>());
    outlines.Add(nullptr);
    const auto islands = BreakUpShape(outlines, {});
    ASSERT_EQ(islands.size(), 2U);
    EXPECT_EQ(islands[0].contours.size() + islands[1].contours.size(), 3U);
    for (const IslandBreakUp& island : islands) {
        EXPECT_EQ(island.end, BreakUpEnd::Done);
        EXPECT_EQ(island.regions.size(), 1U);
    }
}

TEST(BreakUpShape, RunsBothRailsToTheTipsOfAStar) {
    const std::vector<DPOINT> corners{{100, 19},    {121.2, 74.9}, {180.8, 77.7}, {134.2, 115.1},
                                      {150, 172.8}, {100, 140},    {50, 172.8},   {65.8, 115.1},
                                      {19.2, 77.7}, {78.8, 74.9},  {100, 19}};
    CPolyPolyBezier outlines;
    test::Nodes star;
    for (const DPOINT& p : corners) star.Add(test::Corner(p.x, p.y));
    test::AddTo(outlines, std::move(star));
    const auto islands = BreakUpShape(outlines, {});
    ASSERT_EQ(islands.size(), 1U);
    for (std::size_t i = 0; i + 1 < corners.size(); i += 2) {
        const auto isAtTip = [&](const DPOINT& p) {
            return std::hypot(p.x - corners[i].x, p.y - corners[i].y) < 1e-6;
        };
        const auto runsThere = [&](const StitchRegion& region) {
            return (isAtTip(region.first.front()) && isAtTip(region.second.front())) ||
                   (isAtTip(region.first.back()) && isAtTip(region.second.back()));
        };
        EXPECT_EQ(std::count_if(islands[0].regions.begin(), islands[0].regions.end(), runsThere), 1) << i;
    }
}

TEST(BreakUpShape, SpacesInclinationsAsAsked) {
    CPolyPolyBezier outlines;
    test::TraceShape(test::FixedShapes()[0], outlines);  // a bar 160 long
    for (const double spacing : {3.0, 8.0, 20.0}) {
        const auto islands = BreakUpShape(outlines, {true, 2.0, spacing});
        ASSERT_EQ(islands.size(), 1U);
        EXPECT_NEAR(static_cast<double>(islands[0].regions.at(0).inclinations.size()), 160 / spacing, 1.5);
    }
}

TEST(BreakUpShape, SurvivesAnyContours) {
    test::ExpectLaw(
        [] {
            CPolyPolyBezier outlines;
            const int contours = *rc::gen::inRange(1, 4);
            for (int c = 0; c < contours; ++c) {
                test::Nodes contour;
                const auto coordinate = [] {
                    return *rc::gen::weightedOneOf<double>(
                        {{30, rc::gen::map(rc::gen::inRange(0, 300), [](int v) { return v / 2.0; })},
                         {1, rc::gen::element(1e300, -1e12, std::nan(""), HUGE_VAL, 1e-320)}});
                };
                for (int i = *rc::gen::inRange(0, 7); i > 0; --i) {
                    const double x = coordinate();
                    contour.Add(test::Corner(x, coordinate()));
                }
                test::AddTo(outlines, std::move(contour));
            }
            for (const IslandBreakUp& island : BreakUpShape(outlines, {})) {
                RC_ASSERT((island.end == BreakUpEnd::Done) == !island.regions.empty());
                for (const StitchRegion& region : island.regions) {
                    for (std::size_t i = 0; i < region.inclinations.size(); ++i) {
                        const auto [a, b] = region.inclinations[i];
                        RC_ASSERT(a >= 0 && a < static_cast<int>(region.first.size()));
                        RC_ASSERT(b >= 0 && b < static_cast<int>(region.second.size()));
                        if (i == 0) continue;  // RC_ASSERT evaluates both sides of ||
                        RC_ASSERT(a > region.inclinations[i - 1].first);
                        RC_ASSERT(b > region.inclinations[i - 1].second);
                    }
                }
            }
        },
        60);
}

}  // namespace
}  // namespace tarvex
