// The options of `tarvex region`.
#include <CLI/CLI.hpp>

#include <memory>
#include <string>

#include "tarvex/batch.h"
#include "tarvex/commands.h"
#include "tarvex/region_command.h"

namespace tarvex::app {

namespace {

constexpr int MOST_TOLERANCE = 442;  ///< black and white are 441.7 apart
constexpr int MOST_COORDINATE = 2'000'000'000;

constexpr const char* REGION_HELP =
    "\nThe region is what hangs together around the seed, side by side. Its outlines run through the\n"
    "centres of the pixels at its edge; smoothing first grows it by a pixel and closes small holes and\n"
    "notches. With --breakup it becomes columns with inclinations, as by breakup, and OUT may also be\n"
    "a PNG or, with --format satin, satin columns for Ink/Stitch.\n";

struct RegionArguments {
    RegionOptions options;
    FileArguments files;
    std::string seed;
    std::optional<std::string> format;
    bool isRough = false;
};

/// Takes "X,Y" apart.
void TakeSeed(RegionArguments& arguments) {
    const std::size_t comma = arguments.seed.find(',');
    const auto isWhole = WholeNumber(0, MOST_COORDINATE);
    std::string x = arguments.seed.substr(0, comma);
    std::string y = comma == std::string::npos ? "" : arguments.seed.substr(comma + 1);
    if (!isWhole(x).empty() || !isWhole(y).empty())
        throw CLI::ValidationError("--seed",
                                   "'" + arguments.seed + "' is not a pixel's column and row, as in 12,34");
    arguments.options.seedX = std::stoi(x);
    arguments.options.seedY = std::stoi(y);
}

void Complete(RegionArguments& arguments) {
    TakeSeed(arguments);
    RegionOptions& options = arguments.options;
    options.isSmooth = !arguments.isRough;
    if (!options.isBrokenUp && (options.format == StitchFormat::Satin || options.format == StitchFormat::Png))
        throw CLI::ValidationError("--format", "outlines are svg or json; the others need --breakup");
}

}  // namespace

void AddRegionCommand(CLI::App& program, Action& action) {
    CLI::App* command = program.add_subcommand("region", "Outline the colour region around a pixel");
    const auto arguments = std::make_shared<RegionArguments>();
    RegionOptions& options = arguments->options;
    AddInputs(*command, arguments->files, "PNG, JPEG, BMP or PNM picture");
    command->add_option("--seed", arguments->seed, "The pixel to start from, from the top left")
        ->required()
        ->type_name("X,Y");
    AddOutput(*command, arguments->files, "SVG or JSON file");
    command
        ->add_option("--tolerance", options.tolerance,
                     "How far colours may be from the seed's, as a distance in red, green and blue; above 0 "
                     "the mean of 3 x 3 pixels counts")
        ->check(WholeNumber(0, MOST_TOLERANCE))
        ->type_name("0..442")
        ->capture_default_str();
    command->add_flag("--no-smooth", arguments->isRough, "Outline the region as it is, pixel by pixel")
        ->disable_flag_override();
    command->add_flag("--breakup", options.isBrokenUp, "Give its stitch regions instead of its outlines")
        ->disable_flag_override();
    command
        ->add_option("--format", arguments->format,
                     "Kind of output, satin and png with --breakup (default: by OUT's ending, SVG for -)")
        ->type_name("svg|json|satin|png");
    AddMaxPixels(*command, options.maxPixels);
    command->footer(std::string(REGION_HELP) + MANY_FILES_HELP);
    command->callback([arguments, &action] {
        const FilePlan plan = PlanFiles(arguments->files, STITCH_FORMATS, arguments->format);
        arguments->options.format = static_cast<StitchFormat>(plan.format);
        Complete(*arguments);
        action = [arguments, plan] {
            if (plan.tasks.size() > 1) arguments->options.interrupts = BreakUpInterrupts::AtOnce;
            return RunFiles("outlining", plan, arguments->options, RunRegion);
        };
    });
}

}  // namespace tarvex::app
