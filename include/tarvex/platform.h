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

#include <ctime>

#else

#include <cstdint>

namespace tarvex {

// ---------------------------------------------------------------------------------------------
// Types

using BOOL = int;
using BYTE = std::uint8_t;
using WORD = std::uint16_t;
using DWORD = std::uint32_t;
using UINT = std::uint32_t;
using LONG = std::int32_t;
using SHORT = std::int16_t;
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

// Handles. A handle is a number dressed as a pointer and is never dereferenced: every operation looks
// it up and refuses one that is null, foreign, already deleted or of another kind. The numbers of
// deleted objects are not given out again soon. Different threads may use different objects at the
// same time; the screen may be drawn on by all of them.
using HANDLE = void*;
using HGDIOBJ = void*;
using HBITMAP = struct HBITMAP__*;
using HBRUSH = struct HBRUSH__*;
using HPEN = struct HPEN__*;
using HDC = struct HDC__*;
using HWND = struct HWND__*;

/// A pixel of 32 bits or an entry of a colour table, as it stands in memory.
struct RGBQUAD {
    BYTE rgbBlue;
    BYTE rgbGreen;
    BYTE rgbRed;
    BYTE rgbReserved;
};

struct BITMAPINFOHEADER {
    DWORD biSize;
    LONG biWidth;
    LONG biHeight;  ///< positive: the last image row is stored first; negative: the first one is
    WORD biPlanes;
    WORD biBitCount;
    DWORD biCompression;
    DWORD biSizeImage;
    LONG biXPelsPerMeter;
    LONG biYPelsPerMeter;
    DWORD biClrUsed;
    DWORD biClrImportant;
};

/// A header and the colour table that follows it in memory.
struct BITMAPINFO {
    BITMAPINFOHEADER bmiHeader;
    RGBQUAD bmiColors[1];
};

struct BITMAP {
    LONG bmType;
    LONG bmWidth;
    LONG bmHeight;      ///< always positive
    LONG bmWidthBytes;  ///< bytes of a row: its bits rounded up to whole 32-bit words
    WORD bmPlanes;
    WORD bmBitsPixel;
    void* bmBits;  ///< the first stored row
};

struct DIBSECTION {
    BITMAP dsBm;
    BITMAPINFOHEADER dsBmih;  ///< as at creation, with the image's size and colour count filled in
    DWORD dsBitfields[3];
    HANDLE dshSection;
    DWORD dsOffset;
};

// ---------------------------------------------------------------------------------------------
// Constants

inline constexpr DWORD BI_RGB = 0;
inline constexpr UINT DIB_RGB_COLORS = 0;
inline constexpr DWORD SRCCOPY = 0x00CC0020;
inline constexpr COLORREF CLR_INVALID = 0xFFFFFFFF;
inline constexpr int BLACKONWHITE = 1;
inline constexpr int COLORONCOLOR = 3;
inline constexpr int WHITE_BRUSH = 0;
inline constexpr int BLACK_BRUSH = 4;
inline constexpr int NULL_BRUSH = 5;
inline constexpr int WHITE_PEN = 6;
inline constexpr int BLACK_PEN = 7;
inline constexpr int NULL_PEN = 8;
inline constexpr int PS_SOLID = 0;
inline constexpr int PS_NULL = 5;
inline constexpr int TRANSPARENT = 1;
inline constexpr int OPAQUE = 2;
inline constexpr int ALTERNATE = 1;
inline constexpr int WINDING = 2;
inline constexpr int HORZRES = 8;
inline constexpr int VERTRES = 10;
inline constexpr int BITSPIXEL = 12;
inline constexpr int PLANES = 14;
inline constexpr int LOGPIXELSX = 88;
inline constexpr int LOGPIXELSY = 90;
inline constexpr int VK_ESCAPE = 0x1B;

constexpr COLORREF RGB(int red, int green, int blue) {
    return static_cast<COLORREF>(red & 0xFF) | static_cast<COLORREF>(green & 0xFF) << 8 |
           static_cast<COLORREF>(blue & 0xFF) << 16;
}
constexpr BYTE GetRValue(COLORREF colour) { return static_cast<BYTE>(colour & 0xFF); }
constexpr BYTE GetGValue(COLORREF colour) { return static_cast<BYTE>(colour >> 8 & 0xFF); }
constexpr BYTE GetBValue(COLORREF colour) { return static_cast<BYTE>(colour >> 16 & 0xFF); }

// ---------------------------------------------------------------------------------------------
// Bitmaps
//
// A bitmap has 1 or 32 bits per pixel. Rows are padded to whole 32-bit words; at 1 bit the most
// significant bit of a byte is its leftmost pixel and indexes a table of two colours; at 32 bits a
// pixel is the bytes blue, green, red and one reserved byte, which is no part of the colour.

/// Makes a bitmap of black pixels (zero bits) whose memory the caller may read and write while the
/// bitmap lives; `*bits`, unless `bits` is null, receives the first stored row.
///
/// The header must say 40 bytes, one plane, 1 or 32 bits, BI_RGB, a width of at least 1 and a height
/// other than 0; its size-in-bytes field is not read. A 1-bit header is followed by `biClrUsed`
/// colours, 0 meaning two; what is missing is black. The usage must be DIB_RGB_COLORS and the section
/// null; the device context and the offset do not matter. Null (also in `*bits`) for any other
/// description, when the rows come to more than 2^31 - 1 bytes, and when memory is short.
TARVEX_API HBITMAP CreateDIBSection(HDC dc, const BITMAPINFO* info, UINT usage, void** bits, HANDLE section,
                                    DWORD offset);

/// Describes a bitmap. With room for a DIBSECTION that is what is written, otherwise a BITMAP, and
/// the result is the number of bytes written; 0 when `size` has room for neither or the handle is not
/// a bitmap's. A null `out` asks for the bytes that a BITMAP needs. The screen has no handle.
TARVEX_API int GetObject(HANDLE object, int size, void* out);

// ---------------------------------------------------------------------------------------------
// Device contexts and what is selected into them

/// A context in memory, in which no bitmap is selected yet: until one is, drawing succeeds and leaves
/// no trace. The argument is null or any context; null for anything else.
TARVEX_API HDC CreateCompatibleDC(HDC dc);
/// Deletes a context made by CreateCompatibleDC and lets go of what is selected into it. False for
/// anything else, the screen's contexts among them.
TARVEX_API BOOL DeleteDC(HDC dc);

/// A context on the screen, which is a picture in memory: 1024 by 768 pixels of 32 bits, black at
/// first, one for the whole process. Release it with ReleaseDC. Null for a window.
TARVEX_API HDC GetDC(HWND window);
/// 1 when the context was one of GetDC's, else 0 and nothing happens.
TARVEX_API int ReleaseDC(HWND window, HDC dc);
/// Pixels per inch (96 both ways unless a hook says otherwise), the screen's size (HORZRES, VERTRES), its
/// depth (BITSPIXEL, PLANES); 0 for any other question and when the context is not one.
TARVEX_API int GetDeviceCaps(HDC dc, int index);

/// Selects a bitmap, brush or pen and returns what was selected in its place, which the caller puts
/// back before deleting the object; null when that is refused. A bitmap can be selected into one
/// context at a time, and into none of the screen's. Before the first bitmap, a stock handle stands
/// in its place that can only be selected again.
TARVEX_API HGDIOBJ SelectObject(HDC dc, HGDIOBJ object);
/// Deletes a bitmap, brush or pen. False, with nothing deleted, while it is selected into a context
/// and when the handle is not one. For a stock object true, and it lives on.
TARVEX_API BOOL DeleteObject(HGDIOBJ object);

/// A brush or pen that is always there; null for any other index. A new context has the white brush
/// and the black pen.
TARVEX_API HGDIOBJ GetStockObject(int index);
TARVEX_API HBRUSH CreateSolidBrush(COLORREF colour);
/// A solid pen (PS_SOLID) or one that draws nothing (PS_NULL); null for any other style. The sign of
/// the width does not matter, and 0 and 1 both make the thin line.
TARVEX_API HPEN CreatePen(int style, int width, COLORREF colour);

// ---------------------------------------------------------------------------------------------
// Pixels
//
// Everything is clipped to the bitmap drawn into; any coordinates are accepted. A false result means
// that a handle was refused or memory was short, not that nothing was visible.
//
// A colour becomes a 1-bit pixel by taking the nearer of the two table entries, by the sum of the
// squared differences of red, green and blue; entry 0 when both are equally near. Between 1-bit
// bitmaps with equal tables the bits are copied as they are. Reserved bytes are copied between 32-bit
// bitmaps and otherwise written as 0.

/// Copies a rectangle, as though all of it were read before any was written. What lies outside the
/// source's bitmap leaves the destination as it is; a width or height below 1 copies nothing. False
/// when `operation` is not SRCCOPY.
TARVEX_API BOOL BitBlt(HDC to, int x, int y, int width, int height, HDC from, int fromX, int fromY,
                       DWORD operation);

/// Copies a rectangle into one of another size: pixel i of n, over a side that is m pixels in the
/// source, is the one in which its centre falls, floor((2i + 1) m / 2n). So enlarging by a whole
/// factor repeats every pixel, shrinking keeps one pixel of every block, and doing both gives the
/// picture back. For the rest as BitBlt; mirrored copies (negative sizes) are not made.
TARVEX_API BOOL StretchBlt(HDC to, int x, int y, int width, int height, HDC from, int fromX, int fromY,
                           int fromWidth, int fromHeight, DWORD operation);
/// Remembers the mode, 1 to 4, and returns the one before it, 0 when refused. Every mode drops or
/// repeats pixels, none blends them.
TARVEX_API int SetStretchBltMode(HDC dc, int mode);

/// Fills the rectangle without its right column and its bottom row; empty and inverted rectangles fill
/// nothing. The result is nonzero unless a handle was refused.
TARVEX_API int FillRect(HDC dc, const RECT* rectangle, HBRUSH brush);

/// CLR_INVALID outside the bitmap.
TARVEX_API COLORREF GetPixel(HDC dc, int x, int y);
/// Returns the colour that the pixel got, which a colour table may change; CLR_INVALID outside.
TARVEX_API COLORREF SetPixel(HDC dc, int x, int y, COLORREF colour);

/// Nothing is ever pending: everything is drawn when its call returns. True.
TARVEX_API BOOL GdiFlush();

// ---------------------------------------------------------------------------------------------
// Lines and paths
//
// Drawing takes the pen and the brush that are selected, does not smooth edges, and gives the same
// pixels on every processor. Coordinates are pixel centres.
//
// The thin line between two pixels has one pixel for each step along its longer side (x when both are
// equal); the other coordinate is the exact one rounded, halves away from the start. Its last pixel is
// left out, so that lines joined end to end meet every pixel once, and a line of no length draws
// nothing. A pen of width 2 or more sweeps a disc of that diameter along the line, round ends and
// corners included; the pixels are those of the polygon around that area, so a horizontal or vertical
// line is exactly as many pixels thick, the odd one of an even number being above or to the left.
//
// A filled area has the pixels whose centres it holds: those on its left and top edges are inside,
// those on its right and bottom edges are not. Curves are followed to within 1/8 pixel by straight
// pieces whose ends lie on sixteenths of a pixel; the thin line joins those ends rounded to pixels.

/// Moves the current position; `former`, unless null, receives what it was.
TARVEX_API BOOL MoveToEx(HDC dc, int x, int y, POINT* former);
/// Draws a line from the current position to a point, which becomes the current position.
TARVEX_API BOOL LineTo(HDC dc, int x, int y);
/// Draws the lines between consecutive points, of which there must be two or more. The current
/// position is neither used nor changed.
TARVEX_API BOOL Polyline(HDC dc, const POINT* points, int count);
/// Draws cubic curves: a start point, then two control points and an end point for each; so `count`
/// must be 4, 7, 10... The current position is neither used nor changed.
TARVEX_API BOOL PolyBezier(HDC dc, const POINT* points, DWORD count);

/// Starts to record: until EndPath, the four operations above add to the path instead of drawing.
/// What was recorded before is dropped.
TARVEX_API BOOL BeginPath(HDC dc);
/// Closes the last figure by a line to its start, and lets the next line start another.
TARVEX_API BOOL CloseFigure(HDC dc);
/// Ends the recording. CloseFigure and this fail when nothing is being recorded.
TARVEX_API BOOL EndPath(HDC dc);

// Each of these uses up the recorded path and fails when there is none. Open figures are filled as
// though closed, and FillPath draws no outline.
TARVEX_API BOOL FillPath(HDC dc);
TARVEX_API BOOL StrokePath(HDC dc);
/// Closes every figure, fills, and then draws the outlines.
TARVEX_API BOOL StrokeAndFillPath(HDC dc);

/// ALTERNATE: inside is what an odd number of outlines surrounds. WINDING: inside is what outlines
/// surround more often in one direction than in the other. Returns the mode before, 0 when refused.
TARVEX_API int SetPolyFillMode(HDC dc, int mode);
/// Remembers TRANSPARENT or OPAQUE and returns the mode before, 0 when refused. Solid pens and brushes
/// have no gaps for a background to show in.
TARVEX_API int SetBkMode(HDC dc, int mode);

// ---------------------------------------------------------------------------------------------
// Rectangles
//
// A rectangle holds its left column and top row but not its right column and bottom row, and is empty
// when that leaves nothing. The result may be one of the arguments. False when a pointer is null.

TARVEX_API BOOL SetRect(RECT* rectangle, int left, int top, int right, int bottom);
TARVEX_API BOOL CopyRect(RECT* result, const RECT* rectangle);
/// True for a null pointer.
TARVEX_API BOOL IsRectEmpty(const RECT* rectangle);
TARVEX_API BOOL PtInRect(const RECT* rectangle, POINT point);
/// Moves each side outwards; what would leave the range of a coordinate stops at its end.
TARVEX_API BOOL InflateRect(RECT* rectangle, int dx, int dy);
/// What both have in common; false, and a rectangle of zeros, when that is nothing.
TARVEX_API BOOL IntersectRect(RECT* result, const RECT* a, const RECT* b);
/// The smallest rectangle around those of the two that are not empty; false, and a rectangle of
/// zeros, when both are.
TARVEX_API BOOL UnionRect(RECT* result, const RECT* a, const RECT* b);

// ---------------------------------------------------------------------------------------------
// What a desktop tells and is told

/// What stands in for keyboard, loudspeaker, clock and debugger. A null member stands for its default.
/// The functions may be called from any thread that is in the library.
struct DesktopHooks {
    bool (*abortRequested)() = nullptr;             ///< whether Escape is held; by default never
    void (*beep)() = nullptr;                       ///< by default silent
    std::int64_t (*secondsNow)() = nullptr;         ///< by default the system's clock, seconds since 1970
    void (*debugOutput)(const wchar_t*) = nullptr;  ///< by default dropped
    int (*pixelsPerInch)() = nullptr;               ///< of every device; by default 96
};

/// Replaces all hooks, for the whole process, and returns the former ones.
TARVEX_API DesktopHooks SetDesktopHooks(const DesktopHooks& hooks);

/// The highest bit is set, so the result is negative, while the key is held. Only VK_ESCAPE ever is.
TARVEX_API SHORT GetAsyncKeyState(int key);
TARVEX_API BOOL MessageBeep(UINT type);
/// Whole seconds; also stored in `*seconds` unless that is null.
TARVEX_API std::int64_t _time64(std::int64_t* seconds);
/// A null text is ignored.
TARVEX_API void OutputDebugStringW(const wchar_t* text);

}  // namespace tarvex

#endif
