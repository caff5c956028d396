// Offsets of closed paths and open chains on the grid: the contours around what remains, or around what is
// gained.
#pragma once

#include <span>
#include <vector>

#include "geometry/offset_raw.h"

namespace tarvex::offsetting {

class RegionOffset {
  public:
    /// The distance must not be 0.
    explicit RegionOffset(const Manner& manner) : m_manner(manner), m_raw(manner) {}

    /// The region that the closed paths fill, smaller (a positive distance) or larger: contours with the
    /// region to the left. Tags index `Edges()`.
    std::vector<Contour> OfLoops(const std::vector<Path>& paths, Inside rule);

    /// Everything within the distance of the chain.
    std::vector<Contour> AroundChain(std::span<const Corner> chain);

    const std::vector<RawEdge>& Edges() const { return m_raw.Edges(); }

  private:
    /// What part of a band is built: both sides, of a line with round or flat ends, or just the one asked
    /// for.
    struct Extent {
        enum class Sides { both, wanted } sides;
        Tip start;
        Tip end;
    };
    std::vector<Contour> Band(std::span<const Corner> chain, const Extent& extent);
    Contour RawBand(std::span<const Corner> chain, const Extent& extent);
    void AppendSectors(std::span<const Corner> corners, const Extent& extent, std::vector<Edge>& edges);
    void AppendHull(std::span<const Corner> chain, std::vector<Edge>& edges);
    bool IsCrowded(std::span<const Corner> chain) const;

    Manner m_manner;
    RawOffset m_raw;
};

/// The region's outlines themselves; tags as in the paths.
std::vector<Contour> OutlinesOf(const std::vector<Path>& paths, Inside rule);

}  // namespace tarvex::offsetting
