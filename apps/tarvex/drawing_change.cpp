#include "tarvex/drawing_change.h"

#include "tarvex/input.h"
#include "tarvex/measure.h"
#include "tarvex/output.h"
#include "tarvex/program_error.h"
#include "tarvex/svg_rewriter.h"

namespace tarvex::app {

namespace {

std::optional<DRECT> OutlinesFrame(const SvgDocument& drawing) {
    std::optional<DRECT> shown;
    std::optional<DRECT> all;
    for (const SvgElement& element : drawing.elements) {
        const auto frame = FrameOf(element.outline);
        Unite(all, frame);
        if (element.isShown) Unite(shown, frame);
    }
    return shown ? shown : all;
}

std::string Remarks(const SvgDocument& drawing) {
    std::string remarks = drawing.remarks;
    const auto add = [&remarks](const char* what) {
        if (!remarks.empty()) remarks += "; ";
        remarks += what;
    };
    if (drawing.hasReferences) add("gradients, patterns, clips, masks and filters are not changed along");
    if (drawing.hasStyleSheet) add("lengths of strokes in the style sheet are not changed along");
    return remarks;
}

}  // namespace

int ChangeDrawing(const DrawingChange& change) {
    CheckOutput(change.output, change.input);
    SvgDocument drawing = ReadSvg(change.input);
    const auto frame = OutlinesFrame(drawing);
    if (!frame) {
        const std::string why = drawing.remarks.empty() ? "" : " (" + drawing.remarks + ")";
        throw ProgramError(ExitStatus::NoResult, InputName(change.input),
                           "the drawing has no outlines" + why);
    }
    RewriteOptions options;
    options.precision = change.precision;
    options.scale = change.apply(drawing, *frame);
    std::string text;
    try {
        text = WriteDrawing(drawing, options);
    } catch (const SvgError& error) {
        throw ProgramError(ExitStatus::NoResult, InputName(change.input), error.what());
    }
    WriteOutput(change.output, text);
    ReportRemarks(change.input, Remarks(drawing));
    return 0;
}

}  // namespace tarvex::app
