// How the program fails: one line on standard error and an exit status.
#pragma once

#include <stdexcept>
#include <string>
#include <utility>

namespace tarvex::app {

enum class ExitStatus : int {
    Done = 0,
    NoResult = 1,  ///< the operation ran and found nothing to write
    Usage = 2,     ///< the command line makes no sense
    File = 3,      ///< a file cannot be read, or cannot be written
    Interrupted = 130,
};

/// An error that ends the program. `what()` is one line without the program's name, which begins
/// with the file or option it is about.
class ProgramError : public std::runtime_error {
  public:
    ProgramError(ExitStatus status, const std::string& subject, const std::string& what)
        : std::runtime_error(subject + ": " + what), m_status(status) {}
    ExitStatus Status() const { return m_status; }

  private:
    ExitStatus m_status;
};

}  // namespace tarvex::app
