// Edges between pixels.
//
// Across an edge the slope of a picture that is smoothed by a Gaussian is a Gaussian itself, whose logarithm
// is a parabola. So three slopes a pixel apart, taken along the gradient, tell where the steepest place is,
// to a few hundredths of a pixel without noise. The picture is smoothed in tiles, where there are edges.
#include "raster/edges/edge_place.h"

#include <algorithm>
#include <cmath>

#include "bezier/vector.h"
#include "core/rounding.h"

namespace tarvex {
namespace {

constexpr double kFilterRadius = 3;  // in sigmas
constexpr double kLeastSigma = 1;    // less leaves the pixels' own steps
constexpr double kMostSigma = 3;     // more costs time, and rounds corners
constexpr double kMostShift = 1.5;   // pixels from where the detector put it
constexpr int kPasses = 2;           // the second one starts nearly there

}  // namespace

struct EdgePlacer::Patch {
    static constexpr int kReach = kBorder - 1;  // of gradients around the pixel
    static constexpr int kSize = 2 * kReach + 1;

    DPOINT gradients[kSize][kSize];

    /// The gradient between pixels, by straight interpolation; x and y from the middle one.
    DPOINT At(double x, double y) const {
        const double u = std::clamp(x + kReach, 0.0, kSize - 1.001);
        const double v = std::clamp(y + kReach, 0.0, kSize - 1.001);
        const auto i = static_cast<int>(u);
        const auto j = static_cast<int>(v);
        const double s = u - i;
        const double t = v - j;
        const DPOINT above = Plus(Times(gradients[j][i], 1 - s), Times(gradients[j][i + 1], s));
        const DPOINT below = Plus(Times(gradients[j + 1][i], 1 - s), Times(gradients[j + 1][i + 1], s));
        return Plus(Times(above, 1 - t), Times(below, t));
    }
};

EdgePlacer::EdgePlacer(const GreyView& picture, double sigma)
    : m_picture(picture),
      m_tilesInRow(static_cast<std::size_t>((picture.width + 2 * kBorder) / kTile + 1)),
      m_tiles(m_tilesInRow * static_cast<std::size_t>((picture.height + 2 * kBorder) / kTile + 1)) {
    sigma = std::clamp(sigma, kLeastSigma, kMostSigma);
    const int radius = static_cast<int>(std::ceil(kFilterRadius * sigma));
    for (int i = -radius; i <= radius; ++i) m_weights.push_back(std::exp(-0.5 * (i / sigma) * (i / sigma)));
}

/// A tile of the picture, smoothed: first its rows, with what the columns need above and below, then columns.
EdgePlacer::Tile EdgePlacer::Smoothed(int left, int top) const {
    const auto taps = static_cast<int>(m_weights.size());
    const int radius = taps / 2;
    const int size = kTile + taps - 1;
    std::vector<std::array<double, kTile>> along(static_cast<std::size_t>(size));
    std::vector<double> levels(static_cast<std::size_t>(size));
    for (int row = 0; row < size; ++row) {
        const std::uint8_t* const from =
            m_picture.Row(std::clamp(top + row - radius, 0, m_picture.height - 1));
        for (int i = 0; i < size; ++i)
            levels[static_cast<std::size_t>(i)] = from[std::clamp(left + i - radius, 0, m_picture.width - 1)];
        auto& sums = along[static_cast<std::size_t>(row)];
        for (std::size_t k = 0; k < m_weights.size(); ++k) {
            for (std::size_t column = 0; column < kTile; ++column)
                sums[column] += m_weights[k] * levels[column + k];
        }
    }
    Tile tile = std::make_unique<TileRows>();
    for (std::size_t row = 0; row < kTile; ++row) {
        for (std::size_t k = 0; k < m_weights.size(); ++k) {
            for (std::size_t column = 0; column < kTile; ++column)
                (*tile)[row][column] += m_weights[k] * along[row + k][column];
        }
    }
    return tile;
}

double EdgePlacer::LevelAt(int x, int y) {
    const int i = x + kBorder;
    const int j = y + kBorder;
    Tile& tile =
        m_tiles[static_cast<std::size_t>(j / kTile) * m_tilesInRow + static_cast<std::size_t>(i / kTile)];
    if (!tile) tile = Smoothed(i / kTile * kTile - kBorder, j / kTile * kTile - kBorder);
    return (*tile)[static_cast<std::size_t>(j % kTile)][static_cast<std::size_t>(i % kTile)];
}

EdgePlacer::Patch EdgePlacer::Around(int x, int y) {
    constexpr int size = Patch::kSize;
    double levels[size + 2][size + 2];  // a pixel more on all sides
    for (int row = 0; row < size + 2; ++row) {
        for (int column = 0; column < size + 2; ++column)
            levels[row][column] = LevelAt(x + column - Patch::kReach - 1, y + row - Patch::kReach - 1);
    }
    Patch patch{};
    for (int row = 0; row < size; ++row) {
        for (int column = 0; column < size; ++column) {
            patch.gradients[row][column] = {levels[row + 1][column + 2] - levels[row + 1][column],
                                            levels[row + 2][column + 1] - levels[row][column + 1]};
        }
    }
    return patch;
}

DPOINT EdgePlacer::Place(DPOINT p) {
    const DPOINT middle{std::clamp(std::floor(p.x + 0.5), 0.0, m_picture.width - 1.0),
                        std::clamp(std::floor(p.y + 0.5), 0.0, m_picture.height - 1.0)};
    const Patch patch = Around(SaturatingInt(middle.x), SaturatingInt(middle.y));
    DPOINT place = Minus(p, middle);
    for (int pass = 0; pass < kPasses; ++pass) {
        const DPOINT gradient = patch.At(place.x, place.y);
        const double steepness = Length(gradient);
        if (!(steepness > 0)) return p;
        const DPOINT uphill = Times(gradient, 1 / steepness);
        const auto logAt = [&](double t) {
            return std::log(Length(patch.At(place.x + t * uphill.x, place.y + t * uphill.y)));
        };
        const double back = logAt(-1);
        const double here = std::log(steepness);
        const double forth = logAt(1);
        const double bend = back - 2 * here + forth;
        if (!(bend < 0) || std::isinf(bend)) return p;  // nothing but flat on one side
        place = Plus(place, Times(uphill, std::clamp((back - forth) / (2 * bend), -1.0, 1.0)));
    }
    // Beside the picture nothing is known: no point goes farther out than it was.
    const DPOINT reached = Plus(middle, place);
    const DPOINT moved{std::clamp(reached.x, std::min(p.x, 0.0), std::max(p.x, m_picture.width - 1.0)),
                       std::clamp(reached.y, std::min(p.y, 0.0), std::max(p.y, m_picture.height - 1.0))};
    return Distance(moved, p) <= kMostShift ? moved : p;
}

}  // namespace tarvex
