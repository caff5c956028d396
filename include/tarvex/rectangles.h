// Integer points, sizes and rectangles: the platform's records with constructors and comparison, so that
// they can be made in one expression. They convert to the plain records by being them.
#pragma once

#include "tarvex/platform.h"

namespace tarvex {

struct CPoint : public tagPOINT {
    CPoint() : tagPOINT{0, 0} {}
    CPoint(LONG px, LONG py) : tagPOINT{px, py} {}
    CPoint(const tagPOINT& p) : tagPOINT(p) {}
    friend bool operator==(const CPoint& a, const CPoint& b) { return a.x == b.x && a.y == b.y; }
};

struct CSize : public tagSIZE {
    CSize() : tagSIZE{0, 0} {}
    CSize(LONG width, LONG height) : tagSIZE{width, height} {}
    CSize(const tagSIZE& s) : tagSIZE(s) {}
    friend bool operator==(const CSize& a, const CSize& b) { return a.cx == b.cx && a.cy == b.cy; }
};

/// Whether right and bottom belong to the rectangle is for each function to say.
struct CRect : public tagRECT {
    CRect() : tagRECT{0, 0, 0, 0} {}
    CRect(LONG l, LONG t, LONG r, LONG b) : tagRECT{l, t, r, b} {}
    CRect(const tagRECT& r) : tagRECT(r) {}
    friend bool operator==(const CRect& a, const CRect& b) {
        return a.left == b.left && a.top == b.top && a.right == b.right && a.bottom == b.bottom;
    }
    /// right - left and bottom - top. They wrap when the rectangle is wider than a LONG can tell.
    LONG Width() const { return Difference(right, left); }
    LONG Height() const { return Difference(bottom, top); }

  private:
    static LONG Difference(LONG a, LONG b) {
        return static_cast<LONG>(static_cast<DWORD>(a) - static_cast<DWORD>(b));
    }
};

}  // namespace tarvex
