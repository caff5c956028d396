// A design that was broken up, to look at and for programs.
#pragma once

#include <string>

#include "tarvex/stitch_design.h"

namespace tarvex::app {

/// An SVG drawing with the layers regions (filled in alternating colours), rails, inclinations and cuts, and
/// what could not be broken up in a layer of its own.
std::string WriteStitchSvg(const StitchDesign& design);

/// The same drawing as a PNG picture, its longer side about `side` pixels.
std::string WriteStitchPng(const StitchDesign& design, int side);

/// JSON:
///     {"corner": [0, 0], "width": 640, "height": 480, "millimetresPerUnit": 0.2646, "shapes": [{"colour":
///     "#000000",
///       "islands": [{"result": "done", "area": 5210.5, "pixelsPerUnit": 1.3,
///         "regions": [{"ring": false, "rails": [[[x, y], ...], [[x, y], ...]],
///                      "inclinations": [[i, j], ...]}, ...],
///         "cuts": [[x1, y1, x2, y2], ...]}, ...]}, ...]}
/// Coordinates are the input's; an inclination is the index of a point on the first rail and of one on the
/// second. The rails of a ring are closed: they repeat their first point.
std::string WriteStitchJson(const StitchDesign& design);

}  // namespace tarvex::app
