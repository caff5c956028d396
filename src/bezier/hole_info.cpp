// Which contours lie in which.
//
// A vertex decides nothing: contours that touch share them. So each contour gets a point well inside: a
// horizontal line halfway between two neighbouring heights at which its outline turns or has a node crosses
// the outline squarely, and the middle of the widest stretch inside is taken. Whether that point is in
// another contour is a count of crossings on the same line. The point inside an outer contour can also be
// inside one of its holes, so the frames decide who surrounds whom, and where they are equal, the areas.
//
// Crossings are found on the curves: each cubic is cut where its height turns, and on such a piece the
// crossing is found by halving. A piece crosses a line when one end is above it and the other is not, which
// counts nodes on the line once, or twice where the outline only touches.
#include <algorithm>
#include <cmath>
#include <optional>
#include <vector>

#include "bezier/nodes_place.h"
#include "tarvex/stitch.h"

namespace tarvex {

namespace {

constexpr int kTriedLines = 16;
constexpr int kHalvings = 60;

/// A cubic between two parameters, on which y only grows or only falls.
struct Rise {
    Cubic cubic;
    double from, to;
    double fromY, toY;

    bool Crosses(double y) const { return (fromY > y) != (toY > y); }

    double CrossingX(double y) const {
        double a = from;
        double b = to;
        for (int i = 0; i < kHalvings; ++i) {
            const double t = (a + b) / 2;
            ((PlacedPoint(cubic, t).y > y) == (fromY > y) ? a : b) = t;
        }
        return PlacedPoint(cubic, (a + b) / 2).x;
    }
};

/// Where the height of a cubic turns, within (0, 1), in order.
std::vector<double> Turns(const Cubic& c) {
    std::vector<double> turns;
    if (HasNoHandles(c)) return turns;
    const double a = c.p3.y - c.p0.y + 3 * (c.p1.y - c.p2.y);
    const double b = 2 * (c.p0.y - 2 * c.p1.y + c.p2.y);
    const double constant = c.p1.y - c.p0.y;
    const double square = b * b - 4 * a * constant;
    if (!(square >= 0)) return turns;
    const double q = -(b + std::copysign(std::sqrt(square), b)) / 2;
    for (const double t : {q / a, constant / q}) {
        if (t > 0 && t < 1) turns.push_back(t);
    }
    std::sort(turns.begin(), turns.end());
    return turns;
}

class Outline {
  public:
    explicit Outline(std::span<const BPOINT> nodes) {
        if (!GetBezierFrame(nodes, frame) || !std::isfinite(GetBezierLength(nodes))) return;
        area = std::fabs(GetBezierArea(nodes));
        for (std::size_t i = 0; i + 1 < nodes.size(); ++i) Add(SegmentOf(nodes[i], nodes[i + 1]));
        const DPOINT end = nodes.back().pt;
        const DPOINT start = nodes.front().pt;
        Add({end, end, start, start});
        FindInside();
    }

    /// The crossings with a horizontal line, from left to right: their number is even.
    std::vector<double> CrossingsAt(double y) const {
        std::vector<double> crossings;
        for (const Rise& rise : m_rises) {
            if (rise.Crosses(y)) crossings.push_back(rise.CrossingX(y));
        }
        std::sort(crossings.begin(), crossings.end());
        return crossings;
    }

    bool Holds(const DPOINT& p) const {
        if (!(p.x >= frame.left && p.x <= frame.right && p.y >= frame.top && p.y <= frame.bottom))
            return false;
        std::size_t left = 0;
        for (const Rise& rise : m_rises) left += rise.Crosses(p.y) && rise.CrossingX(p.y) < p.x ? 1 : 0;
        return left % 2 == 1;
    }

    DRECT frame;
    double area = 0;
    std::optional<DPOINT> inside;

  private:
    void Add(const Cubic& c) {
        double from = 0;
        double fromY = c.p0.y;
        const auto add = [&](double to) {
            const double toY = PlacedPoint(c, to).y;
            if (toY != fromY) m_rises.push_back({c, from, to, fromY, toY});
            from = to;
            fromY = toY;
        };
        for (const double turn : Turns(c)) add(turn);
        add(1);
    }

    /// Tries the lines in the middle of the widest bands without a turn.
    void FindInside() {
        std::vector<double> heights;
        for (const Rise& rise : m_rises) heights.push_back(rise.fromY);
        std::sort(heights.begin(), heights.end());
        struct Band {
            double height, middle;
        };
        std::vector<Band> bands;
        for (std::size_t i = 0; i + 1 < heights.size(); ++i)
            bands.push_back({heights[i + 1] - heights[i], heights[i] + (heights[i + 1] - heights[i]) / 2});
        const std::size_t tried = std::min<std::size_t>(kTriedLines, bands.size());
        std::partial_sort(bands.begin(), bands.begin() + static_cast<std::ptrdiff_t>(tried), bands.end(),
                          [](const Band& a, const Band& b) { return a.height > b.height; });
        double best = GEOMETRY_EPSILON;
        for (std::size_t i = 0; i < tried; ++i) {
            const std::vector<double> x = CrossingsAt(bands[i].middle);
            for (std::size_t k = 0; k + 1 < x.size(); k += 2) {
                const double room = std::min(x[k + 1] - x[k], bands[i].height);
                if (!(room > best)) continue;
                best = room;
                inside = DPOINT{x[k] + (x[k + 1] - x[k]) / 2, bands[i].middle};
            }
        }
    }

    std::vector<Rise> m_rises;
};

bool Contains(const DRECT& outer, const DRECT& inner) {
    return outer.left <= inner.left && outer.right >= inner.right && outer.top <= inner.top &&
           outer.bottom >= inner.bottom;
}

/// Which of two contours is the outer one if one surrounds the other; the first of equals.
bool IsOuter(const Outline& outer, int outerIndex, const Outline& inner, int innerIndex) {
    if (!Contains(outer.frame, inner.frame)) return false;
    if (!Contains(inner.frame, outer.frame)) return true;
    if (outer.area != inner.area) return outer.area > inner.area;
    return outerIndex < innerIndex;
}

}  // namespace

void GetBezierHoleInfo(const CPolyPolyBezier& shape, CArray<BEZIERHOLEINFO, BEZIERHOLEINFO>& info) {
    const int count = shape.GetSize();
    std::vector<Outline> outlines;
    outlines.reserve(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i) {
        const CArray<BPOINT, BPOINT>* contour = shape.GetAt(i);
        outlines.emplace_back(contour != nullptr ? std::span<const BPOINT>(*contour)
                                                 : std::span<const BPOINT>());
    }
    const auto at = [&outlines](int i) -> const Outline& { return outlines[static_cast<std::size_t>(i)]; };
    const auto surrounds = [&at](int outer, int inner) {
        return outer != inner && at(outer).inside && at(inner).inside &&
               IsOuter(at(outer), outer, at(inner), inner) && at(outer).Holds(*at(inner).inside);
    };

    info.SetSize(0);
    info.SetSize(count);
    std::vector<std::vector<int>> around(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i) {
        for (int k = 0; k < count; ++k) {
            if (surrounds(k, i)) around[static_cast<std::size_t>(i)].push_back(k);
        }
        const int depth = static_cast<int>(around[static_cast<std::size_t>(i)].size());
        info[i] = {depth, -1, depth % 2 == 1};
    }
    for (int i = 0; i < count; ++i) {
        for (const int k : around[static_cast<std::size_t>(i)]) {
            if (info[i].parent < 0 || info[k].depth > info[info[i].parent].depth) info[i].parent = k;
        }
    }
}

}  // namespace tarvex
