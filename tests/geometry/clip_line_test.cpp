// Clipping a segment to a rectangle.
#include "support/precompiled.h"

#include "support/contours.h"
#include "support/records.h"
#include "tarvex/geometry.h"

namespace tarvex {
namespace {

using test::kInfinity;
using test::kNaN;

struct Clipped {
    int result;
    DPOINT a, b;
};

Clipped Clip(DPOINT a, DPOINT b, const DRECT& r) {
    const int result = _clip_line(&a.x, &a.y, &b.x, &b.y, r.left, r.right, r.top, r.bottom);
    return {result, a, b};
}

// What grazes an edge or a corner, of which the comparison below knows nothing.
TEST(ClipLine, CountsTheEdgesAsInside) {
    const DRECT window{0, 10, 0, 10};
    struct Case {
        const char* what;
        DPOINT a, b;
        int result;
        DPOINT clippedA, clippedB;
    };
    for (const Case& c : {
             Case{"along an edge", {0, 10}, {10, 10}, 1, {0, 10}, {10, 10}},
             {"a point on a corner", {10, 0}, {10, 0}, 1, {10, 0}, {10, 0}},
             {"a point outside", {11, 5}, {11, 5}, 0, {11, 5}, {11, 5}},
             {"through two corners", {-10, -10}, {20, 20}, 7, {0, 0}, {10, 10}},
             {"to a corner from outside", {-5, 15}, {0, 10}, 3, {0, 10}, {0, 10}},
         }) {
        const Clipped got = Clip(c.a, c.b, window);
        EXPECT_EQ(got.result, c.result) << c.what;
        EXPECT_EQ(got.a, c.clippedA) << c.what;
        EXPECT_EQ(got.b, c.clippedB) << c.what;
    }
    const tagRECT rc{2, 3, 20, 30};  // of the platform: right and bottom are inside
    for (const bool isLevel : {true, false}) {
        DPOINT a = isLevel ? DPOINT{0, 10} : DPOINT{5, 0}, b = isLevel ? DPOINT{50, 10} : DPOINT{5, 50};
        EXPECT_EQ(ClipLine(&a.x, &a.y, &b.x, &b.y, &rc), 7);
        EXPECT_EQ(a, (isLevel ? DPOINT{2, 10} : DPOINT{5, 3}));
        EXPECT_EQ(b, (isLevel ? DPOINT{20, 10} : DPOINT{5, 30}));
    }
}

/// The visible stretch by parameters along the segment; negative length when there is none.
std::pair<double, double> VisibleStretch(DPOINT a, DPOINT b, const DRECT& r) {
    double from = 0, to = 1;
    const auto cut = [&](double start, double delta, double low, double high) {
        if (delta == 0) {
            if (start < low || start > high) to = -1;
            return;
        }
        const auto [enter, leave] = std::minmax({(low - start) / delta, (high - start) / delta});
        from = std::max(from, enter);
        to = std::min(to, leave);
    };
    cut(a.x, b.x - a.x, r.left, r.right);
    cut(a.y, b.y - a.y, r.top, r.bottom);
    return {from, to};
}

TEST(ClipLine, AgreesWithParametricClippingAndStaysInsideTheWindow) {
    std::mt19937_64 random(7);
    std::uniform_real_distribution<double> coordinate(-20, 30);
    std::uniform_int_distribution<int> gridOrNot(0, 3);
    for (int i = 0; i < 20000; ++i) {
        const bool grid = gridOrNot(random) == 0;  // grid points hit edges and corners exactly
        const auto draw = [&] { return grid ? std::round(coordinate(random) / 5) * 5 : coordinate(random); };
        const DPOINT a{draw(), draw()}, b{draw(), draw()};
        const auto [left, right] = std::minmax({draw(), draw()});
        const auto [top, bottom] = std::minmax({draw(), draw()});
        const DRECT r{left, right, top, bottom};

        const Clipped got = Clip(a, b, r);
        const auto [from, to] = VisibleStretch(a, b, r);
        if (std::fabs(to - from) < 1e-9) continue;  // grazes a corner: either answer is right
        ASSERT_EQ(got.result != 0, from < to);
        if (!got.result) continue;
        for (const DPOINT& p : {got.a, got.b}) {
            EXPECT_TRUE(left <= p.x && p.x <= right && top <= p.y && p.y <= bottom);
        }
        EXPECT_NEAR(got.a.x, a.x + (b.x - a.x) * from, 1e-9);
        EXPECT_NEAR(got.a.y, a.y + (b.y - a.y) * from, 1e-9);
        EXPECT_NEAR(got.b.x, a.x + (b.x - a.x) * to, 1e-9);
        EXPECT_NEAR(got.b.y, a.y + (b.y - a.y) * to, 1e-9);
        EXPECT_EQ((got.result & CLIP_FIRST_MOVED) != 0, got.a.x != a.x || got.a.y != a.y);
        EXPECT_EQ((got.result & CLIP_SECOND_MOVED) != 0, got.b.x != b.x || got.b.y != b.y);
    }
}

// Moving the second end onto the left edge puts it a hair above the top edge, and onto that, a hair left
// of the left one, and so on: it must settle, and the segment, whose first end is inside, be visible.
TEST(ClipLine, SettlesAnEndThatRoundingThrowsToAndFroAtACorner) {
    const DRECT r{-0x1.4447962a52b85p-8, 0x1.29a289c89452cp-4, 0x1.442120d81142ap-7, 0x1.7bbf847ed6aeep-4};
    const DPOINT a{0x1.db08322fb5885p-5, 0x1.3b987616354ccp-4};
    const DPOINT b{-0x1.1052a722349fap-4, -0x1.c8e6cc126de5cp-5};
    const Clipped got = Clip(a, b, r);
    EXPECT_EQ(got.result, CLIP_VISIBLE | CLIP_SECOND_MOVED);
    EXPECT_EQ(got.b, (DPOINT{r.left, r.top}));
    EXPECT_EQ(Clip(b, a, r).result, CLIP_VISIBLE | CLIP_FIRST_MOVED);
}

TEST(ClipLine, EndsForAnyInputAndLeavesRejectedOnesAlone) {
    const double values[] = {0, 1, -1, 10, 1e300, -1e300, kInfinity, -kInfinity, kNaN};
    std::mt19937_64 random(3);
    std::uniform_int_distribution<std::size_t> pick(0, std::size(values) - 1);
    for (int i = 0; i < 100000; ++i) {
        const auto draw = [&] { return values[pick(random)]; };
        const DPOINT a{draw(), draw()}, b{draw(), draw()};
        const DRECT r{draw(), draw(), draw(), draw()};
        const Clipped got = Clip(a, b, r);
        if (got.result) continue;
        EXPECT_EQ(std::memcmp(&got.a, &a, sizeof a), 0);
        EXPECT_EQ(std::memcmp(&got.b, &b, sizeof b), 0);
    }
    EXPECT_EQ(Clip({2, 2}, {8, 8}, {10, 0, 10, 0}).result, 0) << "a window turned inside out is empty";
    EXPECT_EQ(Clip({kNaN, 20}, {5, -20}, {10, 0, 10, 0}).result, 0);
}

}  // namespace
}  // namespace tarvex
