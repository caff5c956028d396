// What the parser knows about the program, as plain records: from these the man page and the shells'
// completions are written, so that an option that is added to a command is in all of them.
#pragma once

#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace tarvex::manual {

/// What stands behind an option or in an argument's place.
enum class ValueKind {
    none,   ///< a flag
    file,   ///< the name of a file
    words,  ///< one of a few words, or something that no list could hold
    other,  ///< a number, a colour, a text
};

struct Argument {
    std::vector<std::string>
        names;          ///< "-o", "--output"; for a place among the arguments, one name without dashes
    std::string value;  ///< how the help writes what it takes: "OUT"; empty for flags
    ValueKind kind = ValueKind::none;
    std::vector<std::string> words;  ///< what can be offered when the kind is words
    bool isRequired = false;
    bool isRepeated = false;  ///< takes as many as there are
    std::string standard;     ///< the value without the option; empty where the description tells
    std::string description;
};

struct Command {
    std::string name;
    std::string description;
    std::string footer;  ///< paragraphs; indented lines stand as they are
    std::vector<Argument> places;
    std::vector<Argument> options;
};

struct Program {
    std::string name;
    std::string version;  ///< "0.1.0"
    std::string description;
    std::string footer;
    std::vector<Argument> options;
    std::vector<Command> commands;
};

/// Reads the definition of the whole program.
Program ReadProgram(CLI::App& parser);

/// The text up to its first period: for places where only a line fits.
std::string FirstSentence(const std::string& text);

}  // namespace tarvex::manual
