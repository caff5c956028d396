// The area that a drawing's elements fill, as one shape.
#pragma once

#include <optional>

#include "tarvex/svg_reader.h"

namespace tarvex::app {

enum class ShapeFill {
    AsDrawn,    ///< by each element's own fill rule
    Alternate,  ///< inside an element is what an odd number of its contours surrounds
    Winding,    ///< each contour is filled by itself, so nested ones are solid
};

/// The contours of what a drawing fills: its shown elements, without single lines, and without those that
/// have no fill unless no element has one.
std::vector<const SvgElement*> FilledElements(const SvgDocument& drawing);

/// All of the elements' contours, as they are.
CPolyPolyBezier ContoursOf(const std::vector<const SvgElement*>& elements);

/// The united areas of the elements, such that inside is what an odd number of contours surrounds. `scale`
/// multiplies all coordinates first; a power of two keeps their bits. An element that needs no work (its
/// contours neither cross nor overlap others) keeps its nodes. Empty when there is no area.
CPolyPolyBezier FilledShape(const std::vector<const SvgElement*>& elements, ShapeFill fill, double scale);

/// Multiplies all coordinates.
void Scale(CPolyPolyBezier& shape, double factor);

}  // namespace tarvex::app
