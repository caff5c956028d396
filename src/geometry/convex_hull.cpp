// The convex hull of integer points.
//
// Two steps. First the points strictly inside the quadrilateral of the leftmost, lowest, rightmost and
// highest points are dropped: no hull vertex is among them, and of points spread over an area only a
// fraction remains (Akl and Toussaint). Then the rest is sorted by x and y, and the hull's two chains
// from the first to the last point are built by dropping, at each new point, the points that it leaves on
// or inside the chain (Andrew's monotone chains). Each point is dropped once, so the sort decides the cost,
// O(n log n).
//
// Sorting by angle around one hull vertex is the better-known way, but needs either rounded angles, which
// confuse nearly collinear points and can throw hull vertices away, or a comparison as costly as this
// one. Here every decision is the sign of a cross product of differences of 32-bit coordinates. Each
// difference has at most 32 bits and a sign, each product thus fits into 64 bits and a sign, and the two are
// compared, not subtracted: exact for all coordinates.
#include <algorithm>
#include <cstdint>
#include <vector>

#include "tarvex/polygons.h"

namespace tarvex {

namespace {

constexpr int FEWEST_POINTS = 4;

/// An integer of 64 bits and a sign.
struct SignedProduct {
    int sign;
    std::uint64_t magnitude;

    SignedProduct(std::int64_t a, std::int64_t b)
        : sign(a == 0 || b == 0     ? 0
               : (a < 0) == (b < 0) ? 1
                                    : -1),
          magnitude(Magnitude(a) * Magnitude(b)) {}

    static std::uint64_t Magnitude(std::int64_t v) { return static_cast<std::uint64_t>(v < 0 ? -v : v); }
};

/// The sign of a - b.
int Compare(const SignedProduct& a, const SignedProduct& b) {
    if (a.sign != b.sign) return a.sign < b.sign ? -1 : 1;
    if (a.magnitude == b.magnitude) return 0;
    return (a.magnitude < b.magnitude) == (a.sign > 0) ? -1 : 1;
}

/// The side of `p` seen along a -> b: 1 left with y upwards, -1 right, 0 on the line.
int SideOf(const tagPOINT& a, const tagPOINT& b, const tagPOINT& p) {
    const std::int64_t ax = a.x, ay = a.y;
    return Compare({b.x - ax, p.y - ay}, {b.y - ay, p.x - ax});
}

bool Same(const tagPOINT& a, const tagPOINT& b) { return a.x == b.x && a.y == b.y; }

/// What remains when points strictly inside the quadrilateral of the extreme points are dropped.
std::vector<tagPOINT> WithoutInnerPoints(const CArray<tagPOINT, tagPOINT>& points) {
    const auto byX = [](const tagPOINT& a, const tagPOINT& b) { return a.x < b.x; };
    const auto byY = [](const tagPOINT& a, const tagPOINT& b) { return a.y < b.y; };
    const auto [left, right] = std::minmax_element(points.begin(), points.end(), byX);
    const auto [low, high] = std::minmax_element(points.begin(), points.end(), byY);
    if (Same(*left, *right)) return {points.begin(), points.end()};  // an upright line, or one point
    const tagPOINT corners[] = {*left, *low, *right, *high, *left};

    std::vector<tagPOINT> kept;
    for (const tagPOINT& p : points) {
        bool inside = true;
        for (int i = 0; i < 4 && inside; ++i) {
            // Two extremes that are one point bound nothing.
            inside = Same(corners[i], corners[i + 1]) || SideOf(corners[i], corners[i + 1], p) > 0;
        }
        if (!inside) kept.push_back(p);
    }
    return kept;
}

/// Appends the chain over the sorted points to `hull`, turning left (y upwards) only, without its end.
template <class Iterator>
void AppendChain(Iterator first, Iterator last, std::vector<tagPOINT>& hull) {
    const std::size_t start = hull.size();
    for (; first != last; ++first) {
        while (hull.size() >= start + 2 && SideOf(hull[hull.size() - 2], hull.back(), *first) <= 0)
            hull.pop_back();
        hull.push_back(*first);
    }
    hull.pop_back();
}

}  // namespace

void GetConvexHull(CArray<tagPOINT, tagPOINT>& points) {
    if (points.GetSize() < FEWEST_POINTS) return;

    std::vector<tagPOINT> sorted = WithoutInnerPoints(points);
    std::sort(sorted.begin(), sorted.end(),
              [](const tagPOINT& a, const tagPOINT& b) { return a.x != b.x ? a.x < b.x : a.y < b.y; });
    sorted.erase(std::unique(sorted.begin(), sorted.end(), Same), sorted.end());

    std::vector<tagPOINT> hull;
    if (sorted.size() > 1) {
        AppendChain(sorted.begin(), sorted.end(), hull);
        AppendChain(sorted.rbegin(), sorted.rend(), hull);
        std::reverse(hull.begin(), hull.end());
        const auto pivot = std::max_element(
            hull.begin(), hull.end(),
            [](const tagPOINT& a, const tagPOINT& b) { return a.y != b.y ? a.y < b.y : a.x < b.x; });
        std::rotate(hull.begin(), pivot, hull.end());
        hull.push_back(hull.front());
    } else {
        hull = sorted;
    }

    points.SetSize(static_cast<int>(hull.size()));
    std::copy(hull.begin(), hull.end(), points.begin());
}

}  // namespace tarvex
