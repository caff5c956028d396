// The options of `tarvex shape`.
#include <CLI/CLI.hpp>

#include <algorithm>
#include <iterator>
#include <map>
#include <memory>
#include <string>

#include "tarvex/argument_values.h"
#include "tarvex/batch.h"
#include "tarvex/commands.h"
#include "tarvex/decimal.h"
#include "tarvex/shape_command.h"

namespace tarvex::app {

namespace {

constexpr const char* SHAPE_HELP = R"(
Operations:
  difference    what A fills and B does not
  intersection  what both fill
  xor           what one of them fills, not both (not with --raster)
  union         what either fills

Each drawing counts as one shape: the areas of its filled elements, united. Both are taken in their own
user space, as though drawn on one page. Open paths are closed by a line, as a fill closes them. Elements
without a fill count only where no element has one; strokes, text and images do not count.

Curves stay curves: the result consists of pieces of A's and B's. Where shaping works in steps of a tenth
of a millimetre, small drawings would suffer: so both are enlarged (or reduced), by a power of two, to
8192 to 16384 units across, combined, and scaled back.

--fill-a and --fill-b: "drawn" is each element's own fill-rule; "alternate" takes what an odd number of
an element's contours surrounds; "winding" fills every contour by itself, so that nested ones make no holes.

--raster combines pixels, 2000 along the longer side, and traces the result: coarser, but indifferent to
damaged outlines. Under --raster, "alternate" counts the contours of all elements together.

Of several A each is combined with the one B.

The result is one path with the colour of A's first filled element, on A's page, which grows to hold it.
)";

struct ShapeArguments {
    ShapeOptions options;
    FileArguments files;
    std::optional<std::string> format;
};

void ParseOperation(const std::string& text, ShapingOperation& operation) {
    const auto* found = std::find(std::begin(SHAPING_NAMES), std::end(SHAPING_NAMES), text);
    if (found == std::end(SHAPING_NAMES)) {
        throw CLI::ValidationError(
            "OPERATION", "'" + text + "' is none; there are difference, intersection, xor and union");
    }
    operation = static_cast<ShapingOperation>(found - std::begin(SHAPING_NAMES));
}

void AddFill(CLI::App& command, const std::string& name, const std::string& which, ShapeFill& fill) {
    const auto parse = [name, &fill](const std::string& text) {
        static const std::map<std::string, ShapeFill> fills = {{"drawn", ShapeFill::AsDrawn},
                                                               {"alternate", ShapeFill::Alternate},
                                                               {"winding", ShapeFill::Winding}};
        const auto found = fills.find(text);
        if (found == fills.end())
            throw CLI::ValidationError(name, "'" + text + "' is neither drawn nor alternate nor winding");
        fill = found->second;
    };
    command.add_option_function<std::string>(name, parse, "What is inside " + which + " (default drawn)")
        ->type_name("drawn|alternate|winding");
}

FilePlan Complete(ShapeArguments& arguments) {
    ShapeOptions& options = arguments.options;
    std::vector<std::string>& inputs = arguments.files.inputs;
    options.b.path = inputs.back();
    inputs.pop_back();
    if (options.b.path == "-" && (inputs.size() > 1 || inputs.front() == "-"))
        throw CLI::ValidationError("B", "standard input can be one of the drawings, not both");
    FilePlan plan = PlanFiles(arguments.files, OUTLINE_FORMATS, arguments.format);
    options.format = static_cast<Format>(plan.format);
    if (options.byRaster && options.operation == SHAPING_XOR) {
        throw CLI::ValidationError("--raster",
                                   "rasters have no xor: leave it out, or combine two differences");
    }
    return plan;
}

}  // namespace

void AddShapeCommand(CLI::App& program, Action& action) {
    CLI::App* command = program.add_subcommand("shape", "Combine what two drawings fill");
    const auto arguments = std::make_shared<ShapeArguments>();
    ShapeOptions& options = arguments->options;
    command
        ->add_option_function<std::string>(
            "operation", [&options](const std::string& text) { ParseOperation(text, options.operation); },
            "What to do, see below")
        ->required()
        ->type_name("difference|intersection|xor|union");
    AddInputs(*command, arguments->files, "SVG drawings: one A or many, and B", 2);
    AddOutput(*command, arguments->files, "SVG or JSON file");
    command->add_option("--format", arguments->format, "Kind of output (default: by OUT's ending, SVG for -)")
        ->type_name("svg|json");
    command->add_flag("--raster", options.byRaster, "Combine pixels instead of curves")
        ->disable_flag_override();
    AddFill(*command, "--fill-a", "A", options.a.fill);
    AddFill(*command, "--fill-b", "B", options.b.fill);
    AddAutoOrInteger(*command, "--precision", options.precision, 0, MAX_PRECISION,
                     "Decimals of coordinates (default auto: by the drawing's size)");
    command->footer(std::string(SHAPE_HELP) + MANY_FILES_HELP);
    command->callback([arguments, &action] {
        action = [arguments, plan = Complete(*arguments)] {
            return RunFiles("shaping", plan, [&](const FileTask& task) {
                ShapeOptions ofTask = arguments->options;
                ofTask.a.path = task.input;
                ofTask.output = task.output;
                RunShape(ofTask);
            });
        };
    });
}

}  // namespace tarvex::app
