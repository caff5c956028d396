// Ties.
//
// A stroke that is an even number of pixels wide has two pixels in its middle, each half a pixel off. Both
// are about as far from the ground, so thinning keeps the one that it meets last, all along the stroke, and
// the line lies half a pixel to that side. But where a stroke slants, the width alternates between an even
// number and an odd one, or the even run steps to the side: there the shape tells where its middle is, and
// between two such places the middle crosses from one of the two pixels to the other half way.
//
// So the pixels of a line whose runs across are even and have the same middle are looked at together. What
// follows at either end of such a stretch has its middle to one side: the half of the stretch next to it goes
// to that side. Where one end tells nothing, being a line's end or a junction, the other one tells for all;
// where neither does, as in an upright bar, nothing moves. The run across is the shorter of those in the
// pixel's row and in its column; where they are equal, at 45 degrees, every pixel is a stretch of its own
// with nothing to gain.
//
// A straight stroke's line is then the line of those pixels that are nearest to its middle, but for what the
// edges' own rounding hides.
#include "raster/skeleton/ties.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <utility>
#include <vector>

#include "raster/skeleton/centring.h"

namespace tarvex::skeleton {
namespace {

constexpr double kMostRun = 1.5;  // of the half width, more than a run has on either side at 45 degrees
constexpr int kMostRunBit = 2;

/// The middle of the run of pixels that crosses a line.
struct Middle {
    Position step;       ///< to the next pixel of the run: to the right or down
    std::int64_t twice;  ///< its column or row, doubled
    bool isTie;          ///< it lies between this pixel and one of those next to it
};

class TieSettler {
  public:
    TieSettler(BitPlane& plane, const BitPlane& shape, const DistanceMap& distances)
        : m_plane(plane), m_shape(shape), m_distances(distances), m_seen(plane.Width(), plane.Height()) {}

    void Run() {
        std::vector<Position> lines;
        m_plane.ForEachSet([&lines](Position p) { lines.push_back(p); });
        for (const Position p : lines) {
            if (m_plane.Get(p) && !m_seen.Get(p)) SettleAround(p);
        }
    }

  private:
    bool IsInside(Position p) const { return NeighbourCount(m_plane.Around(p)) == 2; }

    int RunDown(Position p, Position step, int most) const {
        int count = 0;
        while (count < most && m_shape.Get(p += step)) ++count;
        return count;
    }

    /// None where the runs in the row and in the column are equally long, and where a run is too long for the
    /// shape's half width: in junctions.
    std::optional<Middle> MiddleAt(Position p) const {
        const double radius = std::sqrt(static_cast<double>(m_distances.At(p)));
        const int most = static_cast<int>(kMostRun * radius) + kMostRunBit;
        const int left = std::min(most, m_shape.RunBefore(p, most));
        const int right = std::min(most, m_shape.RunAfter(p, most));
        const Position down = m_plane.Down();
        const int above = RunDown(p, Position{0} - down, most);
        const int below = RunDown(p, down, most);
        if (left + right == above + below) return std::nullopt;
        const bool isInRow = left + right < above + below;
        const int before = isInRow ? left : above;
        const int after = isInRow ? right : below;
        if (before == most || after == most) return std::nullopt;
        const auto [x, y] = m_plane.Where(p);
        const std::int64_t here = isInRow ? x : y;
        return Middle{isInRow ? 1 : down, 2 * here + after - before, std::abs(after - before) == 1};
    }

    /// Appends the pixels from `p` on whose runs have that middle, and tells which side the next one's is on:
    /// 1 or -1; 0 for neither.
    int Follow(Position former, Position p, const Middle& middle) {
        for (; IsInside(p); former = std::exchange(p, Onwards(m_plane, p, former))) {
            const auto next = MiddleAt(p);
            if (!next || next->step != middle.step) return 0;
            if (next->twice != middle.twice) return next->twice < middle.twice ? -1 : 1;
            if (m_seen.Get(p)) return 0;  // round a loop
            m_seen.Set(p);
            m_stretch.push_back(p);
        }
        return 0;
    }

    void SettleAround(Position start) {
        m_seen.Set(start);
        if (!IsInside(start)) return;
        const auto middle = MiddleAt(start);
        if (!middle || !middle->isTie) return;
        Position beside[2] = {start, start};
        ForEachNeighbour(m_plane, start, m_plane.Around(start),
                         [&beside](Position q) { beside[0] = std::exchange(beside[1], q); });
        m_stretch.clear();
        int first = Follow(start, beside[0], *middle);
        std::reverse(m_stretch.begin(), m_stretch.end());
        m_stretch.push_back(start);
        int last = Follow(start, beside[1], *middle);
        if (first == 0) first = last;
        if (last == 0) last = first;
        if (first != 0) SettleStretch(*middle, first, last);
    }

    /// From both ends inwards: a pixel can only be moved next to one that has been.
    void SettleStretch(const Middle& middle, int first, int last) {
        const std::size_t size = m_stretch.size();
        const std::size_t half = first == last ? size : size / 2;  // an odd one in between stays
        for (std::size_t i = 0; i < half; ++i) Settle(m_stretch[i], middle, first);
        for (std::size_t i = 0; i < half; ++i) Settle(m_stretch[size - 1 - i], middle, last);
    }

    /// Moves a pixel of a tie to the middle pixel on that side, if it is the other one.
    void Settle(Position p, const Middle& middle, int side) {
        const auto [x, y] = m_plane.Where(p);
        const std::int64_t off = middle.twice + side - 2 * std::int64_t{middle.step == 1 ? x : y};
        if (!m_plane.Get(p) || (off != 2 && off != -2)) return;
        const Position to = off > 0 ? p + middle.step : p - middle.step;
        if (MoveInLine(m_plane, p, to)) m_seen.Set(to);
    }

    BitPlane& m_plane;
    const BitPlane& m_shape;
    const DistanceMap& m_distances;
    BitPlane m_seen;
    std::vector<Position> m_stretch;  // in the order of the line
};

}  // namespace

void SettleTies(BitPlane& plane, const BitPlane& shape, const DistanceMap& distances) {
    TieSettler(plane, shape, distances).Run();
}

}  // namespace tarvex::skeleton
