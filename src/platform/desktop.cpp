// Keyboard, loudspeaker, clock, debugger and resolution, each behind a function that a program may
// replace.
#include <atomic>
#include <ctime>

#include "platform/desktop.h"
#include "tarvex/platform.h"

namespace tarvex {
namespace {

std::atomic<bool (*)()> g_abortRequested{nullptr};
std::atomic<void (*)()> g_beep{nullptr};
std::atomic<std::int64_t (*)()> g_secondsNow{nullptr};
std::atomic<void (*)(const wchar_t*)> g_debugOutput{nullptr};
std::atomic<int (*)()> g_pixelsPerInch{nullptr};

}  // namespace

int platform::PixelsPerInch() {
    const auto hook = g_pixelsPerInch.load();
    return hook != nullptr ? hook() : 96;
}

DesktopHooks SetDesktopHooks(const DesktopHooks& hooks) {
    return {g_abortRequested.exchange(hooks.abortRequested), g_beep.exchange(hooks.beep),
            g_secondsNow.exchange(hooks.secondsNow), g_debugOutput.exchange(hooks.debugOutput),
            g_pixelsPerInch.exchange(hooks.pixelsPerInch)};
}

SHORT GetAsyncKeyState(int key) {
    const auto hook = g_abortRequested.load();
    const bool held = key == VK_ESCAPE && hook != nullptr && hook();
    return held ? SHORT{-0x8000} : SHORT{0};
}

BOOL MessageBeep(UINT) {
    if (const auto hook = g_beep.load(); hook != nullptr) hook();
    return TRUE;
}

std::int64_t _time64(std::int64_t* seconds) {
    const auto hook = g_secondsNow.load();
    const std::int64_t now = hook != nullptr ? hook() : std::int64_t{std::time(nullptr)};
    if (seconds != nullptr) *seconds = now;
    return now;
}

void OutputDebugStringW(const wchar_t* text) {
    if (const auto hook = g_debugOutput.load(); hook != nullptr && text != nullptr) hook(text);
}

}  // namespace tarvex
