// Completions for three shells. Each gets tables of what the program takes in the form that the shell reads
// fastest, and as little code as does the rest: bash counts the arguments' places itself, zsh and fish have
// functions for it.
#include <algorithm>
#include <sstream>
#include <string_view>

#include "manual/writers.h"

namespace tarvex::manual {

namespace {

std::string Joined(const std::vector<std::string>& words, std::string_view between) {
    std::string joined;
    for (const std::string& word : words) joined += (joined.empty() ? "" : std::string(between)) + word;
    return joined;
}

std::string Quoted(std::string_view text) {
    std::string quoted = "'";
    for (const char c : text) quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return quoted + '\'';
}

std::string CommandNames(const Program& program) {
    std::string names;
    for (const Command& command : program.commands) names += (names.empty() ? "" : " ") + command.name;
    return names;
}

std::string OptionNames(const std::vector<Argument>& options) {
    std::vector<std::string> names;
    for (const Argument& option : options)
        names.insert(names.end(), option.names.begin(), option.names.end());
    return Joined(names, " ");
}

// ---------------------------------------------------------------------------------------------
// bash

/// What is offered for a value: words, the word FILES, or nothing.
std::string Offered(const Argument& argument) {
    return argument.kind == ValueKind::file ? "FILES" : Joined(argument.words, " ");
}

// ---------------------------------------------------------------------------------------------
// zsh

/// Text inside a specification of _arguments, where colons and brackets part things.
std::string ZshText(const std::string& text) {
    std::string escaped;
    for (const char c : text) {
        if (c == '[' || c == ']' || c == ':' || c == '\\') escaped += '\\';
        escaped += c;
    }
    return escaped;
}

std::string ZshValue(const Argument& argument) {
    const std::string action = argument.kind == ValueKind::file ? "_files"
                               : argument.words.empty()         ? " "
                                                                : '(' + Joined(argument.words, " ") + ')';
    return ':' + ZshText(argument.value) + ':' + action;
}

/// What zsh is told of one option: a line for each of its names, which exclude each other.
void WriteZshOption(std::ostream& out, const Argument& option) {
    for (const std::string& name : option.names) {
        const bool isLong = name.starts_with("--");
        const std::string ending = option.kind == ValueKind::none ? "" : isLong ? "=" : "+";
        out << "                "
            << Quoted('(' + Joined(option.names, " ") + ')' + name + ending + '[' +
                      ZshText(option.description) + ']' +
                      (option.kind == ValueKind::none ? "" : ZshValue(option)))
            << " \\\n";
    }
}

void WriteZshCommand(std::ostream& out, const Command& command) {
    out << "        " << command.name << ")\n            _arguments \\\n";
    for (const Argument& option : command.options) WriteZshOption(out, option);
    for (std::size_t i = 0; i < command.places.size(); ++i) {
        const std::string place = command.places[i].isRepeated ? "*" : std::to_string(i + 1);
        out << "                " << Quoted(place + ZshValue(command.places[i])) << " \\\n";
    }
    out << "                && return\n            ;;\n";
}

// ---------------------------------------------------------------------------------------------
// fish

void WriteFishArgument(std::ostream& out, const std::string& start, const Argument& argument) {
    out << start;
    for (const std::string& name : argument.names) {
        const bool isLong = name.starts_with("--");
        out << (isLong ? " -l " : " -s ") << name.substr(isLong ? 2 : 1);
    }
    if (argument.kind == ValueKind::file) out << " -r -F";
    if (argument.kind == ValueKind::words || argument.kind == ValueKind::other) out << " -x";
    if (!argument.words.empty()) out << " -a " << Quoted(Joined(argument.words, " "));
    out << " -d " << Quoted(FirstSentence(argument.description)) << '\n';
}

/// fish offers files of itself; words are offered until one of them stands there.
void WriteFishPlace(std::ostream& out, const std::string& command, const Argument& place) {
    if (place.kind != ValueKind::words) return;
    const std::string words = Joined(place.words, " ");
    out << "complete -c tarvex -n "
        << Quoted("__fish_seen_subcommand_from " + command + "; and not __fish_seen_subcommand_from " + words)
        << " -f -a " << Quoted(words) << '\n';
}

}  // namespace

std::string WriteBashCompletion(const Program& program, const std::string& driver) {
    std::ostringstream out;
    out << "# bash completion for tarvex. Made from the program's own definition of its arguments.\n\n";
    out << "_tarvex_commands() {\n    echo "
        << Quoted(CommandNames(program) + ' ' + OptionNames(program.options)) << "\n}\n\n";
    out << "# The options and places of a command.\n_tarvex_arguments() {\n    repeats=\n    case $1 in\n";
    for (const Command& command : program.commands) {
        out << "        " << command.name << ")\n            options=" << Quoted(OptionNames(command.options))
            << "\n            places=(";
        for (std::size_t i = 0; i < command.places.size(); ++i)
            out << (i == 0 ? "" : " ") << Quoted(Offered(command.places[i]));
        const bool repeats = !command.places.empty() && command.places.back().isRepeated;
        out << ")\n" << (repeats ? "            repeats=yes\n" : "") << "            ;;\n";
    }
    out << "        *) return 1 ;;\n    esac\n}\n\n";
    out << "# What an option of a command takes, into $offered; fails for flags.\n_tarvex_value() {\n"
           "    offered=\n    case \"$1 $2\" in\n";
    for (const Command& command : program.commands) {
        for (const Argument& option : command.options) {
            if (option.kind == ValueKind::none) continue;
            std::vector<std::string> patterns;
            for (const std::string& name : option.names)
                patterns.push_back('"' + command.name + ' ' + name + '"');
            out << "        " << Joined(patterns, " | ") << ") offered=" << Quoted(Offered(option))
                << " ;;\n";
        }
    }
    out << "        *) return 1 ;;\n    esac\n}\n";
    out << '\n' << driver;
    return out.str();
}

std::string WriteZshCompletion(const Program& program) {
    std::ostringstream out;
    out << "#compdef tarvex\n# Made from the program's own definition of its arguments.\n\n";
    out << "_tarvex_commands() {\n    local -a commands=(\n";
    for (const Command& command : program.commands)
        out << "        " << Quoted(command.name + ':' + ZshText(command.description)) << '\n';
    out << "    )\n    _describe -t commands 'tarvex command' commands\n}\n\n";
    out << "_tarvex() {\n    local context state state_descr line\n    typeset -A opt_args\n    _arguments "
           "-C \\\n";
    for (const Argument& option : program.options) WriteZshOption(out, option);
    out << "                '1:command:_tarvex_commands' '*::argument:->arguments' && return\n";
    out << "    [[ $state == arguments ]] || return 1\n    case $words[1] in\n";
    for (const Command& command : program.commands) WriteZshCommand(out, command);
    out << "    esac\n    return 1\n}\n\n_tarvex \"$@\"\n";
    return out.str();
}

std::string WriteFishCompletion(const Program& program) {
    std::ostringstream out;
    out << "# fish completion for tarvex. Made from the program's own definition of its arguments.\n";
    const std::string first = "complete -c tarvex -n __fish_use_subcommand";
    for (const Argument& option : program.options) WriteFishArgument(out, first, option);
    for (const Command& command : program.commands)
        out << first << " -f -a " << command.name << " -d " << Quoted(command.description) << '\n';
    for (const Command& command : program.commands) {
        const std::string start =
            "complete -c tarvex -n " + Quoted("__fish_seen_subcommand_from " + command.name);
        for (const Argument& option : command.options) WriteFishArgument(out, start, option);
        for (const Argument& place : command.places) WriteFishPlace(out, command.name, place);
    }
    return out.str();
}

}  // namespace tarvex::manual
