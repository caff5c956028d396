// Clipping a segment to a rectangle.
//
// Cohen and Sutherland's method: each end gets a code that tells beyond which edges it lies. Two zero codes
// are accepted, two codes with a bit in common rejected; otherwise an end with a code is moved along the
// segment onto one of the edges it lies beyond, and the question is asked again.
//
// In exact arithmetic four moves suffice, two for each end. In floating point an end that is moved onto one
// edge close to a corner can come out one unit in the last place beyond the other edge, and moved onto that
// one, beyond the first, for ever. So each end's moves are counted: up to MOST_MOVES the method is left to
// itself (a third move does occur before it settles), after that an end that is still outside is set onto
// the rectangle. With NaN or infinite coordinates, or in a rectangle turned inside out, there is nothing to
// settle: those are rejected then.
#include <algorithm>
#include <cmath>

#include "tarvex/lines.h"

namespace tarvex {

namespace {

constexpr int MOST_MOVES = 4;  // of one end

enum Region : int { ABOVE_YMAX = 1, BELOW_YMIN = 2, BEYOND_XMAX = 4, BEFORE_XMIN = 8 };

struct Window {
    double xmin, xmax, ymin, ymax;

    int CodeOf(DPOINT p) const {
        int code = p.x > xmax ? BEYOND_XMAX : p.x < xmin ? BEFORE_XMIN : 0;
        code += p.y > ymax ? ABOVE_YMAX : p.y < ymin ? BELOW_YMIN : 0;
        return code;
    }

    /// Where the segment meets the edge that `code` names; x edges go first.
    DPOINT MoveOntoEdge(int code, DPOINT a, DPOINT b) const {
        if (code & (BEYOND_XMAX | BEFORE_XMIN)) {
            const double x = code & BEYOND_XMAX ? xmax : xmin;
            return {x, a.y + (b.y - a.y) * (x - a.x) / (b.x - a.x)};
        }
        const double y = code & ABOVE_YMAX ? ymax : ymin;
        return {a.x + (b.x - a.x) * (y - a.y) / (b.y - a.y), y};
    }

    bool CanHold(DPOINT p) const {
        return xmin <= xmax && ymin <= ymax && std::isfinite(p.x) && std::isfinite(p.y);
    }

    DPOINT Clamp(DPOINT p) const { return {std::clamp(p.x, xmin, xmax), std::clamp(p.y, ymin, ymax)}; }
};

/// An end of the segment on its way into the window.
struct End {
    DPOINT p;
    int code;
    int moves = 0;
};

enum class Step { Moved, Hopeless };

Step MoveIn(End& end, DPOINT first, DPOINT second, const Window& window) {
    if (end.moves++ < MOST_MOVES) {
        end.p = window.MoveOntoEdge(end.code, first, second);
    } else if (window.CanHold(end.p)) {
        end.p = window.Clamp(end.p);
    } else {
        return Step::Hopeless;
    }
    end.code = window.CodeOf(end.p);
    return Step::Moved;
}

}  // namespace

int _clip_line(double* x1, double* y1, double* x2, double* y2, double xmin, double xmax, double ymin,
               double ymax) {
    const Window window{xmin, xmax, ymin, ymax};
    End a{{*x1, *y1}, window.CodeOf({*x1, *y1})};
    End b{{*x2, *y2}, window.CodeOf({*x2, *y2})};
    while (a.code | b.code) {
        if (a.code & b.code) return 0;
        if (MoveIn(a.code ? a : b, a.p, b.p, window) == Step::Hopeless) return 0;
    }

    int result = CLIP_VISIBLE;
    if (a.p.x != *x1 || a.p.y != *y1) result |= CLIP_FIRST_MOVED;
    if (b.p.x != *x2 || b.p.y != *y2) result |= CLIP_SECOND_MOVED;
    *x1 = a.p.x;
    *y1 = a.p.y;
    *x2 = b.p.x;
    *y2 = b.p.y;
    return result;
}

int ClipLine(double* x1, double* y1, double* x2, double* y2, const tagRECT* rc) {
    return _clip_line(x1, y1, x2, y2, rc->left, rc->right, rc->top, rc->bottom);
}

}  // namespace tarvex
