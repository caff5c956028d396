// `tarvex reduce`: its options, and its two files.
#include "tarvex/reduce_command.h"

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include <cmath>
#include <memory>
#include <vector>

#include "tarvex/argument_values.h"
#include "tarvex/batch.h"
#include "tarvex/colors.h"
#include "tarvex/commands.h"
#include "tarvex/input.h"
#include "tarvex/output.h"
#include "tarvex/picture.h"
#include "tarvex/png_writer.h"
#include "tarvex/program_error.h"

namespace tarvex::app {

namespace {

double Rounded(double value) { return std::round(value * 10'000) / 10'000; }

nlohmann::ordered_json Described(const PaletteColor& entry, double pixels) {
    const Rgba& color = entry.color;
    int c = 0, m = 0, y = 0, k = 0;
    RGB2CMYK(color.red, color.green, color.blue, c, m, y, k);
    double h = 0, l = 0, s = 0;
    RGB2HLS(color.red, color.green, color.blue, h, l, s);
    char text[8];
    std::snprintf(text, sizeof text, "#%02x%02x%02x", unsigned{color.red}, unsigned{color.green},
                  unsigned{color.blue});
    return {{"color", text},
            {"count", entry.count},
            {"share", Rounded(static_cast<double>(entry.count) / pixels)},
            {"rgb", {color.red, color.green, color.blue}},
            {"cmyk", {c, m, y, k}},
            {"hls", {Rounded(h), Rounded(l), Rounded(s)}}};
}

std::string EncodeReduced(const IndexedPicture& picture) {
    std::vector<Rgba> palette;
    for (const PaletteColor& entry : picture.palette) palette.push_back(entry.color);
    return EncodeIndexedPng(picture.width, picture.height, picture.indices, palette);
}

struct ReduceArguments {
    ReduceOptions options;
    FileArguments files;
};

}  // namespace

std::string PaletteJson(const IndexedPicture& picture) {
    const double pixels = static_cast<double>(picture.indices.size());
    std::string json = "{\"width\": " + std::to_string(picture.width) +
                       ", \"height\": " + std::to_string(picture.height) + ", \"colors\": [";
    for (std::size_t i = 0; i < picture.OpaqueColors(); ++i)
        json += (i > 0 ? ",\n  " : "\n  ") + Described(picture.palette[i], pixels).dump();
    const std::uint64_t transparent = picture.hasTransparent ? picture.palette.back().count : 0;
    return json + "\n], \"transparent\": " + std::to_string(transparent) + "}\n";
}

int RunReduce(const ReduceOptions& options) {
    CheckOutput(options.output, options.input);
    if (!options.palette.empty()) CheckOutput(options.palette, options.input);
    const Picture picture = ReadPicture(options.input, {options.maxPixels});
    const IndexedPicture reduced = ReduceColors(picture, options.settings, InputName(options.input));
    const std::string png = EncodeReduced(reduced);
    if (!options.palette.empty()) WriteOutput(options.palette, PaletteJson(reduced));
    WriteOutput(options.output, png);
    return 0;
}

void AddReduceCommand(CLI::App& program, Action& action) {
    CLI::App* reduce = program.add_subcommand("reduce", "Reduce a picture to its main colours");
    const auto arguments = std::make_shared<ReduceArguments>();
    ReduceOptions& options = arguments->options;
    AddInputs(*reduce, arguments->files, "PNG, JPEG, BMP or PNM picture");
    AddOutput(*reduce, arguments->files, "PNG file, with a palette,");
    reduce
        ->add_option("--colors", options.settings.colors,
                     "The most colours to keep (255 beside transparent pixels)")
        ->required()
        ->check(WholeNumber(1, 256))
        ->type_name("1..256");
    reduce
        ->add_option("--level", options.settings.level,
                     "Merge more (above 0) or fewer (down to -35) similar colours")
        ->check(CLI::Range(-1000, 100'000).description(""))
        ->type_name("L")
        ->capture_default_str();
    AddExtraJson(*reduce, arguments->files, "--palette",
                 "JSON file for the colours, how often they occur, their inks and hues");
    AddMaxPixels(*reduce, options.maxPixels);
    reduce->callback([arguments, &action] {
        action = [arguments, plan = PlanFiles(arguments->files, PNG_FORMAT)] {
            return RunFiles("reducing", plan, [&](const FileTask& task) {
                ReduceOptions ofTask = arguments->options;
                ofTask.input = task.input;
                ofTask.output = task.output;
                ofTask.palette = task.extra;
                RunReduce(ofTask);
            });
        };
    });
}

}  // namespace tarvex::app
