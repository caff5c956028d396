// One line on a terminal for work that takes a while.
#pragma once

#include <chrono>
#include <string>

namespace tarvex::app {

/// Shows "WHAT 42%" on standard error, overwriting itself, once the work has lasted half a second,
/// and clears the line at the end. Silent when standard error is no terminal.
class Progress {
  public:
    explicit Progress(std::string what);
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    /// `fraction` of the work, 0 to 1, is done. Cheap enough to call a thousand times a second.
    void Report(double fraction);

  private:
    using Clock = std::chrono::steady_clock;

    std::string m_what;
    bool m_isTerminal;
    bool m_isShown = false;
    Clock::time_point m_next;
};

}  // namespace tarvex::app
