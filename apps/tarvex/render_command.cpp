// What part of the plane is drawn, how large, and in which order: each element's fill, then its stroke.
#include "tarvex/render_command.h"

#include <algorithm>
#include <cmath>

#include "tarvex/canvas.h"
#include "tarvex/input.h"
#include "tarvex/measure.h"
#include "tarvex/output.h"
#include "tarvex/png_writer.h"
#include "tarvex/program_error.h"
#include "tarvex/svg_reader.h"

namespace tarvex::app {

namespace {

/// Around the outlines of a drawing that says nothing of its page, as a part of the longer side.
constexpr double MARGIN = 0.02;
constexpr int MAX_SAMPLES = 8;
/// Pictures of more than this are drawn with fewer samples a pixel: 128 MiB.
constexpr double USUAL_SAMPLES = 32.0 * 1024 * 1024;

/// The outlines of nothing but lines fill nothing, and as a whole may be flat; never empty.
DRECT PageOf(const SvgDocument& drawing) {
    if (drawing.page) return *drawing.page;
    std::optional<DRECT> frame;
    for (const SvgElement& element : drawing.elements) {
        if (element.isShown || drawing.elements.size() == 1) Unite(frame, FrameOf(element.outline));
    }
    if (!frame) return {0, 1, 0, 1};
    const double side = std::max(frame->right - frame->left, frame->bottom - frame->top);
    const double margin = side > 0 ? MARGIN * side : 1;
    return {frame->left - margin, frame->right + margin, frame->top - margin, frame->bottom + margin};
}

struct Size {
    int width;
    int height;
};

Size SizeOf(const DRECT& page, const RenderOptions& options) {
    const double wide = page.right - page.left;
    const double high = page.bottom - page.top;
    const double width = options.width ? *options.width : LONGER_SIDE * std::min(1.0, wide / high);
    const double columns = std::max(1.0, std::round(width));
    const double rows = std::max(1.0, std::round(width * high / wide));
    const auto most = static_cast<double>(std::min<std::uint64_t>(options.maxPixels, 500'000'000));
    if (!(columns * rows <= most)) {
        throw ProgramError(ExitStatus::NoResult, InputName(options.input),
                           "the picture would have more than " +
                               std::to_string(static_cast<std::uint64_t>(most)) + " pixels");
    }
    return {static_cast<int>(columns), static_cast<int>(rows)};
}

int SamplesFor(const Size& size) {
    const double pixels = static_cast<double>(size.width) * size.height;
    return std::clamp(static_cast<int>(std::sqrt(USUAL_SAMPLES / pixels)), 1, MAX_SAMPLES);
}

/// In pixels; 0 for no stroke.
double StrokeWidth(const SvgElement& element, double scale) {
    if (!element.stroke.isPainted) return 0;
    const auto& lengths = element.stroke.lengths[0];
    const double own = lengths && !lengths->empty() ? lengths->front() : 1;
    return element.stroke.isScaled ? own * element.scale * scale : own;
}

void PaintElement(const SvgElement& element, double scale, Canvas& canvas) {
    const SvgPaint& paint = element.paint;
    const auto fill = paint.Fill();
    const FillRule rule = paint.IsEvenOdd() ? FillRule::EvenOdd : FillRule::NonZero;
    if (fill && !element.isLines) canvas.Fill(element.outline, *fill, rule);
    const double width = StrokeWidth(element, scale);
    const auto stroke = paint.Stroke();
    if (stroke && width > 0) canvas.Stroke(element.outline, *stroke, width);
}

}  // namespace

int RunRender(const RenderOptions& options) {
    CheckOutput(options.output, options.input);
    const SvgDocument drawing = ReadSvg(options.input);
    if (drawing.elements.empty()) {
        const std::string why = drawing.remarks.empty() ? "" : " (" + drawing.remarks + ")";
        throw ProgramError(ExitStatus::NoResult, InputName(options.input),
                           "the drawing has no outlines" + why);
    }
    const DRECT page = PageOf(drawing);
    const Size size = SizeOf(page, options);
    const double scale = size.width / (page.right - page.left);
    Canvas canvas(size.width, size.height, SamplesFor(size));
    canvas.SetView({page.left, page.top}, scale);
    for (const SvgElement& element : drawing.elements) {
        if (element.isShown) PaintElement(element, scale, canvas);
    }
    WriteOutput(options.output, EncodePng(canvas.Average()));
    ReportRemarks(options.input, drawing.remarks);
    return 0;
}

}  // namespace tarvex::app
