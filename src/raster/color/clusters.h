// Clusters of sampled colours.
#pragma once

#include <cstdint>
#include <vector>

#include "raster/color/distance.h"

namespace tarvex::color {

/// Gathers colours in clusters and merges clusters, as CColorReduction::DoColorReduction says.
class Clusters {
  public:
    void Add(const RGBQUAD& sample);
    void Merge(int threshold);
    /// The colours of the `most` largest clusters, the largest first.
    std::vector<RGBQUAD> Largest(std::size_t most) const;

  private:
    static constexpr std::size_t mostClusters = 999;

    struct Cluster {
        RGBQUAD color;
        std::int64_t count;
    };

    void MergeAt(int limit);
    int LeastDistance() const;

    static constexpr std::size_t noCluster = static_cast<std::size_t>(-1);

    std::vector<Cluster> m_clusters;
    std::size_t m_last = noCluster;  // where the last sample went, of the colour m_lastKey
    std::uint32_t m_lastKey = 0;
};

}  // namespace tarvex::color
