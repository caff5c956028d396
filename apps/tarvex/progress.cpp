// A terminal has one last line, so there is one owner of it at a time, and whoever prints a line moves it
// down.
#include "tarvex/progress.h"

#include <algorithm>
#include <cstdio>
#include <mutex>
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

/// The last line, as the process has one standard error.
struct LastLine {
    std::mutex mutex;
    bool isTaken = false;
    std::string shown;

    // The caller holds the mutex for these.
    void Clear() {
        if (shown.empty()) return;
        std::fprintf(stderr, "\r%*s\r", static_cast<int>(shown.size()), "");
        shown.clear();
    }
    void Show(std::string text) {
        if (text.size() < shown.size()) Clear();
        std::fprintf(stderr, "\r%s", text.c_str());
        std::fflush(stderr);
        shown = std::move(text);
    }
};

LastLine& TheLastLine() {
    static LastLine line;
    return line;
}

bool Take() {
    if (!IsTerminal()) return false;
    LastLine& line = TheLastLine();
    const std::lock_guard lock(line.mutex);
    return !std::exchange(line.isTaken, true);
}

std::string Bar(double fraction) {
    constexpr int width = 24;
    const int filled = std::clamp(static_cast<int>(fraction * width), 0, width);
    std::string bar(static_cast<std::size_t>(filled), '=');
    if (filled < width) bar += '>';
    bar.resize(width, ' ');
    return '[' + bar + ']';
}

std::string MinutesAndSeconds(double seconds) {
    const auto whole = static_cast<long>(std::clamp(seconds, 0.0, 3e6));
    const std::string rest = std::to_string(whole % 60);
    return std::to_string(whole / 60) + (rest.size() < 2 ? ":0" : ":") + rest;
}

}  // namespace

std::string Printable(std::string text) {
    for (char& c : text) {
        if (static_cast<unsigned char>(c) < ' ' || c == '\x7f') c = '?';
    }
    return text;
}

void Tell(const std::string& line) {
    const std::string text = "tarvex: " + Printable(line) + '\n';
    LastLine& last = TheLastLine();
    const std::lock_guard lock(last.mutex);
    std::string shown = last.shown;
    last.Clear();
    std::fwrite(text.data(), 1, text.size(), stderr);
    if (!shown.empty()) last.Show(std::move(shown));
}

Progress::Progress(std::string what)
    : m_what(std::move(what)),
      m_isMine(Take()),
      m_start(Clock::now()),
      m_next(m_start + std::chrono::milliseconds(500)) {}

Progress::~Progress() {
    if (!m_isMine) return;
    LastLine& line = TheLastLine();
    const std::lock_guard lock(line.mutex);
    line.Clear();
    std::fflush(stderr);
    line.isTaken = false;
}

bool Progress::IsDue() {
    if (!m_isMine) return false;
    const Clock::time_point now = Clock::now();
    if (now < m_next) return false;
    m_next = now + std::chrono::milliseconds(100);
    return true;
}

void Progress::Report(double fraction) {
    if (!IsDue()) return;
    const double percent = fraction > 0 ? std::min(fraction, 1.0) * 100 : 0;
    char text[16];
    std::snprintf(text, sizeof text, " %3.0f%%", percent);
    LastLine& line = TheLastLine();
    const std::lock_guard lock(line.mutex);
    line.Show(m_what + text);
}

void Progress::ReportFiles(std::size_t done, std::size_t failed, std::size_t all) {
    if (!IsDue()) return;
    const double ended = static_cast<double>(done + failed);
    std::string text = m_what + ' ' + Bar(ended / static_cast<double>(all)) + ' ' + std::to_string(done) +
                       " of " + std::to_string(all);
    if (failed > 0) text += ", " + std::to_string(failed) + " failed";
    if (ended > 0) {
        const std::chrono::duration<double> taken = Clock::now() - m_start;
        text +=
            ", " + MinutesAndSeconds(taken.count() / ended * (static_cast<double>(all) - ended)) + " left";
    }
    LastLine& line = TheLastLine();
    const std::lock_guard lock(line.mutex);
    line.Show(std::move(text));
}

}  // namespace tarvex::app
