// The files of a command: what it reads, one or many, and where the results go.
#pragma once

#include <CLI/CLI.hpp>

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "tarvex/argument_values.h"

namespace tarvex::app {

/// One file's way through a command.
struct FileTask {
    std::string input;
    std::string output;   ///< empty where the command prints
    std::string extra;    ///< a second result; empty for none
    bool isAlone = true;  ///< there are no others
};

/// The files as the command line names them.
struct FileArguments {
    std::vector<std::string> inputs;
    std::string output;       ///< a file, - or a directory; empty where the command prints
    std::string extra;        ///< the same for the second results; empty for none
    std::string extraOption;  ///< which option that is
    std::optional<unsigned> jobs;
};

/// What to do, complete and checked.
struct FilePlan {
    std::vector<FileTask> tasks;
    std::vector<std::string> directories;  ///< that results go to; not all need be there
    std::size_t format = 0;                ///< of the first results, as an index
    unsigned jobs = 1;
    bool prints = false;  ///< the results go to standard output, in the order of the inputs
};

/// What the help of commands that take many files ends with.
extern const char* const MANY_FILES_HELP;

/// Adds the inputs, `least` or more, and --jobs; `kinds` is what they are: "SVG drawing".
void AddInputs(CLI::App& command, FileArguments& files, const std::string& kinds, std::size_t least = 1);
/// Adds -o; `kinds` is what it is: "SVG or JSON file".
void AddOutput(CLI::App& command, FileArguments& files, const std::string& kinds);
/// Adds an option for a second result of each input, as JSON.
void AddExtraJson(CLI::App& command, FileArguments& files, const std::string& option,
                  const std::string& description);

/// Whether an output's name stands for a directory: it is there, or is to be made, as a / at its end tells.
bool IsDirectoryName(const std::string& path);

/// A command's files: an input named twice is taken once. In a directory (one that is there, or a name with a
/// / at its end) a result is called as its input, with its format's ending; which of the formats that is, see
/// FormatIndex. Raises CLI::ValidationError when several inputs have one result, or a result were another
/// input.
FilePlan PlanFiles(const FileArguments& files, std::span<const FormatName> formats = {},
                   const std::optional<std::string>& word = {});

}  // namespace tarvex::app
