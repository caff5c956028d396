// Cubic curves as quadratic ones, boxes, turns and the native form.
#include "support/precompiled.h"

#include "platform/font_outline.h"
#include "support/property.h"
#include "tarvex/records.h"

namespace tarvex::platform::test {
namespace {

using tarvex::test::ExpectLaw;

struct Curve {
    OutlinePoint from, control, to;
    DPOINT At(double t) const {
        const double u = 1 - t;
        return {u * u * from.x + 2 * u * t * control.x + t * t * to.x,
                u * u * from.y + 2 * u * t * control.y + t * t * to.y};
    }
};

DPOINT CubicAt(const std::array<OutlinePoint, 4>& p, double t) {
    const double u = 1 - t;
    const double w[] = {u * u * u, 3 * u * u * t, 3 * u * t * t, t * t * t};
    DPOINT sum;
    for (std::size_t i = 0; i < 4; ++i) sum = {sum.x + w[i] * p[i].x, sum.y + w[i] * p[i].y};
    return sum;
}

TEST(CubicCurves, AreFollowedByQuadraticOnesWithinAQuarter) {
    ExpectLaw(
        [](const std::array<std::int16_t, 8>& n, bool isSmall) {
            const double scale = isSmall ? 0.01 : 1;
            std::array<OutlinePoint, 4> p;
            for (std::size_t i = 0; i < 4; ++i) p[i] = {n[2 * i] * scale, n[2 * i + 1] * scale};
            OutlineContour contour = {p[0]};
            AppendCubic(contour, p[1], p[2], p[3]);
            RC_ASSERT(contour.size() % 2 == 1);
            const std::size_t count = contour.size() / 2;
            RC_ASSERT(count <= 128);
            RC_ASSERT(contour.back().x == p[3].x && contour.back().y == p[3].y);
            for (std::size_t i = 0; i < count; ++i) {
                const Curve piece = {contour[2 * i], contour[2 * i + 1], contour[2 * i + 2]};
                for (int k = 0; k <= 8; ++k) {
                    const DPOINT on = piece.At(k / 8.0);
                    const DPOINT want =
                        CubicAt(p, (static_cast<double>(i) + k / 8.0) / static_cast<double>(count));
                    RC_ASSERT(std::hypot(on.x - want.x, on.y - want.y) <= 0.25);
                }
            }
        },
        300);
}

/// A contour whose points alternate as the bits of a word say; the first one is on the curve.
OutlineContour Contour(const std::vector<std::pair<std::int8_t, std::int8_t>>& points, std::uint32_t kinds) {
    OutlineContour contour;
    for (const auto& [x, y] : points) {
        const bool isControl = !contour.empty() && (kinds >> contour.size() % 32 & 1) != 0;
        contour.push_back({x * 0.5, y * 1.0, isControl ? PointKind::Control : PointKind::OnCurve});
    }
    return contour;
}

TEST(OutlineBox, IsTheSmallestOneAroundTheCurves) {
    // Once around, a bulge whose control point lies at 20 reaches 10.
    const OutlineContour bulge = {{0, 0}, {10, 20, PointKind::Control}, {20, 0}};
    const auto box = BoxOf({bulge});
    EXPECT_EQ(std::tuple(box->left, box->bottom, box->right, box->top), std::tuple(0, 0, 20, 10));
    EXPECT_FALSE(BoxOf({}));
    ExpectLaw([](const std::vector<std::pair<std::int8_t, std::int8_t>>& points, std::uint32_t kinds) {
        if (points.empty()) return;
        const OutlineContour contour = Contour(points, kinds);
        const auto whole = BoxOf({contour});
        const auto turned = BoxOf(Turned({contour}, -900));
        RC_ASSERT(whole && turned);
        RC_ASSERT(turned->left == whole->bottom && turned->right == whole->top);
        RC_ASSERT(turned->top == -whole->left && turned->bottom == -whole->right);
        for (const OutlinePoint& p : contour) {
            if (p.kind == PointKind::OnCurve)
                RC_ASSERT(p.x >= whole->left && p.x <= whole->right && p.y >= whole->bottom &&
                          p.y <= whole->top);
        }
    });
}

TEST(OutlineTurn, IsCounterClockwiseInTenthsOfADegree) {
    const Outline east = {{{10, 0}}};
    const std::tuple<int, double, double> cases[] = {{0, 10, 0},       {900, 0, 10},
                                                     {1800, -10, 0},   {-900, 0, -10},
                                                     {3600, 10, 0},    {-2147483647 - 1, 0, 0},
                                                     {300, 8.6602, 5}, {-300, 8.6602, -5}};
    for (const auto& [tenths, x, y] : cases) {
        const OutlinePoint turned = Turned(east, tenths)[0][0];
        EXPECT_NEAR(std::hypot(turned.x, turned.y), 10, 1e-12);
        if (x == 0 && y == 0) continue;  // any direction will do, as long as there is one
        EXPECT_NEAR(turned.x, x, tenths % 900 == 0 ? 0 : 1e-4) << tenths;
        EXPECT_NEAR(turned.y, y, tenths % 900 == 0 ? 0 : 1e-4) << tenths;
    }
}

TEST(NativeForm, HoldsRecordsOfLinesAndCurvesWithTheirSizes) {
    const OutlineContour contour = {
        {1.5, -2}, {3, 4}, {5, 6, PointKind::Control}, {7, 8, PointKind::Control}};
    const auto bytes = NativeBytes({contour});
    ASSERT_TRUE(bytes);
    std::vector<std::int32_t> words(bytes->size() / 4);
    std::memcpy(words.data(), bytes->data(), bytes->size());
    constexpr std::int32_t one = 65536;
    // Size, type and start; a line to 3,4; a curve by two controls back to the start. A record's head is its
    // type with the count above it.
    EXPECT_THAT(
        words, testing::ElementsAre(56, 24, one * 3 / 2, -2 * one, 1 | 1 << 16, 3 * one, 4 * one, 2 | 3 << 16,
                                    5 * one, 6 * one, 7 * one, 8 * one, one * 3 / 2, -2 * one));
}

TEST(NativeForm, IsRefusedWhereACoordinateDoesNotFit) {
    const std::pair<double, bool> cases[] = {
        {32767.99, true}, {32768, false},
        {-32768, true},   {-32768.1, false},
        {1e300, false},   {std::numeric_limits<double>::quiet_NaN(), false},
        {-1e300, false},  {std::numeric_limits<double>::infinity(), false}};
    for (const auto& [x, fits] : cases) EXPECT_EQ(NativeBytes({{{0, 0}, {0, x}}}).has_value(), fits) << x;
}

}  // namespace
}  // namespace tarvex::platform::test
