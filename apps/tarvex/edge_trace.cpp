// Edges as strokes one pixel wide, in the picture's coordinates: a pixel's middle lies at its column and row
// and a half.
#include "tarvex/edge_trace.h"

#include <utility>
#include <vector>

#include "tarvex/edges.h"
#include "tarvex/grey.h"
#include "tarvex/input.h"
#include "tarvex/json_writer.h"
#include "tarvex/output.h"
#include "tarvex/picture.h"
#include "tarvex/program_error.h"
#include "tarvex/svg_writer.h"
#include "tarvex/view.h"

namespace tarvex::app {

namespace {

bool IsDot(const CArray<BPOINT, BPOINT>& nodes) { return nodes.GetSize() == 2 && nodes[0].pt == nodes[1].pt; }

CPolyPolyBezier FindEdges(const GreyView& picture, const TraceOptions& options) {
    EdgeOptions settings;
    settings.method = options.detector;
    if (options.sigma) settings.sigma = *options.sigma;
    settings.thresholds = options.steps;
    CEdgeDetect edges;
    CPolyPolyBezier curves;
    if (!edges.Detect(picture, settings) || !edges.Output(curves)) throw std::bad_alloc();
    CView3D toMiddles;
    toMiddles.Translate(-0.5, -0.5, 0);
    curves.ApplyTransformation(toMiddles);
    return curves;
}

}  // namespace

int RunEdgeTrace(const TraceOptions& options) {
    CheckOutput(options.output, options.input);
    Picture picture = ReadPicture(options.input, {options.maxPixels});
    const Ground ground = FindGround(picture);
    const GreyPicture grey(std::move(picture), ground);
    const CPolyPolyBezier curves = FindEdges(grey.View(), options);
    std::vector<ContourView> contours;
    for (int i = 0; i < curves.GetSize(); ++i) {
        if (!IsDot(curves[i])) contours.emplace_back(curves[i].begin(), curves[i].end());
    }
    if (contours.empty()) {
        throw ProgramError(ExitStatus::NoResult, InputName(options.input),
                           "no edge found: nothing changes by enough; try lower --steps");
    }
    const double width = grey.View().width;
    const double height = grey.View().height;
    SvgShape shape;
    shape.paint = Paint::Stroke;
    shape.contours = contours;
    WriteOutput(options.output, options.format == Format::Json
                                    ? WriteJson({width, height, options.precision}, contours)
                                    : WriteSvg({width, height, options.precision}, {&shape, 1}));
    return 0;
}

}  // namespace tarvex::app
