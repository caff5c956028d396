// Bezier contours as JSON, for programs.
//
//     {"width": 640, "height": 480, "contours": [
//       {"closed": true, "nodes": [[cp1x, cp1y, x, y, cp2x, cp2y], ...]}, ...]}
//
// Width and height are the picture's, in pixels; a node is its incoming control point, its anchor and
// its outgoing control point, in pixels from the top left. The curve between two nodes is the cubic
// (anchor, outgoing control point, next incoming control point, next anchor). A closed contour ends
// with its first anchor again. Strokes also have "widths": [w, ...], one for each node.
#pragma once

#include <span>
#include <string>

#include "tarvex/svg_writer.h"

namespace tarvex::app {

struct JsonOptions {
    double width = 0;
    double height = 0;
    int precision = 2;  ///< decimals, 0..MAX_PRECISION
};

/// A whole JSON document, in the form above. NaN is written as 0, infinities as ±10^15 units of the
/// last decimal.
/// `widths` are the contours' widths, or empty.
std::string WriteJson(const JsonOptions& options, std::span<const ContourView> contours,
                      std::span<const std::span<const double>> widths = {});

}  // namespace tarvex::app
