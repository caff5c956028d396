// Points as the clipper compares them: exactly. (DPOINT's own comparison has a tolerance.)
#pragma once

#include <vector>

#include "tarvex/records.h"

namespace tarvex::clip {

struct Point {
    double x = 0;
    double y = 0;
};

inline bool Same(const Point& a, const Point& b) { return a.x == b.x && a.y == b.y; }

/// The order in which the sweep meets points: from the bottom up, from left to right at equal heights.
inline bool Before(const Point& a, const Point& b) { return a.y < b.y || (a.y == b.y && a.x < b.x); }

/// Two points, the earlier one first.
struct Segment {
    Point a;
    Point b;
};

}  // namespace tarvex::clip
