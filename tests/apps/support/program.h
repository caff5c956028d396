// Runs the built program.
#pragma once

#include <initializer_list>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "apps/support/temporary_directory.h"

namespace tarvex::app::test {

struct ProgramResult {
    int status = -1;  ///< exit status, or 128 + the number of the signal that ended it
    std::string output;
    std::string errors;
};

/// Runs `tarvex ARGUMENTS...` with `input` on its standard input, to its end.
ProgramResult RunTarvex(const std::vector<std::string>& arguments, const std::string& input = {});

using Arguments = std::vector<std::string>;
using Json = nlohmann::json;

Arguments operator+(Arguments a, const Arguments& b);

/// The standard output of a call that succeeds and says nothing.
std::string OutputOf(const Arguments& arguments, const std::string& input = {});

/// What `tarvex info --json` tells about a drawing or picture.
Json Info(const std::string& content);

/// The frame of a drawing or an element: left, top, right and bottom.
void ExpectFrame(const Json& info, const std::vector<double>& frame, double slack);

/// A call without a result.
struct Failure {
    std::string arguments;  ///< apart by spaces; in single quotes what has some; @/ is the test's directory
    int status;
    std::string message;  ///< part of the line that is said; @/ as above
    std::string input = {};
};

/// Each ends with its status and one line, after wrong usage one that leads to the help, and writes nothing.
void ExpectFailures(std::initializer_list<Failure> failures, const TemporaryDirectory& directory = {});

/// `tarvex ARGUMENTS...` while it runs, its standard input a pipe. Give it the descriptor that standard error
/// is to be, or -1 for this process's own.
class RunningProgram {
  public:
    explicit RunningProgram(const std::vector<std::string>& arguments, int errors = -1);
    ~RunningProgram() { Wait(); }
    RunningProgram(const RunningProgram&) = delete;
    RunningProgram& operator=(const RunningProgram&) = delete;

    /// Returns when the pipe has taken all.
    void Write(const std::string& text) const;
    void Signal(int signal) const;
    /// Ends its input, waits for its end and returns the exit status as RunTarvex does.
    int Wait();

  private:
    int m_pid = -1;
    int m_input = -1;
    int m_status = -1;
};

}  // namespace tarvex::app::test
