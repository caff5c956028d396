// Results in every format, and Ctrl-C as the break-up's Escape key.
#include "tarvex/stitch_arguments.h"

#include <csignal>

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

InterruptsStopBreakUp::InterruptsStopBreakUp(BreakUpInterrupts) {}
InterruptsStopBreakUp::~InterruptsStopBreakUp() = default;

#else

InterruptsStopBreakUp::InterruptsStopBreakUp(BreakUpInterrupts interrupts) {
    if (interrupts == BreakUpInterrupts::AtOnce) return;
    m_former = std::signal(SIGINT, AskToStop);
    if (m_former == SIG_IGN) {
        std::signal(SIGINT, SIG_IGN);
        return;
    }
    m_isActive = true;
    g_atOnce = m_former;
    DesktopHooks hooks;
    hooks.abortRequested = [] { return g_isInterrupted != 0; };
    SetDesktopHooks(hooks);
}

InterruptsStopBreakUp::~InterruptsStopBreakUp() {
    if (!m_isActive) return;
    SetDesktopHooks({});
    std::signal(SIGINT, m_former);
    g_isInterrupted = 0;
}

#endif

}  // namespace tarvex::app
