#include "platform/stroke.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "platform/polygon_fill.h"

namespace tarvex::platform {
namespace {

/// The handle length that makes a cubic curve a quarter circle, for radius 1.
constexpr double kQuarterCircle = 0.5522847498307936;

/// A line as steps along its longer side, and what the other coordinate is at each of them.
class Steps {
  public:
    /// `length` steps in which the other coordinate moves by `rise`, at most as many.
    Steps(std::uint64_t length, std::uint64_t rise) : m_length(length), m_rise(rise) {}

    /// The pixels moved sideways after `i` steps: i * rise / length rounded, halves up. Both factors
    /// are below 2^32, so their product fits.
    std::uint64_t Offset(std::uint64_t i) const {
        const std::uint64_t product = i * m_rise;
        const std::uint64_t rest = product % m_length;
        return product / m_length + (2 * rest >= m_length ? 1 : 0);
    }

    /// The first step at which the offset reaches `offset`, or the length when none before does.
    std::uint64_t FirstReaching(std::int64_t offset) const {
        if (offset <= 0) return 0;
        std::uint64_t low = 0;
        std::uint64_t high = m_length;
        while (low < high) {
            const std::uint64_t middle = low + (high - low) / 2;
            if (Offset(middle) >= static_cast<std::uint64_t>(offset)) {
                high = middle;
            } else {
                low = middle + 1;
            }
        }
        return low;
    }

    /// Calls `visit(step, offset)` for each step in [first, end).
    template <class Visit>
    void Walk(std::uint64_t first, std::uint64_t end, Visit visit) const {
        if (first >= end) return;
        std::uint64_t whole = first * m_rise / m_length;
        std::uint64_t rest = first * m_rise % m_length;
        for (std::uint64_t i = first; i < end; ++i) {
            visit(i, whole + (2 * rest >= m_length ? 1 : 0));
            rest += m_rise;
            if (rest >= m_length) {
                rest -= m_length;
                ++whole;
            }
        }
    }

  private:
    std::uint64_t m_length;
    std::uint64_t m_rise;
};

/// Distances walked from `start` in the given direction that lie in [0, limit): first and end.
std::array<std::int64_t, 2> DistancesInside(std::int64_t start, int direction, int limit) {
    const std::int64_t first = direction > 0 ? -start : start - (limit - 1);
    const std::int64_t end = direction > 0 ? limit - start : start + 1;
    return {std::max<std::int64_t>(0, first), std::max<std::int64_t>(0, end)};
}

void SetPixelValue(const Surface& surface, int x, int y, PixelWord value) {
    if (surface.depth == Depth::Mono) {
        StoreBit(surface.Row(y), x, value != 0);
    } else {
        StorePixel(surface.Row(y), x, value);
    }
}

/// Places discs along lines, and the rectangles between them, all turning the same way.
class WideOutline {
  public:
    WideOutline(const Surface& surface, std::int64_t width)
        : m_fill(surface),
          m_radius(static_cast<double>(width) / 2),
          m_window{-m_radius - 1, -m_radius - 1, surface.width + m_radius + 1, surface.height + m_radius + 1},
          m_surface{-1, -1, surface.width + 1.0, surface.height + 1.0} {}

    void AddDisc(const FixedPoint& centre) {
        const Point c = ToPoint(centre);
        if (IsBeside(c, c)) return;
        const double r = m_radius;
        const double h = kQuarterCircle * r;
        const Point right{c.x + r, c.y};
        const Point top{c.x, c.y - r};
        const Point left{c.x - r, c.y};
        const Point bottom{c.x, c.y + r};
        m_points.clear();
        FlattenCurve({right, {right.x, c.y - h}, {c.x + h, top.y}, top}, m_surface, m_points);
        FlattenCurve({top, {c.x - h, top.y}, {left.x, c.y - h}, left}, m_surface, m_points);
        FlattenCurve({left, {left.x, c.y + h}, {c.x - h, bottom.y}, bottom}, m_surface, m_points);
        FlattenCurve({bottom, {c.x + h, bottom.y}, {right.x, c.y + h}, right}, m_surface, m_points);
        m_fill.AddPolygon(m_points);
    }

    void AddSegment(const FixedPoint& from, const FixedPoint& to) {
        const Point a = ToPoint(from);
        const Point b = ToPoint(to);
        const double dx = b.x - a.x;
        const double dy = b.y - a.y;
        const double length = std::sqrt(dx * dx + dy * dy);
        if (length == 0 || IsBeside(a, b)) return;
        const FixedPoint side = RoundToFixed({-dy / length * m_radius, dx / length * m_radius});
        const FixedPoint corners[] = {{from.x + side.x, from.y + side.y},
                                      {to.x + side.x, to.y + side.y},
                                      {to.x - side.x, to.y - side.y},
                                      {from.x - side.x, from.y - side.y}};
        m_fill.AddPolygon(corners);
    }

    void Fill(PixelWord value) { m_fill.Fill(FillRule::Winding, value); }

  private:
    static Point ToPoint(const FixedPoint& p) {
        return {static_cast<double>(p.x) / static_cast<double>(kFixedOne),
                static_cast<double>(p.y) / static_cast<double>(kFixedOne)};
    }
    /// Whether a line between the two, wide as it is, passes the surface on one side.
    bool IsBeside(const Point& a, const Point& b) const {
        return std::max(a.x, b.x) < m_window.left || std::min(a.x, b.x) > m_window.right ||
               std::max(a.y, b.y) < m_window.top || std::min(a.y, b.y) > m_window.bottom;
    }

    PolygonFill m_fill;
    double m_radius;
    Window m_window;   ///< where centres matter
    Window m_surface;  ///< where outlines matter
    std::vector<FixedPoint> m_points;
};

POINT NearestPixel(const FixedPoint& p) {
    return {static_cast<LONG>(ToPixel(p.x)), static_cast<LONG>(ToPixel(p.y))};
}

}  // namespace

void DrawThinLine(const Surface& surface, const POINT& from, const POINT& to, PixelWord value) {
    const std::int64_t dx = std::int64_t{to.x} - from.x;
    const std::int64_t dy = std::int64_t{to.y} - from.y;
    const bool alongX = std::abs(dx) >= std::abs(dy);
    const std::int64_t length = alongX ? std::abs(dx) : std::abs(dy);
    if (length == 0) return;
    const int signX = dx < 0 ? -1 : 1;
    const int signY = dy < 0 ? -1 : 1;

    const Steps steps(static_cast<std::uint64_t>(length),
                      static_cast<std::uint64_t>(alongX ? std::abs(dy) : std::abs(dx)));
    const auto insideX = DistancesInside(from.x, signX, surface.width);
    const auto insideY = DistancesInside(from.y, signY, surface.height);
    const auto& along = alongX ? insideX : insideY;
    const auto& across = alongX ? insideY : insideX;
    if (across[0] >= across[1]) return;
    const std::uint64_t first =
        std::max(static_cast<std::uint64_t>(along[0]), steps.FirstReaching(across[0]));
    const std::uint64_t end =
        std::min({static_cast<std::uint64_t>(length), static_cast<std::uint64_t>(along[1]),
                  steps.FirstReaching(across[1])});
    steps.Walk(first, end, [&](std::uint64_t step, std::uint64_t offset) {
        const auto walkedX = static_cast<std::int64_t>(alongX ? step : offset);
        const auto walkedY = static_cast<std::int64_t>(alongX ? offset : step);
        SetPixelValue(surface, static_cast<int>(from.x + signX * walkedX),
                      static_cast<int>(from.y + signY * walkedY), value);
    });
}

void StrokeThin(const Surface& surface, std::span<const Figure> figures, PixelWord value) {
    for (const Figure& figure : figures) {
        POINT at = NearestPixel(figure.points.front());
        for (const FixedPoint& point : std::span(figure.points).subspan(1)) {
            const POINT next = NearestPixel(point);
            DrawThinLine(surface, at, next, value);
            at = next;
        }
        if (figure.closed) DrawThinLine(surface, at, NearestPixel(figure.points.front()), value);
    }
}

void StrokeWide(const Surface& surface, std::span<const Figure> figures, std::int64_t width,
                PixelWord value) {
    WideOutline outline(surface, width);
    for (const Figure& figure : figures) {
        for (std::size_t i = 0; i < figure.points.size(); ++i) {
            outline.AddDisc(figure.points[i]);
            if (i > 0) outline.AddSegment(figure.points[i - 1], figure.points[i]);
        }
        if (figure.closed) outline.AddSegment(figure.points.back(), figure.points.front());
    }
    outline.Fill(value);
}

}  // namespace tarvex::platform
