// The convex hull of integer points.
#include "support/precompiled.h"

#include <climits>

#include "support/records.h"
#include "tarvex/geometry.h"

namespace tarvex {
namespace {

using Points = std::vector<std::pair<int, int>>;
using P = std::pair<int, int>;

Points Hull(const Points& points) {
    CArray<tagPOINT, tagPOINT> array;
    array.SetSize(static_cast<int>(points.size()));
    for (int i = 0; i < array.GetSize(); ++i) {
        const auto& [x, y] = points[static_cast<std::size_t>(i)];
        array[i] = {x, y};
    }
    GetConvexHull(array);
    Points hull;
    for (const tagPOINT& p : array) hull.emplace_back(p.x, p.y);
    return hull;
}

std::int64_t Cross(P a, P b, P c) {
    const std::int64_t abx = b.first - a.first, aby = b.second - a.second;
    return abx * (c.second - a.second) - aby * (c.first - a.first);
}

TEST(ConvexHull, OfFewOrCollinearPointsAndAtTheEndsOfTheIntegers) {
    struct Case {
        const char* what;
        Points points, hull;
    };
    const P low{INT_MIN, INT_MIN}, high{INT_MAX, INT_MAX}, left{INT_MIN, INT_MAX}, right{INT_MAX, INT_MIN};
    for (const Case& c : {
             Case{"none", {}, {}},
             {"fewer than four stay as they are", {{1, 2}, {1, 2}, {3, 4}}, {{1, 2}, {1, 2}, {3, 4}}},
             {"collinear: there and back", {{2, 2}, {0, 0}, {3, 3}, {1, 1}}, {{3, 3}, {0, 0}, {3, 3}}},
             {"level", {{5, 1}, {9, 1}, {0, 1}, {5, 1}}, {{9, 1}, {0, 1}, {9, 1}}},
             {"upright", {{5, 1}, {5, 4}, {5, -8}, {5, 0}}, {{5, 4}, {5, -8}, {5, 4}}},
             {"all equal", {{5, 1}, {5, 1}, {5, 1}, {5, 1}}, {{5, 1}}},
             {"all integers",
              {low, right, high, left, {0, 0}, {INT_MAX, INT_MAX - 1}},
              {high, right, low, left, high}},
             {"a unit off the diagonal, which no double holds beside products of this size",
              {low, {0, -1}, high, {-1, -1}},
              {high, {0, -1}, low, high}},
         })
        EXPECT_EQ(Hull(c.points), c.hull) << c.what;
}

/// Vertices: the points that no segment or triangle of other points contains, found by trying all edges.
Points HullByTryingAllEdges(Points points) {
    std::sort(points.begin(), points.end());
    points.erase(std::unique(points.begin(), points.end()), points.end());
    Points vertices;
    for (const P& a : points) {
        for (const P& b : points) {
            if (a == b) continue;
            const bool edge = std::all_of(points.begin(), points.end(), [&](const P& c) {
                const std::int64_t cross = Cross(a, b, c);
                const std::int64_t reach = std::int64_t{c.first - a.first} * (c.first - b.first) +
                                           std::int64_t{c.second - a.second} * (c.second - b.second);
                return cross > 0 || (cross == 0 && reach <= 0);
            });
            if (edge) vertices.push_back(a);
        }
    }
    std::sort(vertices.begin(), vertices.end());
    vertices.erase(std::unique(vertices.begin(), vertices.end()), vertices.end());
    return vertices;
}

TEST(ConvexHull, HasExactlyTheVerticesThatTryingAllEdgesFindsAndTurnsOneWay) {
    std::mt19937 random(4);
    for (int round = 0; round < 400; ++round) {
        std::uniform_int_distribution<int> coordinate(0, 1 + round / 8);  // small grids are full of ties
        Points points;
        for (int i = 0; i < 4 + round % 30; ++i) points.emplace_back(coordinate(random), coordinate(random));
        const Points hull = Hull(points);
        ASSERT_FALSE(hull.empty());
        if (hull.size() == 1) continue;
        ASSERT_EQ(hull.front(), hull.back());
        const P pivot = *std::max_element(points.begin(), points.end(), [](const P& a, const P& b) {
            return std::pair(a.second, a.first) < std::pair(b.second, b.first);
        });
        ASSERT_EQ(hull.front(), pivot);
        for (std::size_t i = 2; i < hull.size() && hull.size() > 3; ++i) {
            ASSERT_LT(Cross(hull[i - 2], hull[i - 1], hull[i]), 0);
        }
        Points vertices(hull.begin(), hull.end() - 1);
        std::sort(vertices.begin(), vertices.end());
        ASSERT_EQ(vertices, HullByTryingAllEdges(points));
    }
}

}  // namespace
}  // namespace tarvex
