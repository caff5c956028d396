// Shaping knows one fill rule, even-odd. What else drawings mean is brought into that form here.
//
// The nonzero rule: a shape united with itself comes back as the boundary between its odd and its even
// regions, without crossings. Every region of an odd winding number is inside by both rules; one of an
// even number is inside by the nonzero rule unless the number is 0. So those contours are dropped on whose
// even side the number is not 0, and what is left bounds the regions wanted.
#include "tarvex/filled_shape.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <utility>

#include "tarvex/bezier.h"
#include "tarvex/measure.h"
#include "tarvex/shaping.h"

namespace tarvex::app {

namespace {

using Nodes = CArray<BPOINT, BPOINT>;

/// A flattened contour, closed, and its extent.
struct Polyline {
    std::vector<DPOINT> points;
    double right = 0;
    double top = 0;
    double bottom = 0;
};
using Polylines = std::vector<Polyline>;

void AddContour(CPolyPolyBezier& shape, const Nodes& nodes) {
    auto copy = std::make_unique<Nodes>();
    copy->Copy(nodes);
    shape.Add(std::move(copy));
}

void AddAll(CPolyPolyBezier& shape, const CPolyPolyBezier& from) {
    for (int k = 0; k < from.GetCount(); ++k) AddContour(shape, from[k]);
}

Polylines Flattened(const CPolyPolyBezier& shape) {
    constexpr int steps = 16;
    Polylines lines;
    for (int k = 0; k < shape.GetCount(); ++k) {
        if (shape[k].GetSize() < 2) continue;
        Polyline line;
        const DPOINT start = shape[k][0].pt;
        line.points.push_back(start);
        line.right = start.x;
        line.top = line.bottom = start.y;
        for (int i = 0; i + 1 < shape[k].GetSize(); ++i) {
            const CBezier segment(shape[k][i], shape[k][i + 1]);
            for (int s = 1; s <= steps; ++s) {
                const DPOINT p = segment.GetCurvePoint(static_cast<double>(s) / steps);
                line.points.push_back(p);
                line.right = std::max(line.right, p.x);
                line.top = std::min(line.top, p.y);
                line.bottom = std::max(line.bottom, p.y);
            }
        }
        line.points.push_back(start);
        lines.push_back(std::move(line));
    }
    return lines;
}

/// How often, and in which sense, the contours run around a point.
int WindingAround(const Polylines& lines, const DPOINT& p) {
    int winding = 0;
    for (const Polyline& line : lines) {
        if (p.y < line.top || p.y > line.bottom || p.x > line.right) continue;
        for (std::size_t i = 1; i < line.points.size(); ++i) {
            const DPOINT& a = line.points[i - 1];
            const DPOINT& b = line.points[i];
            if ((a.y > p.y) == (b.y > p.y)) continue;
            const double x = a.x + (b.x - a.x) * ((p.y - a.y) / (b.y - a.y));
            if (x > p.x) winding += b.y > a.y ? 1 : -1;
        }
    }
    return winding;
}

/// Whether the even side of a contour, the one outside by the even-odd rule, is outside by the nonzero rule,
/// too. The sides are looked at next to the middles of its segments, the longest first.
bool IsNonzeroBoundary(const Nodes& contour, const Polylines& original) {
    std::vector<std::pair<double, int>> segments;
    for (int i = 0; i + 1 < contour.GetSize(); ++i)
        segments.push_back({-CBezier(contour[i], contour[i + 1]).GetL(4), i});
    std::sort(segments.begin(), segments.end());
    constexpr std::size_t most = 8;
    for (std::size_t n = 0; n < std::min(segments.size(), most); ++n) {
        const auto [negativeLength, i] = segments[n];
        const CBezier segment(contour[i], contour[i + 1]);
        const DPOINT middle = segment.GetCurvePoint(0.5);
        const DPOINT before = segment.GetCurvePoint(0.49);
        const double dx = middle.x - before.x;
        const double dy = middle.y - before.y;
        const double length = std::hypot(dx, dy);
        if (!(length > 0)) continue;
        const double away = -negativeLength * 1e-2 / length;  // more than the polylines are off the curves
        const int left = WindingAround(original, {middle.x + dy * away, middle.y - dx * away});
        const int right = WindingAround(original, {middle.x - dy * away, middle.y + dx * away});
        if ((left - right) % 2 == 0) continue;
        return (left % 2 == 0 ? left : right) == 0;
    }
    return true;
}

/// The region that is inside by the nonzero rule.
CPolyPolyBezier NonzeroRegion(const CPolyPolyBezier& contours) {
    CPolyPolyBezier region;
    CPolyPolyBezier other;
    AddAll(region, contours);
    AddAll(other, contours);
    if (!PolyPolyBezierShaping(SHAPING_UNION, region, other)) return {};
    const Polylines original = Flattened(contours);
    CPolyPolyBezier kept;
    for (int k = 0; k < region.GetCount(); ++k) {
        if (IsNonzeroBoundary(region[k], original)) AddContour(kept, region[k]);
    }
    return kept;
}

bool Meet(const DRECT& a, const DRECT& b) {
    return a.left <= b.right && b.left <= a.right && a.top <= b.bottom && b.top <= a.bottom;
}

struct Area {
    CPolyPolyBezier shape;
    DRECT frame;
};

/// The union of many areas, by halves. Areas apart from each other are put side by side.
Area UnitedAreas(std::vector<Area>& areas, std::size_t first, std::size_t last) {
    if (last - first == 1) return std::move(areas[first]);
    const std::size_t middle = first + (last - first) / 2;
    Area a = UnitedAreas(areas, first, middle);
    Area b = UnitedAreas(areas, middle, last);
    const DRECT frame = United(a.frame, b.frame);
    if (!Meet(a.frame, b.frame) || !PolyPolyBezierShaping(SHAPING_UNION, a.shape, b.shape))
        AddAll(a.shape, b.shape);
    a.frame = frame;
    return a;
}

void AddArea(std::vector<Area>& areas, CPolyPolyBezier shape) {
    if (const auto frame = FrameOf(shape)) areas.push_back({std::move(shape), *frame});
}

void AddElement(std::vector<Area>& areas, const CPolyPolyBezier& contours, ShapeFill fill, bool isEvenOdd) {
    if (fill == ShapeFill::Winding) {
        for (int k = 0; k < contours.GetCount(); ++k) {
            CPolyPolyBezier one;
            AddContour(one, contours[k]);
            AddArea(areas, NonzeroRegion(one));
        }
    } else if (fill == ShapeFill::AsDrawn && !isEvenOdd) {
        AddArea(areas, NonzeroRegion(contours));
    } else {
        CPolyPolyBezier all;
        AddAll(all, contours);
        AddArea(areas, std::move(all));
    }
}

}  // namespace

std::vector<const SvgElement*> FilledElements(const SvgDocument& drawing) {
    std::vector<const SvgElement*> filled;
    std::vector<const SvgElement*> all;
    for (const SvgElement& element : drawing.elements) {
        if (!element.isShown || element.isLines) continue;
        all.push_back(&element);
        if (element.paint.Fill()) filled.push_back(&element);
    }
    return filled.empty() ? all : filled;
}

CPolyPolyBezier ContoursOf(const std::vector<const SvgElement*>& elements) {
    CPolyPolyBezier all;
    for (const SvgElement* element : elements) AddAll(all, element->outline);
    return all;
}

CPolyPolyBezier FilledShape(const std::vector<const SvgElement*>& elements, ShapeFill fill, double scale) {
    std::vector<Area> areas;
    for (const SvgElement* element : elements) {
        CPolyPolyBezier contours;
        AddAll(contours, element->outline);
        Scale(contours, scale);
        contours.EnsureClosed();
        AddElement(areas, contours, fill, element->paint.IsEvenOdd());
    }
    if (areas.empty()) return {};
    return UnitedAreas(areas, 0, areas.size()).shape;
}

void Scale(CPolyPolyBezier& shape, double factor) {
    for (int k = 0; k < shape.GetCount(); ++k) {
        for (BPOINT& node : shape[k]) {
            for (DPOINT* p : {&node.cp1, &node.pt, &node.cp2}) *p = {p->x * factor, p->y * factor};
        }
    }
}

}  // namespace tarvex::app
