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

    /// The outline and whether it is taken; when not, the points seen before it was refused.
    std::pair<bool, std::vector<DPOINT>> GetOutline(int x, int y, int minPoints) const {
        std::vector<DPOINT> points;
        if (!m_work.Get(x, y)) return {false, points};
        while (m_work.Get(x - 1, y)) --x;
        bool alone = true;
        for (int dir = 0; dir < 8; ++dir) alone = alone && !m_work.Get(x + Dx(dir), y + Dy(dir));
        if (alone) return {false, points};
        int atX = x, atY = y, lastDir = 1;
        for (;;) {
            const int dir = Next(atX, atY, lastDir);
            if (atX == x && atY == y && !points.empty()) break;
            if (m_trace.Get(atX, atY) && points.size() < 10) return {false, points};
            points.push_back({static_cast<double>(atX), static_cast<double>(atY)});
            atX += Dx(dir);
            atY += Dy(dir);
            lastDir = dir;
        }
        if (static_cast<int>(points.size()) <= minPoints) return {false, points};
        points.push_back(DPOINT(points[0]));
        return {true, points};
    }

  private:
    static int Dx(int d) { return ((d < 2 || d > 6) ? 1 : 0) - ((d > 2 && d < 6) ? 1 : 0); }
    static int Dy(int d) { return ((d > 0 && d < 4) ? 1 : 0) - (d >= 5 ? 1 : 0); }

    int Next(int x, int y, int lastDir) const {
        int dir = lastDir % 2 == 1 ? lastDir + 2 : lastDir + 1;
        if (dir >= 8) dir -= 8;
        for (int i = 0; i < 8; ++i) {
            if (m_work.Get(x + Dx(dir), y + Dy(dir))) return dir;
            dir = dir == 0 ? 7 : dir - 1;
        }
        return 0;
    }

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
