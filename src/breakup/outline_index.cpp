// Sorting the outline's points into cells. Cells grow with the outline's frame, so that their number stays
// bounded however far apart the points are.
#include "breakup/outline_index.h"

#include <algorithm>

#include "core/rounding.h"

namespace tarvex {

CAutoBreakUp::OutlineIndex::OutlineIndex(const CPolyPolyDPoint& outline) {
    double right = 0, bottom = 0;
    for (int i = 0; i < outline.GetCount(); ++i) {
        const auto* polyline = outline.GetAt(i);
        if (polyline == nullptr) continue;
        for (const DPOINT& p : *polyline) {
            if (!std::isfinite(p.x) || !std::isfinite(p.y)) continue;
            if (m_points.empty()) {
                m_left = right = p.x;
                m_top = bottom = p.y;
            }
            m_left = std::min(m_left, p.x);
            right = std::max(right, p.x);
            m_top = std::min(m_top, p.y);
            bottom = std::max(bottom, p.y);
            m_points.push_back(p);
        }
    }
    m_cell = std::max(kCellSize, std::max(right - m_left, bottom - m_top) / kMostCells);
    m_columns = CellOf(right - m_left, kMostCells + 1) + 1;
    m_rows = CellOf(bottom - m_top, kMostCells + 1) + 1;
    const auto cellOf = [this](const DPOINT& p) {
        return static_cast<std::size_t>(CellOf(p.y - m_top, m_rows)) * static_cast<std::size_t>(m_columns) +
               static_cast<std::size_t>(CellOf(p.x - m_left, m_columns));
    };
    m_starts.assign(static_cast<std::size_t>(m_columns) * static_cast<std::size_t>(m_rows) + 1, 0);
    for (const DPOINT& p : m_points) ++m_starts[cellOf(p) + 1];
    for (std::size_t i = 1; i < m_starts.size(); ++i) m_starts[i] += m_starts[i - 1];
    std::vector<std::uint32_t> next(m_starts.begin(), m_starts.end() - 1);
    m_order.resize(m_points.size());
    for (std::uint32_t i = 0; i < m_points.size(); ++i) m_order[next[cellOf(m_points[i])]++] = i;
}

int CAutoBreakUp::OutlineIndex::CellOf(double offset, int count) const {
    return std::clamp(SaturatingInt(offset / m_cell), 0, count - 1);
}

double CAutoBreakUp::OutlineIndex::RingDistance(POINT centre, int cx, int cy, int ring) const {
    if (ring == 0) return -1;
    // The block of cells looked at so far; a point outside it lies beyond one of its four sides, unless the
    // block reaches the frame there.
    constexpr double slack = 1e-6;
    double least = std::numeric_limits<double>::infinity();
    if (cx - ring >= 0) least = std::min(least, centre.x - (m_left + (cx - ring + 1) * m_cell));
    if (cy - ring >= 0) least = std::min(least, centre.y - (m_top + (cy - ring + 1) * m_cell));
    if (cx + ring < m_columns) least = std::min(least, m_left + (cx + ring) * m_cell - centre.x);
    if (cy + ring < m_rows) least = std::min(least, m_top + (cy + ring) * m_cell - centre.y);
    return least - slack * m_cell;
}

}  // namespace tarvex
