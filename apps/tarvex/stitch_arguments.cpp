// Formats by name, and Ctrl-C as the break-up's Escape key.
#include "tarvex/stitch_arguments.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cctype>
#include <csignal>
#include <filesystem>
#include <map>

#include "tarvex/platform.h"
#include "tarvex/satin_writer.h"
#include "tarvex/stitch_writers.h"

namespace tarvex::app {

namespace {

constexpr int PICTURE_SIDE = 1200;

volatile std::sig_atomic_t g_isInterrupted = 0;
void (*g_atOnce)(int) = SIG_DFL;

extern "C" void AskToStop(int signal) {
    g_isInterrupted = 1;
    std::signal(signal, g_atOnce);
}

}  // namespace

StitchFormat StitchFormatOf(const std::optional<std::string>& word, const std::string& output) {
    static const std::map<std::string, StitchFormat> formats = {{"svg", StitchFormat::Svg},
                                                                {"satin", StitchFormat::Satin},
                                                                {"json", StitchFormat::Json},
                                                                {"png", StitchFormat::Png}};
    if (word) {
        const auto found = formats.find(*word);
        if (found != formats.end()) return found->second;
        throw CLI::ValidationError("--format", "'" + *word + "' is none of svg, satin, json and png");
    }
    if (output == "-") return StitchFormat::Svg;
    std::string ending = std::filesystem::path(output).extension().string();
    std::transform(ending.begin(), ending.end(), ending.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    const auto found = ending.empty() ? formats.end() : formats.find(ending.substr(1));
    if (found != formats.end() && found->second != StitchFormat::Satin) return found->second;
    throw CLI::ValidationError(output,
                               "its ending is none of .svg, .json and .png; name it so, or add --format");
}

std::string WriteStitches(const StitchDesign& design, StitchFormat format, double mostSatin) {
    switch (format) {
        case StitchFormat::Satin:
            return WriteSatin(design, {mostSatin});
        case StitchFormat::Json:
            return WriteStitchJson(design);
        case StitchFormat::Png:
            return WriteStitchPng(design, PICTURE_SIDE);
        case StitchFormat::Svg:
            break;
    }
    return WriteStitchSvg(design);
}

#ifdef _WIN32

InterruptsStopBreakUp::InterruptsStopBreakUp() : m_former(nullptr) {}
InterruptsStopBreakUp::~InterruptsStopBreakUp() = default;

#else

InterruptsStopBreakUp::InterruptsStopBreakUp() : m_former(std::signal(SIGINT, AskToStop)) {
    if (m_former == SIG_IGN) {
        std::signal(SIGINT, SIG_IGN);
        return;
    }
    g_atOnce = m_former;
    DesktopHooks hooks;
    hooks.abortRequested = [] { return g_isInterrupted != 0; };
    SetDesktopHooks(hooks);
}

InterruptsStopBreakUp::~InterruptsStopBreakUp() {
    if (m_former == SIG_IGN) return;
    SetDesktopHooks({});
    std::signal(SIGINT, m_former);
    g_isInterrupted = 0;
}

#endif

}  // namespace tarvex::app
