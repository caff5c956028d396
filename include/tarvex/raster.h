// Pixels of bitmaps, and lines one pixel wide traced into polylines.
//
// What holds for every raster of the library. A raster is described by a BITMAP record, of which only the
// width, the height, the bits per pixel and the pointer to the bits are used (never the stored row size). x
// is the column, growing to the right, y the row, growing downwards, (0, 0) the top left pixel. Rows are
// stored from the bottom up: image row y is storage row height - 1 - y. A pixel is
//   - at 32 bits four bytes blue, green, red, reserved, rows of 4 * width bytes; set when it is not black
//     (the reserved byte does not count);
//   - at 1 bit a bit, rows of WIDTHBYTES(width) bytes, the most significant bit of a byte leftmost; set
//     when it is 1.
// At other depths no pixel is set. Colours are COLORREF values: red in bits 0-7, green in 8-15, blue in
// 16-23. In the monochrome bitmaps that the library makes, 0 is black and 1 is white, so the shape is light
// on a dark ground.
#pragma once

#include "tarvex/containers.h"
#include "tarvex/matrices.h"
#include "tarvex/platform.h"

namespace tarvex {

// Cell values of the work matrix.
inline constexpr unsigned char IMGPROC_EMPTY = 0;    ///< background
inline constexpr unsigned char IMGPROC_LINE = 1;     ///< a line pixel
inline constexpr unsigned char IMGPROC_ANCHOR = 2;   ///< a line's end, a junction or a chosen break
inline constexpr unsigned char IMGPROC_VISITED = 3;  ///< a line pixel already walked

/// Pixel access, and the line tracer: turns a bitmap into a matrix of cells, the work matrix, and the lines
/// in it, one pixel wide as thinning leaves them, into polylines of cell positions.
///
/// Cells outside the matrix read as 0 and are never written. Neighbours are always looked at column by
/// column: (x-1, y-1), (x-1, y), (x-1, y+1), (x, y-1), (x, y+1), (x+1, y-1), (x+1, y), (x+1, y+1); matrices
/// are scanned row by row from the top, each row from the left. Any coordinates may be given.
///
/// Copies share the work matrix' cells; `InitMat` gives an object cells of its own. One thread at a time may
/// use an object and its copies.
class TARVEX_API CImgProc {
  public:
    CImgProc() = default;
    explicit CImgProc(HBITMAP bitmap);
    CImgProc(const CImgProc&) = default;
    CImgProc& operator=(const CImgProc&) = default;
    virtual ~CImgProc();

    // -----------------------------------------------------------------------------------------
    // Pixels and bitmaps

    /// Bytes of a row of `bits` bits, padded to whole 32-bit words.
    static unsigned int WIDTHBYTES(unsigned int bits);

    /// Whether the pixel is set; false outside the raster.
    static bool GetPixel(const BITMAP& bitmap, int x, int y);
    /// Sets or clears a pixel of a 1-bit raster; the depth is not looked at. Nothing outside the raster.
    static void SetPixel(const BITMAP& bitmap, int x, int y, bool on);
    /// The colour of a pixel of a 32-bit raster; the depth is not looked at. 0 outside the raster.
    static COLORREF GetPixel32(const BITMAP& bitmap, int x, int y);
    /// Sets the colour of a pixel of a 32-bit raster and leaves its reserved byte; the depth is not looked
    /// at. Nothing outside the raster.
    static void SetPixel32(const BITMAP& bitmap, int x, int y, COLORREF colour);

    /// A new black bitmap of 32 bits, bottom-up, which the caller deletes. Null when it cannot be had.
    static HBITMAP CreateBitmap32(int width, int height);
    /// A new black bitmap of 1 bit, bottom-up, with the colour table black, white. Null when it cannot be
    /// had.
    static HBITMAP CreateBitmapBW(int width, int height);

    /// How many of a set pixel's eight neighbours are set; 0 for a pixel that is not.
    static int CountPointPaths(const BITMAP& bitmap, int x, int y);

    /// Shows the bitmap in the screen's top left corner, for debugging.
    static void DumpBmp(HBITMAP bitmap);

    // -----------------------------------------------------------------------------------------
    // The work matrix

    /// Makes the work matrix the bitmap's size, 1 where a pixel is set, else 0. A null handle changes
    /// nothing; one that is not a bitmap's empties the matrix.
    void InitMat(HBITMAP bitmap);

    CByteMatrix& mat() { return m_mat; }
    const CByteMatrix& mat() const { return m_mat; }

    // -----------------------------------------------------------------------------------------
    // Counting what leaves a cell; all are 0 for a cell that is 0

    /// Neighbours that are not 0.
    int CountPointPaths(int x, int y);
    /// Neighbours that are `value`.
    int CountPointPaths(int x, int y, unsigned char value);

    /// Branches: neighbours that are not 0 with, in the ring two cells out, a cell behind them that is not 0
    /// either. Behind a neighbour beside the cell lie the three ring cells next to it, behind a diagonal one
    /// the five around that corner of the ring.
    int CountPointPaths2(int x, int y);
    /// The same with `value` in place of what is not 0.
    int CountPointPaths2(int x, int y, unsigned char value);

    /// The neighbours where they are at most 2, else the branches.
    int CountPointPaths3(int x, int y);
    /// The neighbours that are `value` where they are 0 or 1, else the branches of `value`: deliberately
    /// another limit than in the form without a value.
    int CountPointPaths3(int x, int y, unsigned char value);

    // -----------------------------------------------------------------------------------------
    // Tracing lines

    /// The first cell of value 1 with `n` = CountPointPaths3(x, y, 1). False, and nothing in x and y, when
    /// there is none. Scans from the top at each call.
    bool FindLinePoint(int& x, int& y, int n);

    /// One step along a line. The cell itself becomes 3 if it is 1; x and y go to its first neighbour of
    /// value 1, or stay when there is none (false). The cell stepped to becomes an anchor, 2, and the walk
    /// ends (false) when it is an end or a junction: CountPointPaths3 is 1 or above 2, or CountPointPaths3
    /// for 1 and for 2 together is neither 1 nor 2. Otherwise true: the walk goes on.
    bool TraceLinePoint(int& x, int& y);

    /// The first anchor with a neighbour of value 1. False, and nothing in x and y, when there is none. Scans
    /// from the top at each call.
    bool GetNextAnchorPoint(int& x, int& y);

    /// Appends the line that leaves the anchor (x, y): the anchor, the cells of value 1 from neighbour to
    /// neighbour, which become 3, and where none is left the first anchor among the last cell's neighbours.
    /// That may be the anchor that the line started from, also when the line has only one cell between its
    /// ends. Appends nothing when (x, y) is not an anchor.
    void GetPolylineFromAnchor(CArray<POINT, POINT>& line, int x, int y);

    /// Traces all lines. First marks anchors: from the first cell with two paths (`FindLinePoint` with 2)
    /// walks both ways along its line, and again until there is no such cell; only if there was none at all,
    /// once from the first cell with one path, or else from the first with none. Then empties `lines` and
    /// fills it with the lines that leave the anchors (`GetNextAnchorPoint`, `GetPolylineFromAnchor`), except
    /// those of fewer than 3 points, until there is none or there are `maxLines`; 0 means no limit.
    ///
    /// A closed ring comes out as one polyline from its one anchor back to it. Afterwards anchors are 2,
    /// cells walked into a line 3, cells that no anchor leads to 1. The cost is proportional to the cells,
    /// whatever the number of lines.
    void TraceAnchorPointsAndLines(CPolyPolyPoint& lines, int maxLines);

    /// Appends for every cell that is not 0 the polyline (x-1, y), (x, y), (x+1, y), and stops when `lines`
    /// holds `maxLines`, unless that is 0; the cell at which it stops is still appended. The cells stay.
    void TraceLoosePoints(CPolyPolyPoint& lines, int maxLines);

    /// Clears the matrix and draws the lines' points, in order: 2 at the first and last point of a line, 1 at
    /// the others. Points outside the matrix are ignored and null lines skipped.
    void MakeLinesMat(const CPolyPolyPoint& lines);

    /// Shows the matrix on the screen, for debugging.
    void DumpMat();

  private:
    CByteMatrix m_mat;
};

}  // namespace tarvex
