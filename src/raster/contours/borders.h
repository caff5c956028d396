// The borders between regions: each once, from junction to junction or round in a loop.
#pragma once

#include <cstdint>
#include <span>
#include <unordered_map>
#include <vector>

#include "raster/contours/curve_run.h"
#include "raster/contours/regions.h"

namespace tarvex::contours {

/// Directions of steps from one corner of pixels to the next.
enum Heading : std::uint8_t { east, south, west, north };

constexpr int StepX(int heading) { return heading == east ? 1 : heading == west ? -1 : 0; }
constexpr int StepY(int heading) { return heading == south ? 1 : heading == north ? -1 : 0; }

/// A border, with one region on its left all along and one on its right.
struct Border {
    RegionId left;
    RegionId right;
    int startX;  ///< corner of pixels where it begins
    int startY;
    int endX;
    int endY;
    std::size_t firstStep;  ///< in Borders::steps
    std::size_t stepCount;
    bool isLoop;                 ///< begins nowhere: it has no junction
    bool isFrame;                ///< runs along the picture's edge, straight
    std::int64_t area;           ///< twice what its steps contribute to the area to its right
    std::size_t firstCubic = 0;  ///< in Borders::cubics
    std::size_t cubicCount = 0;
};

/// A border in one of its directions: twice its index, plus 1 for backwards.
using Side = std::int32_t;
constexpr std::size_t BorderOf(Side side) { return static_cast<std::size_t>(side >> 1); }
constexpr bool IsBackwards(Side side) { return (side & 1) != 0; }
inline constexpr Side noSide = -1;

struct Borders {
    std::vector<Border> all;
    std::vector<std::uint8_t> steps;
    std::vector<Cubic> cubics;
    /// The sides that leave a junction: its corner's index times four, plus the first heading.
    std::unordered_map<std::int64_t, Side> leaving;
    /// For each region the border on the left of its first pixel, directed so that the neighbour is on the
    /// right.
    std::vector<Side> beforeFirst;

    RegionId RightOf(Side side) const {
        const Border& b = all[BorderOf(side)];
        return IsBackwards(side) ? b.left : b.right;
    }
    RegionId LeftOf(Side side) const { return RightOf(side ^ 1); }
    std::span<const std::uint8_t> StepsOf(std::size_t border) const {
        return {steps.data() + all[border].firstStep, all[border].stepCount};
    }
    std::span<const Cubic> CubicsOf(std::size_t border) const {
        return {cubics.data() + all[border].firstCubic, all[border].cubicCount};
    }
    /// Appends those of a border in the direction of one of its sides.
    void AppendCubics(Side side, std::vector<Cubic>& out) const;
};

/// Finds all borders; they have no cubics yet.
Borders FindBorders(const RegionMap& map);

/// The side with the same region on its right that goes on where `side` ends: itself for a loop.
Side NextSide(const RegionMap& map, const Borders& borders, Side side);

}  // namespace tarvex::contours
