// Ellipses: points and nearest points, measures, lines, images, fits and outlines, against dense sampling
// and sums, and what degenerate radii give.
#include "support/precompiled.h"

#include <map>

#include "bezier/vector.h"
#include "support/contours.h"
#include "support/property.h"
#include "support/records.h"
#include "tarvex/bezier.h"
#include "tarvex/geometry.h"

namespace tarvex {
namespace {

using namespace test;

/// A generated sweep of an arc, from 0.01 to a little over a full turn either way.
double Sweep(std::int16_t n) {
    const double sweep = Spread(n, 7);
    return std::copysign(0.01 + std::fabs(sweep), sweep);
}

/// Radii from 1 to 64, anywhere within 100 of the origin, turned at will.
CEllipse Ellipse(const std::array<std::int16_t, 5>& n) {
    return CEllipse({Spread(n[0], 100), Spread(n[1], 100)}, std::exp2(3 + Spread(n[2], 3)),
                    std::exp2(3 + Spread(n[3], 3)), Spread(n[4], 4));
}

double LargerRadius(const CEllipse& e) { return std::max(e.RadiusX(), e.RadiusY()); }

/// Whether all points of one lie on the other, whichever radius comes first in it.
bool IsOn(const CEllipse& ellipse, const CEllipse& other, double tolerance) {
    for (int i = 0; i < 32; ++i)
        if (!(ellipse.GetDistance(other.GetPoint(i * kPi / 16)) <= tolerance)) return false;
    return true;
}

TEST(Ellipse, ExampleOfTheHeaderHolds) {
    CEllipse ellipse({10, 20}, 5, 3);
    const CEllipse::Hits hits = ellipse.Intersect(DLINE{{0, 20}, {1, 20}});
    Nodes nodes;
    const double deviation = ellipse.GetBeziers(nodes);
    ASSERT_EQ(hits.count, 2);
    EXPECT_EQ(hits.points[0], (DPOINT{5, 20}));
    EXPECT_EQ(hits.points[1], (DPOINT{15, 20}));
    EXPECT_EQ(nodes.GetSize(), 5);
    EXPECT_LT(deviation, 5 * 2.8e-4);
}

TEST(Ellipse, RectangleInEitherOrderGivesTheEllipseThatTouchesItsSides) {
    for (const DRECT& r : {DRECT{1, 5, 10, 20}, DRECT{5, 1, 10, 20}, DRECT{1, 5, 20, 10}}) {
        const DRECT bounds = CEllipse(r).GetBounds();
        EXPECT_DOUBLE_EQ(bounds.left, 1);
        EXPECT_DOUBLE_EQ(bounds.right, 5);
        EXPECT_DOUBLE_EQ(bounds.top, 10);
        EXPECT_DOUBLE_EQ(bounds.bottom, 20);
    }
}

TEST(Ellipse, PositiveRotationTurnsTheFirstRadiusFromXTowardsY) {
    const CEllipse e({1, 2}, 5, -3, kPi / 2);
    EXPECT_EQ(e.RadiusY(), 3);
    EXPECT_EQ(e.GetPoint(0), (DPOINT{1, 7}));
    EXPECT_EQ(e.GetPoint(kPi / 2), (DPOINT{-2, 2}));
    EXPECT_EQ(e.GetTangent(0), (DPOINT{-3, 0}));
}

TEST(Ellipse, CircumferenceAndAreaAreThoseOfKnownEllipses) {
    for (const auto& [a, b] : {std::pair{1.0, 1.0}, {2, 1}, {1, 3}, {1, 0.2}, {1, 0.05}}) {
        // The trapezium rule converges geometrically for a periodic integrand.
        long double sum = 0;
        const int steps = 20000;
        for (int i = 0; i < steps; ++i) {
            const long double t = 2 * std::numbers::pi_v<long double> * i / steps;
            sum += std::hypot(a * std::sin(t), b * std::cos(t));
        }
        const double expected = static_cast<double>(sum * 2 * std::numbers::pi_v<long double> / steps);
        EXPECT_NEAR(CEllipse({}, a, b).GetCircumference() / expected, 1, 1e-14) << a << ' ' << b;
        EXPECT_DOUBLE_EQ(CEllipse({}, a, b).GetArea(), kPi * a * b);
    }
    EXPECT_EQ(CEllipse({}, 3, 0).GetCircumference(), 12);
    // Thin ones, by the series 4 + (2 ln(4 / b) - 1) b^2 whose next term is of order b^4 ln b.
    for (const double b : {1e-4, 1e-6, 1.1e-9, 0.9e-9}) {
        const double expected = 4 + (2 * std::log(4 / b) - 1) * b * b;
        EXPECT_NEAR(CEllipse({}, 1, b).GetCircumference() / expected, 1, 1e-14) << b;
    }
}

TEST(Ellipse, NearestPointIsKnownOnTheAxes) {
    const CEllipse wide({0, 0}, 5, 3), tall({0, 0}, 3, 5);
    struct Case {
        const CEllipse& ellipse;
        DPOINT from, nearest;
    };
    for (const Case& c : {Case{wide, {9, 0}, {5, 0}},
                          {wide, {-4, 0}, {-5, 0}},
                          {wide, {0, 0}, {0, 3}},
                          {wide, {0, -1}, {0, -3}},
                          {tall, {0, 0}, {3, 0}},
                          {tall, {0, 8}, {0, 5}}})
        EXPECT_EQ(c.ellipse.GetPoint(c.ellipse.NearestAngle(c.from)), c.nearest)
            << c.from.x << ", " << c.from.y;
    EXPECT_EQ(CEllipse({1, 1}, 4).NearestAngle({1, 1}), 0);
    EXPECT_DOUBLE_EQ(CEllipse({1, 1}, 4).GetDistance({1, 1}), 4);
    for (const double y : {1e-300, 1e-20, 1e-9}) {  // just off the major axis, within the evolute
        EXPECT_NEAR(wide.GetDistance({1, y}), wide.GetDistance({1, 0}), 2e-9) << y;
    }
}

TEST(Ellipse, PointsAtAnglesLieOnItAndGiveTheAngleBack) {
    ExpectLaw([](std::array<std::int16_t, 5> n, std::int16_t angle) {
        const CEllipse e = Ellipse(n);
        const double t = Spread(angle, 3.1);
        const DPOINT p = e.GetPoint(t), c = e.Centre();
        RC_ASSERT(e.GetDistance(p) < 1e-11);
        RC_ASSERT(std::fabs(std::remainder(e.NearestAngle(p) - t, 2 * kPi)) < 1e-9);
        RC_ASSERT(e.Contains({c.x + (p.x - c.x) * 0.999, c.y + (p.y - c.y) * 0.999}));
        RC_ASSERT(!e.Contains({c.x + (p.x - c.x) * 1.001, c.y + (p.y - c.y) * 1.001}));
        const DPOINT step = Minus(e.GetPoint(t + 1e-6), e.GetPoint(t - 1e-6));
        RC_ASSERT(std::fabs(step.x / 2e-6 - e.GetTangent(t).x) < 1e-6);
        RC_ASSERT(std::fabs(step.y / 2e-6 - e.GetTangent(t).y) < 1e-6);
    });
}

TEST(Ellipse, NoSampleIsNearerThanTheNearestPointOrOutsideTheBoundsWhichTouch) {
    ExpectLaw([](std::array<std::int16_t, 5> n, std::int16_t x, std::int16_t y) {
        const CEllipse e = Ellipse(n);
        const DPOINT p{Spread(x, 200), Spread(y, 200)};
        const double distance = e.GetDistance(p);
        DRECT seen{kInfinity, -kInfinity, kInfinity, -kInfinity};
        for (int i = 0; i < 4000; ++i) {
            const DPOINT q = e.GetPoint(i * kPi / 2000);
            RC_ASSERT(distance <= Distance(p, q) + 1e-10);
            seen = {std::min(seen.left, q.x), std::max(seen.right, q.x), std::min(seen.top, q.y),
                    std::max(seen.bottom, q.y)};
        }
        const DRECT box = e.GetBounds();
        // Samples half a step from the extreme miss it by radius * step^2 / 8.
        const double gap = 3.1e-7 * LargerRadius(e) + 1e-12;
        for (const double inside :
             {seen.left - box.left, box.right - seen.right, seen.top - box.top, box.bottom - seen.bottom}) {
            RC_ASSERT(inside > -1e-11 && inside < gap);
        }
    });
}

TEST(Ellipse, LinesMeetItInNoneOneOrTwoOrderedPoints) {
    const CEllipse e({0, 0}, 5, 3);
    struct Case {
        DLINE line;
        Points onLine, onSegment;
    };
    const std::vector<Case> cases = {
        {{{-9, 0}, {9, 0}}, {{-5, 0}, {5, 0}}, {{-5, 0}, {5, 0}}},
        {{{9, 0}, {-9, 0}}, {{5, 0}, {-5, 0}}, {{5, 0}, {-5, 0}}},
        {{{0, 0}, {0, 9}}, {{0, -3}, {0, 3}}, {{0, 3}}},
        {{{0, -3}, {0, 3}}, {{0, -3}, {0, 3}}, {{0, -3}, {0, 3}}},
        {{{0, 0}, {1, 1}},
         {{-15 / std::sqrt(34.0), -15 / std::sqrt(34.0)}, {15 / std::sqrt(34.0), 15 / std::sqrt(34.0)}},
         {}},
        {{{-1, 3}, {7, 3}}, {{0, 3}}, {{0, 3}}},
        {{{5, 1}, {5, 2}}, {{5, 0}}, {}},
        {{{-1, 3 + 5e-9}, {7, 3 + 5e-9}}, {{0, 3}}, {{0, 3}}},
        {{{-1, -3 + 5e-9}, {7, -3 + 5e-9}}, {{0, -3}}, {{0, -3}}},
        {{{-1, 3 + 5e-8}, {7, 3 + 5e-8}}, {}, {}},
        {{{1, 1}, {1, 1}}, {}, {}},
        {{{1, kNaN}, {2, 1}}, {}, {}},
        {{{1, 1}, {kInfinity, 1}}, {}, {}},
    };
    const auto points = [](const CEllipse::Hits& h) { return Points(h.points, h.points + h.count); };
    for (std::size_t i = 0; i < cases.size(); ++i) {
        EXPECT_EQ(points(e.Intersect(cases[i].line)), cases[i].onLine) << i;
        EXPECT_EQ(points(e.IntersectSegment(cases[i].line)), cases[i].onSegment) << i;
    }
}

TEST(Ellipse, LineThroughTwoOfItsPointsGivesThemBackInOrder) {
    ExpectLaw([](std::array<std::int16_t, 5> n, std::int16_t a, std::int16_t b) {
        const CEllipse e = Ellipse(n);
        const DPOINT p = e.GetPoint(Spread(a, kPi));
        const DPOINT q = e.GetPoint(Spread(a, kPi) + kPi + Spread(b, 3.1));
        const CEllipse::Hits hits = e.Intersect({p, q});
        RC_ASSERT(hits.count == 2);
        RC_ASSERT(Distance(hits.points[0], p) < 1e-9 && Distance(hits.points[1], q) < 1e-9);
    });
}

TEST(Ellipse, ImageOfItsPointsLiesOnItsImage) {
    ExpectLaw([](std::array<std::int16_t, 5> n, std::array<std::int16_t, 7> m) {
        const CEllipse e = Ellipse(n);
        CView3D view;
        view.Translate(Spread(m[0], 50), Spread(m[1], 50), Spread(m[2], 50));
        view.Rotate(Spread(m[3], 1.3), Spread(m[4], 1.3), Spread(m[5], 4));
        view.Scale(std::exp2(Spread(m[6], 2)), -0.7, 1);
        const CEllipse image = e.Transformed(view);
        RC_ASSERT(image.RadiusX() >= image.RadiusY());
        double reached = 0;
        for (int i = 0; i < 64; ++i) {
            const DPOINT p = e.GetPoint(i * kPi / 32);
            view.Transfer(p.x, p.y, 0);
            RC_ASSERT(image.GetDistance({view.x(), view.y()}) < 1e-9);
            reached = std::max(reached, Distance(image.Centre(), {view.x(), view.y()}));
        }
        RC_ASSERT(reached <= image.RadiusX() + 1e-9 && reached > 0.99 * image.RadiusX());
    });
}

TEST(Ellipse, IdentityKeepsTheCurveAndAFlatViewGivesASegment) {
    const CEllipse e({7, -2}, 2, 5, 0.3);
    CView3D view;
    EXPECT_TRUE(IsOn(e.Transformed(view), e, 1e-12) && IsOn(e, e.Transformed(view), 1e-12));
    EXPECT_NEAR(e.Transformed(view).Rotation(), 0.3 - kPi / 2, 1e-12);
    view.Scale(1, 0, 1);
    const CEllipse flat = e.Transformed(view);
    EXPECT_EQ(flat.RadiusY(), 0);
    EXPECT_NEAR(flat.RadiusX(), std::hypot(2 * std::cos(0.3), 5 * std::sin(0.3)), 1e-12);
    EXPECT_EQ(flat.Centre(), (DPOINT{7, 0}));
}

TEST(Ellipse, PointsGiveTheirEllipseAndNoiseMovesItLittle) {
    ExpectLaw([](std::array<std::int16_t, 5> n, std::int16_t from, std::uint32_t seed) {
        const CEllipse e = Ellipse(n);
        std::mt19937 random(seed);
        const double noise = 0.01 * std::min(e.RadiusX(), e.RadiusY());
        const auto unit = [&] { return static_cast<double>(random() % 2001) / 1000 - 1; };
        Points five, exact, noisy;
        for (int i = 0; i < 5; ++i) five.push_back(e.GetPoint(Spread(from, kPi) + i * 1.2));
        for (int i = 0; i < 60; ++i) {
            const DPOINT p = e.GetPoint(i * 0.1);
            const double dx = noise * unit();
            exact.push_back(p);
            noisy.push_back({p.x + dx, p.y + noise * unit()});
        }
        CEllipse fitted;
        RC_ASSERT(fitted.FitPoints(five));
        RC_ASSERT(IsOn(e, fitted, 1e-9));
        RC_ASSERT(std::fabs(fitted.RadiusX() - LargerRadius(e)) < 1e-9);
        RC_ASSERT(fitted.FitPoints(exact));
        RC_ASSERT(IsOn(e, fitted, 1e-6));
        RC_ASSERT(fitted.FitPoints(noisy));
        RC_ASSERT(IsOn(e, fitted, 0.1 * LargerRadius(e)));
    });
}

TEST(Ellipse, FitSurvivesSizeAndDistanceOfTheDrawing) {
    for (const double scale : {1e-6, 1.0, 1e6, 1e100}) {
        const CEllipse e({1000 * scale, -2000 * scale}, 5 * scale, 3 * scale, 0.7);
        for (const int count : {5, 12}) {
            Points points;
            for (int i = 0; i < count; ++i) points.push_back(e.GetPoint(i * 2 * kPi / count));
            CEllipse fitted;
            ASSERT_TRUE(fitted.FitPoints(points)) << scale << ' ' << count;
            EXPECT_NEAR(fitted.RadiusX() / scale, 5, 1e-6);
            EXPECT_NEAR(fitted.RadiusY() / scale, 3, 1e-6);
            EXPECT_NEAR(fitted.Rotation(), 0.7, 1e-6);
        }
    }
}

TEST(Ellipse, PointsWithoutAnEllipseChangeNothing) {
    const std::map<std::string, Points> cases = {
        {"none", {}},
        {"four", {{0, 0}, {1, 0}, {1, 1}, {0, 1}}},
        {"five collinear", {{0, 0}, {1, 1}, {2, 2}, {3, 3}, {5, 5}}},
        {"seven collinear", {{0, 0}, {1, 3}, {2, 6}, {3, 9}, {5, 15}, {6, 18}, {7, 21}}},
        {"seven upright", {{4, 0}, {4, 1}, {4, 2}, {4, 3}, {4, 5}, {4, 6}, {4, 8}}},
        {"four of five collinear", {{0, 0}, {1, 0}, {2, 0}, {3, 0}, {1, 2}}},
        {"repeated", {{0, 0}, {1, 0}, {1, 1}, {0, 1}, {0, 1}}},
        {"one point", {{3, 3}, {3, 3}, {3, 3}, {3, 3}, {3, 3}, {3, 3}}},
        {"hyperbola", {{1, 1}, {2, 0.5}, {4, 0.25}, {-1, -1}, {-2, -0.5}}},
        {"parabola", {{-2, 4}, {-1, 1}, {0, 0}, {1, 1}, {2, 4}}},
        {"NaN", {{0, 0}, {1, 0}, {kNaN, 1}, {0, 1}, {2, 3}}},
        {"infinite", {{0, 0}, {1, 0}, {1, kInfinity}, {0, 1}, {2, 3}, {4, 1}}},
        {"overflowing", {{1e308, 0}, {-1e308, 0}, {1e308, 1e308}, {0, 1}, {2, -1e308}}},
    };
    for (const auto& [name, points] : cases) {
        CEllipse e({1, 2}, 4, 3, 0.5);
        EXPECT_FALSE(e.FitPoints(points)) << name;
        EXPECT_EQ(e.RadiusX(), 4) << name;
        EXPECT_EQ(e.Rotation(), 0.5) << name;
    }
}

TEST(Ellipse, BeziersStayWithinTheDeviationTheyReport) {
    ExpectLaw([](std::array<std::int16_t, 5> n, std::int16_t from, std::int16_t over, std::uint8_t digits) {
        const CEllipse e = Ellipse(n);
        const double start = Spread(from, 10);
        const double sweep = Sweep(over);
        const double tolerance = std::pow(10, -(digits % 8));
        Nodes nodes;
        const double bound = e.GetBeziers(nodes, start, sweep, tolerance);
        RC_ASSERT(bound <= tolerance && bound <= 2.8e-4 * LargerRadius(e));
        double worst = 0;
        for (int i = 0; i + 1 < nodes.GetSize(); ++i) {
            for (int k = 0; k <= 16; ++k) {
                worst =
                    std::max(worst, e.GetDistance(CBezier(nodes[i], nodes[i + 1]).GetCurvePoint(k / 16.0)));
            }
        }
        RC_ASSERT(worst <= bound + 1e-11);
        const double end = start + std::clamp(sweep, -2 * kPi, 2 * kPi);
        RC_ASSERT(Distance(nodes[0].pt, e.GetPoint(start)) < 1e-10);
        RC_ASSERT(Distance(nodes[nodes.GetSize() - 1].pt, e.GetPoint(end)) < 1e-10);
    });
}

TEST(Ellipse, PolylineStaysWithinTheDeviationAndWastesNoPoints) {
    ExpectLaw([](std::array<std::int16_t, 5> n, std::int16_t from, std::int16_t over, std::uint8_t digits) {
        const CEllipse e = Ellipse(n);
        const double sweep = Sweep(over);
        const double asked = std::pow(10, -(digits % 5));
        DPoints points;
        const double bound = e.GetPolyline(points, asked, Spread(from, 10), sweep);
        RC_ASSERT(bound <= asked * (1 + 1e-9));
        double worst = 0;
        for (int i = 0; i + 1 < points.GetSize(); ++i) {
            RC_ASSERT(e.GetDistance(points[i]) < 1e-10);
            const DPOINT mid{(points[i].x + points[i + 1].x) / 2, (points[i].y + points[i + 1].y) / 2};
            worst = std::max(worst, e.GetDistance(mid));
        }
        RC_ASSERT(worst <= bound + 1e-10);
        const int steps = points.GetSize() - 1;
        RC_ASSERT(steps <= 2 + std::fabs(sweep) * std::max(1.3, std::sqrt(LargerRadius(e) / asked / 7)));
    });
}

TEST(Ellipse, FullTurnsCloseExactlyAndCountsAreCapped) {
    const CEllipse e({1, 2}, 1e6, 7, 0.4);
    for (const double sweep : {CEllipse::FULL_TURN, -CEllipse::FULL_TURN, 100.0, kInfinity}) {
        Nodes nodes;
        DPoints points;
        EXPECT_GT(e.GetBeziers(nodes, 0.3, sweep, 1e-300), 0);
        EXPECT_GT(e.GetPolyline(points, 1e-300, 0.3, sweep), 1e-300);
        ASSERT_EQ(nodes.GetSize(), CEllipse::MOST_BEZIERS + 1);
        ASSERT_EQ(points.GetSize(), CEllipse::MOST_SEGMENTS + 1);
        EXPECT_EQ(nodes[0].pt.x, nodes[nodes.GetSize() - 1].pt.x);
        EXPECT_EQ(points[0].y, points[points.GetSize() - 1].y);
        EXPECT_EQ(nodes[0].cp1, nodes[0].pt);
        nodes.RemoveAll();
        e.GetBeziers(nodes, 0.3, sweep, kNaN);
        EXPECT_EQ(nodes.GetSize(), 5);
        e.GetBeziers(nodes, 0.3, 0);
        EXPECT_EQ(nodes.GetSize(), 5) << "a sweep of 0 appends nothing";
        e.GetBeziers(nodes, 0.3, kPi);
        EXPECT_EQ(nodes.GetSize(), 8) << "outlines are appended";
        e.GetPolyline(points, kNaN);
        EXPECT_EQ(points.GetSize(), 2 * (CEllipse::MOST_SEGMENTS + 1));
    }
}

TEST(Ellipse, ZeroRadiiGiveSegmentsAndPoints) {
    const CEllipse segment({1, 1}, 0, 4);
    EXPECT_EQ(segment.GetArea(), 0);
    EXPECT_FALSE(segment.Contains({1, 1}));
    EXPECT_EQ(segment.Intersect({{0, 2}, {3, 2}}).count, 0);
    EXPECT_EQ(segment.GetPoint(segment.NearestAngle({5, 3})), (DPOINT{1, 3}));
    EXPECT_EQ(segment.GetPoint(segment.NearestAngle({5, 30})), (DPOINT{1, 5}));
    EXPECT_DOUBLE_EQ(segment.GetDistance({4, 9}), 5);
    const CEllipse point({1, 1}, 0);
    EXPECT_EQ(point.GetDistance({4, 5}), 5);
    EXPECT_EQ(point.GetCircumference(), 0);
    DPoints points;
    EXPECT_EQ(point.GetPolyline(points, 0.1), 0);
    EXPECT_EQ(points.GetSize(), 9);
}

TEST(Ellipse, NumbersThatAreNotFiniteGiveNeutralAnswers) {
    for (const double bad : {kNaN, kInfinity, -kInfinity}) {
        for (int which = 0; which < 5; ++which) {
            double v[5] = {1, 2, 3, 4, 0.5};
            v[which] = bad;
            const CEllipse e({v[0], v[1]}, v[2], v[3], v[4]);
            EXPECT_FALSE(e.IsFinite());
            EXPECT_EQ(e.NearestAngle({1, 1}), 0);
            EXPECT_FALSE(e.Contains({1, 2}));
            EXPECT_EQ(e.Intersect({{0, 2}, {1, 2}}).count, 0);
            EXPECT_EQ(e.IntersectSegment({{0, 2}, {1, 2}}).count, 0);
            EXPECT_FALSE(e.Transformed(CView3D()).IsFinite());
            Nodes nodes;
            DPoints points;
            EXPECT_EQ(e.GetBeziers(nodes), 0);
            EXPECT_EQ(e.GetPolyline(points, 0.1), 0);
            EXPECT_TRUE(nodes.IsEmpty() && points.IsEmpty());
            if (which == 2 || which == 3) {
                EXPECT_FALSE(std::isfinite(e.GetCircumference()));
            }
        }
    }
    const CEllipse e({0, 0}, 5, 3);
    EXPECT_EQ(e.NearestAngle({kNaN, 1}), 0);
    EXPECT_FALSE(e.Contains({kNaN, 1}));
    EXPECT_NEAR(e.NearestAngle({1e300, 1e300}), kPi / 4, kPi / 4);
    EXPECT_NEAR(CEllipse({0, 0}, 1e-300, 1e-200).NearestAngle({0, 1}), kPi / 2, 1e-12);
}

}  // namespace
}  // namespace tarvex
