// Clusters of sampled colours. A cluster that was merged into another is taken out of the list, which leaves
// the order of the others; limits at which no two clusters are near enough are passed over, as nothing can
// happen at them.
#include "raster/color/clusters.h"

#include <algorithm>

namespace tarvex::color {

namespace {

constexpr int kFirstLimit = 1200;
constexpr int kLimitStep = 30;

/// The weighted mean, rounded half up.
BYTE Mean(BYTE a, std::int64_t countA, BYTE b, std::int64_t countB) {
    const std::int64_t all = countA + countB;
    return static_cast<BYTE>((2 * (countA * a + countB * b) + all) / (2 * all));
}

RGBQUAD Mean(const RGBQUAD& a, std::int64_t countA, const RGBQUAD& b, std::int64_t countB) {
    return {Mean(a.rgbBlue, countA, b.rgbBlue, countB), Mean(a.rgbGreen, countA, b.rgbGreen, countB),
            Mean(a.rgbRed, countA, b.rgbRed, countB), 0};
}

}  // namespace

void Clusters::Add(const RGBQUAD& sample) {
    // The cluster that the sample before went to has just this colour: no other one is nearer, and none
    // before it is as near, or that sample, if it was of this colour too, would have gone there.
    if (m_last != noCluster && KeyOf(sample) == m_lastKey && KeyOf(m_clusters[m_last].color) == m_lastKey) {
        ++m_clusters[m_last].count;
        return;
    }
    m_last = noCluster;
    m_lastKey = KeyOf(sample);
    Cluster* nearest = nullptr;
    int least = largestDistance + 1;
    for (Cluster& cluster : m_clusters) {
        const int distance = Distance(cluster.color, sample);
        if (distance >= least) continue;
        least = distance;
        nearest = &cluster;
    }
    if (nearest == nullptr || least >= sameCluster) {
        if (m_clusters.size() < mostClusters)
            m_clusters.push_back({{sample.rgbBlue, sample.rgbGreen, sample.rgbRed, 0}, 1});
        return;
    }
    nearest->color = Mean(nearest->color, nearest->count, sample, 1);
    ++nearest->count;
    m_last = static_cast<std::size_t>(nearest - m_clusters.data());
}

void Clusters::MergeAt(int limit) {
    m_last = noCluster;
    for (std::size_t i = 0; i < m_clusters.size(); ++i) {
        if (m_clusters[i].count == 0) continue;
        const Cluster taken = m_clusters[i];
        for (std::size_t j = i + 1; j < m_clusters.size(); ++j) {
            Cluster& other = m_clusters[j];
            if (other.count == 0 || Distance(taken.color, other.color) >= limit) continue;
            m_clusters[i].color = Mean(taken.color, taken.count, other.color, other.count);
            m_clusters[i].count += other.count;
            other.count = 0;
        }
    }
    std::erase_if(m_clusters, [](const Cluster& cluster) { return cluster.count == 0; });
}

int Clusters::LeastDistance() const {
    int least = largestDistance + 1;
    for (std::size_t i = 0; i < m_clusters.size(); ++i) {
        for (std::size_t j = i + 1; j < m_clusters.size(); ++j)
            least = std::min(least, Distance(m_clusters[i].color, m_clusters[j].color));
    }
    return least;
}

void Clusters::Merge(int threshold) {
    int limit = kFirstLimit;
    while (limit < threshold) {
        const int least = LeastDistance();
        if (least > largestDistance) return;  // fewer than two clusters
        if (least >= limit) limit += (least - limit) / kLimitStep * kLimitStep + kLimitStep;
        if (limit >= threshold) return;
        MergeAt(limit);
        limit += kLimitStep;
    }
}

std::vector<RGBQUAD> Clusters::Largest(std::size_t most) const {
    std::vector<Cluster> sorted = m_clusters;
    std::stable_sort(sorted.begin(), sorted.end(),
                     [](const Cluster& a, const Cluster& b) { return a.count > b.count; });
    std::vector<RGBQUAD> colors;
    for (std::size_t i = 0; i < std::min(most, sorted.size()); ++i) colors.push_back(sorted[i].color);
    return colors;
}

}  // namespace tarvex::color
