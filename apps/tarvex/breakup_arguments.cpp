// The options of `tarvex breakup`.
#include <CLI/CLI.hpp>

#include <charconv>
#include <memory>
#include <string>

#include "tarvex/batch.h"
#include "tarvex/breakup_command.h"
#include "tarvex/commands.h"

namespace tarvex::app {

namespace {

constexpr double LEAST_MILLIMETRES = 0.1;
constexpr double MOST_MILLIMETRES = 100'000;

constexpr const char* BREAKUP_HELP =
    "\nA picture's shape is found as by trace; of a drawing every filled element is a shape by itself.\n"
    "Each is cut where its strokes meet, into columns with two rails and inclinations between them.\n"
    "Formats: svg, to look at, with layers; satin, columns for Ink/Stitch, wide ones as fills; json,\n"
    "everything, for programs; png, a picture of it. Ctrl-C stops after the pass at work, of several\n"
    "files at once.\n";

/// A length above 0; NaN, which comparisons let through, is none.
CLI::Validator Millimetres() {
    const auto check = [](const std::string& text) {
        double value = 0;
        const char* end = text.data() + text.size();
        const auto [stopped, error] = std::from_chars(text.data(), end, value);
        if (error == std::errc{} && stopped == end && value >= LEAST_MILLIMETRES && value <= MOST_MILLIMETRES)
            return std::string();
        return "'" + text + "' is not a length from 0.1 to 100000 mm";
    };
    return CLI::Validator(check, "");
}

struct BreakUpArguments {
    BreakUpOptions options;
    FileArguments files;
    std::optional<std::string> format;
};

}  // namespace

void AddBreakUpCommand(CLI::App& program, Action& action) {
    CLI::App* command =
        program.add_subcommand("breakup", "Break filled shapes up into columns that can be stitched");
    const auto arguments = std::make_shared<BreakUpArguments>();
    BreakUpOptions& options = arguments->options;
    AddInputs(*command, arguments->files, "Picture or SVG drawing");
    AddOutput(*command, arguments->files, "SVG, JSON or PNG file");
    command->add_option("--format", arguments->format, "Kind of output (default: by OUT's ending, SVG for -)")
        ->type_name("svg|satin|json|png");
    AddExtraJson(*command, arguments->files, "--json", "Also write everything to this JSON file");
    command
        ->add_option("--mm-width", options.millimetreWidth,
                     "Real width of the page in millimetres (default: what the drawing says, or 96 pixels to "
                     "the inch)")
        ->check(Millimetres())
        ->type_name("MM");
    command->add_option("--max-satin-mm", options.mostSatin, "In satin, make a fill of wider columns")
        ->check(Millimetres())
        ->type_name("MM")
        ->capture_default_str();
    command
        ->add_flag("!--no-complexity-check", options.checkComplexity,
                   "Do not refuse shapes with very detailed outlines around large areas")
        ->disable_flag_override();
    AddMaxPixels(*command, options.maxPixels);
    command->footer(std::string(BREAKUP_HELP) + MANY_FILES_HELP);
    command->callback([arguments, &action] {
        const FilePlan plan = PlanFiles(arguments->files, STITCH_FORMATS, arguments->format);
        arguments->options.format = static_cast<StitchFormat>(plan.format);
        action = [arguments, plan] {
            return RunFiles("breaking up", plan, [&](const FileTask& task) {
                BreakUpOptions ofTask = arguments->options;
                ofTask.input = task.input;
                ofTask.output = task.output;
                ofTask.json = task.extra;
                ofTask.interrupts = task.isAlone ? BreakUpInterrupts::AfterPass : BreakUpInterrupts::AtOnce;
                RunBreakUp(ofTask);
            });
        };
    });
}

}  // namespace tarvex::app
