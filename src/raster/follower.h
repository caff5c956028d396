// Following the boundary of a region of pixels: the one contour follower, for every kind of raster.
//
// Directions are numbered clockwise on the screen (y grows downwards): 0 east, 1 south-east, 2 south,
// 3 south-west, 4 west, 5 north-west, 6 north, 7 north-east. At each pixel the follower looks around
// counterclockwise, from just behind the background pixel it last passed, and steps to the first
// pixel of the region; so it keeps the background on its right. It is the Moore neighbour walk: regions are
// 8-connected, outer boundaries are walked counterclockwise on the screen, those of holes clockwise.
//
// The walk begins at a pixel whose west neighbour is not of the region, and ends when it comes back to
// that pixel, by whatever way. That may be before the whole boundary is walked, where the start is a pixel
// that the region hangs together by.
//
// Why it always ends. A step from pixel P in direction d is taken after direction d + 1 of P was found
// to be background. Seen from the pixel Q stepped to, that background pixel lies in direction b = d + 2
// for even d and d + 3 for odd d, which is always one of Q's four sides, and from there Q is looked around.
// So a state of the walk is a pixel and a background side b of it. P itself lies in direction b + 2 or
// b + 1 of Q, so among the sides in one unbroken arc of background only the last, clockwise, can be
// arrived at. The step is one-to-one on states that can be arrived at:
//   - the two candidates for P, in directions b + 2 and b + 1 of Q, exclude each other, because the former
//     would meet the latter, when both are of the region, before it comes round to Q;
//   - given P, all background sides that look towards Q first are of one arc, of which one can be arrived at.
// A one-to-one map of finitely many states onto themselves runs in cycles without tails. The first step,
// which looks from the west side, leads where the last side of the same arc leads; so the start pixel lies
// on the cycle and the walk returns to it, after at most four visits to each pixel of the region.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

namespace tarvex {

inline constexpr int kEast = 0;
inline constexpr int kWest = 4;

/// Column difference of a step in direction `dir`.
constexpr int StepX(int dir) { return int{dir < 2 || dir > 6} - int{dir > 2 && dir < 6}; }
/// Row difference of a step in direction `dir`, growing downwards.
constexpr int StepY(int dir) { return int{dir > 0 && dir < 4} - int{dir >= 5}; }

/// The direction looked at first after a step in direction `lastDir`.
constexpr int FirstDirection(int lastDir) { return (lastDir + (lastDir % 2 != 0 ? 2 : 1)) & 7; }

/// What a walk counts as its last step before the first, so that it looks around from the west side.
inline constexpr int kStartDirection = 1;

/// The walk looks for earlier traces at its first pixels only, this many.
inline constexpr std::size_t kTraceCheckedPoints = 10;

/// A set of neighbours: bit d is the neighbour in direction d.
using NeighbourMask = std::uint8_t;

namespace detail {

using DirectionTable = std::array<std::array<std::uint8_t, 256>, 8>;

constexpr DirectionTable MakeDirectionTable() {
    DirectionTable table{};
    for (int lastDir = 0; lastDir < 8; ++lastDir) {
        for (int mask = 1; mask < 256; ++mask) {
            int dir = FirstDirection(lastDir);
            while ((mask >> dir & 1) == 0) dir = (dir + 7) & 7;
            table[static_cast<std::size_t>(lastDir)][static_cast<std::size_t>(mask)] =
                static_cast<std::uint8_t>(dir);
        }
    }
    return table;
}

inline constexpr DirectionTable kDirectionTable = MakeDirectionTable();

struct StepTable {
    std::int8_t x[8];
    std::int8_t y[8];
};

constexpr StepTable MakeStepTable() {
    StepTable table{};
    for (int dir = 0; dir < 8; ++dir) {
        table.x[dir] = static_cast<std::int8_t>(StepX(dir));
        table.y[dir] = static_cast<std::int8_t>(StepY(dir));
    }
    return table;
}

inline constexpr StepTable kStepTable = MakeStepTable();

}  // namespace detail

/// The next step of a walk from a pixel with these neighbours; 0 when it has none.
inline int NextDirection(int lastDir, NeighbourMask neighbours) {
    return detail::kDirectionTable[static_cast<std::size_t>(lastDir)][neighbours];
}

struct PixelPosition {
    int x = 0;
    int y = 0;
    friend bool operator==(const PixelPosition&, const PixelPosition&) = default;
};

inline PixelPosition Stepped(PixelPosition p, int dir) {
    return {p.x + detail::kStepTable.x[dir], p.y + detail::kStepTable.y[dir]};
}

enum class WalkEnd {
    Closed,     ///< back at the start
    OnOldTrace  ///< an early pixel lies on a boundary traced before
};

/// The steps of a walk, from its start: step i leads from point i to point i + 1.
using WalkSteps = std::vector<std::uint8_t>;

/// Walks the boundary from `start`, which must be a pixel of the region with a neighbour in the region
/// and a west neighbour that is not. `raster` says of pixels in the region
///   NeighbourMask Neighbours(x, y)   which neighbours are of the region (none outside the raster),
///   bool Traced(x, y)                whether a boundary was traced there before.
/// Puts the steps taken into `steps`: as many as there are points on the walk, the last one leading
/// back to the start; or when the walk ends on an old trace, as many as there were points before it.
template <class Raster>
WalkEnd WalkBoundary(const Raster& raster, PixelPosition start, WalkSteps& steps) {
    steps.clear();
    PixelPosition at = start;
    int dir = kStartDirection;
    do {
        if (steps.size() < kTraceCheckedPoints && raster.Traced(at.x, at.y)) return WalkEnd::OnOldTrace;
        dir = NextDirection(dir, raster.Neighbours(at.x, at.y));
        steps.push_back(static_cast<std::uint8_t>(dir));
        at = Stepped(at, dir);
    } while (at != start);
    return WalkEnd::Closed;
}

/// Calls `visit(x, y)` with each point of a walk, in order.
template <class Visit>
void ForEachPoint(PixelPosition start, const WalkSteps& steps, Visit&& visit) {
    PixelPosition at = start;
    for (const std::uint8_t dir : steps) {
        visit(at.x, at.y);
        at = Stepped(at, dir);
    }
}

}  // namespace tarvex
