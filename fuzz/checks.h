// What several targets ask of points, contours and shapes.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstring>

#include "input.h"
#include "tarvex/containers.h"

namespace tarvex::fuzz {

inline bool IsFinite(const DPOINT& p) { return std::isfinite(p.x) && std::isfinite(p.y); }

/// Whether the numbers are the same bit for bit.
inline bool Same(double a, double b) { return std::memcmp(&a, &b, sizeof a) == 0; }
inline bool Same(const DPOINT& a, const DPOINT& b) { return Same(a.x, b.x) && Same(a.y, b.y); }
inline bool Same(const BPOINT& a, const BPOINT& b) {
    return Same(a.cp1, b.cp1) && Same(a.pt, b.pt) && Same(a.cp2, b.cp2) && a.flags == b.flags;
}

/// The same, but any NaN like any other: what went through arithmetic.
inline bool SameNumbers(const DPOINT& a, const DPOINT& b) {
    const auto same = [](double v, double w) { return (std::isnan(v) && std::isnan(w)) || Same(v, w); };
    return same(a.x, b.x) && same(a.y, b.y);
}

template <class T>
bool Same(const CArray<T, T>& a, const CArray<T, T>& b) {
    return a.GetSize() == b.GetSize() &&
           std::equal(a.begin(), a.end(), b.begin(), [](const T& x, const T& y) { return Same(x, y); });
}

inline bool Same(const CPolyPolyBezier& a, const CPolyPolyBezier& b) {
    bool same = a.GetSize() == b.GetSize();
    for (int i = 0; same && i < a.GetSize(); ++i) same = Same(a[i], b[i]);
    return same;
}

/// Calls `look` with each of the points of a contour: all three of a node.
template <class Look>
void EachPoint(const CArray<DPOINT, DPOINT>& contour, Look look) {
    for (const DPOINT& p : contour) look(p);
}
template <class Look>
void EachPoint(const CArray<BPOINT, BPOINT>& contour, Look look) {
    for (const BPOINT& node : contour) {
        for (const DPOINT& p : {node.cp1, node.pt, node.cp2}) look(p);
    }
}

inline const DPOINT& Anchor(const DPOINT& p) { return p; }
inline const DPOINT& Anchor(const BPOINT& node) { return node.pt; }

/// Whether the ends are one point for the library, which forgives a little.
template <class T>
bool IsClosed(const CArray<T, T>& contour) {
    return contour.GetSize() > 1 &&
           Anchor(contour.GetAt(0)) == Anchor(contour.GetAt(contour.GetUpperBound()));
}

/// Whether the ends are the same numbers.
template <class T>
bool IsClosedExactly(const CArray<T, T>& contour) {
    if (contour.GetSize() < 2) return false;
    const DPOINT &first = Anchor(contour.GetAt(0)), &last = Anchor(contour.GetAt(contour.GetUpperBound()));
    return first.x == last.x && first.y == last.y;
}

template <class T>
void RequireFinite(const CArray<T, T>& contour) {
    EachPoint(contour, [](const DPOINT& p) { Require(IsFinite(p), "coordinates are finite"); });
}

/// Contours of at least `least` points, finite, ending where they begin.
template <class List>
void RequireClosedContours(const List& shape, int least) {
    for (int i = 0; i < shape.GetSize(); ++i) {
        Require(shape[i].GetSize() >= least, "a contour has enough points");
        Require(IsClosed(shape[i]), "a contour ends where it begins");
        RequireFinite(shape[i]);
    }
}

/// The frame around points.
struct Box {
    double left = INFINITY, right = -INFINITY, top = INFINITY, bottom = -INFINITY;

    void Include(const DPOINT& p) {
        left = std::min(left, p.x);
        right = std::max(right, p.x);
        top = std::min(top, p.y);
        bottom = std::max(bottom, p.y);
    }
    bool HasArea() const { return right > left && bottom > top; }
    bool Holds(const Box& other, double margin) const {
        return other.left >= left - margin && other.right <= right + margin && other.top >= top - margin &&
               other.bottom <= bottom + margin;
    }
};

template <class T>
Box BoxOf(const CArray<T, T>& contour) {
    Box box;
    EachPoint(contour, [&box](const DPOINT& p) { box.Include(p); });
    return box;
}

template <class T>
Box AnchorBoxOf(const CArray<T, T>& contour) {
    Box box;
    for (const T& point : contour) box.Include(Anchor(point));
    return box;
}

/// The area of a closed polyline, by the shoelace formula.
inline double AreaOf(const CArray<DPOINT, DPOINT>& contour) {
    double twice = 0;
    for (int i = 1; i < contour.GetSize(); ++i)
        twice += contour[i - 1].x * contour[i].y - contour[i].x * contour[i - 1].y;
    return twice / 2;
}

}  // namespace tarvex::fuzz
