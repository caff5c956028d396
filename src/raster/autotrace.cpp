// The colour-region tracer: the shared seed fill and contour follower over pixels whose reserved bytes say
// what is filled, traced and cut.
//
// Its cost beside the fill itself is one look at every reserved byte: only the first clean-up visits the
// whole picture, the last one just what the trace can have marked. Seeds in one run of pixels lead to the
// same start of a boundary, and a start once refused stays refused, so each run is tried once.
#include "tarvex/autotrace.h"

#include <array>
#include <memory>

#include "raster/autotrace_raster.h"
#include "raster/contour_appender.h"
#include "raster/dib.h"
#include "raster/seedfill.h"
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

CRect WholeOf(const MarkedRaster& raster) { return {0, 0, raster.Width(), raster.Height()}; }

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
    BoundaryTracer(const MarkedRaster& raster, CPolyPolyDPoint& lines) : m_raster(raster), m_lines(lines) {}

    void TraceRow(int y, int left, int right) {
        int triedTo = -1;  // a pixel of the run tried last
        for (std::int64_t column = left; column < right; column += kSeedStep) {
            const int x = static_cast<int>(column);
            if (!m_raster.Has(x, y, PIXEL_ATTR_FILL) || m_raster.Traced(x, y)) continue;
            int start = x;
            while (start > 0 && start != triedTo && m_raster.Has(start - 1, y, PIXEL_ATTR_FILL)) --start;
            const bool tried = start == triedTo;
            triedTo = x;
            if (!tried) TraceFrom({start, y});
        }
    }

  private:
    void TraceFrom(PixelPosition start) {
        if (m_raster.Neighbours(start.x, start.y) == 0) return;
        if (WalkBoundary(m_raster, start, m_steps) == WalkEnd::OnOldTrace) return;
        ForEachPoint(start, m_steps, [this](int x, int y) { m_raster.Mark(x, y, PIXEL_ATTR_TRACE); });
        if (m_steps.size() + 1 > kLeastPoints) m_lines.Add(ClosedOutline(start, m_steps));
    }

    const MarkedRaster& m_raster;
    ContourAppender<CArray<DPOINT, DPOINT>> m_lines;
    WalkSteps m_steps;
};

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
    const Digitised filled = keepDigi ? Digitised::Keep : Digitised::Forget;
    m_tracedLines.RemoveAll();
    m_skeletonCurves.RemoveAll();
    CleanUpReserved(raster, WholeOf(raster), filled);
    const bool hasCuts = !m_cutPolylines.IsEmpty();
    if (hasCuts && !DrawCutLines()) return;
    CRect bounds(x, y, x, y);
    SeedFill(x, y, tolerance, bounds);
    InflateRect(&bounds, kMargin, kMargin);
    m_fillBounds = CRect(std::max<int>(bounds.left, 0), std::max<int>(bounds.top, 0),
                         std::min<int>(bounds.right, m_width), std::min<int>(bounds.bottom, m_height));
    if (m_fillFilter) FilterFillArea(raster, m_fillBounds);
    if (skeleton) {
        MakeBUBmp(PIXEL_ATTR_FILL);
        CSkeleton thinned;
        thinned.InputMono(m_hBUBitmap);
        thinned.Output(m_skeletonCurves);
    } else {
        TraceIt();
        if (inclinations != nullptr) {
            MakeBUBmp(PIXEL_ATTR_FILL);
            CAutoBreakUp breakUp;
            breakUp.AutoBreakUp(m_hBUBitmap, m_scale, m_tracedLines, *inclinations, checkComplexity);
        }
    }
    CleanUpReserved(raster, hasCuts ? WholeOf(raster) : m_fillBounds, filled);
}

void CAutoTrace::SeedFillAD(int x, int y) {
    const MarkedRaster raster(m_bits, m_width, m_height);
    m_tracedLines.RemoveAll();
    m_skeletonCurves.RemoveAll();
    CleanUpReserved(raster, WholeOf(raster), Digitised::Keep);
    CRect bounds(x, y, x, y);
    SeedFill(x, y, 0, bounds);
    TraceIt();
    CleanUpReserved(raster, WholeOf(raster), Digitised::Keep);
}

bool CAutoTrace::DrawCutLines() {
    const UniqueBitmap bitmap(CreateEmptyBmpBW({m_width, m_height}));
    BITMAP drawn{};
    if (!bitmap || GetObject(bitmap.Get(), static_cast<int>(sizeof drawn), &drawn) == 0) return false;
    if (!DrawWhiteLines(bitmap.Get(), m_cutPolylines)) return false;
    const MarkedRaster raster(m_bits, m_width, m_height);
    for (int y = 0; y < m_height; ++y) {
        for (int x = 0; x < m_width; ++x) {
            if (CImgProc::GetPixel(drawn, x, y)) raster.Mark(x, y, PIXEL_ATTR_CUT);
        }
    }
    return true;
}

void CAutoTrace::SeedFill(int x, int y, int tolerance, CRect& bounds) {
    m_fillStack.clear();
    const MarkedRaster raster(m_bits, m_width, m_height);
    if (!raster.Inside(x, y)) return;
    const RGBQUAD seed = tolerance == 0 ? raster.At(x, y) : raster.Mean(x, y);
    const auto inside = [&raster, seed, tolerance](int px, int py) {
        const RGBQUAD& pixel = raster.At(px, py);
        if ((pixel.rgbReserved & (PIXEL_ATTR_FILL | PIXEL_ATTR_CUT)) != 0) return false;
        return ColourDistance(tolerance == 0 ? pixel : raster.Mean(px, py), seed) <= tolerance;
    };
    const auto fill = [&raster, &bounds](int px, int py) {
        raster.Mark(px, py, PIXEL_ATTR_FILL);
        bounds.left = std::min<LONG>(bounds.left, px);
        bounds.right = std::max<LONG>(bounds.right, px);
        bounds.top = std::min<LONG>(bounds.top, py);
        bounds.bottom = std::max<LONG>(bounds.bottom, py);
    };
    FillFromSeed(PixelSpans(m_width, inside, fill), m_fillStack, m_height, x, y);
}

void CAutoTrace::TraceIt() {
    const MarkedRaster raster(m_bits, m_width, m_height);
    BoundaryTracer tracer(raster, m_tracedLines);
    for (std::int64_t y = m_fillBounds.top; y < m_fillBounds.bottom; y += kSeedStep)
        tracer.TraceRow(static_cast<int>(y), m_fillBounds.left, m_fillBounds.right);
}

void CAutoTrace::MakeBUBmp(int mask) {
    if (m_hBUBitmap != nullptr) DeleteObject(m_hBUBitmap);
    m_hBUBitmap = CreateEmptyBmpBW({m_width, m_height});
    BITMAP made{};
    if (m_hBUBitmap == nullptr || GetObject(m_hBUBitmap, static_cast<int>(sizeof made), &made) == 0) return;
    const MarkedRaster raster(m_bits, m_width, m_height);
    for (int y = 0; y < m_height; ++y) {
        for (int x = 0; x < m_width; ++x) {
            if (raster.Has(x, y, static_cast<BYTE>(mask))) CImgProc::SetPixel(made, x, y, true);
        }
    }
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
            const COLORREF colour = raster.Has(x, y, PIXEL_ATTR_FILL) ? RGB(255, 0, 0)
                                    : raster.Traced(x, y)             ? RGB(0, 255, 0)
                                                                      : RGB(0, 0, 0);
            Paint(screen.Get(), x, y, colour);
        }
    }
}

void CAutoTrace::DumpBUBmp() const { CImgProc::DumpBmp(m_hBUBitmap); }

}  // namespace tarvex
