// Which walks around a region are too short to be traced, found out once per boundary.
#pragma once

#include <cstdint>
#include <unordered_set>

#include "raster/bit_raster.h"
#include "raster/follower.h"

namespace tarvex {

/// Pixels in the rows of seeds from which a walk is known to see no more pixels than are asked for.
///
/// A boundary that is too short is walked and left unmarked, so every further seed that begins on it would
/// walk it again: a picture full of lines would be walked as often as it has seeds. `Learn` looks at the
/// whole boundary once and knows the answer for all seeds on it. The pixels must not change while this
/// knowledge is used.
class ShortBoundaries {
  public:
    ShortBoundaries(const BitRaster& raster, int seedStep, int minPoints)
        : m_raster(raster), m_seedStep(seedStep), m_minPoints(minPoints) {}

    bool Contains(PixelPosition start) const { return !m_known.empty() && m_known.contains(Key(start)); }

    /// To be told of each walk, back at its start, that was too short.
    void Learn(PixelPosition start, const WalkSteps& steps);

  private:
    static std::uint64_t Key(PixelPosition p) {
        return static_cast<std::uint64_t>(static_cast<std::uint32_t>(p.y)) << 32 |
               static_cast<std::uint32_t>(p.x);
    }

    BitRaster m_raster;
    int m_seedStep;
    int m_minPoints;
    std::unordered_set<std::uint64_t> m_known;
};

}  // namespace tarvex
