// Polylines and Bezier contours of tests from the lists they are written as, and back; numbers that are none.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <memory>
#include <numbers>
#include <utility>
#include <vector>

#include "tarvex/framework.h"
#include "tarvex/records.h"

namespace tarvex::test {

inline constexpr double kPi = std::numbers::pi;
inline constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
inline constexpr double kInfinity = std::numeric_limits<double>::infinity();

/// The same bits, or both NaN.
inline bool SameBits(double a, double b) {
    return (std::isnan(a) && std::isnan(b)) || std::memcmp(&a, &b, sizeof a) == 0;
}
inline bool SameBits(const DPOINT& a, const DPOINT& b) { return SameBits(a.x, b.x) && SameBits(a.y, b.y); }

using Points = std::vector<DPOINT>;
using DPoints = CArray<DPOINT, DPOINT>;
using Nodes = CArray<BPOINT, BPOINT>;

template <class T>
CArray<T, T> ArrayOf(const std::vector<T>& list) {
    CArray<T, T> array;
    array.SetSize(static_cast<int>(list.size()));
    std::copy(list.begin(), list.end(), array.begin());
    return array;
}
inline DPoints Polyline(const Points& points) { return ArrayOf(points); }
inline Nodes MakeNodes(const std::vector<BPOINT>& nodes) { return ArrayOf(nodes); }

template <class T>
std::vector<T> ListOf(const CArray<T, T>& array) {
    return {array.begin(), array.end()};
}

/// A node whose handles lie on it, and a contour of such nodes.
inline BPOINT Corner(double x, double y) { return {{x, y}, {x, y}, {x, y}}; }
inline Nodes Corners(const Points& points) {
    Nodes nodes;
    for (const DPOINT& p : points) nodes.Add(Corner(p.x, p.y));
    return nodes;
}

/// Of a rectangle, closed, clockwise on a screen.
inline Points Box(double left, double top, double right, double bottom) {
    return {{left, top}, {right, top}, {right, bottom}, {left, bottom}, {left, top}};
}

inline Points Closed(Points points) {
    if (!points.empty()) points.push_back(points.front());
    return points;
}

inline double DistanceFromSegment(DPOINT p, DPOINT a, DPOINT b) {
    const double dx = b.x - a.x, dy = b.y - a.y;
    const double square = dx * dx + dy * dy;
    const double t = square > 0 ? std::clamp(((p.x - a.x) * dx + (p.y - a.y) * dy) / square, 0.0, 1.0) : 0;
    return std::hypot(p.x - a.x - t * dx, p.y - a.y - t * dy);
}

/// Gives a list of contours one more.
template <class List, class Array>
void AddTo(List& contours, Array contour) {
    contours.Add(std::make_unique<Array>(std::move(contour)));
}

}  // namespace tarvex::test
