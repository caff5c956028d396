// Writes a drawing back whose outlines have changed.
//
// Each element becomes a path in its place, in the root's user space. All of its attributes stay but
// those of its geometry and its transform, which the new data contains. So do all other elements,
// comments included, except those that were left out when reading. Groups lose their transforms, and
// nested svg elements become groups.
//
// Strokes keep their look: where the element's units were not the root's, or the operation changed the
// size, stroke widths and dashes are set on the element, multiplied by the change of scale (the square
// root of that of areas); non-scaling strokes are not. Strokes that a style sheet sets stay as they are.
//
// Elements of single lines, which have nothing to fill, get style="fill:none", or else a fill would show
// where they have been bent.
//
// The page grows, and never shrinks, to hold what is shown: its view box becomes the smallest one around
// the old one and the outlines with half their strokes' widths, and width and height grow in proportion,
// so that the unit keeps its size. A drawing without a page gets the outlines' frame as its view box.
#pragma once

#include <optional>
#include <string>

#include "tarvex/svg_reader.h"

namespace tarvex::app {

struct RewriteOptions {
    std::optional<int> precision;  ///< decimals; by the drawing's size (`PrecisionFor`) when not given
    double scale = 1;              ///< of what was done to the outlines since they were read
};

/// Decimals with which a size is told to one part in 20,000 at least: 2 to 9.
int PrecisionFor(double size);

/// The drawing's frame: the page and all shown outlines.
std::optional<DRECT> PageWithOutlines(const SvgDocument& drawing, double scale);

/// The document as text, UTF-8. Changes the XML, so it is called once. Raises SvgError when
/// coordinates have reached MAX_SVG_COORDINATE times 1000, or are no numbers.
std::string WriteDrawing(SvgDocument& drawing, const RewriteOptions& options);

}  // namespace tarvex::app
