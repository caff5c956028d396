// Document coordinates on a screen: one uniform scale and an offset, zoom, pan, and drawing through them.
//
// Document coordinates are doubles, in tenths of a millimetre where the true size matters (Scale121); pixels
// are integers, y growing in the same direction as in the document. Rounding to a pixel is floor(v + 0.5),
// saturating at the ends of the range; NaN becomes pixel 0.
//
// Nothing here fails or raises, except that what makes points raises CMemoryException when memory is short.
// Any value may be given, NaN and infinities included: what has no answer comes out as NaN or infinity.
#pragma once

#include "tarvex/platform.h"
#include "tarvex/records.h"

namespace tarvex {

/// A mapping between document and pixels, and a pen position for drawing through it.
///
///     CScaleDraw view;
///     view.SetScaleToRect(0, 0, 1000, 500, &window);    // shows this part of the document, centred
///     view.MoveTo(dc, 0, 0);
///     view.LineTo(dc, 1000, 500);
///     view.SetScaleZoomInPoint(mouse);                  // what is under the mouse stays there
///
/// A new object maps (0, 0) to pixel (0, 0) at scale 1, with scales limited to 0.002 .. 500 and no clipping.
/// Copies are independent. Different objects may be used from different threads.
class TARVEX_API CScaleDraw {
  public:
    CScaleDraw();
    CScaleDraw(const CScaleDraw&) = default;
    CScaleDraw& operator=(const CScaleDraw&) = default;
    virtual ~CScaleDraw();

    // ---- From the document to pixels

    /// The pixel offset + (x - document offset) * scale.
    double x2sd(double x) const;
    double y2sd(double y) const;
    DPOINT p2sd(const DPOINT& p) const;
    /// The same, rounded: 2.5 gives 3 and -2.5 gives -2.
    int x2s(double x) const;
    int y2s(double y) const;
    tagPOINT p2s(const DPOINT& p) const;
    tagPOINT p2s(const FPOINT& p) const;
    /// Replaces `points` by a contour in pixels, as the platform's PolyBezier takes it: the first anchor,
    /// then two control points and an anchor for each segment. A contour of fewer than two nodes gives none.
    void p2s(const CArray<BPOINT, BPOINT>& contour, CArray<tagPOINT, tagPOINT>& points) const;

    // ---- From pixels to the document

    /// (sx - pixel offset) / scale + document offset.
    double s2x(double sx) const;
    double s2x(int sx) const;
    double s2y(double sy) const;
    double s2y(int sy) const;
    DPOINT s2p(const tagPOINT& p) const;
    DPOINT s2p(const DPOINT& p) const;
    /// The multiple of `grid` nearest to that, halves upwards. Grids smaller than 1e-8 are divided by as
    /// though they were 1e-8; a grid of exactly 0 gives NaN.
    double s2x(double sx, double grid) const;
    double s2x(int sx, double grid) const;
    double s2y(double sy, double grid) const;
    double s2y(int sy, double grid) const;

    // ---- Scale and offset

    /// Sets the scale to |s|, kept between the limits. NaN gives the smallest scale.
    void SetScale(double s);
    double GetScale() const { return m_scale; }
    /// The limits, 0.002 and 500 at first. The present scale is not limited anew. Positive limits are the
    /// caller's duty: with a smallest scale of 0 the scale can become 0, and pixels have no document point.
    void SetMaxScale(double s) { m_maxScale = s; }
    void SetMinScale(double s) { m_minScale = s; }
    double GetMaxScale() const { return m_maxScale; }
    double GetMinScale() const { return m_minScale; }
    /// The document point (ox, oy) is shown at the pixel (px, py).
    void SetOffset(double ox, double oy, int px, int py);
    void GetOffset(double& ox, double& oy, int& px, int& py) const;

    /// The scale at which a tenth of a millimetre is shown at its true size: the device's horizontal pixels
    /// per inch / 254, or `g_scale121` for a null context. What is no context has 0 pixels per inch.
    static double Scale121(HDC dc);
    void SetScale121(HDC dc);
    /// The scale in percent of the true size.
    double GetScalePercent(HDC dc) const;

    /// The largest scale at which w by h units fit into pw by ph pixels, within the limits. A pixel size of 0
    /// counts as 1; sizes in the document smaller than 1e-6 count as 1e-6, a guard coarser than the
    /// library's tolerance on purpose.
    void SetScaleToFit(double w, double h, int pw, int ph);
    /// Fits the document's rectangle into the pixel rectangle, centre on centre. The pixel centre is the
    /// half of the sums of its sides, rounded towards zero. A null rectangle changes nothing.
    void SetScaleToRect(double x1, double y1, double x2, double y2, const tagRECT* rc);
    /// The same for what is shown now in the rectangle `docPixels`: zooms to a dragged rectangle.
    void SetScaleToRect(const tagRECT* docPixels, const tagRECT* rc);

    /// Multiplies the scale, within the limits; what is under the pixel `pt` stays there.
    void SetScaleZoomPoint(double factor, const tagPOINT& pt);
    /// Doubles and halves the scale. Zooming in and out again about one pixel restores its mapping exactly.
    void SetScaleZoomInPoint(const tagPOINT& pt);
    void SetScaleZoomOutPoint(const tagPOINT& pt);
    /// Moves everything by `to` - `from` pixels. Beyond the range of int the offset wraps around, so that
    /// moving back always restores it.
    void MoveOffset(const tagPOINT& from, const tagPOINT& to);

    // ---- Drawing

    /// Clips what LineTo draws to a rectangle of pixels, its right and bottom included; null switches that
    /// off.
    void SetClipRect(const tagRECT* rc);
    /// The rectangle, from INT_MIN to INT_MAX both ways while there is none.
    void GetClipRect(tagRECT* rc) const;

    /// Sets the position at which LineTo starts, unrounded, and moves the device's to its pixel.
    void MoveTo(HDC dc, double x, double y);
    /// Draws a line to (x, y), which becomes the position, with the pen selected into `dc`.
    ///
    /// With a clip rectangle, the part inside it is drawn between its own rounded ends, so it can differ
    /// by a pixel from the same part of the whole line. The device's position follows only when something
    /// was drawn.
    void LineTo(HDC dc, double x, double y);
    /// Draws cubic curves, a start point and then three points for each, given in whole document units:
    /// outlined with the pen (`fill` false), or filled with the brush and outlined. The clip rectangle does
    /// not apply. Null points and a count of 0 or less draw nothing; other counts than 4, 7, 10... are
    /// refused by the device.
    void PolyBezier(HDC dc, const tagPOINT* pts, int count, bool fill) const;

    /// Scale121 of the screen, from when the library was loaded (96 pixels per inch off Windows, hence
    /// 96 / 254). An application that knows better overwrites it, before other threads draw.
    static double g_scale121;

  private:
    double m_scale = 1.0;
    double m_offsetX = 0;
    double m_offsetY = 0;
    int m_pixelX = 0;
    int m_pixelY = 0;
    double m_maxScale = 500.0;
    double m_minScale = 0.002;
    double m_curX = 0;
    double m_curY = 0;
    tagRECT m_clip;
    int m_clipOn;
};

}  // namespace tarvex
