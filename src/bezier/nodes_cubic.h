// A cubic as four points, with what splitting contours asks of it. Arithmetic here is free to be simple:
// what `CBezier` fixes about roundings does not bind pieces of curves.
#pragma once

#include <cmath>

#include "bezier/vector.h"
#include "tarvex/records.h"

namespace tarvex {

struct Cubic {
    DPOINT p0, p1, p2, p3;
};

inline DPOINT Mix(DPOINT a, DPOINT b, double t) { return {a.x + (b.x - a.x) * t, a.y + (b.y - a.y) * t}; }

inline bool IsFinite(DPOINT p) { return std::isfinite(p.x) && std::isfinite(p.y); }

inline Cubic Reversed(const Cubic& c) { return {c.p3, c.p2, c.p1, c.p0}; }

inline Cubic SegmentOf(const BPOINT& a, const BPOINT& b) { return {a.pt, a.cp2, b.cp1, b.pt}; }

/// A segment without handles, which is a line whose halves have none either.
inline bool HasNoHandles(const Cubic& c) {
    return Distance(c.p0, c.p1) < GEOMETRY_EPSILON && Distance(c.p2, c.p3) < GEOMETRY_EPSILON;
}

/// The polar form: symmetric in its parameters, linear in each; three equal ones give the point there.
inline DPOINT Blossom(const Cubic& c, double r, double s, double t) {
    const DPOINT a = Mix(c.p0, c.p1, r);
    const DPOINT b = Mix(c.p1, c.p2, r);
    const DPOINT d = Mix(c.p2, c.p3, r);
    return Mix(Mix(a, b, s), Mix(b, d, s), t);
}

inline DPOINT PointAt(const Cubic& c, double t) {
    if (t == 0) return c.p0;
    if (t == 1) return c.p3;
    return Blossom(c, t, t, t);
}

inline DPOINT DerivativeAt(const Cubic& c, double t) {
    const DPOINT a = Minus(c.p1, c.p0);
    const DPOINT b = Minus(c.p2, c.p1);
    const DPOINT d = Minus(c.p3, c.p2);
    return Times(Mix(Mix(a, b, t), Mix(b, d, t), t), 3);
}

/// The piece from parameter `from` to `to`, which may run backwards; the whole is returned bit for bit.
inline Cubic PartOf(const Cubic& c, double from, double to) {
    if (from == 0 && to == 1) return c;
    if (from == 1 && to == 0) return Reversed(c);
    return {PointAt(c, from), Blossom(c, from, from, to), Blossom(c, from, to, to), PointAt(c, to)};
}

}  // namespace tarvex
