// What the program says to a person: lines on standard error, and on a terminal how far the work has come.
#pragma once

#include <chrono>
#include <cstddef>
#include <string>

namespace tarvex::app {

/// Text with question marks for control characters, which a terminal would obey.
std::string Printable(std::string text);

/// Prints "tarvex: LINE", as Printable has it, on standard error. The line comes out whole, whatever other
/// threads say, and above any progress.
void Tell(const std::string& line);

/// Shows how far the work has come on the last line of a terminal, overwriting itself, once the work has
/// lasted half a second, and clears the line at the end. Silent when standard error is no terminal, and when
/// there is another one already: work of many files shows itself, and not what goes on in each.
class Progress {
  public:
    explicit Progress(std::string what);
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    /// `fraction` of the work, 0 to 1, is done: "WHAT 42%". Cheap enough to call a thousand times a second.
    void Report(double fraction);
    /// So many files of how many: "WHAT [=====>    ] 120 of 300, 1 failed, 2:05 left".
    void ReportFiles(std::size_t done, std::size_t failed, std::size_t all);

  private:
    using Clock = std::chrono::steady_clock;

    bool IsDue();

    std::string m_what;
    bool m_isMine;
    Clock::time_point m_start;
    Clock::time_point m_next;
};

}  // namespace tarvex::app
