#include "tarvex/command_line.h"

#include <CLI/CLI.hpp>

#include <charconv>
#include <exception>
#include <memory>
#include <new>
#include <sstream>
#include <string>
#include <vector>

#include "tarvex/commands.h"
#include "tarvex/output.h"
#include "tarvex/program_error.h"
#include "tarvex/progress.h"

namespace tarvex::app {

namespace {

constexpr const char* DESCRIPTION =
    "Traces pictures to Bezier outlines, combines, bends, turns and measures drawings, and breaks filled\n"
    "shapes up into columns that can be stitched.\n"
    "\n"
    "Pictures are PNG, JPEG, BMP or PNM; drawings are SVG. The name - stands for standard input or output.\n"
    "\n"
    "Every command takes many files but text, and puts the results into a directory: see the end of their "
    "help.\n"
    "\n"
    "Exit status: 0 done, 1 nothing found, 2 wrong usage, 3 a file cannot be read or written, 130 "
    "interrupted;\n"
    "of many files 3 when there is one such, otherwise 1 when there is one with nothing found.";

constexpr const char* EXAMPLES =
    "Examples:\n"
    "\n"
    "  tarvex trace picture.png -o outlines.svg\n"
    "  tarvex trace picture.png -o regions.svg --mode color --colors 6\n"
    "  tarvex text 'Hello' -o text.svg --size 160 --bold\n"
    "  tarvex shape union outlines.svg text.svg -o both.svg\n"
    "  tarvex breakup picture.png -o columns.svg\n"
    "  tarvex info both.svg\n";

/// Help whose lines fit beside each other in a terminal; the parser indents what follows a line's end.
class HelpInLines : public CLI::Formatter {
  public:
    std::string make_option_desc(const CLI::Option* option) const override {
        constexpr std::size_t width = 100;
        std::istringstream words(option->get_description());
        std::string lines;
        std::size_t column = get_column_width();
        for (std::string word; words >> word; column += word.size() + 1) {
            const bool fits = column + word.size() <= width;
            if (!lines.empty()) lines += fits ? ' ' : '\n';
            if (!fits) column = get_column_width();
            lines += word;
        }
        return lines;
    }
};

int Fail(ExitStatus status, const std::string& line) {
    Tell(line);
    return static_cast<int>(status);
}

/// The command line as far as a command was recognised, to ask for help about.
std::string HelpFor(const CLI::App& program) {
    std::string command = "tarvex";
    for (const CLI::App* chosen : program.get_subcommands()) command += ' ' + chosen->get_name();
    return command + " --help";
}

/// The first argument that nothing takes. CLI11 would rather speak of what is missing, which is
/// often only the other side of a misspelling.
std::string UnknownArgument(const CLI::App& program) {
    const auto chosen = program.get_subcommands();
    const std::vector<std::string> rest = chosen.empty() ? program.remaining() : chosen.front()->remaining();
    for (const std::string& argument : rest) {
        if (argument != "--") return argument;
    }
    return {};
}

std::string Explained(const CLI::App& program, const CLI::ParseError& error) {
    const std::string unknown = UnknownArgument(program);
    if (unknown.empty()) {
        return program.get_subcommands().empty() ? std::string("a command is required") : error.what();
    }
    if (!program.get_subcommands().empty() || unknown.front() == '-') return unknown + ": unknown argument";
    return unknown + ": there is no such command";
}

int Run(const Action& action) {
    try {
        return action();
    } catch (const ProgramError& error) {
        return Fail(error.Status(), error.what());
    } catch (const std::bad_alloc&) {
        return Fail(ExitStatus::File, "not enough memory");
    } catch (const std::exception& error) {
        return Fail(ExitStatus::File, error.what());
    }
}

}  // namespace

const char* const VERSION = TARVEX_VERSION;

CLI::Validator WholeNumber(std::uint64_t least, std::uint64_t most) {
    const auto check = [least, most](const std::string& text) {
        std::uint64_t number = 0;
        const char* end = text.data() + text.size();
        const auto [stopped, error] = std::from_chars(text.data(), end, number);
        if (error == std::errc{} && stopped == end && number >= least && number <= most) return std::string();
        return "'" + text + "' is not a whole number from " + std::to_string(least) + " to " +
               std::to_string(most);
    };
    return CLI::Validator(check, "");
}

CLI::Validator FileName() {
    const auto check = [](const std::string& text) {
        return text.empty() ? std::string("the file's name is empty") : std::string();
    };
    return CLI::Validator(check, "", FILE_CHECK);
}

void AddMaxPixels(CLI::App& command, std::uint64_t& maxPixels) {
    constexpr std::uint64_t most = 1'000'000'000'000;
    command.add_option("--max-pixels", maxPixels, "Refuse pictures of more pixels, as read or as enlarged")
        ->check(WholeNumber(1, most))
        ->type_name("N")
        ->capture_default_str();
}

void AddAutoOrInteger(CLI::App& command, const std::string& name, std::optional<int>& value, int least,
                      int most, const std::string& description) {
    const auto isWhole = WholeNumber(static_cast<std::uint64_t>(least), static_cast<std::uint64_t>(most));
    const auto parse = [name, isWhole, &value](const std::string& text) {
        value.reset();
        if (text == "auto") return;
        const std::string problem = isWhole(text);
        if (!problem.empty()) throw CLI::ValidationError(name, problem + ", nor auto");
        value = std::stoi(text);
    };
    command.add_option_function<std::string>(name, parse, description)
        ->type_name("auto|" + std::to_string(least) + ".." + std::to_string(most));
}

void DefineProgram(CLI::App& program, Action& action) {
    program.name("tarvex");
    program.description(DESCRIPTION);
    program.set_version_flag("--version", std::string("tarvex ") + VERSION);
    program.require_subcommand(1);
    program.formatter(std::make_shared<HelpInLines>());
    AddTraceCommand(program, action);
    AddReduceCommand(program, action);
    AddTransformCommand(program, action);
    AddWarpCommand(program, action);
    AddRenderCommand(program, action);
    AddTextCommand(program, action);
    AddRegionCommand(program, action);
    AddBreakUpCommand(program, action);
    AddShapeCommand(program, action);
    AddInfoCommand(program, action);
    program.footer(EXAMPLES);  // not before: commands inherit what is there when they are added
}

int RunProgram(int argc, const char* const* argv) {
    RemoveOutputOnInterrupt();
    CLI::App program;
    Action action;
    DefineProgram(program, action);
    try {
        program.parse(argc, argv);
    } catch (const CLI::Success& request) {
        return program.exit(request);  // help or the version, on standard output
    } catch (const CLI::ParseError& error) {
        return Fail(ExitStatus::Usage, Explained(program, error) + "; see \"" + HelpFor(program) + "\"");
    }
    return Run(action);
}

}  // namespace tarvex::app
