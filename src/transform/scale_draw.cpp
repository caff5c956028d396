// The mapping of CScaleDraw: what is shown where, and how zoom and pan change it.
#include "tarvex/scaledraw.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>

#include "core/guarded.h"
#include "core/rounding.h"
#include "platform/handles.h"

namespace tarvex {

namespace {

constexpr double kUnitsPerInch = 254.0;

double TrueScale(HDC dc) { return GetDeviceCaps(dc, LOGPIXELSX) / kUnitsPerInch; }

double ScreenTrueScale() {
    const ScreenDC screen(GetDC(nullptr));
    return TrueScale(screen.Get());
}

/// A document size to divide by.
double FitDivisor(double v) {
    constexpr double smallest = 1e-6;
    if (std::fabs(v) >= smallest || std::isnan(v)) return v;
    return v < 0 ? -smallest : smallest;
}

int Middle(LONG a, LONG b) { return static_cast<int>((std::int64_t{a} + b) / 2); }

int Extent(LONG from, LONG to) {
    constexpr std::int64_t least = std::numeric_limits<int>::min(), most = std::numeric_limits<int>::max();
    return static_cast<int>(std::clamp(std::int64_t{to} - from, least, most));
}

/// at + (to - from), wrapping.
int Moved(int at, LONG from, LONG to) {
    return static_cast<int>(static_cast<std::uint32_t>(at) + static_cast<std::uint32_t>(to) -
                            static_cast<std::uint32_t>(from));
}

double Snapped(double v, double grid) { return std::floor(v / GuardedDivisor(grid) + 0.5) * grid; }

}  // namespace

double CScaleDraw::g_scale121 = ScreenTrueScale();

CScaleDraw::CScaleDraw() { SetClipRect(nullptr); }

CScaleDraw::~CScaleDraw() = default;

double CScaleDraw::x2sd(double x) const { return m_pixelX + (x - m_offsetX) * m_scale; }
double CScaleDraw::y2sd(double y) const { return m_pixelY + (y - m_offsetY) * m_scale; }
DPOINT CScaleDraw::p2sd(const DPOINT& p) const { return {x2sd(p.x), y2sd(p.y)}; }
int CScaleDraw::x2s(double x) const { return RoundToInt(x2sd(x)); }
int CScaleDraw::y2s(double y) const { return RoundToInt(y2sd(y)); }
tagPOINT CScaleDraw::p2s(const DPOINT& p) const { return {x2s(p.x), y2s(p.y)}; }
tagPOINT CScaleDraw::p2s(const FPOINT& p) const { return p2s(DPOINT{p.x, p.y}); }

void CScaleDraw::p2s(const CArray<BPOINT, BPOINT>& contour, CArray<tagPOINT, tagPOINT>& points) const {
    constexpr int mostNodes = INT32_MAX / 3;
    const int count = contour.GetSize();
    if (count > mostNodes) AfxThrowMemoryException();
    points.SetSize(count < 2 ? 0 : 3 * count - 2);
    if (count < 2) return;
    tagPOINT* out = points.GetData();
    *out++ = p2s(contour[0].pt);
    for (int i = 1; i < count; ++i) {
        *out++ = p2s(contour[i - 1].cp2);
        *out++ = p2s(contour[i].cp1);
        *out++ = p2s(contour[i].pt);
    }
}

double CScaleDraw::s2x(double sx) const { return (sx - m_pixelX) / m_scale + m_offsetX; }
double CScaleDraw::s2y(double sy) const { return (sy - m_pixelY) / m_scale + m_offsetY; }
// In doubles, which hold every difference of two pixels.
double CScaleDraw::s2x(int sx) const { return s2x(static_cast<double>(sx)); }
double CScaleDraw::s2y(int sy) const { return s2y(static_cast<double>(sy)); }
DPOINT CScaleDraw::s2p(const tagPOINT& p) const {
    return {s2x(static_cast<double>(p.x)), s2y(static_cast<double>(p.y))};
}
DPOINT CScaleDraw::s2p(const DPOINT& p) const { return {s2x(p.x), s2y(p.y)}; }

double CScaleDraw::s2x(double sx, double grid) const { return Snapped(s2x(sx), grid); }
double CScaleDraw::s2x(int sx, double grid) const { return Snapped(s2x(sx), grid); }
double CScaleDraw::s2y(double sy, double grid) const { return Snapped(s2y(sy), grid); }
double CScaleDraw::s2y(int sy, double grid) const { return Snapped(s2y(sy), grid); }

void CScaleDraw::SetScale(double s) {
    m_scale = std::fabs(s);
    if (!(m_scale >= m_minScale)) {
        m_scale = m_minScale;
    } else if (m_scale > m_maxScale) {
        m_scale = m_maxScale;
    }
}

void CScaleDraw::SetOffset(double ox, double oy, int px, int py) {
    m_offsetX = ox;
    m_offsetY = oy;
    m_pixelX = px;
    m_pixelY = py;
}

void CScaleDraw::GetOffset(double& ox, double& oy, int& px, int& py) const {
    ox = m_offsetX;
    oy = m_offsetY;
    px = m_pixelX;
    py = m_pixelY;
}

double CScaleDraw::Scale121(HDC dc) { return dc != nullptr ? TrueScale(dc) : g_scale121; }

void CScaleDraw::SetScale121(HDC dc) { SetScale(Scale121(dc)); }

double CScaleDraw::GetScalePercent(HDC dc) const { return 100 * m_scale / Scale121(dc); }

void CScaleDraw::SetScaleToFit(double w, double h, int pw, int ph) {
    const double sx = (pw == 0 ? 1 : pw) / FitDivisor(w);
    const double sy = (ph == 0 ? 1 : ph) / FitDivisor(h);
    SetScale(sx <= sy ? sx : sy);
}

void CScaleDraw::SetScaleToRect(double x1, double y1, double x2, double y2, const tagRECT* rc) {
    if (rc == nullptr) return;
    SetOffset((x1 + x2) / 2, (y1 + y2) / 2, Middle(rc->left, rc->right), Middle(rc->top, rc->bottom));
    SetScaleToFit(x2 - x1, y2 - y1, Extent(rc->left, rc->right), Extent(rc->top, rc->bottom));
}

void CScaleDraw::SetScaleToRect(const tagRECT* docPixels, const tagRECT* rc) {
    if (docPixels == nullptr) return;
    const DPOINT first = s2p(tagPOINT{docPixels->left, docPixels->top});
    const DPOINT second = s2p(tagPOINT{docPixels->right, docPixels->bottom});
    SetScaleToRect(first.x, first.y, second.x, second.y, rc);
}

void CScaleDraw::SetScaleZoomPoint(double factor, const tagPOINT& pt) {
    const DPOINT kept = s2p(pt);
    SetOffset(kept.x, kept.y, pt.x, pt.y);
    SetScale(factor * m_scale);
}

void CScaleDraw::SetScaleZoomInPoint(const tagPOINT& pt) { SetScaleZoomPoint(2.0, pt); }
void CScaleDraw::SetScaleZoomOutPoint(const tagPOINT& pt) { SetScaleZoomPoint(0.5, pt); }

void CScaleDraw::MoveOffset(const tagPOINT& from, const tagPOINT& to) {
    m_pixelX = Moved(m_pixelX, from.x, to.x);
    m_pixelY = Moved(m_pixelY, from.y, to.y);
}

}  // namespace tarvex
