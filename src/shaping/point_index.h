// Numbered points found again by their coordinates: the answer is the one that a search from the first
// point on would give, the first that equals the point sought within POINT_EPSILON in both coordinates.
//
// Points are kept in square cells far larger than the tolerance; only next to a cell's border has more
// than one cell to be looked into. Coordinates too large for cells share the outermost ones, which
// costs time and no answer.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "tarvex/records.h"

namespace tarvex::shaping {

class PointIndex {
  public:
    /// The number of a point to be, in order of their addition.
    int Add(DPOINT p) {
        const int index = Size();
        m_points.push_back(p);
        if (m_points.size() > m_heads.size()) Rehash();
        Link(index);
        return index;
    }

    /// The first of the points that equal `p`; -1 if none does.
    int Find(DPOINT p) const {
        if (m_points.empty()) return -1;
        constexpr double reach = 2 * POINT_EPSILON;  // roundings included
        const double left = Cell(p.x - reach);
        const double right = Cell(p.x + reach);
        const double top = Cell(p.y - reach);
        const double bottom = Cell(p.y + reach);
        int best = FirstIn(left, top, p);
        if (right != left) best = Earlier(best, FirstIn(right, top, p));
        if (bottom != top) best = Earlier(best, FirstIn(left, bottom, p));
        if (right != left && bottom != top) best = Earlier(best, FirstIn(right, bottom, p));
        return best;
    }

    /// The first of the points that equal `p`, which is `p` itself, newly added, if none does.
    int FindOrAdd(DPOINT p) {
        const int found = Find(p);
        return found >= 0 ? found : Add(p);
    }

    int Size() const { return static_cast<int>(m_points.size()); }
    const DPOINT& operator[](int i) const { return m_points[static_cast<std::size_t>(i)]; }

  private:
    static constexpr double CELLS_PER_UNIT = 1 << 16;
    static constexpr double MOST_CELLS = 1e15;

    static double Cell(double v) {
        return std::clamp(std::floor(v * CELLS_PER_UNIT), -MOST_CELLS, MOST_CELLS);
    }

    static int Earlier(int i, int j) {
        if (i < 0 || j < 0) return std::max(i, j);
        return std::min(i, j);
    }

    std::size_t Slot(double cellX, double cellY) const {
        // NaN has no cell; any slot will do.
        const auto x = static_cast<std::uint64_t>(cellX == cellX ? static_cast<std::int64_t>(cellX) : 0);
        const auto y = static_cast<std::uint64_t>(cellY == cellY ? static_cast<std::int64_t>(cellY) : 0);
        std::uint64_t h = (x * 0x9E3779B97F4A7C15u) ^ ((y + 0x632BE59BD9B4E019u) * 0xC2B2AE3D27D4EB4Fu);
        h ^= h >> 29;
        h *= 0xBF58476D1CE4E5B9u;
        h ^= h >> 32;
        return static_cast<std::size_t>(h) & (m_heads.size() - 1);
    }

    int FirstIn(double cellX, double cellY, DPOINT p) const {
        int best = -1;
        for (int i = m_heads[Slot(cellX, cellY)]; i >= 0; i = m_next[static_cast<std::size_t>(i)]) {
            if ((*this)[i] == p) best = i;  // chains run from the last to the first
        }
        return best;
    }

    void Link(int index) {
        const DPOINT& p = (*this)[index];
        int& head = m_heads[Slot(Cell(p.x), Cell(p.y))];
        m_next.resize(m_points.size());
        m_next[static_cast<std::size_t>(index)] = head;
        head = index;
    }

    void Rehash() {
        m_heads.assign(std::max<std::size_t>(64, m_heads.size() * 4), -1);
        for (int i = 0; i + 1 < Size(); ++i) Link(i);
    }

    std::vector<DPOINT> m_points;
    std::vector<int> m_heads;  // a power of two of them
    std::vector<int> m_next;
};

}  // namespace tarvex::shaping
