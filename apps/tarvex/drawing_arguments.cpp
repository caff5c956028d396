// The options of the commands on drawings: `tarvex transform`, `tarvex warp` and `tarvex info`.
#include <CLI/CLI.hpp>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <memory>
#include <numbers>
#include <string>
#include <string_view>
#include <vector>

#include "tarvex/argument_values.h"
#include "tarvex/batch.h"
#include "tarvex/commands.h"
#include "tarvex/decimal.h"
#include "tarvex/info_command.h"
#include "tarvex/svg_reader.h"
#include "tarvex/transform_command.h"
#include "tarvex/warp_command.h"

namespace tarvex::app {

namespace {

constexpr const char* WARP_HELP = R"(Types (y is bent, x stays; --amount below 0 bends the other way):

  1 dent-top      2 dent-bottom   3 waist         4 bulge-top     5 bulge-bottom
  .           .   +-----------+   .           .      .-----.      +-----------+
  |'-._____.-'|   |           |   |'-._____.-'|   .-'       '-.   |           |
  |           |   | .-'"""'-. |   | .-'"""'-. |   |           |   '-.       .-'
  +-----------+   '           '   '           '   +-----------+      '-----'

  6 barrel        7 sag           8 arch          9 taper-left    10 taper-right
     .-----.      .           .      .-----.               __.+   +.__
  .-'       '-.   |'-._____.-'|   .-'       '-.   .___---''   |   |   ''---___.
  '-.       .-'   '-.       .-'   | .-'"""'-. |   '---...__   |   |   __...---'
     '-----'         '-----'      '           '            ''-+   +-''
)";

constexpr const char* TRANSFORM_HELP =
    "The drawing is first scaled, then turned, both about the centre of its outlines, then moved.\n"
    "x points right and y down; angles are degrees, and a positive one turns clockwise. With three\n"
    "angles the drawing is turned in space, about z (the plane's own axis), then y, then x, and\n"
    "projected straight onto the page.\n";

constexpr const char* OUT_HELP =
    "\nThe page grows to hold the result and never shrinks. What draws but is no outline (text, use,\n"
    "image) is left out, with a word on standard error.\n";

template <class Options>
struct DrawingArguments {
    Options options;
    FileArguments files;
};

/// Adds what changing a drawing always takes.
template <class Options>
void AddDrawingOptions(CLI::App& command, DrawingArguments<Options>& arguments) {
    AddInputs(command, arguments.files, "SVG drawing");
    AddOutput(command, arguments.files, "SVG file");
    AddAutoOrInteger(command, "--precision", arguments.options.precision, 0, MAX_PRECISION,
                     "Decimals of coordinates (default auto: by the drawing's size)");
}

/// Sets what happens when all options are read.
template <class Options>
void SetDrawingAction(CLI::App& command, Action& action, const char* what,
                      const std::shared_ptr<DrawingArguments<Options>>& arguments,
                      int (*run)(const Options&)) {
    command.callback([what, arguments, run, &action] {
        action = [what, arguments, run, plan = PlanFiles(arguments->files, SVG_FORMAT)] {
            return RunFiles(what, plan, arguments->options, run);
        };
    });
}

void AddText(CLI::App& command, const std::string& name, const std::string& type,
             const std::string& description, const std::function<void(const std::string&)>& parse) {
    command.add_option_function<std::string>(name, parse, description)->type_name(type);
}

}  // namespace

void AddTransformCommand(CLI::App& program, Action& action) {
    CLI::App* command = program.add_subcommand("transform", "Scale, turn and move a drawing");
    const auto arguments = std::make_shared<DrawingArguments<TransformOptions>>();
    TransformOptions* const options = &arguments->options;
    AddDrawingOptions(*command, *arguments);
    AddText(*command, "--rotate", "DEG|AX,AY,AZ", "Turn in the plane, or in space",
            [options](const std::string& text) {
                const auto n = Numbers("--rotate", text, 1, 3, "an angle, nor three angles AX,AY,AZ");
                if (n.size() == 2) Refuse("--rotate", text, "an angle, nor three angles AX,AY,AZ");
                options->angleZ = Radians(n.back());
                options->angleX = n.size() == 3 ? Radians(n[0]) : 0;
                options->angleY = n.size() == 3 ? Radians(n[1]) : 0;
            });
    AddText(*command, "--scale", "S|SX,SY", "Factor of size; negative ones mirror",
            [options](const std::string& text) {
                const auto n = Numbers("--scale", text, 1, 2, "a factor, nor two factors SX,SY");
                options->scaleX = n.front();
                options->scaleY = n.back();
                if (options->scaleX == 0 || options->scaleY == 0)
                    Refuse("--scale", text, "a factor other than 0");
            });
    AddText(*command, "--translate", "X,Y", "Move right and down", [options](const std::string& text) {
        const auto n = Numbers("--translate", text, 2, 2, "two lengths X,Y");
        options->move = {n[0], n[1]};
    });
    command->footer(std::string(TRANSFORM_HELP) + OUT_HELP + MANY_FILES_HELP);
    SetDrawingAction(*command, action, "transforming", arguments, RunTransform);
}

void AddWarpCommand(CLI::App& program, Action& action) {
    CLI::App* command = program.add_subcommand("warp", "Bend a drawing between two arcs");
    const auto arguments = std::make_shared<DrawingArguments<WarpOptions>>();
    WarpOptions* const options = &arguments->options;
    AddDrawingOptions(*command, *arguments);
    command
        ->add_option_function<std::string>(
            "--type", [options](const std::string& text) { options->type = WarpType("--type", text); },
            "How to bend: a number or a name, see below")
        ->required()
        ->type_name(WARP_VALUE);
    command
        ->add_option_function<std::string>(
            "--amount",
            [options](const std::string& text) {
                const Amount amount = WarpAmount("--amount", text);
                options->amount = amount.value;
                options->isPercent = amount.isPercent;
            },
            "How far: a length in the drawing's units, or a percentage of its height")
        ->required()
        ->type_name("D|P%");
    command->footer(std::string(WARP_HELP) + OUT_HELP + MANY_FILES_HELP);
    SetDrawingAction(*command, action, "warping", arguments, RunWarp);
}

void AddInfoCommand(CLI::App& program, Action& action) {
    CLI::App* command =
        program.add_subcommand("info", "Measure a drawing, or name a picture's size and format");
    const auto arguments = std::make_shared<DrawingArguments<InfoOptions>>();
    InfoOptions& options = arguments->options;
    AddInputs(*command, arguments->files, "SVG drawing, or PNG, JPEG, BMP or PNM picture");
    command->add_flag("--json", options.asJson, "Print JSON, a line for each file")->disable_flag_override();
    AddMaxPixels(*command, options.maxPixels);
    command->footer(
        "Area is that of all contours together, those that run the other way counted off; winding is\n"
        "as seen on the screen. Lengths are in the drawing's units.\n"
        "\n"
        "Several files come out in the order in which they are named; those that fail are told on standard\n"
        "error and do not stop the others. The exit status is 0 when all are done, otherwise 3.\n");
    command->callback([arguments, &action] {
        action = [arguments, plan = PlanFiles(arguments->files)] {
            return RunFiles("measuring", plan, [&](const FileTask& task) {
                InfoOptions ofTask = arguments->options;
                ofTask.input = task.input;
                std::string text = InfoText(ofTask);
                const bool isTable = std::count(text.begin(), text.end(), '\n') > 1;
                return task.isAlone || !isTable ? text : text + '\n';
            });
        };
    });
}

}  // namespace tarvex::app
