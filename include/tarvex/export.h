// TARVEX_API marks the names that the shared library exports; everything else stays hidden. Programs
// that link the library's objects instead define TARVEX_STATIC, which matters on Windows only.
#pragma once

#if defined(_WIN32)
#if defined(TARVEX_BUILDING)
#define TARVEX_API __declspec(dllexport)
#elif defined(TARVEX_STATIC)
#define TARVEX_API
#else
#define TARVEX_API __declspec(dllimport)
#endif
#else
#define TARVEX_API __attribute__((visibility("default")))
#endif
