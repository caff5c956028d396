// Shaping serves documents in tenths of a millimetre; drawings come in any unit. So both are scaled to a
// size that suits it, by a power of two, which changes no coordinate's bits, and back.
#include "tarvex/shape_command.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <span>

#include "tarvex/input.h"
#include "tarvex/json_writer.h"
#include "tarvex/measure.h"
#include "tarvex/output.h"
#include "tarvex/program_error.h"
#include "tarvex/svg_rewriter.h"
#include "tarvex/svg_writer.h"

namespace tarvex::app {

namespace {

/// One of the two drawings.
struct Source {
    SvgDocument drawing;
    std::vector<const SvgElement*> elements;
    DRECT frame;
};

Source ReadSource(const std::string& path) {
    Source source;
    source.drawing = ReadSvg(path);
    source.elements = FilledElements(source.drawing);
    std::optional<DRECT> frame;
    for (const SvgElement* element : source.elements) Unite(frame, FrameOf(element->outline));
    if (!frame) {
        const std::string& remarks = source.drawing.remarks;
        throw ProgramError(ExitStatus::NoResult, InputName(path),
                           "nothing in the drawing can be filled" +
                               (remarks.empty() ? std::string() : " (" + remarks + ")"));
    }
    source.frame = *frame;
    return source;
}

double ScaleFor(const DRECT& frame) {
    const double size = std::max(frame.right - frame.left, frame.bottom - frame.top);
    if (!(size > 0)) return 1;
    const double exponent = std::floor(std::log2(SHAPING_FRAME / size));
    return std::exp2(std::clamp(exponent, -60.0, 60.0));
}

/// The shape to combine. The raster path has fill modes of its own, so that its operands can stay as they
/// are.
CPolyPolyBezier OperandOf(const Source& source, ShapeFill fill, bool byRaster, double scale) {
    if (!byRaster || fill == ShapeFill::AsDrawn) return FilledShape(source.elements, fill, scale);
    CPolyPolyBezier shape = ContoursOf(source.elements);
    Scale(shape, scale);
    return shape;
}

int FillModeOf(ShapeFill fill) { return fill == ShapeFill::Winding ? WINDING : ALTERNATE; }

/// A op B in the drawings' units. Raises ProgramError when nothing is left.
CPolyPolyBezier Combined(const ShapeOptions& options, const Source& a, const Source& b) {
    const double scale = ScaleFor(United(a.frame, b.frame));
    CPolyPolyBezier result = OperandOf(a, options.a.fill, options.byRaster, scale);
    CPolyPolyBezier other = OperandOf(b, options.b.fill, options.byRaster, scale);
    const bool isThere =
        options.byRaster ? PolyPolyBezierBmpShaping(options.operation, result, other,
                                                    FillModeOf(options.a.fill), FillModeOf(options.b.fill))
                         : PolyPolyBezierShaping(options.operation, result, other);
    if (!isThere) {
        const std::string name = SHAPING_NAMES[options.operation];
        throw ProgramError(ExitStatus::NoResult, options.output,
                           "not written: the " + name + " of " + InputName(options.a.path) + " and " +
                               InputName(options.b.path) + " is empty");
    }
    Scale(result, 1 / scale);
    return result;
}

DRECT PageOf(const Source& a, const CPolyPolyBezier& result) {
    const DRECT frame = FrameOf(result).value_or(a.frame);
    return a.drawing.page ? United(*a.drawing.page, frame) : frame;
}

std::string ColourOf(const Source& source) {
    for (const SvgElement* element : source.elements) {
        const auto fill = element->paint.Fill();
        if (!fill) continue;
        std::array<char, 8> text;
        std::snprintf(text.data(), text.size(), "#%02x%02x%02x", fill->red, fill->green, fill->blue);
        const std::string colour = text.data();
        return colour == "#000000" ? "#000" : colour;
    }
    return "#000";
}

std::string Written(const ShapeOptions& options, const Source& a, const CPolyPolyBezier& result) {
    const DRECT page = PageOf(a, result);
    const double width = page.right - page.left;
    const double height = page.bottom - page.top;
    const int precision = options.precision.value_or(PrecisionFor(std::max(width, height)));
    std::vector<ContourView> contours;
    for (int k = 0; k < result.GetCount(); ++k)
        contours.emplace_back(result[k].GetData(), static_cast<std::size_t>(result[k].GetSize()));
    if (options.format == Format::Json) return WriteJson({width, height, precision}, contours);
    SvgShape shape;
    shape.contours = std::move(contours);
    shape.colour = ColourOf(a);
    return WriteSvg({width, height, precision, page.left, page.top}, {&shape, 1});
}

}  // namespace

int RunShape(const ShapeOptions& options) {
    CheckOutput(options.output, options.a.path);
    CheckOutput(options.output, options.b.path);
    const Source a = ReadSource(options.a.path);
    const Source b = ReadSource(options.b.path);
    const CPolyPolyBezier result = Combined(options, a, b);
    WriteOutput(options.output, Written(options, a, result));
    ReportRemarks(options.a.path, a.drawing.remarks);
    ReportRemarks(options.b.path, b.drawing.remarks);
    return 0;
}

}  // namespace tarvex::app
