// Any command line: it is understood, leaving something to do, or refused with status 2 and one line that
// says why. What is understood is not done, so no file is touched.
#include <CLI/CLI.hpp>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include "input.h"
#include "tarvex/command_line.h"
#include "tarvex/commands.h"

namespace tarvex::fuzz {
namespace {

/// Words that commands know; bytes alone would hardly ever spell one.
constexpr const char* WORDS[] = {
    "trace",
    "reduce",
    "transform",
    "warp",
    "render",
    "text",
    "region",
    "breakup",
    "shape",
    "info",
    "in.png",
    "in.svg",
    "-o",
    "out.svg",
    "out.png",
    "-",
    "--mode",
    "outline",
    "color",
    "centerline",
    "edges",
    "--colors",
    "--cutout",
    "--threshold",
    "auto",
    "--invert",
    "--min-points",
    "--detail",
    "--speck",
    "--format",
    "svg",
    "json",
    "satin",
    "--seed",
    "1,2",
    "--tolerance",
    "--no-smooth",
    "--breakup",
    "--json",
    "--rotate",
    "1,2,3",
    "--scale",
    "--translate",
    "--type",
    "--amount",
    "--width",
    "--font",
    "--size",
    "--bold",
    "--italic",
    "--color",
    "#f00",
    "difference",
    "intersection",
    "xor",
    "union",
    "--raster",
    "--fill-a",
    "--fill-b",
    "winding",
    "alternate",
    "--level",
    "--palette",
    "--help",
    "--version",
    "--max-pixels",
    "--precision",
    "--mm-width",
    "--max-satin-mm",
    "--no-complexity-check",
    "--no-kerning",
    "--inside",
    "--jobs",
    "--arc",
    "--align",
    "--output",
    "--",
    "--spacing",
    "0",
    "1",
    "255",
    "-1",
    "1e9",
    "nan",
    "inf",
    "99999999999999999999",
    "0x10",
    "1.5",
    "",
    "-5,7",
};

std::vector<std::string> TakeArguments(Input& input) {
    std::vector<std::string> arguments{"tarvex"};
    while (!input.Rest().empty() && arguments.size() < 40) {
        const auto choice = input.Take<std::uint8_t>();
        if (choice < std::size(WORDS)) {
            arguments.emplace_back(WORDS[choice]);
            continue;
        }
        std::string text;
        for (int length = choice % 12; length > 0; --length) {
            const char c = input.Take<char>();
            if (c != '\0') text += c;
        }
        if (choice % 3 == 0 && arguments.size() > 1) {
            arguments.back() += (choice % 2 == 0 ? "=" : "") + text;  // --option=text, or a word spoilt
        } else {
            arguments.push_back(text);
        }
    }
    return arguments;
}

enum class Verdict { understood, answered, refused };

/// What the parser makes of the arguments, as the program sets it up.
Verdict Parse(const std::vector<const char*>& argv) {
    CLI::App program;
    app::Action action;
    app::DefineProgram(program, action);
    try {
        program.parse(static_cast<int>(argv.size()), argv.data());
    } catch (const CLI::Success&) {
        return Verdict::answered;
    } catch (const CLI::ParseError&) {
        return Verdict::refused;
    }
    Require(static_cast<bool>(action), "a command that is understood leaves something to do");
    return Verdict::understood;
}

/// Runs the program on arguments that it refuses, and returns what it says.
std::string Refusal(const std::vector<const char*>& argv) {
    char* text = nullptr;
    std::size_t size = 0;
    std::FILE* const terminal = stderr;
    stderr = open_memstream(&text, &size);
    const int status = app::RunProgram(static_cast<int>(argv.size()), argv.data());
    std::fclose(stderr);
    stderr = terminal;
    std::string said(text, size);
    std::free(text);
    Require(status == 2, "what is refused is wrong usage");
    return said;
}

}  // namespace

void TryInput(Input input) {
    const std::vector<std::string> arguments = TakeArguments(input);
    std::vector<const char*> argv;
    for (const std::string& argument : arguments) argv.push_back(argument.c_str());
    if (Parse(argv) != Verdict::refused) return;
    const std::string said = Refusal(argv);
    Require(said.starts_with("tarvex: ") && said.ends_with("\n") && said.find('\n') == said.size() - 1,
            "one line says why");
}

}  // namespace tarvex::fuzz
