// Circles through three points and arcs as polylines.
#include "support/precompiled.h"

#include "bezier/vector.h"
#include "support/contours.h"
#include "support/property.h"
#include "support/records.h"
#include "tarvex/geometry.h"

namespace tarvex {
namespace {

using test::kPi;

DPOINT OnCircle(DPOINT centre, double radius, double angle) {
    return {centre.x + radius * std::cos(angle), centre.y + radius * std::sin(angle)};
}

TEST(Circle, RunsThroughThreePointsAndIsRefusedForCollinearOnes) {
    DPOINT centre;
    double radius = -7;
    test::ExpectLaw([&](std::int16_t x, std::int16_t y, std::uint16_t size, std::array<std::uint8_t, 3> at) {
        DPOINT p[3];
        const DPOINT wanted{x / 50.0, y / 50.0};
        for (std::size_t i = 0; i < 3; ++i)
            p[i] = OnCircle(wanted, size / 50.0 + 1, static_cast<double>(10 * i + at[i] % 9) * kPi / 15);
        RC_ASSERT(CalcCircle(p[0].x, p[0].y, p[1].x, p[1].y, p[2].x, p[2].y, centre, radius));
        RC_ASSERT(std::fabs(radius - (size / 50.0 + 1)) < 1e-6 * radius);
        RC_ASSERT(Distance(centre, wanted) < 1e-6 * radius);
    });
    const DPOINT collinear[][3] = {{{0, 0}, {1, 1}, {2, 2}},
                                   {{0, 0}, {0, 1}, {0, 2}},
                                   {{0, 0}, {1, 0}, {2, 0}},
                                   {{3, 3}, {3, 3}, {8, 1}}};
    for (const auto& [a, b, c] : collinear) {
        radius = -7;
        EXPECT_FALSE(CalcCircle(a.x, a.y, b.x, b.y, c.x, c.y, centre, radius)) << c.x << ", " << c.y;
        EXPECT_EQ(radius, -7) << "left alone on failure";
    }
}

TEST(Arc, TakesStepsOfTheFullCircleClampedTo36And360) {
    struct Case {
        double radius;
        int steps;
    };
    for (const auto& [radius, steps] :
         {Case{1, 36}, {11, 36}, {50, 157}, {114, 358}, {200, 360}, {1e300, 360}}) {
        CArray<DPOINT, DPOINT> pts;
        // On the unit circle whatever the radius says: it only sets the step.
        CalcArc(pts, {0, 0}, radius, 1, 0, 0, 1, -1, 0);
        const double step = 2 * kPi / steps;
        const int inside = static_cast<int>(std::ceil(kPi / step - 1e-6)) - 1;
        ASSERT_EQ(pts.GetSize(), inside + 2) << radius;
        EXPECT_NEAR(std::atan2(pts[1].y, pts[1].x), step, 1e-12);
    }
    CArray<DPOINT, DPOINT> pts;
    CalcArc(pts, {0, 0}, std::nan(""), 1, 0, 0, 1, -1, 0);
    EXPECT_EQ(pts.GetSize(), 19) << "a radius that is no number gives the coarsest steps";
}

TEST(Arc, RunsThroughTheMiddlePointsSideEitherWayRound) {
    struct Case {
        double start, middle, end;  // angles on a circle
    };
    const DPOINT centre{20, -30};
    for (const double radius : {0.5, 40.0, 5000.0}) {
        for (const Case& c : {Case{0, 1, 2}, {2, 1, 0}, {0, 4, 2}, {2, 4, 0}, {-3, 0, 3}, {3, 3.1, 3.2}}) {
            const DPOINT s = OnCircle(centre, radius, c.start);
            const DPOINT m = OnCircle(centre, radius, c.middle);
            const DPOINT e = OnCircle(centre, radius, c.end);
            CArray<DPOINT, DPOINT> pts;
            pts.Add({7, 7});
            CalcArc(pts, s.x, s.y, m.x, m.y, e.x, e.y);
            ASSERT_GE(pts.GetSize(), 3);
            EXPECT_EQ(pts[0], (DPOINT{7, 7})) << "appends";
            EXPECT_EQ(std::memcmp(&pts[1], &s, sizeof s), 0) << "the start point exactly";
            EXPECT_EQ(std::memcmp(&pts[pts.GetSize() - 1], &e, sizeof e), 0) << "the end point exactly";
            const int side = GetHalfPlane(m.x, m.y, s.x, s.y, e.x, e.y);
            double turned = 0;
            for (int i = 2; i < pts.GetSize(); ++i) {
                EXPECT_NEAR(std::hypot(pts[i].x - centre.x, pts[i].y - centre.y), radius, 1e-9 * radius);
                if (i < pts.GetSize() - 1) {
                    EXPECT_EQ(GetHalfPlane(pts[i].x, pts[i].y, s.x, s.y, e.x, e.y), side);
                }
                turned += GetLinesAngle(pts[i].x, pts[i].y, centre.x, centre.y, pts[i - 1].x, pts[i - 1].y);
            }
            // Either the short or the long way from start to end, whichever passes the middle.
            const double direct = c.end - c.start;
            const bool between = std::min(c.start, c.end) < c.middle && c.middle < std::max(c.start, c.end);
            EXPECT_NEAR(turned, between ? direct : direct - std::copysign(2 * kPi, direct), 1e-6)
                << radius << ": " << c.start << " " << c.middle << " " << c.end;
        }
    }
}

TEST(Arc, OfCollinearPointsIsTheChordAndWithTheMiddleOnTheChordNothing) {
    CArray<DPOINT, DPOINT> pts;
    CalcArc(pts, 0, 0, 5, 5, 10, 10);
    ASSERT_EQ(pts.GetSize(), 2);
    EXPECT_EQ(pts[1], (DPOINT{10, 10}));
    CalcArc(pts, {5, 0}, 5, 0, 0, 5, 0, 10, 0);
    EXPECT_EQ(pts.GetSize(), 2) << "unchanged";
    CalcArc(pts, {5, 0}, 5, 3, 3, 5, 0, 3, 3);
    EXPECT_EQ(pts.GetSize(), 2) << "a chord without length has no sides";
}

}  // namespace
}  // namespace tarvex
