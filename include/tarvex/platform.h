// The only door to the operating system's drawing operations.
//
// On Windows this is <windows.h>. Elsewhere it declares the same types, and just those operations
// that the library uses, with the same names, signatures and results; src/platform/ implements them
// on memory bitmaps. Library code includes this header and never asks which system it is built for.
#pragma once

#include "tarvex/export.h"

#if defined(_WIN32)

#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

#else

#include <cstdint>

namespace tarvex {

using BOOL = int;
using BYTE = std::uint8_t;
using WORD = std::uint16_t;
using DWORD = std::uint32_t;
using UINT = std::uint32_t;
using LONG = std::int32_t;
using COLORREF = DWORD;  ///< red in bits 0-7, green in bits 8-15, blue in bits 16-23

inline constexpr BOOL FALSE = 0;
inline constexpr BOOL TRUE = 1;

struct tagPOINT {
    LONG x;
    LONG y;
};
using POINT = tagPOINT;

struct tagSIZE {
    LONG cx;
    LONG cy;
};
using SIZE = tagSIZE;

struct tagRECT {
    LONG left;
    LONG top;
    LONG right;
    LONG bottom;
};
using RECT = tagRECT;

}  // namespace tarvex

#endif
