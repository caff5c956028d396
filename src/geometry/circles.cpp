// The circle through three points and arcs as polylines.
#include <algorithm>
#include <cmath>
#include <numbers>
#include <vector>

#include "core/append.h"
#include "core/rounding.h"
#include "tarvex/lines.h"

namespace tarvex {

namespace {

constexpr double PI = std::numbers::pi;
constexpr int FEWEST_STEPS = 36;  // of a full circle
constexpr int MOST_STEPS = 360;

/// The perpendicular bisector of a and b: their midpoint, and a turned a quarter about it.
DLINE Bisector(DPOINT a, DPOINT b) {
    const DPOINT mid{(a.x + b.x) / 2, (a.y + b.y) / 2};
    Rotate(&a.x, &a.y, mid.x, mid.y, PI / 2);
    return {mid, a};
}

}  // namespace

bool CalcCircle(double x1, double y1, double x2, double y2, double x3, double y3, DPOINT& centre,
                double& radius) {
    const DLINE a = Bisector({x1, y1}, {x2, y2});
    const DLINE b = Bisector({x2, y2}, {x3, y3});
    if (!GetLinesIntersection(a.p1.x, a.p1.y, a.p2.x, a.p2.y, b.p1.x, b.p1.y, b.p2.x, b.p2.y, &centre.x,
                              &centre.y)) {
        return false;
    }
    radius = std::hypot(centre.x - x3, centre.y - y3);
    return true;
}

void CalcArc(CArray<DPOINT, DPOINT>& pts, DPOINT centre, double radius, double xs, double ys, double xm,
             double ym, double xe, double ye) {
    const auto sideOfChord = [&](DPOINT p) { return GetHalfPlane(p.x, p.y, xs, ys, xe, ye); };
    const auto turned = [&](DPOINT p, double angle) {
        Rotate(&p.x, &p.y, centre.x, centre.y, angle);
        return p;
    };

    const int side = sideOfChord({xm, ym});
    if (side == 0) return;
    const int steps = std::clamp(RoundToInt(PI * radius), FEWEST_STEPS, MOST_STEPS);
    double step = 2 * PI / steps;
    if (sideOfChord(turned({xs, ys}, step)) != side) step = -step;

    std::vector<DPOINT> arc{{xs, ys}};
    DPOINT current{xs, ys};
    for (int i = 0; i < steps; ++i) {
        current = turned(current, step);
        if (sideOfChord(current) != side) break;
        arc.push_back(current);
    }
    arc.push_back({xe, ye});
    AppendAll(pts, arc);
}

void CalcArc(CArray<DPOINT, DPOINT>& pts, double xs, double ys, double xm, double ym, double xe, double ye) {
    DPOINT centre;
    double radius = 0;
    if (CalcCircle(xs, ys, xm, ym, xe, ye, centre, radius)) {
        CalcArc(pts, centre, radius, xs, ys, xm, ym, xe, ye);
    } else {
        const DPOINT ends[] = {{xs, ys}, {xe, ye}};
        AppendAll(pts, ends);
    }
}

}  // namespace tarvex
