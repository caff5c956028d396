// The options of `tarvex text`.
#include <CLI/CLI.hpp>

#include <map>
#include <memory>
#include <numbers>

#include "tarvex/argument_values.h"
#include "tarvex/commands.h"
#include "tarvex/decimal.h"
#include "tarvex/text_command.h"
#include "tarvex/warp_command.h"

namespace tarvex::app {

namespace {

constexpr double MOST_SIZE = 100'000;

constexpr const char* HELP =
    "The text is UTF-8; \\n in it begins a new line and \\\\ is a backslash. With - it is read from "
    "standard\n"
    "input, as it is. Lengths are pixels. A font that is not installed is replaced by the nearest one, and "
    "a\n"
    "character that the font lacks comes from another font. Letters are set side by side, from left to "
    "right:\n"
    "there are no ligatures, and no shaping of scripts that need it.\n"
    "\n"
    "  tarvex text 'Hello' -o hello.svg --font 'DejaVu Serif' --size 120 --bold\n"
    "  tarvex text 'First\\nSecond' -o lines.svg --align center --letter-spacing 2\n"
    "  tarvex text 'Round and round' -o round.svg --ellipse 200,120\n"
    "  tarvex text 'At the bottom' -o bottom.svg --ellipse 200,200 --at 180 --inside\n"
    "  tarvex text 'Bent' -o bent.svg --warp arch --amount 30%\n"
    "\n"
    "--ellipse takes the half axes RX,RY of the baseline (one number for a circle). Text stands on it "
    "around\n"
    "the place --at, degrees clockwise from the top; with --inside it runs the other way, feet outwards. "
    "The\n"
    "text begins, is centred or ends there as --align says (centred unless told otherwise). The types of "
    "--warp\n"
    "are those of \"tarvex warp --help\".\n";

using Set = std::function<void(const std::string&)>;

void AddValue(CLI::App& command, const std::string& name, const std::string& type,
              const std::string& description, const Set& set) {
    command.add_option_function<std::string>(name, set, description)->type_name(type);
}

double PositiveNumber(const std::string& option, const std::string& text, double most) {
    const std::string wanted = "a number above 0 and up to " + std::to_string(static_cast<long>(most));
    const double value = Numbers(option, text, 1, 1, wanted).front();
    if (!(value > 0 && value <= most)) Refuse(option, text, wanted);
    return value;
}

TextAlign ParseAlign(const std::string& text) {
    const std::map<std::string, TextAlign> names = {{"left", TextAlign::Left},
                                                    {"center", TextAlign::Centre},
                                                    {"centre", TextAlign::Centre},
                                                    {"right", TextAlign::Right}};
    const auto found = names.find(text);
    if (found == names.end()) Refuse("--align", text, "left, center or right");
    return found->second;
}

void ParseEllipse(const std::string& text, TextOptions& options) {
    const auto radii = Numbers("--ellipse", text, 1, 2, "a radius, nor two of them RX,RY");
    for (const double r : radii) {
        if (!(r > 0)) Refuse("--ellipse", text, "a radius above 0, nor two of them RX,RY");
    }
    options.ellipse = EllipseBaseline{radii.front(), radii.back(), 0, TextSide::Outside};
}

/// What only makes sense beside another option, until all are read.
struct Pending {
    std::shared_ptr<TextOptions> options = std::make_shared<TextOptions>();
    std::optional<TextAlign> align;
    std::optional<double> at;
    bool isInside = false;
    std::optional<int> warpType;
    std::optional<Amount> warpAmount;
    bool hasNoKerning = false;
};

void Finish(Pending& pending) {
    TextOptions& options = *pending.options;
    FormatIndex(SVG_FORMAT, std::nullopt, options.output);
    if ((pending.at || pending.isInside) && !options.ellipse)
        throw CLI::ValidationError(pending.at ? "--at" : "--inside", "it goes with --ellipse");
    if (pending.warpType.has_value() != pending.warpAmount.has_value())
        throw CLI::ValidationError("--warp", "--warp and --amount go together");
    options.align = pending.align.value_or(options.ellipse ? TextAlign::Centre : TextAlign::Left);
    options.style.kerning = pending.hasNoKerning ? Kerning::Off : Kerning::On;
    if (options.ellipse) {
        options.ellipse->angle = Radians(pending.at.value_or(0));
        options.ellipse->side = pending.isInside ? TextSide::Inside : TextSide::Outside;
    }
    if (pending.warpType)
        options.warp = TextWarp{*pending.warpType, pending.warpAmount->value, pending.warpAmount->isPercent};
}

void AddStyleOptions(CLI::App& command, const std::shared_ptr<TextOptions>& options) {
    TextStyle& style = options->style;
    command.add_option("--font", style.family, "Family of the font")
        ->type_name("FAMILY")
        ->capture_default_str();
    AddValue(command, "--size", "PX", "Height of the em (default 72)", [options](const std::string& text) {
        options->style.size = PositiveNumber("--size", text, MOST_SIZE);
    });
    command.add_flag("--bold", style.isBold, "Bold letters")->disable_flag_override();
    command.add_flag("--italic", style.isItalic, "Italic letters")->disable_flag_override();
    AddValue(command, "--letter-spacing", "PX", "Space to add between letters; negative takes away",
             [options](const std::string& text) {
                 options->style.letterSpacing = Numbers("--letter-spacing", text, 1, 1, "a length").front();
             });
    AddValue(command, "--line-height", "K", "Distance of lines, as a multiple of the font's own (default 1)",
             [options](const std::string& text) {
                 options->style.lineHeight = PositiveNumber("--line-height", text, 1000);
             });
    command.add_option("--color", options->colour, "Colour, as SVG writes it")
        ->type_name("COLOR")
        ->capture_default_str();
}

}  // namespace

void AddTextCommand(CLI::App& program, Action& action) {
    CLI::App* command = program.add_subcommand("text", "Outlines of a text in a font");
    const auto pending = std::make_shared<Pending>();
    const std::shared_ptr<TextOptions> options = pending->options;
    command->add_option("text", options->text, "The text; - is standard input")
        ->required()
        ->type_name("STRING");
    command->add_option("-o,--output", options->output, "SVG file to write; - is standard output")
        ->check(FileName())
        ->required()
        ->type_name("OUT");
    AddStyleOptions(*command, options);
    command->add_flag("--no-kerning", pending->hasNoKerning, "Do not move pairs of letters together")
        ->disable_flag_override();
    AddValue(*command, "--align", "left|center|right", "Where lines are aligned",
             [pending](const std::string& text) { pending->align = ParseAlign(text); });
    AddValue(*command, "--ellipse", "RX[,RY]", "Set the text along an ellipse",
             [options](const std::string& text) { ParseEllipse(text, *options); });
    AddValue(*command, "--at", "DEG", "Where on the ellipse (default 0, the top)",
             [pending](const std::string& text) {
                 pending->at = Numbers("--at", text, 1, 1, "an angle").front();
             });
    command->add_flag("--inside", pending->isInside, "Turn the letters' feet outwards")
        ->disable_flag_override();
    AddValue(*command, "--warp", WARP_VALUE, "Bend the whole text: a number or a name",
             [pending](const std::string& text) { pending->warpType = WarpType("--warp", text); });
    AddValue(*command, "--amount", "D|P%", "How far to bend: pixels, or a percentage of the text's height",
             [pending](const std::string& text) { pending->warpAmount = WarpAmount("--amount", text); });
    AddAutoOrInteger(*command, "--precision", options->precision, 0, MAX_PRECISION,
                     "Decimals of coordinates (default auto: by the size)");
    command->footer(HELP);
    command->callback([pending, options, &action] {
        Finish(*pending);
        action = [options] { return RunText(*options); };
    });
}

}  // namespace tarvex::app
