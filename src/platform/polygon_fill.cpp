// Scan conversion with a list of active edges, in integers throughout.
//
// Every edge that crosses the surface's rows is kept with the rational number at which it meets the
// centre line of its current row, as a whole part and a rest, and with the rational step from row to
// row. Adding the step is exact, so no error builds up however long an edge is, and the column found
// for a row is the one that an exact division for that row would give. The first row of an edge that
// starts far above the surface needs a product of up to 76 bits; it is divided in two halves.
//
// Each row sorts the places where its edges meet it. That they come out nearly sorted from the row
// above could be used, but not relied on: many lines through one point change all their places there,
// and sorting by insertion would then take the square of their number. As it is, n edges in h rows
// take h n log n, plus the pixels painted.
#include "platform/polygon_fill.h"

#include <algorithm>
#include <utility>

namespace tarvex::platform {
namespace {

struct Quotient {
    Fixed whole;
    Fixed rest;  ///< at least 0, less than the divisor
};

Quotient DivideFloor(Fixed a, Fixed divisor) {
    Quotient q{a / divisor, a % divisor};
    if (q.rest < 0) {
        q.rest += divisor;
        --q.whole;
    }
    return q;
}

/// a * b / divisor for 0 <= a < 2^38, |b| < 2^38 and 0 < divisor < 2^38, without overflow.
Quotient MultiplyDivideFloor(Fixed a, Fixed b, Fixed divisor) {
    constexpr int kHalf = 16;
    const Quotient high = DivideFloor((a >> kHalf) * b, divisor);
    const Fixed low = (a & ((Fixed{1} << kHalf) - 1)) * b;
    const Quotient q = DivideFloor(high.rest * (Fixed{1} << kHalf) + low, divisor);
    return {high.whole * (Fixed{1} << kHalf) + q.whole, q.rest};
}

/// The first pixel whose centre is at or beyond v.
Fixed FirstPixelFrom(Fixed v) { return (v + kFixedOne - 1) >> 4; }

}  // namespace

int PolygonFill::Edge::Column(int width) const {
    return static_cast<int>(std::clamp<Fixed>(FirstPixelFrom(x + (rest > 0 ? 1 : 0)), 0, width));
}

void PolygonFill::Edge::Advance() {
    x += stepX;
    rest += stepRest;
    if (rest >= height) {
        rest -= height;
        ++x;
    }
}

void PolygonFill::AddPolygon(std::span<const FixedPoint> points) {
    if (points.size() < 2) return;
    for (std::size_t i = 0; i + 1 < points.size(); ++i) AddEdge(points[i], points[i + 1]);
    AddEdge(points.back(), points.front());
}

void PolygonFill::AddEdge(FixedPoint from, FixedPoint to) {
    if (from.y == to.y) return;
    Edge edge{};
    edge.direction = from.y < to.y ? 1 : -1;
    if (from.y > to.y) std::swap(from, to);
    const Fixed first = std::max<Fixed>(FirstPixelFrom(from.y), 0);
    const Fixed end = std::min<Fixed>(FirstPixelFrom(to.y), m_surface.height);
    if (first >= end) return;
    edge.firstRow = static_cast<int>(first);
    edge.endRow = static_cast<int>(end);

    const Fixed width = to.x - from.x;
    edge.height = to.y - from.y;
    const Quotient start = MultiplyDivideFloor(first * kFixedOne - from.y, width, edge.height);
    edge.x = from.x + start.whole;
    edge.rest = start.rest;
    const Quotient step = DivideFloor(width * kFixedOne, edge.height);
    edge.stepX = step.whole;
    edge.stepRest = step.rest;
    m_edges.push_back(edge);
}

void PolygonFill::FillRow(int y, FillRule rule, PixelWord value) {
    m_crossings.clear();
    for (const Edge& edge : m_active) m_crossings.push_back({edge.Column(m_surface.width), edge.direction});
    std::sort(m_crossings.begin(), m_crossings.end(),
              [](const Crossing& a, const Crossing& b) { return a.column < b.column; });
    const int mask = rule == FillRule::Alternate ? 1 : ~0;
    int winding = 0;
    int left = 0;
    for (const Crossing& crossing : m_crossings) {
        const bool wasInside = (winding & mask) != 0;
        winding += crossing.direction;
        const bool isInside = (winding & mask) != 0;
        if (wasInside == isInside) continue;
        if (isInside) {
            left = crossing.column;
        } else if (left < crossing.column) {
            FillSpan(m_surface, y, left, crossing.column, value);
        }
    }
}

void PolygonFill::Fill(FillRule rule, PixelWord value) {
    std::sort(m_edges.begin(), m_edges.end(),
              [](const Edge& a, const Edge& b) { return a.firstRow < b.firstRow; });
    m_active.clear();
    auto next = m_edges.begin();
    int y = 0;
    while (next != m_edges.end() || !m_active.empty()) {
        if (m_active.empty()) y = next->firstRow;
        while (next != m_edges.end() && next->firstRow == y) m_active.push_back(*next++);
        FillRow(y, rule, value);
        ++y;
        std::erase_if(m_active, [y](const Edge& edge) { return edge.endRow == y; });
        for (Edge& edge : m_active) edge.Advance();
    }
    m_edges.clear();
}

}  // namespace tarvex::platform
