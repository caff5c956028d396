// Thresholds from the noise, and hysteresis: strong pixels and all that hangs
// on them by weak ones.
#include "raster/edges/edge_map.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace tarvex {
namespace {

constexpr double kFalseAlarms = 1e-5;  ///< of noise, at the high threshold
constexpr double kLowPart = 0.5;
constexpr double kQuantile = 0.3;  ///< of the magnitudes, all of them the noise's

std::uint16_t Units(double levels, double least) {
    const double units = std::ceil(levels * kStrengthUnits);
    return static_cast<std::uint16_t>(std::clamp(units, least, 65535.0));
}

constexpr int kBlock = 32;

/// Whether one of a block's strengths reaches the threshold; without branches, so that many are seen at once.
bool HasAny(const std::uint16_t* strengths, std::uint16_t threshold) {
    std::uint16_t most = 0;
    for (int i = 0; i < kBlock; ++i) most = std::max(most, strengths[i]);
    return most >= threshold;
}

}  // namespace

void MagnitudeHistogram::Add(std::span<const float> strengths) {
    for (const float s : strengths) {
        const float bin = s * kBinsPerLevel;
        ++m_counts[bin < static_cast<float>(kBins) ? static_cast<std::size_t>(bin) : kBins - 1];
    }
}

EdgeThresholds MagnitudeHistogram::Thresholds() const {
    // A quantile that edges, which are few and strong, hardly move. The first bin holds what does not change
    // at all, as in drawings, and then there is no noise to speak of.
    const std::uint64_t all = std::accumulate(m_counts.begin(), m_counts.end(), std::uint64_t{0});
    const double wanted = kQuantile * static_cast<double>(all);
    std::size_t bin = 0;
    double below = 0;
    while (bin + 1 < kBins && below + static_cast<double>(m_counts[bin]) < wanted)
        below += static_cast<double>(m_counts[bin++]);
    const double magnitude = bin == 0 ? 0 : (static_cast<double>(bin) + 0.5) / double{kBinsPerLevel};
    const double noise = magnitude / std::sqrt(-2 * std::log(1 - kQuantile));
    const double high = std::clamp(noise * std::sqrt(-2 * std::log(kFalseAlarms)),
                                   CEdgeDetect::EDGE_LEAST_STEP, CEdgeDetect::EDGE_SURE_STEP);
    return {kLowPart * high, high};
}

void DrawEdges(const EdgeMap& map, const EdgeThresholds& thresholds, const BitRaster& out) {
    const std::uint16_t high = Units(thresholds.high, 1);
    const std::uint16_t low = std::min(high, Units(thresholds.low, 1));
    struct Place {
        int x;
        int y;
    };
    std::vector<Place> pending;
    const auto strength = [&map](int x, int y) {
        return map.strengths[static_cast<std::size_t>(y) * static_cast<std::size_t>(map.width) +
                             static_cast<std::size_t>(x)];
    };
    const auto take = [&](int x, int y) {
        if (out.Get(x, y)) return;
        out.Set(x, y);
        pending.push_back({x, y});
    };
    const auto follow = [&] {
        while (!pending.empty()) {
            const Place p = pending.back();
            pending.pop_back();
            for (int v = std::max(p.y - 1, 0); v <= std::min(p.y + 1, map.height - 1); ++v) {
                for (int u = std::max(p.x - 1, 0); u <= std::min(p.x + 1, map.width - 1); ++u) {
                    if (strength(u, v) >= low) take(u, v);
                }
            }
        }
    };
    for (int y = 0; y < map.height; ++y) {
        for (int block = 0; block < map.width; block += kBlock) {
            const int end = std::min(block + kBlock, map.width);
            if (end - block == kBlock && !HasAny(map.Row(y) + block, high)) continue;
            for (int x = block; x < end; ++x) {
                if (strength(x, y) < high) continue;
                take(x, y);
                follow();
            }
        }
    }
}

}  // namespace tarvex
