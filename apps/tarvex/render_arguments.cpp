// The options of `tarvex render`.
#include <CLI/CLI.hpp>

#include <memory>
#include <string>

#include "tarvex/argument_values.h"
#include "tarvex/batch.h"
#include "tarvex/commands.h"
#include "tarvex/render_command.h"

namespace tarvex::app {

namespace {

constexpr const char* RENDER_HELP =
    "\nOn white, in the drawing's colours. The picture shows the drawing's page, or, when it names none, "
    "its\n"
    "outlines with a margin. Strokes have round ends and corners and no dashes; gradients are\n"
    "shown in the mean of their colours, patterns as grey; style sheets are not read; text, images and the\n"
    "like are left out, with a word on standard error.\n";

struct RenderArguments {
    RenderOptions options;
    FileArguments files;
};

}  // namespace

void AddRenderCommand(CLI::App& program, Action& action) {
    CLI::App* command = program.add_subcommand("render", "Draw a drawing to a picture");
    const auto arguments = std::make_shared<RenderArguments>();
    RenderOptions& options = arguments->options;
    AddInputs(*command, arguments->files, "SVG drawing");
    AddOutput(*command, arguments->files, "PNG file");
    command
        ->add_option("--width", options.width,
                     "Pixels across (default: " + std::to_string(LONGER_SIDE) + " along the longer side)")
        ->check(WholeNumber(1, MAX_RENDERED_WIDTH))
        ->type_name("PX");
    AddMaxPixels(*command, options.maxPixels);
    command->footer(std::string(RENDER_HELP) + MANY_FILES_HELP);
    command->callback([arguments, &action] {
        action = [arguments, plan = PlanFiles(arguments->files, PNG_FORMAT)] {
            return RunFiles("rendering", plan, arguments->options, RunRender);
        };
    });
}

}  // namespace tarvex::app
