// Runs the built program.
#pragma once

#include <string>
#include <vector>

namespace tarvex::app::test {

struct ProgramResult {
    int status = -1;  ///< exit status, or 128 + the number of the signal that ended it
    std::string output;
    std::string errors;
};

/// Runs `tarvex ARGUMENTS...` with `input` on its standard input, to its end.
ProgramResult RunTarvex(const std::vector<std::string>& arguments, const std::string& input = {});

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
