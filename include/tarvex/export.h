// TARVEX_API marks the names that the shared library exports; everything else stays hidden.
#pragma once

#if defined(_WIN32)
#if defined(TARVEX_BUILDING)
#define TARVEX_API __declspec(dllexport)
#else
#define TARVEX_API __declspec(dllimport)
#endif
#else
#define TARVEX_API __attribute__((visibility("default")))
#endif
