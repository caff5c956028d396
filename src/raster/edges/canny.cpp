// Canny's detector in one pass over the rows.
//
// Smoothing is separable: each row is filtered along itself once, and a sum
// over the filtered rows around a row gives its smoothed levels. Only as many
// rows are kept as the filter is high, three smoothed ones for the gradient,
// and three rows of gradients for comparing a pixel with its neighbours; what
// stays is one strength for each pixel. Outside the picture its border pixels
// go on.
//
// A pixel is a line's own when its magnitude is not below the two found, by
// straight interpolation, one step forth and back along its gradient. Forth is
// always to the right, or down for upright gradients, and not towards the
// light, and a pixel equal to the one forth gives way to it. So a plateau of
// two keeps one, and a negative keeps the same. The magnitudes are divided by
// that of an ideal upright step of one level, so they tell heights of steps
// whatever sigma is.
#include <algorithm>
#include <cmath>

#include "raster/edges/edge_map.h"
#include "raster/edges/float_lanes.h"

namespace tarvex {
namespace {

constexpr double kFilterRadius = 3.5;  ///< in sigmas; what lies beyond is a 2,000th of the filter

using Row = std::vector<float>;

/// Half of a Gaussian with sum 1: the middle weight and those to one side.
std::vector<float> GaussianHalf(double sigma) {
    const int radius = static_cast<int>(std::ceil(kFilterRadius * sigma));
    std::vector<double> weights;
    double sum = 0;
    for (int i = 0; i <= radius; ++i) {
        weights.push_back(std::exp(-0.5 * (i / sigma) * (i / sigma)));
        sum += i == 0 ? weights.back() : 2 * weights.back();
    }
    std::vector<float> half;
    for (const double w : weights) half.push_back(static_cast<float>(w / sum));
    return half;
}

/// Two rows at the same distance on both sides of the middle.
struct TapPair {
    const float* before;
    const float* after;
};

/// The weighted sum of rows, pixel by pixel, in the same order at every pixel.
void SumRows(const float* middle, std::span<const TapPair> taps, std::span<const float> weights, int width,
             float* out) {
    ForLanes(0, static_cast<std::size_t>(width), [&](auto lanes, std::size_t x) {
        using Lanes = decltype(lanes);
        Lanes sum = Lanes(weights[0]) * Lanes::Load(middle + x);
        for (std::size_t k = 0; k < taps.size(); ++k) {
            const Lanes pair = Lanes::Load(taps[k].before + x) + Lanes::Load(taps[k].after + x);
            sum = sum + Lanes(weights[k + 1]) * pair;
        }
        sum.Store(out + x);
    });
}

/// The picture's rows, smoothed, asked for from the top down; with a pixel more
/// at either end.
class SmoothedRows {
  public:
    SmoothedRows(const LevelRows& picture, double sigma)
        : m_picture(picture),
          m_half(GaussianHalf(sigma)),
          m_radius(static_cast<int>(m_half.size()) - 1),
          m_padded(static_cast<std::size_t>(picture.Width() + 2 * m_radius)),
          m_taps(static_cast<std::size_t>(m_radius)) {
        const int rows = std::min(2 * m_radius + 1, picture.Height());
        m_filtered.assign(static_cast<std::size_t>(rows), Row(static_cast<std::size_t>(picture.Width())));
    }

    /// The magnitude that the gradient, as half a difference over two pixels, has
    /// at an ideal step of 1.
    float StepMagnitude() const { return (m_half[0] + (m_radius > 0 ? m_half[1] : 0)) / 2; }

    void Read(int y, Row& out) {
        const int width = m_picture.Width();
        while (m_next < m_picture.Height() && m_next <= y + m_radius) FilterAlong(m_next++);
        for (int k = 1; k <= m_radius; ++k)
            m_taps[static_cast<std::size_t>(k - 1)] = {Filtered(y - k), Filtered(y + k)};
        SumRows(Filtered(y), m_taps, m_half, width, out.data() + 1);
        out.front() = out[1];
        out.back() = out[static_cast<std::size_t>(width)];
    }

  private:
    void FilterAlong(int y) {
        const auto width = static_cast<std::size_t>(m_picture.Width());
        float* const middle = m_padded.data() + m_radius;
        m_picture.Read(y, middle);
        std::fill(m_padded.data(), middle, middle[0]);
        std::fill(middle + width, m_padded.data() + m_padded.size(), middle[width - 1]);
        for (int k = 1; k <= m_radius; ++k)
            m_taps[static_cast<std::size_t>(k - 1)] = {middle - k, middle + k};
        SumRows(middle, m_taps, m_half, m_picture.Width(), Slot(y).data());
    }

    Row& Slot(int y) { return m_filtered[static_cast<std::size_t>(y) % m_filtered.size()]; }
    const float* Filtered(int y) { return Slot(std::clamp(y, 0, m_picture.Height() - 1)).data(); }

    const LevelRows& m_picture;
    std::vector<float> m_half;
    int m_radius;
    int m_next = 0;
    Row m_padded;
    std::vector<TapPair> m_taps;
    std::vector<Row> m_filtered;
};

/// Gradients of one row, with a pixel without gradient at either end.
struct GradientRow {
    Row dx, dy, magnitude;
    explicit GradientRow(int width)
        : dx(static_cast<std::size_t>(width + 2)), dy(dx.size()), magnitude(dx.size()) {}

    void Compute(const Row& above, const Row& level, const Row& below, float scale) {
        const float* const up = above.data();
        const float* const here = level.data();
        const float* const down = below.data();
        float* const toDx = dx.data();
        float* const toDy = dy.data();
        float* const toMagnitude = magnitude.data();
        ForLanes(1, dx.size() - 1, [&](auto lanes, std::size_t i) {
            using Lanes = decltype(lanes);
            const Lanes x = Lanes::Load(here + i + 1) - Lanes::Load(here + i - 1);
            const Lanes y = Lanes::Load(down + i) - Lanes::Load(up + i);
            x.Store(toDx + i);
            y.Store(toDy + i);
            (SquareRoot(x * x + y * y) * Lanes(scale)).Store(toMagnitude + i);
        });
    }
    void Clear() { std::fill(magnitude.begin(), magnitude.end(), 0.0F); }
};

/// The strengths of one row: magnitudes that no neighbour along the gradient exceeds, and 0 elsewhere.
/// Written without branches, so that several pixels are done at once.
void Compare(const GradientRow& above, const GradientRow& level, const GradientRow& below, std::size_t width,
             std::uint16_t* out) {
    const float* const up = above.magnitude.data();
    const float* const here = level.magnitude.data();
    const float* const down = below.magnitude.data();
    const float* const dx = level.dx.data();
    const float* const dy = level.dy.data();
    constexpr float most = 65535.0F / static_cast<float>(kStrengthUnits);
    ForLanes(1, width + 1, [&](auto lanes, std::size_t i) {
        using Lanes = decltype(lanes);
        const Lanes x = Lanes::Load(dx + i);
        const Lanes y = Lanes::Load(dy + i);
        const Lanes own = Lanes::Load(here + i);
        const auto isFalling = x * y > Lanes(0.0F);  // the gradient's line runs down to the right
        const auto isFlat = Magnitude(x) >= Magnitude(y);
        const Lanes major = Lanes::Choose(isFlat, Magnitude(x), Magnitude(y));
        const Lanes minor = Lanes::Choose(isFlat, Magnitude(y), Magnitude(x));
        const Lanes upRight = Lanes::Load(up + i + 1);
        const Lanes downLeft = Lanes::Load(down + i - 1);
        const Lanes aslant =
            Lanes::Choose(isFalling, Lanes::Load(down + i + 1), Lanes::Choose(isFlat, upRight, downLeft));
        const Lanes aslantBack =
            Lanes::Choose(isFalling, Lanes::Load(up + i - 1), Lanes::Choose(isFlat, downLeft, upRight));
        const Lanes straight = Lanes::Choose(isFlat, Lanes::Load(here + i + 1), Lanes::Load(down + i));
        const Lanes straightBack = Lanes::Choose(isFlat, Lanes::Load(here + i - 1), Lanes::Load(up + i));
        const Lanes forth = aslant * minor + straight * (major - minor);
        const Lanes back = aslantBack * minor + straightBack * (major - minor);
        const auto isGreatest = Lanes::Both(own * major > forth, own * major >= back);
        const Lanes kept = Lanes::Choose(isGreatest, Lesser(own, Lanes(most)), Lanes(0.0F));
        (kept * Lanes(static_cast<float>(kStrengthUnits))).StoreWhole(out + i - 1);
    });
}

}  // namespace

EdgeMap FindCannyEdges(const LevelRows& picture, double sigma, MagnitudeHistogram* histogram) {
    const int width = picture.Width();
    const int height = picture.Height();
    EdgeMap map(width, height);
    SmoothedRows source(picture, sigma);
    const float scale = 0.5F / source.StepMagnitude();
    constexpr int kept = 3;
    std::vector<Row> smoothed(kept, Row(static_cast<std::size_t>(width + 2)));
    std::vector<GradientRow> gradients(kept, GradientRow(width));
    const auto slot = [](int y) { return static_cast<std::size_t>((y + kept) % kept); };

    source.Read(0, smoothed[slot(0)]);
    smoothed[slot(-1)] = smoothed[slot(0)];
    // Gradients run a row ahead of the comparison, smoothed rows another one.
    for (int y = 0; y <= height; ++y) {
        GradientRow& ahead = gradients[slot(y)];
        if (y < height) {
            if (y + 1 < height) {
                source.Read(y + 1, smoothed[slot(y + 1)]);
            } else {
                smoothed[slot(y + 1)] = smoothed[slot(y)];
            }
            ahead.Compute(smoothed[slot(y - 1)], smoothed[slot(y)], smoothed[slot(y + 1)], scale);
            if (histogram != nullptr)
                histogram->Add({ahead.magnitude.data() + 1, static_cast<std::size_t>(width)});
        } else {
            ahead.Clear();
        }
        if (y == 0) continue;
        const GradientRow& level = gradients[slot(y - 1)];
        Compare(gradients[slot(y - 2)], level, ahead, static_cast<std::size_t>(width), map.Row(y - 1));
    }
    return map;
}

}  // namespace tarvex
