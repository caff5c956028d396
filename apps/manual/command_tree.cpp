// Takes the parser's definition apart. The parser keeps no list of the words that an option takes, so they
// are read from how the help writes the option's value: "svg|json".
#include "manual/command_tree.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <string_view>

#include "tarvex/commands.h"
#include "tarvex/warp_command.h"

namespace tarvex::manual {

namespace {

/// A word that can be typed as it stands: no range, no name of a value.
bool IsWord(std::string_view text) {
    return !text.empty() && text.front() != '-' &&
           text.find_first_not_of("abcdefghijklmnopqrstuvwxyz-") == std::string_view::npos;
}

std::vector<std::string> WordsOf(const std::string& value) {
    if (value == app::WARP_VALUE) return {app::WARP_NAMES.begin(), app::WARP_NAMES.end()};
    std::vector<std::string> words;
    for (std::string word : CLI::detail::split(value, '|')) {
        if (IsWord(word)) words.push_back(std::move(word));
    }
    return words;
}

bool TakesFile(CLI::Option& option) {
    try {
        option.get_validator(app::FILE_CHECK);
        return true;
    } catch (const CLI::OptionNotFound&) {
        return false;
    }
}

Argument ReadArgument(CLI::Option& option) {
    Argument argument;
    argument.description = option.get_description();
    argument.isRequired = option.get_required();
    argument.isRepeated = option.get_expected_max() == CLI::detail::expected_max_vector_size;
    if (option.get_positional()) {
        argument.names.push_back(option.get_name(true));
    } else {
        for (const std::string& name : option.get_snames()) argument.names.push_back('-' + name);
        for (const std::string& name : option.get_lnames()) argument.names.push_back("--" + name);
    }
    if (!option.get_positional() && option.get_expected_max() == 0) return argument;
    argument.value = option.get_type_name();
    argument.standard = option.get_default_str();
    argument.words = WordsOf(argument.value);
    argument.kind = TakesFile(option)        ? ValueKind::file
                    : argument.words.empty() ? ValueKind::other
                                             : ValueKind::words;
    return argument;
}

void ReadArguments(CLI::App& parser, std::vector<Argument>& options, std::vector<Argument>* places) {
    for (CLI::Option* option : parser.get_options()) {
        if (option->get_positional() && places != nullptr) {
            places->push_back(ReadArgument(*option));
        } else {
            options.push_back(ReadArgument(*option));
        }
    }
}

}  // namespace

Program ReadProgram(CLI::App& parser) {
    Program program;
    program.name = parser.get_name();
    program.version = app::VERSION;
    program.description = parser.get_description();
    program.footer = parser.get_footer();
    ReadArguments(parser, program.options, nullptr);
    for (CLI::App* sub : parser.get_subcommands(nullptr)) {
        Command command{sub->get_name(), sub->get_description(), sub->get_footer(), {}, {}};
        ReadArguments(*sub, command.options, &command.places);
        program.commands.push_back(std::move(command));
    }
    return program;
}

std::string FirstSentence(const std::string& text) {
    const std::size_t end = std::min(text.find(". "), text.find(".\n"));
    return text.substr(0, end);
}

}  // namespace tarvex::manual
