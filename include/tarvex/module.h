// The library as a part of a host program: what happens when it is loaded and unloaded.
#pragma once

#include "tarvex/export.h"

namespace tarvex {

/// The library's application object. There is one in each copy of the library; loading the library starts
/// it and unloading stops it (Windows does both from the DLL's entry point, other systems by static
/// initialisation), so a host need not call anything here. A host that wants to, say because its screen
/// has changed, may start it again: starts and stops are counted, and only the last stop ends anything.
///
/// Starting sets CScaleDraw::g_scale121 from the screen. It seeds no random numbers, starts no thread and
/// opens no file. Beside that scale the library keeps no state of its own for the process. Off Windows there
/// are the screen in memory and the table of handles, some 3 MB: unloading releases them, with every object
/// that is still in the table. They are made while the shared library is loaded and so outlive all static
/// objects of programs and libraries that link it; such objects may hold handles and let go of them when they
/// are destroyed. (In a program made of the library's objects, with TARVEX_STATIC, the order is the
/// linker's: there they must let go of them before the end of main.) No thread may be inside the library when
/// it is unloaded or the process ends. Fontconfig, once text has been asked for, stays in the process with
/// the rules that it read.
///
/// Loading and unloading may be repeated, and several libraries of one process may load it: the system
/// loads one copy for all of them. Starts and stops may come from different threads.
class TARVEX_API CQuillonApp {
  public:
    /// The one object; null never.
    static CQuillonApp* Get();

    CQuillonApp(const CQuillonApp&) = delete;
    CQuillonApp& operator=(const CQuillonApp&) = delete;

    /// True; it cannot fail: without a screen the scale stays as it was.
    bool InitInstance();
    /// The exit code, always 0. One call too many changes nothing.
    int ExitInstance();

    /// Whether more starts than stops have come.
    bool IsRunning() const;

  private:
    CQuillonApp() = default;
    ~CQuillonApp() = default;
};

}  // namespace tarvex
