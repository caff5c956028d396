// One node and what an editor does to it. The free functions that move a point do the arithmetic, so that a
// node and a point come out alike.
#include <array>
#include <cmath>
#include <numbers>

#include "bezier/vector.h"
#include "tarvex/lines.h"
#include "tarvex/nodes.h"

namespace tarvex {

namespace {

constexpr double kSmoothDistance = 0.1;

std::array<DPOINT*, 3> PointsOf(BPOINT& node) { return {&node.cp1, &node.pt, &node.cp2}; }

void Turn(DPOINT& p, double cx, double cy, double angle) { Rotate(&p.x, &p.y, cx, cy, angle); }

/// A third of the way from the anchor to the neighbour, turned about the anchor.
DPOINT SmoothHandle(const DPOINT& anchor, const DPOINT& neighbour, double angle) {
    DPOINT handle = {(2 * anchor.x + neighbour.x) / 3, (2 * anchor.y + neighbour.y) / 3};
    Turn(handle, anchor.x, anchor.y, angle);
    return handle;
}

}  // namespace

int CBezierPoint::IsSmooth() const {
    const auto& [cp1, pt, cp2, flags, padding] = m_node;
    if (Distance(cp1, pt) < kSmoothDistance || Distance(cp2, pt) < kSmoothDistance) return 0;
    return GetDistanceFromLine(cp1.x, cp1.y, cp2.x, cp2.y, pt.x, pt.y) < kSmoothDistance ? 1 : 0;
}

void CBezierPoint::Move(DPOINT d) { Move(d.x, d.y); }

void CBezierPoint::Move(double dx, double dy) {
    for (DPOINT* p : PointsOf(m_node)) *p = {p->x - dx, p->y - dy};
}

void CBezierPoint::Rotate(double cx, double cy, double angle) {
    for (DPOINT* p : PointsOf(m_node)) Turn(*p, cx, cy, angle);
}

void CBezierPoint::Stretch(DPOINT c, double sx, double sy) {
    for (DPOINT* p : PointsOf(m_node)) tarvex::Stretch(&p->x, &p->y, c.x, c.y, sx, sy);
}

void CBezierPoint::Smooth(DPOINT prev, DPOINT next) {
    constexpr double halfPi = std::numbers::pi / 2;
    const DPOINT at = m_node.pt;
    const double angle = GetLinesAngle(prev.x, prev.y, at.x, at.y, next.x, next.y);
    double a = halfPi - angle / 2;
    if (std::fabs(a) >= halfPi) a -= std::numbers::pi;
    m_node.cp1 = SmoothHandle(at, prev, a);
    m_node.cp2 = SmoothHandle(at, next, -a);
}

}  // namespace tarvex
