// The options of `tarvex render`.
#include <CLI/CLI.hpp>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <memory>
#include <string>

#include "tarvex/commands.h"
#include "tarvex/render_command.h"

namespace tarvex::app {

namespace {

constexpr const char* RENDER_HELP =
    "\nOn white, in the drawing's colours. The picture shows the drawing's page, or, when it names none, "
    "its\n"
    "outlines with a margin. Strokes have round ends and corners and no dashes; gradients and patterns\n"
    "are shown as grey; style sheets are not read; text, images and the like are left out, with a word on\n"
    "standard error.\n";

void RequirePng(const std::string& output) {
    std::string ending = std::filesystem::path(output).extension().string();
    std::transform(ending.begin(), ending.end(), ending.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    if (output != "-" && ending != ".png") throw CLI::ValidationError(output, "its ending is not .png");
}

}  // namespace

void AddRenderCommand(CLI::App& program, Action& action) {
    CLI::App* command = program.add_subcommand("render", "Draw a drawing to a picture");
    const auto options = std::make_shared<RenderOptions>();
    command->add_option("input", options->input, "SVG drawing; - is standard input")
        ->check(FileName())
        ->required()
        ->type_name("IN");
    command->add_option("-o,--output", options->output, "PNG file to write; - is standard output")
        ->check(FileName())
        ->required()
        ->type_name("OUT");
    command
        ->add_option("--width", options->width,
                     "Pixels across (default: " + std::to_string(LONGER_SIDE) + " along the longer side)")
        ->check(WholeNumber(1, MAX_RENDERED_WIDTH))
        ->type_name("PX");
    AddMaxPixels(*command, options->maxPixels);
    command->footer(RENDER_HELP);
    command->callback([options, &action] {
        RequirePng(options->output);
        action = [options] { return RunRender(*options); };
    });
}

}  // namespace tarvex::app
