// From a picture to painted regions: reduce, label, trace, write.
#include "tarvex/color_trace.h"

#include <algorithm>
#include <vector>

#include "tarvex/color_picture.h"
#include "tarvex/colortrace.h"
#include "tarvex/input.h"
#include "tarvex/output.h"
#include "tarvex/picture.h"
#include "tarvex/program_error.h"
#include "tarvex/progress.h"
#include "tarvex/svg_writer.h"

namespace tarvex::app {

namespace {

RGBQUAD Quad(const Rgba& c) { return {c.blue, c.green, c.red, 0}; }

/// What TraceRegions takes of a picture.
struct Labelled {
    std::vector<std::uint16_t> labels;
    std::vector<RGBQUAD> colors;
    std::vector<RGBQUAD> source;
    std::vector<std::uint8_t> opacity;
};

Labelled LabelledOf(const IndexedPicture& reduced, const Picture& picture, int mostColors) {
    Labelled labelled;
    for (std::size_t i = 0; i < reduced.OpaqueColors(); ++i)
        labelled.colors.push_back(Quad(reduced.palette[i].color));
    std::vector<std::uint16_t> labels;
    labels.reserve(reduced.indices.size());
    for (const std::uint8_t index : reduced.indices)
        labels.push_back(index < reduced.OpaqueColors() ? index : NO_LABEL);
    labelled.source.reserve(reduced.indices.size());
    labelled.opacity.reserve(reduced.indices.size());
    for (int y = 0; y < picture.height; ++y) {
        for (int x = 0; x < picture.width; ++x) {
            const Rgba pixel = picture.At(x, y);
            labelled.source.push_back(Quad(pixel));
            labelled.opacity.push_back(pixel.alpha);
        }
    }
    labelled.labels = RestoreThinFeatures(reduced.width, labelled.source, labels, labelled.colors,
                                          static_cast<std::size_t>(mostColors));
    return labelled;
}

SvgShape ShapeOf(const PaintedRegions& regions, const RGBQUAD& color) {
    SvgShape shape;
    shape.colour = ColorText({color.rgbRed, color.rgbGreen, color.rgbBlue, 255});
    shape.rule = FillRule::NonZero;
    for (int i = 0; i < regions.outlines.GetSize(); ++i) {
        const auto& contour = regions.outlines[i];
        shape.contours.emplace_back(contour.GetData(), static_cast<std::size_t>(contour.GetSize()));
    }
    return shape;
}

}  // namespace

int RunColorTrace(const ColorTraceOptions& options) {
    CheckOutput(options.output, options.input);
    const Picture picture = ReadPicture(options.input, {options.maxPixels});
    ReduceSettings settings;
    settings.colors = options.colors;
    const IndexedPicture reduced = ReduceColors(picture, settings, InputName(options.input));
    const Labelled labelled = LabelledOf(reduced, picture, options.colors);
    RegionOptions regionOptions;
    regionOptions.style = options.cutout ? RegionStyle::cutout : RegionStyle::stacked;
    if (options.minPoints) regionOptions.minPoints = *options.minPoints;
    regionOptions.source = labelled.source;
    regionOptions.colors = labelled.colors;
    regionOptions.opacity = labelled.opacity;
    std::vector<PaintedRegions> regions;
    {
        Progress progress("tracing");
        regionOptions.progress = [&](double fraction) {
            progress.Report(fraction);
            return true;
        };
        regions = TraceRegions({labelled.labels.data(), reduced.width, reduced.height, reduced.width},
                               regionOptions);
    }
    if (regions.empty())
        throw ProgramError(ExitStatus::NoResult, InputName(options.input), "no region is large enough");
    std::vector<SvgShape> shapes;
    for (const PaintedRegions& painted : regions)
        shapes.push_back(ShapeOf(painted, labelled.colors[painted.label]));
    WriteOutput(options.output, WriteSvg({static_cast<double>(reduced.width),
                                          static_cast<double>(reduced.height), options.precision},
                                         shapes));
    return 0;
}

}  // namespace tarvex::app
