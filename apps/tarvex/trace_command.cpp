#include "tarvex/trace_command.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "tarvex/centerline_trace.h"
#include "tarvex/contours.h"
#include "tarvex/edge_trace.h"
#include "tarvex/grey.h"
#include "tarvex/input.h"
#include "tarvex/json_writer.h"
#include "tarvex/output.h"
#include "tarvex/picture.h"
#include "tarvex/picture_formats.h"
#include "tarvex/program_error.h"
#include "tarvex/progress.h"
#include "tarvex/svg_writer.h"

namespace tarvex::app {

namespace {

/// The enlarged picture's pixels count like any other's. Raises PictureError when they are too many.
void CheckEnlarged(const Picture& picture, int detail, const PictureLimits& limits) {
    const auto times = static_cast<std::uint64_t>(detail);
    CheckPictureSize(static_cast<std::uint64_t>(picture.width) * times,
                     static_cast<std::uint64_t>(picture.height) * times, limits,
                     "the picture enlarged " + std::to_string(detail) + " times");
}

/// Icons are enlarged, so that what is a pixel or two wide has points enough to show its shape.
int DetailForSize(const Picture& picture, std::uint64_t maxPixels) {
    const int longer = std::max(picture.width, picture.height);
    const int wanted = longer <= 64 ? 3 : longer <= 128 ? 2 : 1;
    const auto pixels =
        static_cast<std::uint64_t>(picture.width) * static_cast<std::uint64_t>(picture.height);
    for (int detail = wanted; detail > 1; --detail) {
        if (pixels * static_cast<std::uint64_t>(detail * detail) <= maxPixels) return detail;
    }
    return 1;
}

/// How many times to enlarge the picture, within the limit of pixels.
int SettleDetail(const TraceOptions& options, const Picture& picture) {
    if (!options.detail) return DetailForSize(picture, options.maxPixels);
    try {
        CheckEnlarged(picture, *options.detail, {options.maxPixels});
    } catch (const PictureError& error) {
        throw ProgramError(ExitStatus::File, InputName(options.input), error.what());
    }
    return *options.detail;
}

OutlineOptions Settle(const TraceOptions& options, const GreyView& picture, int detail) {
    OutlineOptions settled;
    settled.threshold = options.threshold ? *options.threshold : OtsuThreshold(CountLevels(picture));
    settled.side = FindShapeSide(picture, settled.threshold);
    if (options.invert) settled.side = settled.side == ShapeSide::dark ? ShapeSide::light : ShapeSide::dark;
    if (options.minPoints) settled.minPoints = *options.minPoints;
    settled.detail = detail;
    return settled;
}

std::vector<ContourView> Views(const CPolyPolyBezier& outlines) {
    std::vector<ContourView> views;
    views.reserve(static_cast<std::size_t>(outlines.GetSize()));
    for (int i = 0; i < outlines.GetSize(); ++i) {
        const auto& contour = outlines[i];
        views.emplace_back(contour.GetData(), static_cast<std::size_t>(contour.GetSize()));
    }
    return views;
}

std::string Write(const TraceOptions& options, const GreyView& picture, const CPolyPolyBezier& outlines) {
    const double width = picture.width;
    const double height = picture.height;
    if (options.format == Format::Json) return WriteJson({width, height, options.precision}, Views(outlines));
    SvgShape shape;
    shape.contours = Views(outlines);
    return WriteSvg({width, height, options.precision}, {&shape, 1});
}

}  // namespace

int RunTrace(const TraceOptions& options) {
    if (options.mode == TraceMode::Centerline) return RunCenterlineTrace(options);
    if (options.mode == TraceMode::Edges) return RunEdgeTrace(options);
    CheckOutput(options.output, options.input);
    Picture picture = ReadPicture(options.input, {options.maxPixels});
    const int detail = SettleDetail(options, picture);
    const Ground ground = FindGround(picture);
    const GreyPicture grey(std::move(picture), ground);
    OutlineOptions settings = Settle(options, grey.View(), detail);
    CPolyPolyBezier outlines;
    {
        Progress progress("tracing");
        settings.progress = [&](double fraction) {
            progress.Report(fraction);
            return true;
        };
        TraceOutlines(grey.View(), settings, outlines);
    }
    if (outlines.IsEmpty()) {
        const char* part = settings.side == ShapeSide::dark ? "dark" : "light";
        throw ProgramError(ExitStatus::NoResult, options.input,
                           std::string("no outline found: nothing large enough is ") + part +
                               " at threshold " + std::to_string(settings.threshold));
    }
    WriteOutput(options.output, Write(options, grey.View(), outlines));
    return 0;
}

}  // namespace tarvex::app
