// The loops of borders around each region, and the order in which regions are painted.
#pragma once

#include <cstdint>
#include <vector>

#include "raster/contours/borders.h"

namespace tarvex::contours {

/// Sides that follow each other around a region, which is on their right.
struct Loop {
    RegionId region;
    std::int64_t area;  ///< twice what it surrounds; negative around a hole
    std::size_t firstSide;
    std::size_t sideCount;
    bool showsGround = false;  ///< a hole in which there is ground
};

struct Regions {
    std::vector<Side> sides;
    std::vector<Loop> loops;             ///< those of a region stand together, in the regions' order
    std::vector<std::size_t> firstLoop;  ///< of each region; one more at the end
    std::vector<std::int64_t> size;      ///< twice what its outer loop surrounds
    std::vector<RegionId> parent;        ///< the region in whose hole it is, or the ground

    /// Whether a region must be painted before another that it touches.
    bool IsBefore(RegionId a, RegionId b) const {
        const std::int64_t sizeA = size[static_cast<std::size_t>(a)];
        const std::int64_t sizeB = size[static_cast<std::size_t>(b)];
        return sizeA != sizeB ? sizeA > sizeB : a < b;
    }
};

Regions FindLoops(const RegionMap& map, const Borders& borders);

/// All regions, in batches of one label each, as they can be painted one over the other when regions cover
/// their holes and run on beneath those that come later.
std::vector<std::vector<RegionId>> PaintingOrder(const RegionMap& map, const Borders& borders,
                                                 const Regions& regions);

}  // namespace tarvex::contours
