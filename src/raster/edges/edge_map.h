// How strong an edge is at each pixel, and what becomes of that: thresholds and lines.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "raster/bit_raster.h"
#include "tarvex/edges.h"

namespace tarvex {

/// Strengths are heights of steps; they are kept in parts of a level. A step of 255 levels that is seen
/// sideways and from above comes to 361.
inline constexpr double kStrengthUnits = 128;

/// A picture that is read by rows, as levels about 0 (-127.5 to 127.5). Centred so, a negative's rows are the
/// picture's with their signs changed, exactly, and so is all that is computed from them.
class LevelRows {
  public:
    virtual ~LevelRows() = default;
    virtual int Width() const = 0;
    virtual int Height() const = 0;
    /// Writes the row's `Width()` levels.
    virtual void Read(int y, float* levels) const = 0;
};

/// Counts magnitudes of gradients, to tell noise from edges.
class MagnitudeHistogram {
  public:
    void Add(std::span<const float> strengths);
    EdgeThresholds Thresholds() const;

  private:
    static constexpr std::size_t kBins = 1024;
    static constexpr float kBinsPerLevel = 4;

    std::array<std::uint64_t, kBins> m_counts{};
};

struct EdgeMap {
    int width = 0;
    int height = 0;
    std::vector<std::uint16_t> strengths;  ///< row by row from the top; 0 where there is no edge at all

    EdgeMap(int w, int h)
        : width(w), height(h), strengths(static_cast<std::size_t>(w) * static_cast<std::size_t>(h)) {}
    const std::uint16_t* Row(int y) const {
        return strengths.data() + static_cast<std::size_t>(y) * static_cast<std::size_t>(width);
    }
    std::uint16_t* Row(int y) {
        return strengths.data() + static_cast<std::size_t>(y) * static_cast<std::size_t>(width);
    }
};

/// Sets the pixels of connected lines that reach the low threshold and, somewhere, the high one.
void DrawEdges(const EdgeMap& map, const EdgeThresholds& thresholds, const BitRaster& out);

/// The detectors. Counting can be left out when thresholds are given.
EdgeMap FindCannyEdges(const LevelRows& picture, double sigma, MagnitudeHistogram* histogram);
EdgeMap FindShenCastanEdges(const LevelRows& picture, double sigma, MagnitudeHistogram* histogram);

}  // namespace tarvex
