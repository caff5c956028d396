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

// Keywords of sixteen-bit compilers, which Windows defines away and C++ has better uses for.
#undef far
#undef near
#undef FAR
#undef NEAR
#define FAR
#define NEAR

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
using HFONT = struct HFONT__*;
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

// Fonts and what is asked about them.

inline constexpr int LF_FACESIZE = 32;
using WCHAR = wchar_t;  ///< a whole character, where wchar_t has 32 bits

/// A font as it is asked for; see CreateFontIndirectW.
struct tagLOGFONTW {
    LONG lfHeight;
    LONG lfWidth;
    LONG lfEscapement;   ///< tenths of a degree, counter-clockwise as seen
    LONG lfOrientation;  ///< not read: characters turn with their line
    LONG lfWeight;       ///< 1 to 1000, FW_NORMAL being 400; 0 is any
    BYTE lfItalic;
    BYTE lfUnderline;
    BYTE lfStrikeOut;
    BYTE lfCharSet;
    BYTE lfOutPrecision;
    BYTE lfClipPrecision;
    BYTE lfQuality;
    BYTE lfPitchAndFamily;  ///< FF_ROMAN and its like tell what may stand in for the face
    WCHAR lfFaceName[LF_FACESIZE];
};
using LOGFONTW = tagLOGFONTW;

/// A number with 16 bits after the point; negative ones round `value` down.
struct FIXED {
    WORD fract;
    SHORT value;
};
struct MAT2 {
    FIXED eM11;
    FIXED eM12;
    FIXED eM21;
    FIXED eM22;
};
struct POINTFX {
    FIXED x;
    FIXED y;
};
/// The head of one closed polygon of a native outline; curves follow it.
struct TTPOLYGONHEADER {
    DWORD cb;      ///< bytes of the polygon, this head included
    DWORD dwType;  ///< TT_POLYGON_TYPE
    POINTFX pfxStart;
};
/// TT_PRIM_LINE: lines to each of the points. TT_PRIM_QSPLINE: quadratic curves whose control points are all
/// but the last point, which is where the last one ends; the others end midway between two control points.
struct TTPOLYCURVE {
    WORD wType;
    WORD cpfx;
    POINTFX apfx[1];
};
struct GLYPHMETRICS {
    UINT gmBlackBoxX;
    UINT gmBlackBoxY;
    POINT gmptGlyphOrigin;  ///< of the box's upper left corner, y upwards
    SHORT gmCellIncX;
    SHORT gmCellIncY;
};
struct ABCFLOAT {
    float abcfA;
    float abcfB;
    float abcfC;
};
struct TEXTMETRICW {
    LONG tmHeight;  ///< ascent and descent
    LONG tmAscent;
    LONG tmDescent;
    LONG tmInternalLeading;  ///< by how much the height is more than the em
    LONG tmExternalLeading;
    LONG tmAveCharWidth;
    LONG tmMaxCharWidth;
    LONG tmWeight;
    LONG tmOverhang;
    LONG tmDigitizedAspectX;
    LONG tmDigitizedAspectY;
    WCHAR tmFirstChar;
    WCHAR tmLastChar;
    WCHAR tmDefaultChar;
    WCHAR tmBreakChar;
    BYTE tmItalic;
    BYTE tmUnderlined;
    BYTE tmStruckOut;
    BYTE tmPitchAndFamily;
    BYTE tmCharSet;
};
/// What GetCharacterPlacementW is to fill in.
struct GCP_RESULTSW {
    DWORD lStructSize;
    WCHAR* lpOutString;
    UINT* lpOrder;
    int* lpDx;
    int* lpCaretPos;
    char* lpClass;
    WCHAR* lpGlyphs;
    UINT nGlyphs;
    int nMaxFit;
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
inline constexpr int SYSTEM_FONT = 13;
inline constexpr LONG FW_NORMAL = 400;
inline constexpr LONG FW_BOLD = 700;
inline constexpr BYTE FIXED_PITCH = 1;
inline constexpr BYTE FF_ROMAN = 0x10;
inline constexpr BYTE FF_SWISS = 0x20;
inline constexpr BYTE FF_MODERN = 0x30;
inline constexpr BYTE FF_SCRIPT = 0x40;
inline constexpr BYTE FF_DECORATIVE = 0x50;
inline constexpr UINT GGO_METRICS = 0;
inline constexpr UINT GGO_NATIVE = 2;
inline constexpr DWORD GDI_ERROR = 0xFFFFFFFF;
inline constexpr DWORD TT_POLYGON_TYPE = 24;
inline constexpr WORD TT_PRIM_LINE = 1;
inline constexpr WORD TT_PRIM_QSPLINE = 2;
inline constexpr DWORD GGI_MARK_NONEXISTING_GLYPHS = 1;
inline constexpr DWORD GCP_USEKERNING = 8;
inline constexpr UINT CP_UTF8 = 65001;
inline constexpr DWORD MB_ERR_INVALID_CHARS = 8;

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
/// Deletes a context made by CreateCompatibleDC or CreateDCW and lets go of what is selected into it. False
/// for anything else, the screen's contexts among them.
TARVEX_API BOOL DeleteDC(HDC dc);

/// A context on the screen for the driver "DISPLAY", which is deleted by DeleteDC; null for any other. The
/// other arguments do not matter.
TARVEX_API HDC CreateDCW(const WCHAR* driver, const WCHAR* device, const WCHAR* output, const void* settings);
/// A context on the screen, which is a picture in memory: 1024 by 768 pixels of 32 bits, black at
/// first, one for the whole process. Release it with ReleaseDC. Null for a window.
TARVEX_API HDC GetDC(HWND window);
/// 1 when the context was one of GetDC's, else 0 and nothing happens.
TARVEX_API int ReleaseDC(HWND window, HDC dc);
/// Pixels per inch (96 both ways unless a hook says otherwise), the screen's size (HORZRES, VERTRES), its
/// depth (BITSPIXEL, PLANES); 0 for any other question and when the context is not one.
TARVEX_API int GetDeviceCaps(HDC dc, int index);

/// Selects a bitmap, brush, pen or font and returns what was selected in its place, which the caller puts
/// back before deleting the object; null when that is refused. A bitmap can be selected into one
/// context at a time, and into none of the screen's. Before the first bitmap and the first font, a stock
/// handle stands in its place that can only be selected again.
TARVEX_API HGDIOBJ SelectObject(HDC dc, HGDIOBJ object);
/// Deletes a bitmap, brush, pen or font. False, with nothing deleted, while it is selected into a context
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
// Fonts
//
// Fonts are found by Fontconfig, with the rules that the system and its user set, and read by FreeType. A
// build without these two makes no fonts. Sizes are pixels and nothing is rounded to them: outlines are not
// hinted, and the same font file gives the same outlines on every processor.
//
// Characters are Unicode's, those beyond U+FFFF included. One that the font does not have is taken from the
// installed outline font that comes nearest to it and has it; when none has, it is the font's box for
// missing characters. Text is not shaped: each character stands for its own glyph, from left to right.

/// Finds a font. Null when there is none at all, for a null pointer, and when the em comes to more than
/// 16,384 pixels or less than 1/64.
///
/// Height: negative for the em's height; positive for the cell's, which is ascent and descent together; 0
/// for an em of 16 pixels (12 points). Width: the average width of characters, to which they are narrowed or
/// widened; 0 leaves them as they are, and the sign does not matter. A family that is not installed is
/// replaced by what the system's rules say, or else by a font with serifs for FF_ROMAN, one of fixed pitch
/// for FF_MODERN or FIXED_PITCH, a script for FF_SCRIPT, a decorative font for FF_DECORATIVE, and by a
/// sans-serif font otherwise. Where the family has no bold or italic face, one is made by widening or
/// slanting the outlines, if the system's rules say so. Underlines and the character set are not read.
TARVEX_API HFONT CreateFontIndirectW(const LOGFONTW* font);

/// The outline of a character for GGO_NATIVE: polygons of lines and quadratic curves, y upwards, the pen at
/// 0, turned by the font's escapement. Cubic curves become quadratic ones within a quarter of a pixel.
/// `metrics` gets the box around it, rounded outwards, and the advance; with GGO_METRICS that is all.
///
/// The result is the number of bytes of the outline, also where a null buffer or the size 0 asks for
/// it; 0 when there is nothing to draw, as for a space. GDI_ERROR, with nothing written, when the buffer is
/// too small, the font has only bitmaps, the context has no font, a coordinate does not fit into 16 bits
/// before the point, `transform` is not the identity or `metrics` is null, and for any other format.
TARVEX_API DWORD GetGlyphOutlineW(HDC dc, UINT character, UINT format, GLYPHMETRICS* metrics, DWORD size,
                                  void* buffer, const MAT2* transform);
/// For each of the characters `first` to `last`, along the line: the space before its outline, the outline's
/// width, and the space after it, which together are the advance. Spaces before and after may be negative;
/// where there is no outline the width is the advance. False when there is no font, or the range is empty
/// or goes beyond U+10FFFF.
TARVEX_API BOOL GetCharABCWidthsFloatW(HDC dc, UINT first, UINT last, ABCFLOAT* widths);
/// Heights are rounded to pixels. False when the context has no font.
TARVEX_API BOOL GetTextMetricsW(HDC dc, TEXTMETRICW* metrics);
/// The family of the font that was found, cut to `size` - 1 characters and a zero. Returns the number of
/// characters written, the zero included, or needed when `name` is null; 0 when the context has no font.
TARVEX_API int GetTextFaceW(HDC dc, int size, WCHAR* name);
/// The number of each character's glyph in the font that it is taken from; where no font has it, 0xFFFF
/// with GGI_MARK_NONEXISTING_GLYPHS and else 0. Returns `count`, or GDI_ERROR when the context has no font.
TARVEX_API DWORD GetGlyphIndicesW(HDC dc, const WCHAR* text, int count, WORD* indices, DWORD flags);
/// Each character's advance, in `results->lpDx`, rounded; with GCP_USEKERNING corrected for the character
/// that follows it. The structure's other members are neither read nor written, but for its size and
/// `nGlyphs`, the room in `lpDx`, which becomes the number of advances. Returns the line's width in the
/// lower and its height in the upper 16 bits; 0 when it is refused or there is nothing to place.
TARVEX_API DWORD GetCharacterPlacementW(HDC dc, const WCHAR* text, int count, int most, GCP_RESULTSW* results,
                                        DWORD flags);

/// UTF-8 to wide characters. `size` bytes are read, or up to a zero, and that too, for -1. What is not UTF-8
/// becomes U+FFFD byte by byte, or with MB_ERR_INVALID_CHARS is refused. Returns the characters written, or
/// needed when `room` is 0; 0 when refused, there is not room enough, or the code page is another.
TARVEX_API int MultiByteToWideChar(UINT codePage, DWORD flags, const char* text, int size, WCHAR* wide,
                                   int room);
/// The other way, in the same manner; what is no character becomes U+FFFD. The flags must be 0, and the last
/// two arguments null.
TARVEX_API int WideCharToMultiByte(UINT codePage, DWORD flags, const WCHAR* wide, int size, char* text,
                                   int room, const char* standIn, BOOL* wasNeeded);

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
