#include "raster/contours/enlarge.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace tarvex::contours {

namespace {

using Taps = std::array<float, 4>;

/// Weights of the samples before-before, before, after, after-after for a position `t` of the way
/// from before to after.
Taps CubicWeights(float t) {
    const float a = -0.5f;
    const auto inner = [a](float d) { return ((a + 2) * d - (a + 3)) * d * d + 1; };
    const auto outer = [a](float d) { return ((a * d - 5 * a) * d + 8 * a) * d - 4 * a; };
    return {outer(1 + t), inner(t), inner(1 - t), outer(2 - t)};
}

/// One phase of the enlargement: the source sample before the enlarged one, relative to the source
/// pixel it lies in, and the weights from there.
struct Phase {
    int before;
    Taps taps;
};

std::vector<Phase> Phases(int factor) {
    std::vector<Phase> phases;
    for (int k = 0; k < factor; ++k) {
        const double position = (k + 0.5) / factor - 0.5;  // from the source pixel's centre
        const int before = position < 0 ? -1 : 0;
        phases.push_back({before, CubicWeights(static_cast<float>(position - before))});
    }
    return phases;
}

}  // namespace

EnlargedPicture::EnlargedPicture(const GreyView& picture, int factor)
    : m_width(picture.width * factor), m_height(picture.height * factor) {
    const std::size_t width = static_cast<std::size_t>(m_width);
    m_levels.resize(width * static_cast<std::size_t>(m_height));
    const std::vector<Phase> phases = Phases(factor);
    // Four source rows at a time, already enlarged along x; row y lives in slot y mod 4.
    std::array<std::vector<float>, 4> rows;
    std::array<int, 4> held{-1, -1, -1, -1};
    std::vector<float> padded(static_cast<std::size_t>(picture.width) + 4);
    const auto enlargedRow = [&](int y) -> const std::vector<float>& {
        y = std::clamp(y, 0, picture.height - 1);
        std::vector<float>& row = rows[static_cast<std::size_t>(y & 3)];
        if (held[static_cast<std::size_t>(y & 3)] == y) return row;
        held[static_cast<std::size_t>(y & 3)] = y;
        row.resize(width);
        const std::uint8_t* levels = picture.Row(y);
        for (int x = -2; x < picture.width + 2; ++x)
            padded[static_cast<std::size_t>(x + 2)] = levels[std::clamp(x, 0, picture.width - 1)];
        for (int x = 0; x < picture.width; ++x)
            for (int k = 0; k < factor; ++k) {
                const Phase& phase = phases[static_cast<std::size_t>(k)];
                const float* from = padded.data() + (x + 2 + phase.before - 1);
                row[static_cast<std::size_t>(x) * static_cast<std::size_t>(factor) +
                    static_cast<std::size_t>(k)] = phase.taps[0] * from[0] + phase.taps[1] * from[1] +
                                                   phase.taps[2] * from[2] + phase.taps[3] * from[3];
            }
        return row;
    };
    for (int y = 0; y < m_height; ++y) {
        const Phase& phase = phases[static_cast<std::size_t>(y % factor)];
        const int before = y / factor + phase.before;
        const float* r0 = enlargedRow(before - 1).data();
        const float* r1 = enlargedRow(before).data();
        const float* r2 = enlargedRow(before + 1).data();
        const float* r3 = enlargedRow(before + 2).data();
        std::uint8_t* to = m_levels.data() + static_cast<std::size_t>(y) * width;
        for (std::size_t x = 0; x < width; ++x) {
            const float v =
                phase.taps[0] * r0[x] + phase.taps[1] * r1[x] + phase.taps[2] * r2[x] + phase.taps[3] * r3[x];
            to[x] = static_cast<std::uint8_t>(std::clamp(v, 0.0f, 255.0f) + 0.5f);
        }
    }
}

GreyView EnlargedPicture::View() const { return {m_levels.data(), m_width, m_height, m_width}; }

}  // namespace tarvex::contours
