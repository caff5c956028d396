// From a click on a picture to the outlines of the colour region around it.
//
// Columns x grow to the right, rows y downwards, (0, 0) is the top left pixel; points of outlines are pixel
// columns and rows.
#pragma once

#include <cstdint>
#include <vector>

#include "tarvex/containers.h"
#include "tarvex/platform.h"
#include "tarvex/rectangles.h"
#include "tarvex/shapetrace.h"

namespace tarvex {

// What the tracer notes about a pixel, in the pixel's reserved byte. Between calls only digitised marks are
// found there; the others are cleared at the end of the call that made them.
inline constexpr BYTE PIXEL_ATTR_FILL = 1;     ///< belongs to the filled region
inline constexpr BYTE PIXEL_ATTR_TRACE = 2;    ///< lies on a traced outline
inline constexpr BYTE PIXEL_ATTR_CUT = 4;      ///< lies under a cut line, which stops the fill
inline constexpr BYTE PIXEL_ATTR_DIGI = 8;     ///< was filled by an earlier trace
inline constexpr BYTE PIXEL_ATTR_FILTER = 16;  ///< temporary mark of the smoothing

/// Floods the region of similar colour around a pixel of a 32-bit picture, smooths it and traces its
/// boundaries; or gives its stitch regions, or its centre lines.
///
///     CAutoTrace tracer(bitmap, 96.0);
///     tracer.DoTrace(x, y, nullptr, 0, false, false, false);
///     // tracer.TracedLines(): closed polylines, the outer boundary and those of holes
///
/// The tracer keeps its marks in the reserved bytes of the caller's picture. A reserved byte with any of its
/// upper three bits set is not one of the tracer's (an alpha channel is 255) and is cleared at the start of
/// every trace; so the alpha of the picture is lost. Colours are never changed by a trace, and after it the
/// reserved bytes hold nothing but digitised marks (PIXEL_ATTR_DIGI).
///
/// The picture must outlive the tracer and keep its size. A bitmap that is not one of 32 bits stored from the
/// bottom up counts as a picture without pixels: nothing is filled and nothing traced.
///
/// Reading and writing pixels clamps coordinates into the picture. One thread at a time may use a picture.
class TARVEX_API CAutoTrace {
  public:
    /// `scale` is what the break-up is told (see CAutoBreakUp::AutoBreakUp).
    CAutoTrace(HBITMAP bitmap, double scale);
    CAutoTrace(const CAutoTrace&) = delete;
    CAutoTrace& operator=(const CAutoTrace&) = delete;
    ~CAutoTrace();

    /// Whether the filled area is smoothed before it is traced; true for a new tracer. Smoothing adds to the
    /// area only: first one pixel all around, then every pixel whose 5 x 5 window is filled for its greater
    /// part (13 pixels of 25), which closes notches and small holes. It crosses cut lines.
    void SetFillFilter(bool on) { m_fillFilter = on; }

    /// Lines that a fill does not cross, each drawn 2 pixels wide; empty for a new tracer. A line of one
    /// point stops nothing.
    CPolyPolyPoint& CutPolylines() { return m_cutPolylines; }

    /// Traces the region around the pixel (x, y) and replaces what TracedLines and SkeletonCurves hold.
    ///
    /// The region is 4-connected. With tolerance 0 it has exactly the seed's colour; otherwise it is where
    /// the mean colour of the 3 x 3 window differs from the seed's by a squared distance (dR² + dG² + dB²) of
    /// at most `tolerance`. A seed outside the picture fills nothing.
    ///
    /// With `skeleton` the result is the centre lines of the region, as curves in SkeletonCurves. Otherwise
    /// it is the region's boundaries in TracedLines: polylines from pixel to neighbouring pixel, closed by
    /// repeating the first point, outer ones counterclockwise as seen on the screen and those of holes
    /// clockwise. Seeds for boundaries are taken every 10 pixels, from 5 pixels above and left of the region;
    /// a boundary that no seed's run of pixels begins on is missed, and so is a region without a seed. A
    /// boundary of fewer than 5 pixels is left out.
    ///
    /// With `inclinations` the outlines go on to the break-up, `checkComplexity` with them: TracedLines then
    /// holds two rails for each stitch region, and `inclinations` the positions along them; both are empty
    /// when the region cannot be broken up. `inclinations` is not used with `skeleton`.
    ///
    /// With `keepDigi` the region's pixels stay marked as digitised, which later traces keep but do not
    /// mind. When memory for the cut lines is short nothing is traced.
    void DoTrace(int x, int y, CPolyPolyInclination* inclinations, int tolerance, bool keepDigi,
                 bool checkComplexity, bool skeleton);

    /// Fills the region of exactly the seed's colour, traces its boundaries as above, unsmoothed, and leaves
    /// its pixels marked as digitised. Seeds for boundaries are taken in the area of the last DoTrace (at
    /// first the whole picture).
    void SeedFillAD(int x, int y);

    /// What the last call traced.
    const CPolyPolyDPoint& TracedLines() const { return m_tracedLines; }
    const CPolyPolyBezier& SkeletonCurves() const { return m_skeletonCurves; }

    /// The area of the picture that was looked at last, right and bottom exclusive.
    CRect FillBounds() const { return m_fillBounds; }

    // -----------------------------------------------------------------------------------------
    // Colours

    /// Whether red, green and blue are equal.
    static bool IsEqual(const RGBQUAD& a, const RGBQUAD& b);
    /// Whether dR² + dG² + dB² is less than `tolerance` (a fill goes on up to its tolerance, inclusive).
    static bool IsAlmostEqual(const RGBQUAD& a, const RGBQUAD& b, int tolerance);

    /// The pixel, black without pixels.
    RGBQUAD GetPixel(int x, int y) const;
    /// Sets a pixel's colour and leaves its reserved byte.
    void SetPixel(int x, int y, const RGBQUAD& colour);
    void SetPixel(int x, int y, int red, int green, int blue);
    /// The mean of the 3 x 3 window, each channel rounded down.
    RGBQUAD GetMeanPixel(int x, int y) const;
    /// The colour that most of the 7 x 7 window is like: read row by row, each pixel joins the first colour
    /// seen that it is almost equal to (1000), or else is one itself; the first of the most frequent wins.
    RGBQUAD GetMajorityPixel(int x, int y) const;

    /// A new black 1-bit bitmap with the colour table black, white, which the caller deletes. Null when it
    /// cannot be had.
    static HBITMAP CreateEmptyBmpBW(CSize size);

    /// Paints the marks that the picture holds on the screen, for debugging: filled red, traced but not
    /// filled green, else black. After a trace there are no such marks left, so what it shows are a caller's
    /// own.
    void DumpImage() const;
    /// Shows the last region's mask in the screen's top left corner, for debugging.
    void DumpBUBmp() const;

  private:
    void MakeBUBmp(const void* bits);

    CPolyPolyPoint m_cutPolylines;
    CPolyPolyDPoint m_tracedLines;
    CPolyPolyBezier m_skeletonCurves;
    double m_scale;
    HBITMAP m_hBitmap;
    RGBQUAD* m_bits = nullptr;
    int m_width = 0;
    int m_height = 0;
    bool m_fillFilter = true;
    CRect m_fillBounds;
    HBITMAP m_hBUBitmap = nullptr;
};

}  // namespace tarvex
