// Envelope distortion.
#include "tarvex/envelope.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "core/guarded.h"
#include "tarvex/lines.h"

namespace tarvex {

namespace {

/// Whether the segment can be seen not to reach x without intersecting it: nearly all are. The slack
/// covers the tolerance of the range test and, generously, the rounding of the intersection's x.
bool IsClearlyBeside(const DPOINT& a, const DPOINT& b, double x) {
    const double rounding = std::fabs(a.x) + std::fabs(b.x) + std::fabs(x);
    const double slack = 2 * GEOMETRY_EPSILON + 8 * std::numeric_limits<double>::epsilon() * rounding;
    return x < std::min(a.x, b.x) - slack || x > std::max(a.x, b.x) + slack;
}

void BuildArc(CArray<DPOINT, DPOINT>& arc, const DPOINT& start, const DPOINT& middle, const DPOINT& end) {
    arc.RemoveAll();
    CalcArc(arc, start.x, start.y, middle.x, middle.y, end.x, end.y);
    if (!arc.IsEmpty()) return;
    arc.Add(start);
    arc.Add(end);
}

}  // namespace

/// The frame's extent and the interval between the arcs at some x, each by height and middle.
struct CEnvelop::Bend {
    double frameHeight, frameMiddle;
    double arcsHeight, arcsMiddle;
};

CEnvelop::~CEnvelop() = default;

void CEnvelop::SetEnvelop(const ENVELOP& fields) {
    env() = fields;
    m_dirty = true;
}

void CEnvelop::SetType(int type, double d) {
    const bool wasDirty = m_dirty;
    m_dirty = true;
    switch (type) {
        case 1:
            topMiddle = d;
            break;
        case 2:
            bottomMiddle = -d;
            break;
        case 3:
            topMiddle = d;
            bottomMiddle = -d;
            break;
        case 4:
            topMiddle = -d;
            break;
        case 5:
            bottomMiddle = d;
            break;
        case 6:
            topMiddle = -d;
            bottomMiddle = d;
            break;
        case 7:
            topMiddle = d;
            bottomMiddle = d;
            break;
        case 8:
            topMiddle = -d;
            bottomMiddle = -d;
            break;
        case 9:
            topLeft = d;
            topMiddle = d / 2;
            bottomLeft = -d;
            bottomMiddle = -d / 2;
            break;
        case 10:
            topRight = d;
            topMiddle = d / 2;
            bottomRight = -d;
            bottomMiddle = -d / 2;
            break;
        default:
            m_dirty = wasDirty;
    }
    if (m_dirty) CalcEnvelop();
}

void CEnvelop::CalcEnvelop() {
    const double middle = (left + right) / 2;
    BuildArc(m_arcTop, {left, top + topLeft}, {middle, top + topMiddle}, {right, top + topRight});
    BuildArc(m_arcBot, {left, bottom + bottomLeft}, {middle, bottom + bottomMiddle},
             {right, bottom + bottomRight});
    m_dirty = false;
}

double CEnvelop::CalcArcPoint(const CArray<DPOINT, DPOINT>& arc, double x, double y) const {
    const int count = arc.GetCount();
    if (count == 0) return y;
    if (count == 1) return arc[0].x;
    if (x < left) return arc[0].y;
    if (x > right) return arc[count - 1].y;
    for (int i = 0; i + 1 < count; ++i) {
        const DPOINT& a = arc[i];
        const DPOINT& b = arc[i + 1];
        if (IsClearlyBeside(a, b, x)) continue;
        DPOINT hit;
        if (GetLinesIntersection(a.x, a.y, b.x, b.y, x, top, x, top + 100, &hit.x, &hit.y) &&
            IsPointInLineRange(a.x, a.y, b.x, b.y, hit.x, hit.y)) {
            return hit.y;
        }
    }
    return y;
}

CEnvelop::Bend CEnvelop::BendAt(double x, double y) const {
    const double t = CalcArcPoint(m_arcTop, x, y);
    const double b = CalcArcPoint(m_arcBot, x, y);
    return {bottom - top, (bottom + top) / 2, b - t, (b + t) / 2};
}

double CEnvelop::envelop(double x, double y) {
    if (m_dirty) CalcEnvelop();
    const Bend at = BendAt(x, y);
    return at.arcsHeight * (y - at.frameMiddle) / GuardedDivisor(at.frameHeight) + at.arcsMiddle;
}

double CEnvelop::envelop_return(double x, double y) {
    if (m_dirty) CalcEnvelop();
    if (x < left || x > right) return y;
    const Bend at = BendAt(x, y);
    return at.frameHeight * (y - at.arcsMiddle) / GuardedDivisor(at.arcsHeight) + at.frameMiddle;
}

}  // namespace tarvex
