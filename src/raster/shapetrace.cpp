// From a bitmap to contours: seeds on a grid, one walk per boundary (follower.h), one fit per walk.
//
// What makes it fast without changing a contour: a seed finds the left end of its run by whole words; all
// seeds in one run lead to the same start, which is tried once; a start that was refused once is refused for
// ever, as pixels do not change and marks are only added, so too-short boundaries are remembered
// (short_boundaries.h); walks are held as one byte per step and turned into points only when they are
// to be fitted.
#include "tarvex/shapetrace.h"

#include <algorithm>

#include "raster/bit_raster.h"
#include "raster/contour_appender.h"
#include "raster/dib.h"
#include "raster/seedfill.h"
#include "raster/short_boundaries.h"

namespace tarvex {

/// The working and the trace raster, and the bitmaps whose pixels they are.
struct CShapeTrace::Rasters {
    UniqueBitmap workBitmap;
    UniqueBitmap traceBitmap;
    BitRaster work;
    BitRaster trace;
};

namespace {

constexpr int kSeedStep = 10;
constexpr double kFitError = 5.0;

/// The raster as the follower sees it.
struct Followed {
    const BitRaster& work;
    const BitRaster& trace;
    NeighbourMask Neighbours(int x, int y) const { return work.Neighbours(x, y); }
    bool Traced(int x, int y) const { return trace.Get(x, y); }
};

/// The bitmap's header: as it was made, or for a bitmap without one, as it describes itself. Its size is 0
/// when there is no such bitmap.
BITMAPINFOHEADER HeaderOf(HBITMAP bitmap) {
    DIBSECTION section{};
    const int known = GetObject(bitmap, static_cast<int>(sizeof section), &section);
    if (known == static_cast<int>(sizeof section)) return section.dsBmih;
    if (known < static_cast<int>(sizeof(BITMAP))) return {};
    return MakeHeader(section.dsBm.bmWidth, section.dsBm.bmHeight, section.dsBm.bmBitsPixel);
}

/// Draws `from` over all of `to`, a bitmap of the same size.
bool DrawOver(HBITMAP to, HBITMAP from, const BITMAPINFOHEADER& size) {
    const UniqueDC toDC(CreateCompatibleDC(nullptr));
    const UniqueDC fromDC(CreateCompatibleDC(nullptr));
    if (!toDC || !fromDC) return false;
    const SelectedObject selectedTo(toDC.Get(), to);
    const SelectedObject selectedFrom(fromDC.Get(), from);
    if (!selectedTo || !selectedFrom) return false;
    const int height = size.biHeight < 0 ? -size.biHeight : size.biHeight;
    return BitBlt(toDC.Get(), 0, 0, size.biWidth, height, fromDC.Get(), 0, 0, SRCCOPY) != 0;
}

/// The pixels of a bitmap; none when it is stored top-down.
BitRaster PixelsOf(HBITMAP bitmap) {
    DIBSECTION section{};
    if (GetObject(bitmap, static_cast<int>(sizeof section), &section) != static_cast<int>(sizeof section))
        return {};
    return {static_cast<std::uint8_t*>(section.dsBm.bmBits), section.dsBmih.biWidth, section.dsBmih.biHeight};
}

/// The walk's points and its start again, as often as `closing` says. Raises when they are too many for an
/// array.
void PointsOf(PixelPosition start, const WalkSteps& steps, int closing, CArray<DPOINT, DPOINT>& points) {
    if (steps.size() > static_cast<std::size_t>(INT32_MAX - closing)) AfxThrowMemoryException();
    const int count = static_cast<int>(steps.size());
    points.SetSize(count + closing);
    DPOINT* out = points.GetData();
    ForEachPoint(start, steps, [&out](int x, int y) {
        *out++ = {static_cast<double>(x), static_cast<double>(y)};
    });
    for (int i = 0; i < closing; ++i) *out++ = {static_cast<double>(start.x), static_cast<double>(start.y)};
}

bool IsTooShort(const WalkSteps& steps, int minPoints) {
    return static_cast<std::int64_t>(steps.size()) <= minPoints;
}

/// Traces boundaries of one pair of rasters, with the work space for it.
class Tracer {
  public:
    Tracer(const BitRaster& work, const BitRaster& trace, CPolyPolyBezier& out, int minPoints)
        : m_raster{work, trace}, m_out(out), m_minPoints(minPoints), m_short(work, kSeedStep, minPoints) {}

    /// Walks, marks and fits the boundary that begins at the start of a run, unless it is refused.
    void TraceFrom(PixelPosition start) {
        if (m_raster.Neighbours(start.x, start.y) == 0 || m_short.Contains(start)) return;
        if (WalkBoundary(m_raster, start, m_steps) == WalkEnd::OnOldTrace) return;
        if (IsTooShort(m_steps, m_minPoints)) {
            m_short.Learn(start, m_steps);
            return;
        }
        ForEachPoint(start, m_steps, [this](int x, int y) { m_raster.trace.Set(x, y); });
        PointsOf(start, m_steps, 2, m_points);
        auto contour = std::make_unique<CArray<BPOINT, BPOINT>>();
        FitCurve(m_points.GetData(), m_points.GetSize(), contour.get(), kFitError);
        if (contour->GetSize() > 2) m_out.Add(std::move(contour));
    }

    /// Traces from all seeds of a row. The seeds in one run of pixels share its start, which is tried at the
    /// first of them.
    void TraceRow(int y) {
        int triedTo = -1;  // a pixel of the run that was tried last
        for (std::int64_t column = 0; column < m_raster.work.Width(); column += kSeedStep) {
            const int x = static_cast<int>(column);
            if (!m_raster.work.Get(x, y) || m_raster.trace.Get(x, y)) continue;
            const int start = m_raster.work.RunStart(x, y, std::max(triedTo, 0));
            const bool tried = triedTo >= 0 && start == triedTo;
            triedTo = x;
            if (!tried) TraceFrom({start, y});
        }
    }

  private:
    Followed m_raster;
    ContourAppender<CArray<BPOINT, BPOINT>> m_out;
    int m_minPoints;
    ShortBoundaries m_short;
    WalkSteps m_steps;
    CArray<DPOINT, DPOINT> m_points;
};

int Clamped(int v, int size) { return std::clamp(v, 0, size - 1); }

bool ReadClamped(const BitRaster& raster, int x, int y) {
    if (raster.Width() == 0) return false;
    return raster.Get(Clamped(x, raster.Width()), Clamped(y, raster.Height()));
}

void WriteClamped(const BitRaster& raster, int x, int y, bool on) {
    if (raster.Width() == 0) return;
    x = Clamped(x, raster.Width());
    y = Clamped(y, raster.Height());
    if (on) {
        raster.Set(x, y);
    } else {
        raster.Clear(x, y);
    }
}

/// a + b, wrapping: coordinates at the ends of the range have neighbours outside every raster.
int WrappingSum(int a, int b) {
    return static_cast<int>(static_cast<unsigned>(a) + static_cast<unsigned>(b));
}

}  // namespace

CShapeTrace::CShapeTrace(HBITMAP bitmap) {
    if (bitmap == nullptr) return;
    GdiFlush();
    const BITMAPINFOHEADER header = HeaderOf(bitmap);
    if (header.biSize == 0) return;
    auto rasters = std::make_shared<Rasters>();
    rasters->workBitmap = CreateMonochrome(header);
    rasters->traceBitmap = CreateMonochrome(header);  // made all black
    if (!rasters->workBitmap || !rasters->traceBitmap) return;
    if (!DrawOver(rasters->workBitmap.Get(), bitmap, header)) return;
    GdiFlush();
    rasters->work = PixelsOf(rasters->workBitmap.Get());
    rasters->trace = PixelsOf(rasters->traceBitmap.Get());
    m_rasters = std::move(rasters);
}

CShapeTrace::~CShapeTrace() = default;

bool CShapeTrace::DoTrace(CPolyPolyBezier& out, int minPoints) {
    if (!m_rasters) return false;
    out.RemoveAll();
    Tracer tracer(m_rasters->work, m_rasters->trace, out, minPoints);
    for (std::int64_t y = 0; y < m_rasters->work.Height(); y += kSeedStep)
        tracer.TraceRow(static_cast<int>(y));
    return true;
}

void CShapeTrace::AddEdges(int x, int y, CPolyPolyBezier& out, int minPoints) {
    if (!in_cont(x, y, true)) return;
    Tracer tracer(m_rasters->work, m_rasters->trace, out, minPoints);
    tracer.TraceFrom({m_rasters->work.RunStart(x, y), y});
}

int CShapeTrace::GetOutline(int x, int y, CArray<DPOINT, DPOINT>& points, int minPoints) {
    if (!in_cont(x, y, true)) return 0;
    const Followed raster{m_rasters->work, m_rasters->trace};
    const PixelPosition start{raster.work.RunStart(x, y), y};
    if (raster.Neighbours(start.x, start.y) == 0) return 0;
    if (points.GetSize() > 0) {
        if (points.GetSize() <= minPoints) return 0;
        points.Add(points[0]);
        return 1;
    }
    WalkSteps steps;
    const WalkEnd end = WalkBoundary(raster, start, steps);
    const bool taken = end == WalkEnd::Closed && !IsTooShort(steps, minPoints);
    PointsOf(start, steps, taken ? 1 : 0, points);
    return taken ? 1 : 0;
}

int CShapeTrace::Probe(int x, int y, int dir, int* nx, int* ny, bool value) {
    *nx = WrappingSum(x, StepX(dir));
    *ny = WrappingSum(y, StepY(dir));
    return in_cont(*nx, *ny, value);
}

int CShapeTrace::Neighbor(int x, int y, int lastDir, int* nx, int* ny, bool value) {
    int dir = FirstDirection(lastDir & 7);
    for (int tries = 0; tries < 8; ++tries) {
        if (Probe(x, y, dir, nx, ny, value) != 0) return dir;
        dir = (dir + 7) & 7;
    }
    return 0;
}

int CShapeTrace::in_cont(int x, int y, bool value) {
    return m_rasters && m_rasters->work.Inside(x, y) && m_rasters->work.Get(x, y) == value ? 1 : 0;
}

bool CShapeTrace::GetPixel(int x, int y) { return m_rasters && ReadClamped(m_rasters->work, x, y); }

void CShapeTrace::SetPixel(int x, int y, bool on) {
    if (m_rasters) WriteClamped(m_rasters->work, x, y, on);
}

bool CShapeTrace::GetTracePixel(int x, int y) { return m_rasters && ReadClamped(m_rasters->trace, x, y); }

void CShapeTrace::SetTracePixel(int x, int y, bool on) {
    if (m_rasters) WriteClamped(m_rasters->trace, x, y, on);
}

void CShapeTrace::PUSH(int y, int xl, int xr, int dy) {
    if (m_rasters) PushSpan(m_fillStack, m_rasters->work.Height(), {y, xl, xr, dy});
}

void CShapeTrace::POP(int& y, int& xl, int& xr, int& dy) {
    if (m_fillStack.empty()) return;
    const FILLRECORD record = PopSpan(m_fillStack);
    y = record.y;
    xl = record.xl;
    xr = record.xr;
    dy = record.dy;
}

void CShapeTrace::SeedFill(int x, int y) {
    m_fillStack.clear();
    if (in_cont(x, y, true)) FillFromSeed(m_rasters->work, m_fillStack, m_rasters->work.Height(), x, y);
}

}  // namespace tarvex
