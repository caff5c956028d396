// Bezier contours as SVG, in few bytes.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "tarvex/records.h"

namespace tarvex::app {

/// The nodes of one contour; closed when its last anchor equals its first.
using ContourView = std::span<const BPOINT>;

enum class Paint { Fill, Stroke };

/// Even-odd: what an odd number of contours surrounds. Non-zero: what they surround more often in one
/// direction than in the other, as glyphs are made for.
enum class FillRule { EvenOdd, NonZero };

/// What becomes one <path>: contours painted together, filled or stroked.
struct SvgShape {
    std::vector<ContourView> contours;
    Paint paint = Paint::Fill;
    std::string colour = "#000";
    double strokeWidth = 1;
    FillRule rule = FillRule::EvenOdd;
};

struct SvgOptions {
    double width = 0;  ///< of the drawing, in pixels; also its view box
    double height = 0;
    int precision = 2;  ///< decimals, 0..MAX_PRECISION
    double left = 0;    ///< of the view box
    double top = 0;
};

/// A whole SVG document. Every coordinate is within half a unit of the last decimal of the one given,
/// and roundings do not add up along a contour: what is written relative to the current point is
/// relative to the point as it was rounded. Contours that vanish by rounding are left out; NaN is
/// written as 0.
std::string WriteSvg(const SvgOptions& options, std::span<const SvgShape> shapes);

/// The data of a path (its `d` attribute) for these contours.
std::string SvgPathData(std::span<const ContourView> contours, int precision);

}  // namespace tarvex::app
