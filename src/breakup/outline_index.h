// The outline's points by place, for finding the nearest of those that satisfy a condition.
#pragma once

#include <cmath>
#include <cstdint>
#include <limits>
#include <optional>
#include <vector>

#include "tarvex/breakup.h"

namespace tarvex {

/// Points in square cells. A search looks at rings of cells around the centre until no point farther out can
/// be nearer; what it finds is what a scan of all points, in their order, finds: the first of the nearest.
class CAutoBreakUp::OutlineIndex {
  public:
    explicit OutlineIndex(const CPolyPolyDPoint& outline);

    /// The point nearest to `centre` by hypot of those that `accepts`; of equally near ones the first in the
    /// outline. Points with a coordinate that is not finite are never nearest.
    template <class Accepts>
    std::optional<DPOINT> Nearest(POINT centre, Accepts&& accepts) const {
        Best best;
        const int cx = CellOf(centre.x - m_left, m_columns);
        const int cy = CellOf(centre.y - m_top, m_rows);
        const int rings = std::max(std::max(cx, m_columns - 1 - cx), std::max(cy, m_rows - 1 - cy));
        for (int ring = 0; ring <= rings; ++ring) {
            if (best.index != kNone && best.distance < RingDistance(centre, cx, cy, ring)) break;
            ForEachCell(cx, cy, ring, [&](std::size_t cell) {
                for (std::uint32_t k = m_starts[cell]; k < m_starts[cell + 1]; ++k)
                    best.Offer(m_points[m_order[k]], m_order[k], centre, accepts);
            });
        }
        if (best.index == kNone) return std::nullopt;
        return m_points[best.index];
    }

  private:
    static constexpr std::uint32_t kNone = std::numeric_limits<std::uint32_t>::max();
    static constexpr double kCellSize = 16;
    static constexpr int kMostCells = 2048;  ///< along each side

    struct Best {
        double distance = std::numeric_limits<double>::infinity();
        std::uint32_t index = kNone;

        template <class Accepts>
        void Offer(const DPOINT& p, std::uint32_t i, POINT centre, Accepts& accepts) {
            const double d = std::hypot(p.x - centre.x, p.y - centre.y);
            if (d > distance || (d == distance && i > index) || !accepts(p)) return;
            distance = d;
            index = i;
        }
    };

    int CellOf(double offset, int count) const;
    /// What every point beyond the rings before this one is at least away from the centre, a little less for
    /// roundings.
    double RingDistance(POINT centre, int cx, int cy, int ring) const;

    template <class Visit>
    void ForEachCell(int cx, int cy, int ring, Visit&& visit) const {
        for (int y = std::max(cy - ring, 0); y <= std::min(cy + ring, m_rows - 1); ++y) {
            const bool whole = y == cy - ring || y == cy + ring;
            const int step = whole || ring == 0 ? 1 : 2 * ring;
            for (int x = cx - ring; x <= cx + ring; x += step) {
                if (x >= 0 && x < m_columns)
                    visit(static_cast<std::size_t>(y) * static_cast<std::size_t>(m_columns) +
                          static_cast<std::size_t>(x));
            }
        }
    }

    std::vector<DPOINT> m_points;
    std::vector<std::uint32_t> m_starts;  ///< of each cell in m_order, and the end
    std::vector<std::uint32_t> m_order;   ///< indices of points, cell by cell
    double m_left = 0;
    double m_top = 0;
    double m_cell = kCellSize;
    int m_columns = 1;
    int m_rows = 1;
};

}  // namespace tarvex
