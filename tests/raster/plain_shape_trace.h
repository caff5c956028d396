// The rules of outline tracing, one after the other and pixel by pixel: what the library's tracer is
// compared with.
#pragma once

#include <cmath>
#include <cstring>
#include <utility>
#include <vector>

#include "support/ascii_raster.h"
#include "tarvex/bezier.h"

namespace tarvex::test {

/// The outline that begins with the run of set pixels around (x, y), and whether it is taken; when not, the
/// points seen before it was refused. They are appended to `points`, which are taken for a walk's.
inline std::pair<bool, std::vector<DPOINT>> PlainOutline(const BitPicture& shape, const BitPicture& traced,
                                                         int x, int y, int minPoints,
                                                         std::vector<DPOINT> points = {}) {
    static constexpr int dx[] = {1, 1, 0, -1, -1, -1, 0, 1};
    static constexpr int dy[] = {0, 1, 1, 1, 0, -1, -1, -1};
    if (!shape.Get(x, y)) return {false, points};
    while (shape.Get(x - 1, y)) --x;
    bool alone = true;
    for (int dir = 0; dir < 8; ++dir) alone = alone && !shape.Get(x + dx[dir], y + dy[dir]);
    if (alone) return {false, points};
    int atX = x, atY = y, lastDir = 1;
    while (points.empty() || atX != x || atY != y) {
        if (traced.Get(atX, atY) && points.size() < 10) return {false, points};
        points.push_back({static_cast<double>(atX), static_cast<double>(atY)});
        int dir = (lastDir % 2 == 1 ? lastDir + 2 : lastDir + 1) % 8;
        while (!shape.Get(atX + dx[dir], atY + dy[dir])) dir = (dir + 7) % 8;
        atX += dx[dir];
        atY += dy[dir];
        lastDir = dir;
    }
    if (static_cast<int>(points.size()) <= minPoints) return {false, points};
    points.push_back(DPOINT(points[0]));
    return {true, points};
}

class PlainShapeTrace {
  public:
    explicit PlainShapeTrace(const BitPicture& picture)
        : m_work(picture), m_trace(picture.Width(), picture.Height()) {}

    const BitPicture& Trace() const { return m_trace; }

    using Contour = std::vector<BPOINT>;

    std::vector<Contour> DoTrace(int minPoints) {
        std::vector<Contour> contours;
        for (int y = 0; y < m_work.Height(); y += 10) {
            for (int x = 0; x < m_work.Width(); x += 10) {
                if (m_work.Get(x, y) && !m_trace.Get(x, y)) AddEdges(x, y, contours, minPoints);
            }
        }
        return contours;
    }

    std::pair<bool, std::vector<DPOINT>> GetOutline(int x, int y, int minPoints,
                                                    std::vector<DPOINT> points = {}) const {
        return PlainOutline(m_work, m_trace, x, y, minPoints, std::move(points));
    }

  private:
    void AddEdges(int x, int y, std::vector<Contour>& contours, int minPoints) {
        auto [taken, points] = GetOutline(x, y, minPoints);
        if (!taken) return;
        points.push_back(DPOINT(points[0]));
        for (const DPOINT& p : points)
            m_trace.Set(static_cast<int>(std::floor(p.x + 0.5)), static_cast<int>(std::floor(p.y + 0.5)));
        if (static_cast<int>(points.size()) <= minPoints) return;
        CArray<BPOINT, BPOINT> nodes;
        FitCurve(points.data(), static_cast<int>(points.size()), &nodes, 5.0);
        if (nodes.GetSize() > 2) contours.emplace_back(nodes.GetData(), nodes.GetData() + nodes.GetSize());
    }

    BitPicture m_work;
    BitPicture m_trace;
};

}  // namespace tarvex::test
