// Any command line: it is understood, leaving something to do, or refused with status 2 and one line that
// says why. What is understood is not done, so no file is touched.
#include <CLI/CLI.hpp>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

#include "input.h"
#include "manual/command_tree.h"
#include "tarvex/command_line.h"
#include "tarvex/commands.h"

namespace tarvex::fuzz {
namespace {

/// Files, values and marks, which the program's definition does not name.
constexpr const char* VALUES[] = {
    "in.png",  "in.svg",
    "out.svg", "out.png",
    "-",       "--",
    "",        "1,2",
    "1,2,3",   "-5,7",
    "#f00",    "0",
    "1",       "255",
    "-1",      "1.5",
    "1e9",     "nan",
    "inf",     "0x10",
    "50%",     "99999999999999999999",
};

/// What command lines are made of, since bytes alone would hardly ever spell a word: the values, and every
/// command, option and word that the program's definition names, in its order.
std::vector<std::string> KnownWords() {
    CLI::App parser;
    app::Action action;
    app::DefineProgram(parser, action);
    const manual::Program program = manual::ReadProgram(parser);
    std::vector<std::string> words(std::begin(VALUES), std::end(VALUES));
    const auto add = [&words](const std::vector<std::string>& more) {
        for (const std::string& word : more) {
            if (std::find(words.begin(), words.end(), word) == words.end()) words.push_back(word);
        }
    };
    const auto addOptions = [&add](const std::vector<manual::Argument>& options) {
        for (const manual::Argument& option : options) {
            add(option.names);
            add(option.words);
        }
    };
    for (const manual::Command& command : program.commands) add({command.name});
    addOptions(program.options);
    for (const manual::Command& command : program.commands) {
        addOptions(command.options);
        for (const manual::Argument& place : command.places) add(place.words);
    }
    Require(words.size() <= 200, "enough bytes are left that stand for text");
    return words;
}

std::vector<std::string> TakeArguments(Input& input) {
    static const std::vector<std::string> words = KnownWords();
    std::vector<std::string> arguments{"tarvex"};
    while (!input.Rest().empty() && arguments.size() < 40) {
        const auto choice = input.Take<std::uint8_t>();
        if (choice < words.size()) {
            arguments.push_back(words[choice]);
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
