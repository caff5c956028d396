// From a bitmap to the Bezier outlines of its light regions.
//
// Columns x grow to the right, rows y downwards, (0, 0) is the top left pixel; points of outlines are
// pixel columns and rows, whole numbers before fitting. Pixels that are set (1, white) are the shape.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "tarvex/bezier.h"
#include "tarvex/containers.h"
#include "tarvex/platform.h"

namespace tarvex {

/// A record on the stack of a seed fill: a span of a row, and the direction of the next row to look at.
struct FILLRECORD {
    std::int32_t y = 0;   ///< row in which the span was found
    std::int32_t xl = 0;  ///< its leftmost column
    std::int32_t xr = 0;  ///< its rightmost column
    std::int32_t dy = 0;  ///< +1 or -1
};

/// Traces the regions of set pixels of a bitmap into closed Bezier contours.
///
///     CShapeTrace tracer(bitmap);
///     CPolyPolyBezier contours;
///     tracer.DoTrace(contours, 10);
///
/// The tracer works on a private 1-bit copy, the working raster, and marks the boundaries that it has
/// traced in a second one, the trace raster. Copies of a tracer share both: what one marks or erases the
/// others see; the last of them deletes the bitmaps. One thread at a time may use a tracer and its copies.
///
/// Regions are 8-connected. A boundary is walked pixel by pixel with the direction codes
/// 0 east, 1 south-east, 2 south, 3 south-west, 4 west, 5 north-west, 6 north, 7 north-east
/// (dx = [d < 2 or d > 6] - [2 < d < 6], dy = [0 < d < 4] - [d >= 5]). Outer boundaries come out
/// counterclockwise as seen on the screen, those of holes clockwise; the boundary of a hole runs on the
/// region's own pixels.
class TARVEX_API CShapeTrace {
  public:
    /// Copies the bitmap, of any depth that the system can copy to 1 bit (its own rule decides which
    /// colours become 1; a monochrome bitmap is copied bit for bit). A null handle, and a bitmap
    /// that cannot be read or copied, give a tracer without rasters. A bitmap stored top-down (its height is
    /// negative) yields no contours.
    explicit CShapeTrace(HBITMAP bitmap);
    CShapeTrace(const CShapeTrace&) = default;
    CShapeTrace& operator=(const CShapeTrace&) = default;
    ~CShapeTrace();

    /// Empties `out` and traces all regions into it, each boundary as `AddEdges` says. False, with `out` as
    /// it was, only when there are no rasters.
    ///
    /// Seeds are the pixels whose column and row are multiples of 10, row by row; a seed counts that is set
    /// and not on a traced boundary. So a region that holds no such pixel is not traced, and neither are
    /// boundaries that no seed's run of pixels begins on: small features need a larger picture. Marks stay
    /// for the life of the rasters: a second call traces nothing that the first one traced.
    ///
    /// The cost is proportional to the pixels on the boundaries plus the points of the contours fitted. Where
    /// lines are one pixel wide, different seeds on one line may each yield a contour that runs over the same
    /// pixels, so those can be many more than the picture has pixels.
    ///
    /// When memory runs out `out` keeps the contours added so far.
    bool DoTrace(CPolyPolyBezier& out, int minPoints);

    /// Walks one boundary (see `GetOutline`), marks it and appends it to `out`, fitted by FitCurve with an
    /// error of 5.0. The start is handed to FitCurve three times, first and twice last; that is deliberate
    /// and changes the fit. Nothing is marked or appended for a boundary refused; a fit of 2 nodes or fewer
    /// is marked but not appended.
    void AddEdges(int x, int y, CPolyPolyBezier& out, int minPoints);

    /// Walks the boundary that the run of set pixels around (x, y) begins on, from the run's leftmost pixel,
    /// and appends its pixels to `points`, the first once more at the end. The walk ends when it is back at
    /// its first pixel, even if that happens before the whole boundary is seen, as in a line one pixel wide.
    ///
    /// Returns 1, or 0 when there is none: (x, y) is outside the raster or not set; the run's leftmost pixel
    /// has no neighbour; one of the first 10 pixels is marked as traced; there are no more than `minPoints`
    /// pixels. In the last two cases the pixels seen before that stay in `points`. A `points` that is not
    /// empty at the call counts as a walk already back at its start: only its own first point is appended.
    int GetOutline(int x, int y, CArray<DPOINT, DPOINT>& points, int minPoints);

    /// Puts the neighbour of (x, y) in direction `dir` into (*nx, *ny) and returns whether it is inside the
    /// raster with a pixel that is `value`: 1 or 0.
    int Probe(int x, int y, int dir, int* nx, int* ny, bool value);

    /// The next direction of a boundary walk. The first one tried is lastDir + 2 for odd and lastDir + 1
    /// for even `lastDir` (modulo 8), then the one below it, and so on around; (*nx, *ny) is the
    /// neighbour found. When none of the eight has the value the result is 0 and (*nx, *ny) the last one
    /// tried.
    int Neighbor(int x, int y, int lastDir, int* nx, int* ny, bool value);

    /// 1 when (x, y) is inside the raster and its working pixel is `value`, else 0.
    int in_cont(int x, int y, bool value);

    // Single pixels of the two rasters. Coordinates are clamped: outside the raster the nearest edge pixel is
    // read or written. Without rasters (or without pixels) reading gives false and writing does nothing.

    bool GetPixel(int x, int y);
    void SetPixel(int x, int y, bool on = true);
    bool GetTracePixel(int x, int y);
    void SetTracePixel(int x, int y, bool on = true);

    /// Pushes a record on the fill stack, unless the row y + dy lies outside the raster.
    void PUSH(int y, int xl, int xr, int dy);
    /// Takes the last record off the fill stack, with dy already added to its y. On an empty stack nothing
    /// happens.
    void POP(int& y, int& xl, int& xr, int& dy);

    /// Erases the 4-connected region of set pixels around (x, y) from the working raster; nothing when (x, y)
    /// is outside or not set. The fill stack is empty afterwards. The cost is proportional to the region's
    /// spans.
    void SeedFill(int x, int y);

  private:
    struct Rasters;

    std::shared_ptr<Rasters> m_rasters;
    std::vector<FILLRECORD> m_fillStack;
};

}  // namespace tarvex
