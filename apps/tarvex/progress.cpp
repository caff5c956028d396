#include "tarvex/progress.h"

#include <algorithm>
#include <cstdio>
#include <utility>

#ifdef _WIN32
#include <io.h>
#else
#include <unistd.h>
#endif

namespace tarvex::app {

namespace {

bool IsTerminal() {
#ifdef _WIN32
    return _isatty(_fileno(stderr)) != 0;
#else
    return isatty(fileno(stderr)) != 0;
#endif
}

}  // namespace

Progress::Progress(std::string what)
    : m_what(std::move(what)),
      m_isTerminal(IsTerminal()),
      m_next(Clock::now() + std::chrono::milliseconds(500)) {}

Progress::~Progress() {
    if (m_isShown) std::fprintf(stderr, "\r%*s\r", static_cast<int>(m_what.size()) + 5, "");
}

void Progress::Report(double fraction) {
    if (!m_isTerminal) return;
    const Clock::time_point now = Clock::now();
    if (now < m_next) return;
    m_next = now + std::chrono::milliseconds(100);
    m_isShown = true;
    const double percent = fraction > 0 ? std::min(fraction, 1.0) * 100 : 0;
    std::fprintf(stderr, "\r%s %3.0f%%", m_what.c_str(), percent);
    std::fflush(stderr);
}

}  // namespace tarvex::app
