// Strokes as SVG: a stroke of one width per path, since SVG knows no other. JSON has the width at every node.
#include "tarvex/centerline_trace.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "tarvex/decimal.h"
#include "tarvex/grey.h"
#include "tarvex/imagetrace.h"
#include "tarvex/input.h"
#include "tarvex/json_writer.h"
#include "tarvex/output.h"
#include "tarvex/picture.h"
#include "tarvex/program_error.h"
#include "tarvex/progress.h"
#include "tarvex/svg_writer.h"

namespace tarvex::app {

namespace {

/// The strokes found, as the writers take them.
struct Strokes {
    CPolyPolyBezier contours;
    CPolyPolyWidth widths;

    int Count() const { return contours.GetSize(); }
    ContourView Nodes(int i) const {
        return {contours[i].GetData(), static_cast<std::size_t>(contours[i].GetSize())};
    }
    std::span<const double> Widths(int i) const {
        return {widths[i].GetData(), static_cast<std::size_t>(widths[i].GetSize())};
    }
    bool IsDot(int i) const {
        const ContourView nodes = Nodes(i);
        return nodes.size() == 2 && nodes[0].pt == nodes[1].pt;
    }
    /// The one width that does for all of a stroke: the middle one of those at its nodes.
    double Width(int i) const {
        const std::span<const double> all = Widths(i);
        std::vector<double> sorted(all.begin(), all.end());
        std::sort(sorted.begin(), sorted.end());
        return (sorted[(sorted.size() - 1) / 2] + sorted[sorted.size() / 2]) / 2;
    }
};

class StrokeSvg {
  public:
    StrokeSvg(const Strokes& strokes, int precision) : m_strokes(strokes), m_precision(precision) {}

    std::string Write(double width, double height) {
        const std::string w = Text(width);
        const std::string h = Text(height);
        m_out = "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" + w + "\" height=\"" + h +
                "\" viewBox=\"0 0 " + w + ' ' + h +
                "\">\n<g fill=\"none\" stroke=\"#000\" stroke-linecap=\"round\" stroke-linejoin=\"round\">\n";
        for (int i = 0; i < m_strokes.Count(); ++i) {
            if (m_strokes.IsDot(i)) {
                AddDot(i);
            } else {
                AddPath(i);
            }
        }
        m_out += "</g>\n</svg>\n";
        return std::move(m_out);
    }

  private:
    std::string Text(double value) const {
        return std::string(DecimalText(ToUnits(value, m_precision), m_precision, LeadingZero::Kept).View());
    }

    void AddDot(int i) {
        const DPOINT at = m_strokes.Nodes(i)[0].pt;
        m_out += "<circle cx=\"" + Text(at.x) + "\" cy=\"" + Text(at.y) + "\" r=\"" +
                 Text(m_strokes.Width(i) / 2) + "\" fill=\"#000\" stroke=\"none\"/>\n";
    }

    void AddPath(int i) {
        const ContourView nodes = m_strokes.Nodes(i);
        const std::string data = SvgPathData({&nodes, 1}, m_precision);
        if (data.empty()) return;
        m_out += "<path stroke-width=\"" + Text(m_strokes.Width(i)) + "\" d=\"" + data + "\"/>\n";
    }

    const Strokes& m_strokes;
    int m_precision;
    std::string m_out;
};

std::string Write(const TraceOptions& options, const GreyView& picture, const Strokes& strokes) {
    const double width = picture.width;
    const double height = picture.height;
    if (options.format == Format::Svg) return StrokeSvg(strokes, options.precision).Write(width, height);
    std::vector<ContourView> contours;
    std::vector<std::span<const double>> widths;
    for (int i = 0; i < strokes.Count(); ++i) {
        contours.push_back(strokes.Nodes(i));
        widths.push_back(strokes.Widths(i));
    }
    return WriteJson({width, height, options.precision}, contours, widths);
}

CentreLineOptions Settle(const TraceOptions& options, const GreyView& picture) {
    CentreLineOptions settled;
    settled.threshold = options.threshold ? *options.threshold : OtsuThreshold(CountLevels(picture));
    settled.side = FindShapeSide(picture, *settled.threshold);
    if (options.invert) settled.side = settled.side == ShapeSide::dark ? ShapeSide::light : ShapeSide::dark;
    if (options.speckPixels) settled.speckPixels = *options.speckPixels;
    if (options.minBranch) settled.minBranch = *options.minBranch;
    return settled;
}

}  // namespace

int RunCenterlineTrace(const TraceOptions& options) {
    CheckOutput(options.output, options.input);
    Picture picture = ReadPicture(options.input, {options.maxPixels});
    const Ground ground = FindGround(picture);
    const GreyPicture grey(std::move(picture), ground);
    CentreLineOptions settings = Settle(options, grey.View());
    Strokes strokes;
    {
        Progress progress("tracing");
        settings.progress = [&](double fraction) {
            progress.Report(fraction);
            return true;
        };
        CImageTrace(grey.View()).DoTrace(settings, strokes.contours, strokes.widths);
    }
    if (strokes.Count() == 0) {
        const char* part = *settings.side == ShapeSide::dark ? "dark" : "light";
        throw ProgramError(ExitStatus::NoResult, InputName(options.input),
                           std::string("no line found: nothing large enough is ") + part + " at threshold " +
                               std::to_string(*settings.threshold));
    }
    WriteOutput(options.output, Write(options, grey.View(), strokes));
    return 0;
}

}  // namespace tarvex::app
