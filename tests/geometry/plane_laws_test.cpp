// Laws of the plane-geometry functions, on generated points.
#include "support/precompiled.h"

#include <numbers>

#include "support/property.h"
#include "tarvex/geometry.h"

namespace tarvex {
namespace {

using test::ExpectLaw;

/// Coordinates of a drawing: thousandths between -1000 and 1000.
rc::Gen<double> Coordinate() {
    return rc::gen::map(rc::gen::inRange(-1000000, 1000001), [](int v) { return v / 1000.0; });
}

rc::Gen<DPOINT> Point() {
    return rc::gen::map(rc::gen::pair(Coordinate(), Coordinate()), [](const std::pair<double, double>& v) {
        return DPOINT{v.first, v.second};
    });
}

double Gap(DPOINT a, DPOINT b) { return std::hypot(a.x - b.x, a.y - b.y); }

TEST(PlaneLaws, TurningThereAndBackReturnsThePointAndKeepsItsDistance) {
    ExpectLaw([] {
        const DPOINT p = *Point(), centre = *Point();
        const double angle = *Coordinate();
        DPOINT q = p;
        Rotate(&q.x, &q.y, centre.x, centre.y, angle);
        RC_ASSERT(std::fabs(Gap(q, centre) - Gap(p, centre)) < 1e-9);
        Rotate(&q.x, &q.y, centre.x, centre.y, -angle);
        RC_ASSERT(Gap(p, q) < 1e-9);
    });
}

TEST(PlaneLaws, TurningAddsToTheAngleBetweenRays) {
    ExpectLaw([] {
        const DPOINT p = *Point(), centre = *Point();
        RC_PRE(Gap(p, centre) > 1);
        const double angle = *rc::gen::inRange(-3141, 3142) / 1000.0;
        RC_PRE(angle != 0);
        DPOINT q = p;
        Rotate(&q.x, &q.y, centre.x, centre.y, angle);
        RC_ASSERT(std::fabs(GetLinesAngle(q.x, q.y, centre.x, centre.y, p.x, p.y) - angle) < 1e-9);
    });
}

TEST(PlaneLaws, TheFootOfThePerpendicularIsOnTheLineAtTheDistanceFromIt) {
    ExpectLaw([] {
        const DPOINT a = *Point(), b = *Point(), p = *Point();
        RC_PRE(Gap(a, b) > 1);
        const DPOINT foot = GetDistancePoint(a.x, a.y, b.x, b.y, p.x, p.y);
        RC_ASSERT(GetDistanceFromLine(a.x, a.y, b.x, b.y, foot.x, foot.y) < 1e-7);
        RC_ASSERT(std::fabs(GetDistanceFromLine(a.x, a.y, b.x, b.y, p.x, p.y) - Gap(p, foot)) < 1e-7);
    });
}

TEST(PlaneLaws, TheCrossingOfLinesIsOnBoth) {
    ExpectLaw([] {
        const DPOINT a = *Point(), b = *Point(), c = *Point(), d = *Point();
        const double turn = (b.x - a.x) * (d.y - c.y) - (b.y - a.y) * (d.x - c.x);
        RC_PRE(std::fabs(turn) > 0.1 * Gap(a, b) * Gap(c, d));  // not close to parallel
        double x, y;
        RC_ASSERT(GetLinesIntersection(a.x, a.y, b.x, b.y, c.x, c.y, d.x, d.y, &x, &y) == 1);
        RC_ASSERT(GetDistanceFromLine(a.x, a.y, b.x, b.y, x, y) < 1e-5);
        RC_ASSERT(GetDistanceFromLine(c.x, c.y, d.x, d.y, x, y) < 1e-5);
    });
}

TEST(PlaneLaws, TheCircleThroughThreePointsHasThemAtItsRadius) {
    ExpectLaw([] {
        const DPOINT a = *Point(), b = *Point(), c = *Point();
        const double turn = (b.x - a.x) * (c.y - a.y) - (b.y - a.y) * (c.x - a.x);
        RC_PRE(std::fabs(turn) > 0.01 * Gap(a, b) * Gap(a, c) && Gap(b, c) > 1);
        DPOINT centre;
        double radius = 0;
        RC_ASSERT(CalcCircle(a.x, a.y, b.x, b.y, c.x, c.y, centre, radius));
        for (const DPOINT& p : {a, b, c}) RC_ASSERT(std::fabs(Gap(p, centre) - radius) < 1e-6 * radius);
    });
}

TEST(PlaneLaws, ReversingAContourTwiceGivesItBackAndOrientationSticks) {
    ExpectLaw([] {
        const auto points = *rc::gen::container<std::vector<DPOINT>>(Point());
        CArray<DPOINT, DPOINT> contour;
        for (const DPOINT& p : points) contour.Add(p);
        const bool before = IsClockwise(contour);
        SetOrientation(contour, !before);
        RC_ASSERT(contour.GetSize() < 2 || IsClockwise(contour) == !before || IsClockwise(contour));
        SetOrientation(contour, before);
        RC_ASSERT(IsClockwise(contour) == before);
    });
}

TEST(PlaneLaws, ThePointOfAPolylineNearestToAPointIsNotBeatenByAnySample) {
    ExpectLaw([] {
        const auto points = *rc::gen::nonEmpty(rc::gen::container<std::vector<DPOINT>>(Point()));
        const DPOINT p = *Point();
        CArray<DPOINT, DPOINT> polyline;
        for (const DPOINT& q : points) polyline.Add(q);
        RC_PRE(polyline.GetSize() > 1);
        DPOINT nearest;
        int segment = -1;
        GetPolylineClosestPoint(polyline, p, &segment, &nearest);
        RC_ASSERT(IsPointOnPolyline(polyline, nearest, 1e-6) == 1);
        for (int i = 0; i <= 100; ++i) {
            RC_ASSERT(Gap(GetPolylinePoint(polyline, i / 100.0, nullptr), p) > Gap(nearest, p) - 1e-6);
        }
    });
}

}  // namespace
}  // namespace tarvex
