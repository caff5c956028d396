// Start-up and shutdown. A static object does both, which on Windows the DLL's entry point runs and
// elsewhere the loader, so that neither system needs code of its own.
#include "tarvex/module.h"

#include <atomic>

#include "platform/handles.h"
#include "tarvex/scaledraw.h"

namespace tarvex {
namespace {

std::atomic<int> g_starts{0};

struct Loaded {
    Loaded() { CQuillonApp::Get()->InitInstance(); }
    ~Loaded() { CQuillonApp::Get()->ExitInstance(); }
    Loaded(const Loaded&) = delete;
    Loaded& operator=(const Loaded&) = delete;
};

const Loaded g_loaded;

}  // namespace

CQuillonApp* CQuillonApp::Get() {
    static CQuillonApp app;
    return &app;
}

bool CQuillonApp::InitInstance() {
    ++g_starts;
    const ScreenDC screen(GetDC(nullptr));
    const double scale = CScaleDraw::Scale121(screen.Get());
    if (scale > 0) CScaleDraw::g_scale121 = scale;
    return true;
}

int CQuillonApp::ExitInstance() {
    int starts = g_starts;
    while (starts > 0 && !g_starts.compare_exchange_weak(starts, starts - 1)) {
    }
    return 0;
}

bool CQuillonApp::IsRunning() const { return g_starts > 0; }

}  // namespace tarvex
