// Output files that appear whole or not at all.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace tarvex::app {

/// Writes a file, or standard output for "-". A regular file is written aside, in the same directory
/// under a name of its own, and renamed at the end: whoever looks sees the old content or the new.
/// A link is followed, and what is no regular file (a device, a pipe) is written to directly.
/// When it fails, or the program is interrupted, nothing is left behind.
/// Raises ProgramError with ExitStatus::File.
void WriteOutput(const std::string& path, std::string_view content);

/// Raises, before any long work, the error that WriteOutput would meet for certain: a directory, a
/// directory that is not there, no permission.
void CheckOutput(const std::string& path);
/// The same, and also when the output is a file that is the input too, by whatever name: a slip of the hand
/// must not cost a picture.
void CheckOutput(const std::string& path, const std::string& input);

/// From here on Ctrl-C, a hang-up or a request to terminate removes the file being written aside and
/// ends the program with status 128 + the signal's number (130 for Ctrl-C). Signals that are being ignored
/// stay so. This is for work on the main thread only; see HeldInterrupts.
void RemoveOutputOnInterrupt();

/// As long as one lives, those signals do nothing but tell it so, and files may be written on any thread.
/// Whoever holds it asks for the signal now and then, and ends the program.
class HeldInterrupts {
  public:
    HeldInterrupts();
    ~HeldInterrupts();
    HeldInterrupts(const HeldInterrupts&) = delete;
    HeldInterrupts& operator=(const HeldInterrupts&) = delete;

    /// The last signal that came; 0 for none.
    int Signal() const;
    /// Removes all files being written aside, whatever threads write them, and ends the program at once with
    /// status 128 + the signal's number. Files that were finished stay.
    [[noreturn]] void EndProgram() const;
};

/// How many threads may write at the same time.
inline constexpr std::size_t MOST_WRITERS = 256;

/// The name that messages use: the path, or "standard output" for "-".
std::string OutputName(const std::string& path);

}  // namespace tarvex::app
