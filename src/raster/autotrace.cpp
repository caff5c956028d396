// The colour-region tracer: the shared seed fill and contour follower.
//
// What is filled, cut and traced is kept in one-bit rasters, of which 64 pixels fit into a word; the reserved
// bytes of the picture's pixels, four bytes apart, are read once to clean them up and written only for what
// stays digitised. Seeds in one run of pixels lead to the same start of a boundary, and a start once refused
// stays refused, so each run is tried once.
#include "tarvex/autotrace.h"

#include <array>
#include <cstring>
#include <memory>

#include "raster/autotrace_raster.h"
#include "raster/contour_appender.h"
#include "raster/dib.h"
#include "raster/region_fill.h"
#include "tarvex/breakup.h"
#include "tarvex/raster.h"
#include "tarvex/skeleton.h"

namespace tarvex {
namespace {

constexpr int kSeedStep = 10;
constexpr int kMargin = 5;       ///< around the fill, for the smoothing
constexpr int kLeastPoints = 5;  ///< an outline has more, its closing point included
constexpr int kCutWidth = 2;
constexpr int kMajorityReach = 3;
constexpr std::size_t kMajorityPixels = 49;  ///< the window of 7 x 7 that this reach gives
constexpr int kMajorityTolerance = 1000;

constexpr COLORREF kWhite = RGB(255, 255, 255);

/// Draws white lines, `kCutWidth` wide, into a bitmap. False when there is no memory for that.
bool DrawWhiteLines(HBITMAP bitmap, const CPolyPolyPoint& lines) {
    const UniquePen pen(CreatePen(PS_SOLID, kCutWidth, kWhite));
    const UniqueDC dc(CreateCompatibleDC(nullptr));
    const SelectedObject selectedBitmap(dc.Get(), bitmap);
    const SelectedObject selectedPen(dc.Get(), pen.Get());
    if (!selectedBitmap || !selectedPen) return false;
    for (int i = 0; i < lines.GetCount(); ++i) {
        const auto* line = lines.GetAt(i);
        if (line == nullptr || line->GetSize() < 2) continue;
        if (Polyline(dc.Get(), line->GetData(), line->GetSize()) == FALSE) return false;
    }
    GdiFlush();
    return true;
}

/// Out of the class's reach, whose own SetPixel is another.
void Paint(HDC dc, int x, int y, COLORREF colour) { SetPixel(dc, x, y, colour); }

/// A closed outline as doubles.
std::unique_ptr<CArray<DPOINT, DPOINT>> ClosedOutline(PixelPosition start, const WalkSteps& steps) {
    if (steps.size() >= static_cast<std::size_t>(INT32_MAX)) AfxThrowMemoryException();
    auto outline = std::make_unique<CArray<DPOINT, DPOINT>>();
    outline->SetSize(static_cast<int>(steps.size()) + 1);
    DPOINT* out = outline->GetData();
    ForEachPoint(start, steps, [&out](int x, int y) {
        *out++ = {static_cast<double>(x), static_cast<double>(y)};
    });
    *out = {static_cast<double>(start.x), static_cast<double>(start.y)};
    return outline;
}

/// Follows the boundaries of what is filled, from seeds on a grid.
class BoundaryTracer {
  public:
    BoundaryTracer(const BitRaster& region, CPolyPolyDPoint& lines)
        : m_region(region), m_traced(region.Width(), region.Height()), m_lines(lines) {}

    // What the contour follower asks.
    NeighbourMask Neighbours(int x, int y) const { return m_region.Neighbours(x, y); }
    bool Traced(int x, int y) const { return m_traced.Raster().Get(x, y); }

    void TraceRow(int y, int left, int right) {
        int triedTo = -1;  // a pixel of the run tried last
        for (std::int64_t column = left; column < right; column += kSeedStep) {
            const int x = static_cast<int>(column);
            if (!m_region.Get(x, y) || Traced(x, y)) continue;
            const int start = m_region.RunStart(x, y, std::max(triedTo, 0));
            const bool tried = start == triedTo;
            triedTo = x;
            if (!tried) TraceFrom({start, y});
        }
    }

  private:
    void TraceFrom(PixelPosition start) {
        if (Neighbours(start.x, start.y) == 0) return;
        if (WalkBoundary(*this, start, m_steps) == WalkEnd::OnOldTrace) return;
        ForEachPoint(start, m_steps, [this](int x, int y) { m_traced.Raster().Set(x, y); });
        if (m_steps.size() + 1 > kLeastPoints) m_lines.Add(ClosedOutline(start, m_steps));
    }

    BitRaster m_region;
    OwnBits m_traced;
    ContourAppender<CArray<DPOINT, DPOINT>> m_lines;
    WalkSteps m_steps;
};

/// Follows the boundaries that seeds in the area lead to.
void TraceBoundaries(const BitRaster& region, const CRect& area, CPolyPolyDPoint& lines) {
    BoundaryTracer tracer(region, lines);
    for (std::int64_t y = area.top; y < area.bottom; y += kSeedStep)
        tracer.TraceRow(static_cast<int>(y), area.left, area.right);
}

void MarkDigitised(const MarkedRaster& picture, const BitRaster& region) {
    for (int y = 0; y < picture.Height(); ++y) {
        int x = region.SkipRight(0, picture.Width() - 1, y);
        for (; x < picture.Width(); x = region.SkipRight(x + 1, picture.Width() - 1, y))
            picture.Mark(x, y, PIXEL_ATTR_DIGI);
    }
}

}  // namespace

CAutoTrace::CAutoTrace(HBITMAP bitmap, double scale) : m_scale(scale), m_hBitmap(bitmap) {
    GdiFlush();
    DIBSECTION section{};
    const int known = GetObject(m_hBitmap, static_cast<int>(sizeof section), &section);
    if (known != static_cast<int>(sizeof section)) return;
    if (section.dsBm.bmBitsPixel != 32 || section.dsBmih.biHeight <= 0) return;
    m_bits = static_cast<RGBQUAD*>(section.dsBm.bmBits);
    m_width = section.dsBmih.biWidth;
    m_height = section.dsBmih.biHeight;
    m_fillBounds = CRect(0, 0, m_width, m_height);
}

CAutoTrace::~CAutoTrace() {
    if (m_hBUBitmap != nullptr) DeleteObject(m_hBUBitmap);
}

void CAutoTrace::DoTrace(int x, int y, CPolyPolyInclination* inclinations, int tolerance, bool keepDigi,
                         bool checkComplexity, bool skeleton) {
    const MarkedRaster raster(m_bits, m_width, m_height);
    m_tracedLines.RemoveAll();
    m_skeletonCurves.RemoveAll();
    CleanUpReserved(raster, keepDigi ? Digitised::Keep : Digitised::Forget);
    UniqueBitmap drawnCuts;
    BitRaster cuts;
    if (!m_cutPolylines.IsEmpty()) {
        BITMAP drawn{};
        drawnCuts.Reset(CreateEmptyBmpBW({m_width, m_height}));
        if (!drawnCuts || GetObject(drawnCuts.Get(), static_cast<int>(sizeof drawn), &drawn) == 0) return;
        if (!DrawWhiteLines(drawnCuts.Get(), m_cutPolylines)) return;
        cuts = BitRaster(static_cast<std::uint8_t*>(drawn.bmBits), m_width, m_height);
    }
    CRect bounds(x, y, x, y);
    const OwnBits region = FillRegion(raster, cuts, {x, y}, tolerance, bounds);
    InflateRect(&bounds, kMargin, kMargin);
    m_fillBounds = CRect(std::max<int>(bounds.left, 0), std::max<int>(bounds.top, 0),
                         std::min<int>(bounds.right, m_width), std::min<int>(bounds.bottom, m_height));
    if (m_fillFilter) SmoothRegion(region.Raster(), m_fillBounds);
    if (skeleton) {
        MakeBUBmp(region.Bytes().data());
        CSkeleton thinned;
        thinned.InputMono(m_hBUBitmap);
        thinned.Output(m_skeletonCurves);
    } else {
        TraceBoundaries(region.Raster(), m_fillBounds, m_tracedLines);
        if (inclinations != nullptr) {
            MakeBUBmp(region.Bytes().data());
            CAutoBreakUp breakUp;
            breakUp.AutoBreakUp(m_hBUBitmap, m_scale, m_tracedLines, *inclinations, checkComplexity);
        }
    }
    if (keepDigi) MarkDigitised(raster, region.Raster());
}

void CAutoTrace::SeedFillAD(int x, int y) {
    const MarkedRaster raster(m_bits, m_width, m_height);
    m_tracedLines.RemoveAll();
    m_skeletonCurves.RemoveAll();
    CleanUpReserved(raster, Digitised::Keep);
    CRect bounds(x, y, x, y);
    const OwnBits region = FillRegion(raster, {}, {x, y}, 0, bounds);
    TraceBoundaries(region.Raster(), m_fillBounds, m_tracedLines);
    MarkDigitised(raster, region.Raster());
}

void CAutoTrace::MakeBUBmp(const void* bits) {
    if (m_hBUBitmap != nullptr) DeleteObject(m_hBUBitmap);
    m_hBUBitmap = CreateEmptyBmpBW({m_width, m_height});
    BITMAP made{};
    if (m_hBUBitmap == nullptr || GetObject(m_hBUBitmap, static_cast<int>(sizeof made), &made) == 0) return;
    std::memcpy(made.bmBits, bits,
                PaddedRowBytes(static_cast<std::uint64_t>(m_width)) * static_cast<std::size_t>(m_height));
}

bool CAutoTrace::IsEqual(const RGBQUAD& a, const RGBQUAD& b) { return ColourDistance(a, b) == 0; }

bool CAutoTrace::IsAlmostEqual(const RGBQUAD& a, const RGBQUAD& b, int tolerance) {
    return ColourDistance(a, b) < tolerance;
}

RGBQUAD CAutoTrace::GetPixel(int x, int y) const {
    const MarkedRaster raster(m_bits, m_width, m_height);
    return raster.HasPixels() ? raster.At(raster.ClampedX(x), raster.ClampedY(y)) : RGBQUAD{};
}

void CAutoTrace::SetPixel(int x, int y, const RGBQUAD& colour) {
    const MarkedRaster raster(m_bits, m_width, m_height);
    if (!raster.HasPixels()) return;
    RGBQUAD& pixel = raster.At(raster.ClampedX(x), raster.ClampedY(y));
    pixel = {colour.rgbBlue, colour.rgbGreen, colour.rgbRed, pixel.rgbReserved};
}

void CAutoTrace::SetPixel(int x, int y, int red, int green, int blue) {
    SetPixel(x, y, {static_cast<BYTE>(blue), static_cast<BYTE>(green), static_cast<BYTE>(red), 0});
}

RGBQUAD CAutoTrace::GetMeanPixel(int x, int y) const {
    const MarkedRaster raster(m_bits, m_width, m_height);
    return raster.HasPixels() ? raster.Mean(raster.ClampedX(x), raster.ClampedY(y)) : RGBQUAD{};
}

RGBQUAD CAutoTrace::GetMajorityPixel(int x, int y) const {
    const MarkedRaster raster(m_bits, m_width, m_height);
    if (!raster.HasPixels()) return {};
    x = raster.ClampedX(x);
    y = raster.ClampedY(y);
    struct Kind {
        RGBQUAD first;
        int count;
    };
    std::array<Kind, kMajorityPixels> kinds;
    std::size_t used = 0;
    for (int dy = -kMajorityReach; dy <= kMajorityReach; ++dy) {
        for (int dx = -kMajorityReach; dx <= kMajorityReach; ++dx) {
            const RGBQUAD& pixel = raster.At(raster.ClampedX(x + dx), raster.ClampedY(y + dy));
            std::size_t i = 0;
            while (i < used && !IsAlmostEqual(kinds[i].first, pixel, kMajorityTolerance)) ++i;
            if (i == used) kinds[used++] = {pixel, 0};
            ++kinds[i].count;
        }
    }
    const auto end = kinds.begin() + static_cast<std::ptrdiff_t>(used);
    return std::max_element(kinds.begin(), end,
                            [](const Kind& a, const Kind& b) { return a.count < b.count; })
        ->first;
}

HBITMAP CAutoTrace::CreateEmptyBmpBW(CSize size) { return CImgProc::CreateBitmapBW(size.cx, size.cy); }

void CAutoTrace::DumpImage() const {
    const MarkedRaster raster(m_bits, m_width, m_height);
    const ScreenDC screen(GetDC(nullptr));
    for (int y = 0; y < m_height; ++y) {
        for (int x = 0; x < m_width; ++x) {
            const COLORREF colour = raster.Has(x, y, PIXEL_ATTR_FILL)    ? RGB(255, 0, 0)
                                    : raster.Has(x, y, PIXEL_ATTR_TRACE) ? RGB(0, 255, 0)
                                                                         : RGB(0, 0, 0);
            Paint(screen.Get(), x, y, colour);
        }
    }
}

void CAutoTrace::DumpBUBmp() const { CImgProc::DumpBmp(m_hBUBitmap); }

}  // namespace tarvex
