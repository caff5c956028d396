// The sweep under offsetting: on tangles of edges with every kind of degeneracy, against winding numbers
// counted edge by edge.
#include "support/precompiled.h"

#include "geometry/offset_sweep.h"

namespace tarvex::offsetting {
namespace {

int WindingAt(const std::vector<Edge>& edges, double x, double y) {
    int winding = 0;
    for (const Edge& e : edges) {
        if ((e.from.y <= y) == (e.to.y <= y)) continue;
        const double t = (y - e.from.y) / (e.to.y - e.from.y);
        if (e.from.x + t * (e.to.x - e.from.x) > x) winding += e.to.y > e.from.y ? 1 : -1;
    }
    return winding;
}

int Below(std::mt19937& random, int limit) {
    return std::uniform_int_distribution<int>(0, limit - 1)(random);
}

/// Up to three contours with corners on a coarse lattice, so that corners coincide, edges overlap and many
/// edges meet in one point.
std::vector<Edge> Tangle(std::mt19937& random, double lattice, int extent) {
    std::vector<Edge> edges;
    for (int contours = 1 + Below(random, 3); contours > 0; --contours) {
        std::vector<GridPoint> corners(3 + static_cast<std::size_t>(Below(random, 12)));
        for (GridPoint& p : corners) p = {Below(random, extent) * lattice, Below(random, extent) * lattice};
        for (std::size_t i = 0; i < corners.size(); ++i)
            edges.push_back({corners[i], corners[(i + 1) % corners.size()], static_cast<int>(edges.size())});
    }
    return edges;
}

TEST(OffsetSweep, OutlineGoesOnceRoundExactlyWhatTheRuleFills) {
    std::mt19937 random(5);
    for (int round = 0; round < 1500; ++round) {
        const int extent = 2 + Below(random, 12);
        const double lattice = std::ldexp(1.0, 24 + 16 * Below(random, 2));
        const std::vector<Edge> edges = Tangle(random, lattice, extent);
        for (const Inside rule : {Inside::positive, Inside::nonZero, Inside::evenOdd}) {
            const auto contours = Outline(edges, rule);
            ASSERT_TRUE(contours.has_value());
            std::vector<Edge> outline;
            for (const Contour& contour : *contours) AppendEdges(contour, Sense::forwards, outline);
            for (int k = 0; k < 40; ++k) {
                // Odd fractions keep the probes away from edges by more than these are bent.
                const double x = (Below(random, 100000) / 99991.0 * extent + 1e-4) * lattice;
                const double y = (Below(random, 100000) / 99989.0 * extent + 3e-4) * lattice;
                const int winding = WindingAt(edges, x, y);
                const bool isInside = rule == Inside::positive  ? winding > 0
                                      : rule == Inside::nonZero ? winding != 0
                                                                : winding % 2 != 0;
                ASSERT_EQ(WindingAt(outline, x, y), isInside ? 1 : 0) << "round " << round;
            }
        }
    }
}

TEST(OffsetSweep, SideIsExactWhereRoundedProductsAreEqual) {
    const double far = 0x1p48;
    const GridPoint a{-far, -far}, b{far, far - 1};
    EXPECT_EQ(SideOf(a, b, {far - 1, far - 2}), -1);
    EXPECT_EQ(SideOf(a, b, {far - 2, far - 2}), 1);
    EXPECT_EQ(SideOf(a, {far, far}, {1, 1}), 0);
    EXPECT_EQ(SideOf(a, {far, far}, {0, 1}), 1);
}

TEST(OffsetSweep, PartsThatTouchInAPointAreSeparateAndPiecesOfOneEdgeAreOne) {
    // Two triangles tip to tip, each side crossed once by a band that cancels out.
    const std::vector<Edge> edges{{{0, 0}, {8, 8}, 0}, {{8, 8}, {8, 0}, 1},   {{8, 0}, {0, 8}, 2},
                                  {{0, 8}, {0, 0}, 3}, {{2, -9}, {2, 99}, 4}, {{2, 99}, {2, -9}, 5}};
    const auto contours = *Outline(edges, Inside::nonZero);
    ASSERT_EQ(contours.size(), 2U);
    EXPECT_EQ(contours[0].size(), 3U);
    EXPECT_EQ(contours[1].size(), 3U);
}

TEST(OffsetSweep, GivesUpBeyondTheCrossingsAllowed) {
    std::vector<Edge> edges;
    for (int i = 0; i < 20; ++i) {
        edges.push_back({{0, 10.0 * i + 1}, {1000, 10.0 * i + 7}, i});
        edges.push_back({{50.0 * i + 3, -9}, {50.0 * i + 9, 999}, 100 + i});
    }
    EXPECT_FALSE(Outline(edges, Inside::nonZero, 99).has_value());
    EXPECT_GT(CutAtCrossings(edges).size(), 800U);
}

}  // namespace
}  // namespace tarvex::offsetting
