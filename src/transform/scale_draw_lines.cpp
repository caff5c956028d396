// Drawing through the mapping of CScaleDraw. Lines are clipped here, in unrounded pixels, because a device
// may take only a small range of coordinates and a zoomed document soon leaves it.
#include "core/rounding.h"
#include "tarvex/lines.h"
#include "tarvex/scaledraw.h"

namespace tarvex {

namespace {

constexpr tagRECT kEverything = {INT32_MIN, INT32_MIN, INT32_MAX, INT32_MAX};

void Move(HDC dc, double x, double y) { MoveToEx(dc, RoundToInt(x), RoundToInt(y), nullptr); }

void Draw(HDC dc, double x, double y) { LineTo(dc, RoundToInt(x), RoundToInt(y)); }

/// The device's operation of that name, which the member's hides.
void AddCurves(HDC dc, const CArray<tagPOINT, tagPOINT>& points) {
    PolyBezier(dc, points.GetData(), static_cast<DWORD>(points.GetSize()));
}

}  // namespace

void CScaleDraw::SetClipRect(const tagRECT* rc) {
    m_clip = rc != nullptr ? *rc : kEverything;
    m_clipOn = rc != nullptr ? 1 : 0;
}

void CScaleDraw::GetClipRect(tagRECT* rc) const {
    if (rc != nullptr) *rc = m_clip;
}

void CScaleDraw::MoveTo(HDC dc, double x, double y) {
    m_curX = x2sd(x);
    m_curY = y2sd(y);
    Move(dc, m_curX, m_curY);
}

void CScaleDraw::LineTo(HDC dc, double x, double y) {
    const double endX = x2sd(x);
    const double endY = y2sd(y);
    if (m_clipOn == 0) {
        Draw(dc, endX, endY);
    } else {
        double fromX = m_curX, fromY = m_curY, toX = endX, toY = endY;
        if (ClipLine(&fromX, &fromY, &toX, &toY, &m_clip) != 0) {
            Move(dc, fromX, fromY);
            Draw(dc, toX, toY);
            Move(dc, endX, endY);
        }
    }
    m_curX = endX;
    m_curY = endY;
}

void CScaleDraw::PolyBezier(HDC dc, const tagPOINT* pts, int count, bool fill) const {
    if (pts == nullptr || count <= 0) return;
    CArray<tagPOINT, tagPOINT> mapped;
    mapped.SetSize(count);
    for (int i = 0; i < count; ++i) {
        mapped[i] = {x2s(pts[i].x), y2s(pts[i].y)};
    }
    BeginPath(dc);
    AddCurves(dc, mapped);
    EndPath(dc);
    if (fill) {
        StrokeAndFillPath(dc);
    } else {
        StrokePath(dc);
    }
}

}  // namespace tarvex
