// The options of `tarvex trace`.
#include <CLI/CLI.hpp>

#include <map>
#include <memory>
#include <string>

#include "tarvex/argument_values.h"
#include "tarvex/batch.h"
#include "tarvex/color_trace.h"
#include "tarvex/commands.h"
#include "tarvex/decimal.h"
#include "tarvex/trace_command.h"

namespace tarvex::app {

namespace {

constexpr int MOST_DETAIL = 16;
constexpr int MOST_MIN_POINTS = 1'000'000;
constexpr int MOST_SPECK_PIXELS = 256;

/// What the parser collects: the options themselves, and words that become options at the end.
struct TraceArguments {
    TraceOptions options;
    FileArguments files;
    std::string mode = "outline";
    std::optional<std::string> format;
    std::optional<int> colors;
    bool cutout = false;
};

TraceMode ModeOf(const TraceArguments& arguments) {
    static const std::map<std::string, TraceMode> modes = {{"outline", TraceMode::Outline},
                                                           {"centerline", TraceMode::Centerline},
                                                           {"edges", TraceMode::Edges},
                                                           {"color", TraceMode::Color}};
    const auto found = modes.find(arguments.mode);
    if (found != modes.end()) return found->second;
    throw CLI::ValidationError(
        "--mode", "'" + arguments.mode + "' is not a mode; there are outline, color, centerline and edges");
}

/// Options that the mode would not look at are refused, not ignored.
void CheckOptionsOfMode(const TraceOptions& options) {
    const auto refuse = [](bool isGiven, const char* name, const char* mode) {
        if (isGiven) throw CLI::ValidationError(name, std::string("is for --mode ") + mode);
    };
    if (options.mode != TraceMode::Centerline) {
        refuse(options.speckPixels.has_value(), "--speck", "centerline");
        refuse(options.minBranch.has_value(), "--min-branch", "centerline");
    }
    const bool isColor = options.mode == TraceMode::Color;
    refuse(options.minPoints.has_value() && options.mode != TraceMode::Outline && !isColor, "--min-points",
           "outline or color");
    if (options.mode != TraceMode::Outline) {
        refuse(options.detail.has_value(), "--detail", "outline");
    }
    if (options.mode == TraceMode::Edges || isColor) {
        refuse(options.threshold.has_value(), "--threshold", "outline or centerline");
        refuse(options.invert, "--invert", "outline or centerline");
    }
    if (options.mode != TraceMode::Edges) {
        refuse(options.detector != EdgeMethod::Canny, "--detector", "edges");
        refuse(options.sigma.has_value(), "--sigma", "edges");
        refuse(options.steps.has_value(), "--steps", "edges");
    }
}

/// Adds the options of `--mode edges`.
void AddEdgeOptions(CLI::App& trace, const std::shared_ptr<TraceArguments>& arguments) {
    const auto add = [&](const std::string& name, const std::string& type, const std::string& description,
                         const std::function<void(const std::string&)>& parse) {
        trace.add_option_function<std::string>(name, parse, description)->type_name(type);
    };
    add("--detector", "canny|shen-castan", "edges: smooth lines (default canny), or more of fine detail",
        [arguments](const std::string& text) {
            if (text != "canny" && text != "shen-castan") Refuse("--detector", text, "canny or shen-castan");
            arguments->options.detector = text == "canny" ? EdgeMethod::Canny : EdgeMethod::ShenCastan;
        });
    add("--sigma", "PX", "edges: how far to smooth the picture first (default 1.4)",
        [arguments](const std::string& text) {
            const double sigma = Numbers("--sigma", text, 1, 1, "a number").front();
            if (sigma < CEdgeDetect::LEAST_SIGMA || sigma > CEdgeDetect::MOST_SIGMA)
                Refuse("--sigma", text, "a number from 0.3 to 100");
            arguments->options.sigma = sigma;
        });
    add("--steps", "LOW,HIGH",
        "edges: steps of grey that go on with an edge and that make one (default: found from the noise)",
        [arguments](const std::string& text) {
            const std::string wanted = "two levels LOW,HIGH from 0 to 255";
            const auto steps = Numbers("--steps", text, 2, 2, wanted);
            if (steps[0] < 0 || steps[0] > steps[1] || steps[1] > 255) Refuse("--steps", text, wanted);
            arguments->options.steps = EdgeThresholds{steps[0], steps[1]};
        });
}

void Complete(TraceArguments& arguments) {
    arguments.options.mode = ModeOf(arguments);
    CheckOptionsOfMode(arguments.options);
    const bool isColor = arguments.options.mode == TraceMode::Color;
    if (arguments.colors && !isColor) throw CLI::ValidationError("--colors", "is for --mode color");
    if (arguments.cutout && !isColor) throw CLI::ValidationError("--cutout", "is for --mode color");
    if (isColor && arguments.options.format != Format::Svg)
        throw CLI::ValidationError("--mode", "color is written as svg only");
}

int RunTask(const TraceArguments& arguments, const FileTask& task) {
    TraceOptions options = arguments.options;
    options.input = task.input;
    options.output = task.output;
    if (options.mode != TraceMode::Color) return RunTrace(options);
    ColorTraceOptions color;
    color.input = options.input;
    color.output = options.output;
    if (arguments.colors) color.colors = *arguments.colors;
    color.cutout = arguments.cutout;
    color.minPoints = options.minPoints;
    color.precision = options.precision;
    color.maxPixels = options.maxPixels;
    return RunColorTrace(color);
}

}  // namespace

void AddTraceCommand(CLI::App& program, Action& action) {
    CLI::App* trace = program.add_subcommand(
        "trace", "Trace a picture to Bezier outlines, regions of colour, centre lines or edges");
    const auto arguments = std::make_shared<TraceArguments>();
    TraceOptions& options = arguments->options;
    AddInputs(*trace, arguments->files, "PNG, JPEG, BMP or PNM picture");
    AddOutput(*trace, arguments->files, "SVG or JSON file");
    trace
        ->add_option("--mode", arguments->mode,
                     "What to trace: outline, the outlines of shapes; color, regions of every colour; "
                     "centerline, the strokes of a line drawing, "
                     "each along its middle and with its width; edges, the lines where light meets dark")
        ->type_name("outline|color|centerline|edges")
        ->capture_default_str();
    trace->add_option("--colors", arguments->colors, "color: the most colours (default 8)")
        ->check(WholeNumber(1, 256))
        ->type_name("1..256");
    trace
        ->add_flag("--cutout", arguments->cutout,
                   "color: end regions at their borders instead of letting them run on beneath others")
        ->disable_flag_override();
    AddAutoOrInteger(*trace, "--threshold", options.threshold, 0, 255,
                     "Grey level up to which a pixel is dark (default auto: found from the picture)");
    trace->add_flag("--invert", options.invert, "Trace the other side: what is taken for the ground")
        ->disable_flag_override();
    trace
        ->add_option(
            "--min-points", options.minPoints,
            "Leave out outlines or regions of N pixel sides or fewer (default 6: specks of up to two pixels)")
        ->check(WholeNumber(0, MOST_MIN_POINTS))
        ->type_name("N");
    AddAutoOrInteger(*trace, "--detail", options.detail, 1, MOST_DETAIL,
                     "Enlarge the picture this many times first (default auto: by its size)");
    trace
        ->add_option("--speck", options.speckPixels,
                     "centerline: leave out specks of N pixels or fewer and fill such pinholes (default 4)")
        ->check(WholeNumber(0, MOST_SPECK_PIXELS))
        ->type_name("N");
    trace
        ->add_option(
            "--min-branch", options.minBranch,
            "centerline: leave out branches that stick out of a stroke by less than N pixels (default 2)")
        ->check(CLI::Range(0.0, 1e6).description(""))
        ->type_name("N");
    AddEdgeOptions(*trace, arguments);
    trace->add_option("--format", arguments->format, "Kind of output (default: by OUT's ending, SVG for -)")
        ->type_name("svg|json");
    trace->add_option("--precision", options.precision, "Decimals of coordinates")
        ->check(WholeNumber(0, MAX_PRECISION))
        ->type_name("0..9")
        ->capture_default_str();
    AddMaxPixels(*trace, options.maxPixels);
    trace->callback([arguments, &action] {
        const FilePlan plan = PlanFiles(arguments->files, OUTLINE_FORMATS, arguments->format);
        arguments->options.format = static_cast<Format>(plan.format);
        Complete(*arguments);
        action = [arguments, plan] {
            return RunFiles("tracing", plan, [&](const FileTask& task) { RunTask(*arguments, task); });
        };
    });
}

}  // namespace tarvex::app
