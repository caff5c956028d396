// The break-up's run: framing the shape, pass after pass over it, and what ends a run.
//
// The working raster is made once in a run. Every pass needs the shape in white with all cuts so far in
// black; cuts are only ever added and black over black is black, so painting the new ones over what the last
// pass had gives the same pixels as starting afresh. Tracing a region leaves the colours as they are.
#include "tarvex/breakup.h"

#include <algorithm>
#include <cstdint>
#include <limits>

#include "breakup/outline_index.h"
#include "core/rounding.h"
#include "platform/handles.h"
#include "raster/contour_appender.h"
#include "tarvex/lines.h"
#include "tarvex/skeleton.h"

namespace tarvex {
namespace {

constexpr int kMaxLines = 500;
constexpr int kLookAhead = 25;
constexpr int kLookAheadStep = 10;
constexpr int kLeastLookAhead = 5;
constexpr int kCutWidth = 2;
constexpr std::int64_t kMostSeconds = 60;
constexpr std::int64_t kGuardedPoints = 2000;
constexpr double kMostPixelsPerPoint = 28;
constexpr COLORREF kWhite = RGB(255, 255, 255);

bool EscapeIsHeld() { return GetAsyncKeyState(VK_ESCAPE) < 0; }

/// A description of a bitmap whose pixels can be read; without pixels when it has none.
BITMAP Described(HBITMAP bitmap) {
    BITMAP description{};
    if (GetObject(bitmap, static_cast<int>(sizeof description), &description) == 0) return {};
    return description;
}

struct Extent {
    int least = std::numeric_limits<int>::max();
    int most = std::numeric_limits<int>::min();

    void Add(double v) {
        const int rounded = RoundToInt(v);
        least = std::min(least, rounded);
        most = std::max(most, rounded);
    }
    std::int64_t Size() const { return std::int64_t{most} - least; }
};

/// Shifts a coordinate. Saturates, as only the caller's coordinates at the ends of the range can ask for.
int Shifted(int v, std::int64_t by) {
    return static_cast<int>(
        std::clamp<std::int64_t>(v + by, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()));
}

}  // namespace

CAutoBreakUp::~CAutoBreakUp() { ReleaseRaster(); }

void CAutoBreakUp::ReleaseRaster() {
    if (m_hWorkBitmap != nullptr) DeleteObject(m_hWorkBitmap);
    m_hWorkBitmap = nullptr;
}

CPoint CAutoBreakUp::p2bmp(const CPoint& p) const {
    return {Shifted(p.x, -std::int64_t{m_left}), Shifted(p.y, -std::int64_t{m_top})};
}
CPoint CAutoBreakUp::bmp2p(const CPoint& p) const { return {Shifted(p.x, m_left), Shifted(p.y, m_top)}; }
DPOINT CAutoBreakUp::bmp2p(const DPOINT& p) const { return {p.x + m_left, p.y + m_top}; }

bool CAutoBreakUp::AutoBreakUp(HBITMAP image, double scale, const CPolyPolyDPoint& outline,
                               CPolyPolyDPoint& regions, CPolyPolyInclination& inclinations,
                               bool checkComplexity) {
    m_checkComplexity = checkComplexity;
    m_cutLines.clear();
    m_hSourceBitmap = image;
    m_scale = scale;
    const bool done = Run(outline, regions, inclinations);
    ReleaseRaster();
    if (!done) {
        regions.RemoveAll();
        inclinations.RemoveAll();
    }
    return done;
}

bool CAutoBreakUp::AutoBreakUp(HBITMAP image, double scale, CPolyPolyDPoint& outline,
                               CPolyPolyInclination& inclinations, bool checkComplexity) {
    CPolyPolyDPoint regions;
    const bool done = AutoBreakUp(image, scale, outline, regions, inclinations, checkComplexity);
    outline.RemoveAll();
    if (done) outline = std::move(regions);
    return done;
}

bool CAutoBreakUp::Run(const CPolyPolyDPoint& outline, CPolyPolyDPoint& regions,
                       CPolyPolyInclination& inclinations) {
    m_end = BreakUpEnd::Done;
    m_lines.RemoveAll();
    m_regionLines.clear();
    if (!Frame(outline)) return Fail(BreakUpEnd::EmptyFrame);
    ReleaseRaster();
    m_hWorkBitmap = CreateBitmap32(m_width, m_height);
    if (m_hWorkBitmap == nullptr) return Fail(BreakUpEnd::NoRaster);
    return AutoBreakUpInternal(outline, regions, inclinations);
}

bool CAutoBreakUp::Fail(BreakUpEnd end) {
    m_end = end;
    return false;
}

/// Takes the outline's frame; false when it has no size or one that no integer holds.
bool CAutoBreakUp::Frame(const CPolyPolyDPoint& outline) {
    Extent x, y;
    for (int i = 0; i < outline.GetCount(); ++i) {
        const auto* polyline = outline.GetAt(i);
        if (polyline == nullptr) continue;
        for (const DPOINT& p : *polyline) {
            x.Add(p.x);
            y.Add(p.y);
        }
    }
    constexpr std::int64_t most = std::numeric_limits<int>::max();
    if (x.Size() <= 0 || y.Size() <= 0 || x.Size() > most || y.Size() > most) return false;
    m_left = x.least;
    m_top = y.least;
    m_width = static_cast<int>(x.Size());
    m_height = static_cast<int>(y.Size());
    return true;
}

bool CAutoBreakUp::AutoBreakUpInternal(const CPolyPolyDPoint& outline, CPolyPolyDPoint& regions,
                                       CPolyPolyInclination& inclinations) {
    // The outline first: it may be the container that is cleared.
    m_outline.RemoveAll();
    ContourAppender appender(m_outline);
    for (int i = 0; i < outline.GetCount(); ++i) {
        auto shifted = std::make_unique<CArray<DPOINT, DPOINT>>();
        if (outline.GetAt(i) != nullptr) shifted->Copy(outline[i]);
        for (DPOINT& p : *shifted) p = {p.x - m_left, p.y - m_top};
        appender.Add(std::move(shifted));
    }
    regions.RemoveAll();
    inclinations.RemoveAll();
    const BITMAP work = Described(m_hWorkBitmap);
    if (work.bmBits == nullptr || (work.bmBitsPixel != 1 && work.bmBitsPixel != 32))
        return Fail(BreakUpEnd::NoRaster);
    m_index = std::make_shared<const OutlineIndex>(m_outline);
    m_hasSource = false;
    if (!RunPasses()) return false;
    FilterSkelLines();
    if (!CreateOutlines(regions, inclinations)) return Fail(BreakUpEnd::NotSplit);
    for (int i = 0; i < regions.GetCount(); ++i) {
        for (DPOINT& p : regions[i]) p = bmp2p(p);
    }
    return true;
}

/// Cuts until nothing is left to cut.
bool CAutoBreakUp::RunPasses() {
    const std::int64_t start = _time64(nullptr);
    m_lookAhead = kLookAhead;
    for (int pass = 0; pass < m_maxPasses; ++pass) {
        if (!MakeBitmap()) return Fail(BreakUpEnd::NoRaster);
        if (pass == 0 && isTooComplicate()) return Fail(BreakUpEnd::TooComplicated);
        TraceSkeleton();
        if (m_lines.GetCount() >= kMaxLines) return Fail(BreakUpEnd::TooManyLines);
        MakeLinesMat(m_lines);
        if (!ReduceCrossLines()) return m_cutOk || Fail(BreakUpEnd::UncutJunction);
        if (EscapeIsHeld()) {
            MessageBeep(0);
            return Fail(BreakUpEnd::Aborted);
        }
        m_lookAhead = std::max(m_lookAhead - kLookAheadStep, kLeastLookAhead);
        if (_time64(nullptr) - start > kMostSeconds) {
            MessageBeep(0);
            return Fail(BreakUpEnd::TimedOut);
        }
    }
    return Fail(BreakUpEnd::TooManyPasses);
}

void CAutoBreakUp::TraceSkeleton() {
    CSkeleton skeleton;
    if (skeleton.MakeBitmapMono(m_hWorkBitmap) == nullptr || !skeleton.DoSkeleton())
        AfxThrowMemoryException();
    InitMat(skeleton.Bitmap());
    TraceAnchorPointsAndLines(m_lines, kMaxLines);
    FilterSmallLines();
    if (m_lines.IsEmpty()) TraceLoosePoints(m_lines, kMaxLines);
}

bool CAutoBreakUp::MakeBitmap() {
    if (!m_hasSource) {
        if (!CopySource()) return false;
        m_hasSource = true;
        m_drawnCuts = 0;
    }
    const UniqueDC context(CreateCompatibleDC(nullptr));
    const SelectedObject selected(context.Get(), m_hWorkBitmap);
    if (!context || !selected) return false;
    CDC dc(context.Get());
    if (m_drawnCuts < m_cutLines.size() && !DrawCutLines(dc, false, kCutWidth)) return false;
    m_drawnCuts = m_cutLines.size();
    GdiFlush();
    return true;
}

/// Copies the caller's block of pixels and turns whatever is not black white.
bool CAutoBreakUp::CopySource() {
    {
        const UniqueDC to(CreateCompatibleDC(nullptr));
        const UniqueDC from(CreateCompatibleDC(nullptr));
        const SelectedObject selectedTo(to.Get(), m_hWorkBitmap);
        const SelectedObject selectedFrom(from.Get(), m_hSourceBitmap);
        if (!selectedTo || !selectedFrom) return false;
        if (BitBlt(to.Get(), 0, 0, m_width, m_height, from.Get(), m_left, m_top, SRCCOPY) == 0) return false;
    }
    GdiFlush();
    const BITMAP work = Described(m_hWorkBitmap);
    if (work.bmBits == nullptr) return false;
    auto* pixel = static_cast<RGBQUAD*>(work.bmBits);
    const std::int64_t count = std::int64_t{m_width} * m_height;
    for (std::int64_t i = 0; i < count; ++i, ++pixel) {
        const bool isSet = (pixel->rgbBlue | pixel->rgbGreen | pixel->rgbRed) != 0;
        const BYTE level = isSet ? 255 : 0;
        *pixel = {level, level, level, 0};
    }
    return true;
}

bool CAutoBreakUp::DrawCutLines(CDC& dc, bool white, int width) {
    const UniquePen pen(CreatePen(PS_SOLID, width, white ? kWhite : RGB(0, 0, 0)));
    const SelectedObject selected(dc.GetSafeHdc(), pen.Get());
    if (!selected) return false;
    for (const CUTLINE& cut : m_cutLines) {
        if (MoveToEx(dc.GetSafeHdc(), cut.x1, cut.y1, nullptr) == FALSE ||
            LineTo(dc.GetSafeHdc(), cut.x2, cut.y2) == FALSE)
            return false;
    }
    return true;
}

bool CAutoBreakUp::isTooComplicate() const {
    if (!m_checkComplexity) return false;
    std::int64_t points = 0;
    for (int i = 0; i < m_outline.GetCount(); ++i) points += m_outline[i].GetSize();
    if (points < kGuardedPoints) return false;
    const BITMAP work = Described(m_hWorkBitmap);
    std::int64_t pixels = 0;
    for (int y = 0; y < m_height; ++y) {
        for (int x = 0; x < m_width; ++x) pixels += GetPixel(work, x, y) ? 1 : 0;
    }
    return static_cast<double>(pixels) / static_cast<double>(points) > kMostPixelsPerPoint;
}

bool CAutoBreakUp::CrossingCutLines() const {
    for (std::size_t i = 0; i < m_cutLines.size(); ++i) {
        for (std::size_t k = i + 1; k < m_cutLines.size(); ++k) {
            const CUTLINE& a = m_cutLines[i];
            const CUTLINE& b = m_cutLines[k];
            double x = 0, y = 0;
            if (GetSegmentIntersection(a.x1, a.y1, a.x2, a.y2, b.x1, b.y1, b.x2, b.y2, &x, &y) != 0 &&
                x >= 0 && y >= 0 && x < m_width && y < m_height)
                return true;
        }
    }
    return false;
}

}  // namespace tarvex
