// Line tracing.
//
// Marking finds the first line cell, in row order, with exactly two paths, walks from it both ways, and looks
// for the first such cell again, until there is none. Scanning from the top for each costs lines times cells.
// Instead the scan goes through the matrix once, and cells that it has passed are looked at again only when
// their answer may have changed. A cell's count depends on the cells at most two columns and rows away, so
// those are the cells around each one that a walk has changed. Behind the scan, at all times, the cells with
// two paths are all in the queue; the first of them that still has two, else the next that the scan meets, is
// the first of the matrix. Each cell changes twice at most (to an anchor or to visited, and an anchor stays),
// so the work is proportional to the cells, with a logarithm for the queue.
//
// Anchors are found by a scan that never goes back: walking lines makes no anchors and no new line cells, so
// an anchor that has no line left next to it has none later on.
#include "raster/line_tracer.h"

#include <algorithm>
#include <cstdint>
#include <functional>
#include <optional>
#include <queue>

#include "core/append.h"
#include "raster/contour_appender.h"

namespace tarvex {
namespace {

/// Neighbours in the order in which everything looks at them: column by column.
constexpr int kNeighbourX[8] = {-1, -1, -1, 0, 0, 1, 1, 1};
constexpr int kNeighbourY[8] = {-1, 0, 1, -1, 1, -1, 0, 1};

/// Bit of the cell (dx, dy) from the centre of a window of 5 x 5 cells.
constexpr std::uint32_t WindowBit(int dx, int dy) { return std::uint32_t{1} << (5 * (dy + 2) + dx + 2); }

/// A neighbour, and the cells of the outer ring that lie behind it.
struct Branch {
    std::uint32_t neighbour;
    std::uint32_t behind;
};

/// Behind a corner neighbour lie the five ring cells around that corner of the window, behind the others the
/// three next to it.
constexpr Branch MakeBranch(int dx, int dy) {
    Branch branch{WindowBit(dx, dy), 0};
    for (int t = -1; t <= 1; ++t) {
        if (dx == 0) {
            branch.behind |= WindowBit(t, 2 * dy);
        } else if (dy == 0) {
            branch.behind |= WindowBit(2 * dx, t);
        } else {
            branch.behind |= WindowBit(2 * dx, dy + t * dy) | WindowBit(dx + t * dx, 2 * dy);
        }
    }
    return branch;
}

constexpr Branch kBranches[8] = {MakeBranch(-1, -1), MakeBranch(-1, 0), MakeBranch(-1, 1), MakeBranch(0, -1),
                                 MakeBranch(0, 1),   MakeBranch(1, -1), MakeBranch(1, 0),  MakeBranch(1, 1)};

/// A cell of a neighbourhood, coordinates near the ends of the range included.
unsigned char At(const CByteMatrix& mat, std::int64_t x, std::int64_t y) {
    if (x < 0 || y < 0 || x >= mat.SizeX() || y >= mat.SizeY()) return 0;
    return mat.Get(static_cast<int>(x), static_cast<int>(y));
}

template <class Qualifies>
int NeighboursThat(const CByteMatrix& mat, int x, int y, Qualifies qualifies) {
    if (mat.Get(x, y) == 0) return 0;
    int count = 0;
    for (int k = 0; k < 8; ++k) {
        if (qualifies(At(mat, std::int64_t{x} + kNeighbourX[k], std::int64_t{y} + kNeighbourY[k]))) ++count;
    }
    return count;
}

template <class Qualifies>
int BranchesThat(const CByteMatrix& mat, int x, int y, Qualifies qualifies) {
    if (mat.Get(x, y) == 0) return 0;
    std::uint32_t window = 0;
    for (int dy = -2; dy <= 2; ++dy) {
        for (int dx = -2; dx <= 2; ++dx) {
            if (qualifies(At(mat, std::int64_t{x} + dx, std::int64_t{y} + dy))) window |= WindowBit(dx, dy);
        }
    }
    return static_cast<int>(std::count_if(
        std::begin(kBranches), std::end(kBranches),
        [window](const Branch& b) { return (window & b.neighbour) != 0 && (window & b.behind) != 0; }));
}

auto NotEmpty() {
    return [](unsigned char cell) { return cell != IMGPROC_EMPTY; };
}
auto Equals(unsigned char value) {
    return [value](unsigned char cell) { return cell == value; };
}

bool IsInsideLine(const CByteMatrix& mat, int x, int y) {
    return mat.Get(x, y) == IMGPROC_LINE && CountPaths(mat, x, y, IMGPROC_LINE) == 2;
}

bool IsOpenAnchor(const CByteMatrix& mat, int x, int y) {
    return mat.Get(x, y) == IMGPROC_ANCHOR && CountNeighbours(mat, x, y, IMGPROC_LINE) > 0;
}

/// The first cell in row order of which `is(x, y)` holds.
template <class Is>
std::optional<POINT> FirstCell(const CByteMatrix& mat, Is is) {
    for (int y = 0; y < mat.SizeY(); ++y) {
        for (int x = 0; x < mat.SizeX(); ++x) {
            if (is(x, y)) return POINT{x, y};
        }
    }
    return std::nullopt;
}

/// Walks both ways along the line through a cell and calls `passed` with each cell that may have changed.
template <class Passed>
void WalkBothWays(CByteMatrix& mat, POINT from, Passed passed) {
    for (int way = 0; way < 2; ++way) {
        int x = from.x;
        int y = from.y;
        bool more = true;
        while (more) {
            passed(x, y);
            more = StepAlongLine(mat, x, y);
        }
        passed(x, y);
    }
}

/// The cells inside lines, first in row order, while walks change the matrix.
class InsideLineCells {
  public:
    explicit InsideLineCells(const CByteMatrix& mat) : m_mat(mat) {}

    std::optional<POINT> Next() {
        for (; !m_again.empty(); m_again.pop()) {
            const std::int64_t index = m_again.top();
            const POINT cell{static_cast<int>(index % m_mat.SizeX()),
                             static_cast<int>(index / m_mat.SizeX())};
            if (IsInsideLine(m_mat, cell.x, cell.y)) return cell;
        }
        for (; m_y < m_mat.SizeY(); ++m_y, m_x = 0) {
            for (; m_x < m_mat.SizeX(); ++m_x) {
                if (IsInsideLine(m_mat, m_x, m_y)) return POINT{m_x, m_y};
            }
        }
        return std::nullopt;
    }

    /// To be told of each cell that may have changed, when the walk is over.
    void Changed(POINT cell) {
        for (int y = std::max<int>(cell.y - 2, 0); y <= std::min<int>(cell.y + 2, m_y); ++y) {
            for (int x = std::max<int>(cell.x - 2, 0); x <= cell.x + 2 && (y < m_y || x < m_x); ++x) {
                if (IsInsideLine(m_mat, x, y)) m_again.push(std::int64_t{y} * m_mat.SizeX() + x);
            }
        }
    }

  private:
    const CByteMatrix& m_mat;
    int m_x = 0;  // where the scan stands: (m_x, m_y) is the first cell that it has not passed
    int m_y = 0;
    std::priority_queue<std::int64_t, std::vector<std::int64_t>, std::greater<>> m_again;
};

}  // namespace

int CountNeighbours(const CByteMatrix& mat, int x, int y) { return NeighboursThat(mat, x, y, NotEmpty()); }
int CountNeighbours(const CByteMatrix& mat, int x, int y, unsigned char value) {
    return NeighboursThat(mat, x, y, Equals(value));
}

int CountBranches(const CByteMatrix& mat, int x, int y) { return BranchesThat(mat, x, y, NotEmpty()); }
int CountBranches(const CByteMatrix& mat, int x, int y, unsigned char value) {
    return BranchesThat(mat, x, y, Equals(value));
}

int CountPaths(const CByteMatrix& mat, int x, int y) {
    const int count = CountNeighbours(mat, x, y);
    return count <= 2 ? count : CountBranches(mat, x, y);
}
int CountPaths(const CByteMatrix& mat, int x, int y, unsigned char value) {
    const int count = CountNeighbours(mat, x, y, value);
    return count < 2 ? count : CountBranches(mat, x, y, value);
}

bool StepAlongLine(CByteMatrix& mat, int& x, int& y) {
    if (mat.Get(x, y) == IMGPROC_LINE) mat.Set(x, y, IMGPROC_VISITED);
    int k = 0;
    const auto neighbourX = [&] { return std::int64_t{x} + kNeighbourX[k]; };
    const auto neighbourY = [&] { return std::int64_t{y} + kNeighbourY[k]; };
    while (k < 8 && At(mat, neighbourX(), neighbourY()) != IMGPROC_LINE) ++k;
    if (k == 8) return false;
    x += kNeighbourX[k];
    y += kNeighbourY[k];
    const int paths = CountPaths(mat, x, y);
    if (paths == 1 || paths > 2) {
        mat.Set(x, y, IMGPROC_ANCHOR);
        return false;
    }
    const int open = CountPaths(mat, x, y, IMGPROC_LINE) + CountPaths(mat, x, y, IMGPROC_ANCHOR);
    if (open == 1 || open == 2) return true;
    mat.Set(x, y, IMGPROC_ANCHOR);
    return false;
}

void MarkAnchors(CByteMatrix& mat) {
    InsideLineCells inside(mat);
    std::optional<POINT> from = inside.Next();
    if (from) {
        std::vector<POINT> changed;
        for (; from; from = inside.Next()) {
            changed.clear();
            WalkBothWays(mat, *from, [&changed](int x, int y) { changed.push_back({x, y}); });
            for (const POINT& cell : changed) inside.Changed(cell);
        }
    } else {
        from = FindLineCell(mat, 1);
        if (!from) from = FindLineCell(mat, 0);
        if (from) WalkBothWays(mat, *from, [](int, int) {});
    }
    mat.SetAllIf(IMGPROC_VISITED, IMGPROC_LINE);
}

std::optional<POINT> FindLineCell(const CByteMatrix& mat, int paths) {
    return FirstCell(mat, [&](int x, int y) {
        return mat.Get(x, y) == IMGPROC_LINE && CountPaths(mat, x, y, IMGPROC_LINE) == paths;
    });
}

std::optional<POINT> FindOpenAnchor(const CByteMatrix& mat) {
    return FirstCell(mat, [&](int x, int y) { return IsOpenAnchor(mat, x, y); });
}

std::vector<POINT> WalkFromAnchor(CByteMatrix& mat, int x, int y) {
    std::vector<POINT> line;
    if (mat.Get(x, y) != IMGPROC_ANCHOR) return line;
    for (;;) {
        line.push_back({x, y});
        int anchor = 8;
        int next = 0;
        for (; next < 8; ++next) {
            const unsigned char cell = mat.Get(x + kNeighbourX[next], y + kNeighbourY[next]);
            if (cell == IMGPROC_LINE) break;
            if (cell == IMGPROC_ANCHOR && anchor == 8) anchor = next;
        }
        if (next == 8) {
            if (anchor < 8) line.push_back({x + kNeighbourX[anchor], y + kNeighbourY[anchor]});
            return line;
        }
        x += kNeighbourX[next];
        y += kNeighbourY[next];
        mat.Set(x, y, IMGPROC_VISITED);
    }
}

void WalkAllAnchors(CByteMatrix& mat, CPolyPolyPoint& lines, int maxLines) {
    lines.RemoveAll();
    ContourAppender appender(lines);
    for (int y = 0; y < mat.SizeY(); ++y) {
        for (int x = 0; x < mat.SizeX(); ++x) {
            while (IsOpenAnchor(mat, x, y)) {
                const std::vector<POINT> line = WalkFromAnchor(mat, x, y);
                if (line.size() < 3) continue;
                auto contour = std::make_unique<CArray<POINT, POINT>>();
                AppendAll(*contour, line);
                appender.Add(std::move(contour));
                if (maxLines != 0 && lines.GetCount() >= maxLines) return;
            }
        }
    }
}

}  // namespace tarvex
