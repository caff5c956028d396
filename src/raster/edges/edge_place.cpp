// Edges between pixels.
//
// Across an edge the slope of a picture that is smoothed by a Gaussian is a Gaussian itself, whose logarithm
// is a parabola. So three slopes a pixel apart, taken along the gradient, tell where the steepest place is,
// to a few hundredths of a pixel without noise. The picture is smoothed anew around each point: edges are
// few.
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
    static constexpr int kReach = 3;  // of gradients around the pixel
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

EdgePlacer::EdgePlacer(const GreyView& picture, double sigma) : m_picture(picture) {
    sigma = std::clamp(sigma, kLeastSigma, kMostSigma);
    const int radius = static_cast<int>(std::ceil(kFilterRadius * sigma));
    for (int i = -radius; i <= radius; ++i) m_weights.push_back(std::exp(-0.5 * (i / sigma) * (i / sigma)));
}

EdgePlacer::Patch EdgePlacer::Around(int x, int y) const {
    constexpr int size = Patch::kSize + 2;  // gradients need a level more on either side
    const auto taps = static_cast<int>(m_weights.size());
    const int radius = taps / 2;
    std::vector<double> along(static_cast<std::size_t>(size * (size + taps)));
    const auto filtered = [&](int row, int column) -> double& {
        return along[static_cast<std::size_t>(row * size + column)];
    };
    for (int row = 0; row < size + taps - 1; ++row) {
        const std::uint8_t* const levels =
            m_picture.Row(std::clamp(y - size / 2 - radius + row, 0, m_picture.height - 1));
        for (int column = 0; column < size; ++column) {
            double sum = 0;
            for (int k = 0; k < taps; ++k) {
                const int at = std::clamp(x - size / 2 + column + k - radius, 0, m_picture.width - 1);
                sum += m_weights[static_cast<std::size_t>(k)] * levels[at];
            }
            filtered(row, column) = sum;
        }
    }
    double smoothed[size][size] = {};
    for (int row = 0; row < size; ++row) {
        for (int column = 0; column < size; ++column) {
            for (int k = 0; k < taps; ++k)
                smoothed[row][column] += m_weights[static_cast<std::size_t>(k)] * filtered(row + k, column);
        }
    }
    Patch patch{};
    for (int row = 1; row + 1 < size; ++row) {
        for (int column = 1; column + 1 < size; ++column) {
            patch.gradients[row - 1][column - 1] = {smoothed[row][column + 1] - smoothed[row][column - 1],
                                                    smoothed[row + 1][column] - smoothed[row - 1][column]};
        }
    }
    return patch;
}

DPOINT EdgePlacer::Place(DPOINT p) const {
    const DPOINT middle{std::floor(p.x + 0.5), std::floor(p.y + 0.5)};
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
