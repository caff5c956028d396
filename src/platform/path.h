// Paths: what is recorded between BeginPath and EndPath, and its flattening into polylines.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "tarvex/platform.h"

namespace tarvex::platform {

/// A coordinate in sixteenths of a pixel. Whole numbers of pixels are pixel centres.
using Fixed = std::int64_t;
inline constexpr Fixed kFixedOne = 16;

struct FixedPoint {
    Fixed x;
    Fixed y;
};

constexpr FixedPoint ToFixed(const POINT& p) { return {p.x * kFixedOne, p.y * kFixedOne}; }

/// The nearest pixel, halves upwards.
constexpr std::int64_t ToPixel(Fixed v) { return (v + kFixedOne / 2) >> 4; }

/// A point in pixels.
struct Point {
    double x;
    double y;
};

/// The nearest sixteenths, halves upwards, saturating.
FixedPoint RoundToFixed(const Point& p);

/// The pixels that matter to whoever flattens: curves wholly to one side of them need not be followed.
struct Window {
    double left, top, right, bottom;
};

/// A run of straight lines.
struct Figure {
    std::vector<FixedPoint> points;
    bool closed = false;  ///< by a line from the last point to the first, which is not repeated
};

/// Appends the polyline of a cubic curve, without its first point.
///
/// A piece is halved until it is flat: until both second differences of its control points are at
/// most 1/16 pixel in x and in y, when its chord strays from it by less than 1/10 pixel. Its end is
/// then rounded to 1/16 pixel. A piece whose control points all lie beyond the same side of the
/// window becomes its chord, which encloses the same pixels of the window under either fill rule.
void FlattenCurve(const std::array<Point, 4>& control, const Window& window, std::vector<FixedPoint>& points);

class Path {
  public:
    /// The next line starts a new figure.
    void BreakFigure() { m_figure = Current::None; }
    /// A line that continues the figure, or starts one at `from`.
    void AddLine(const POINT& from, const POINT& to);
    /// A figure of its own.
    void AddPolyline(std::span<const POINT> points);
    /// A figure of its own, of 3n + 1 points.
    void AddCurves(std::span<const POINT> points);
    /// Closes the last figure, unless that was done or broken off.
    void CloseFigure();

    std::vector<Figure> Flatten(const Window& window) const;

  private:
    enum class Verb : std::uint8_t { Move, Line, Curve, Close };
    enum class Current { None, Open, Complete };

    void Reserve(std::size_t verbs, std::size_t points);

    std::vector<Verb> m_verbs;
    std::vector<POINT> m_points;
    Current m_figure = Current::None;
};

}  // namespace tarvex::platform
