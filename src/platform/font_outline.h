// Outlines of characters between the font reader and the native form: points in pixels, y upwards, curves
// quadratic.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "tarvex/platform.h"

namespace tarvex::platform {

enum class PointKind : std::uint8_t { OnCurve, Control };

struct OutlinePoint {
    double x = 0;
    double y = 0;
    PointKind kind = PointKind::OnCurve;
};

/// A closed contour, which begins on the curve. Midway between two control points in a row the curve has a
/// point that is not listed; after the last point it goes on to the first one.
using OutlineContour = std::vector<OutlinePoint>;
using Outline = std::vector<OutlineContour>;

/// Quadratic curves are allowed to stray this far, in pixels, from the cubic ones they replace.
inline constexpr double kCubicTolerance = 0.2;

/// Goes on from the contour's last point, which lies on the curve, along the cubic curve with control points
/// `a` and `b` to `end`, by quadratic curves.
void AppendCubic(OutlineContour& contour, OutlinePoint a, OutlinePoint b, OutlinePoint end);

struct OutlineBox {
    double left = 0;
    double bottom = 0;
    double right = 0;
    double top = 0;
};

/// The smallest box around the curves; none without contours.
std::optional<OutlineBox> BoxOf(const Outline& outline);

/// The outline turned counter-clockwise about the origin by tenths of a degree; quarter turns are exact.
Outline Turned(const Outline& outline, int tenths);

/// The polygons as GetGlyphOutlineW gives them; none when a coordinate does not fit.
std::optional<std::vector<std::byte>> NativeBytes(const Outline& outline);

}  // namespace tarvex::platform
