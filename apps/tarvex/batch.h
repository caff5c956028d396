// A command on all its files.
#pragma once

#include <functional>
#include <string>
#include <type_traits>

#include "tarvex/files.h"

namespace tarvex::app {

/// What a command does with one file: writes its result, and returns what goes to standard output. Raises
/// ProgramError, or std::bad_alloc. Called from several threads at the same time.
using OneFile = std::function<std::string(const FileTask&)>;

/// Makes the directories that are not there, and does the files, `plan.jobs` at a time. A single file's error
/// is raised. Of several, errors are told as they happen; a terminal shows "WHAT [==>  ] 3 of 9"; a last line
/// on standard error tells how many are done; and the status is the gravest of all files': File, NoResult or
/// Done. Ctrl-C, a hang-up or a request to terminate ends the program at once, with no file half written.
int RunFiles(const std::string& what, const FilePlan& plan, const OneFile& one);

/// The same for a command that only writes: nothing of it goes to standard output.
template <class Write>
requires std::is_void_v<std::invoke_result_t<const Write&, const FileTask&>>
int RunFiles(const std::string& what, const FilePlan& plan, const Write& write) {
    return RunFiles(what, plan, OneFile([&write](const FileTask& task) {
                        write(task);
                        return std::string();
                    }));
}

/// For a command that only writes, and whose options name input and output.
template <class Options>
int RunFiles(const std::string& what, const FilePlan& plan, const Options& options,
             int (*run)(const Options&)) {
    return RunFiles(what, plan, [&options, run](const FileTask& task) {
        Options ofTask = options;
        ofTask.input = task.input;
        ofTask.output = task.output;
        run(ofTask);
    });
}

}  // namespace tarvex::app
