// TARVEX_API marks the names that the shared library exports; everything else stays hidden. On Windows a
// module definition exports them, made from the list of names in cmake/exports.txt, so only who uses the DLL
// needs to mark them there; programs that link the library's objects instead define TARVEX_STATIC.
#pragma once

#if !defined(_WIN32)
#define TARVEX_API __attribute__((visibility("default")))
#elif defined(TARVEX_BUILDING) || defined(TARVEX_STATIC)
#define TARVEX_API
#else
#define TARVEX_API __declspec(dllimport)
#endif
