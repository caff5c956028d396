// Lines that the reduction's filter took away, and its reasons to.
//
// A filter that gives each pixel the commonest colour around removes two things that differ from what is
// around: blends along smoothed edges, which must go, since they would become a fringe of a third colour,
// and thin lines, which must not. They can be told apart. A blend lies between its neighbours: there are two
// pixels on opposite sides of it with its colour on the way from one's to the other's. A line's pixels do
// not: across the line they are an extreme, and along it nothing changes. So every blend is moved to the
// nearer of the two neighbours' colours (an edge as soft as four pixels takes two turns), and what then
// differs clearly from the colour that it was reduced to is a thin feature.
//
// Where several pairs of neighbours qualify, the one farthest apart decides. This is a shock filter (S. Osher
// and L. Rudin, "Feature-oriented image enhancement using shock filters", SIAM J. Numer. Anal. 27, 1990) in
// its simplest form, for colours.
#include <algorithm>
#include <array>
#include <cstdlib>

#include "raster/color/distance.h"
#include "tarvex/colortrace.h"

namespace tarvex {

namespace {

using color::Distance;
using color::KeyOf;

constexpr int kTurns = 2;
constexpr int kLeastEdge = 1200;   // between colours of a blend
constexpr int kForeign = 3500;     // from all colours: not one of them
constexpr int kLeastShare = 2000;  // a colour is added for one pixel in so many
constexpr int kClearly = 600;

/// The scalar product that goes with Distance.
int Product(const RGBQUAD& from, const RGBQUAD& a, const RGBQUAD& b) {
    return 3 * (a.rgbRed - from.rgbRed) * (b.rgbRed - from.rgbRed) +
           4 * (a.rgbGreen - from.rgbGreen) * (b.rgbGreen - from.rgbGreen) +
           2 * (a.rgbBlue - from.rgbBlue) * (b.rgbBlue - from.rgbBlue);
}

class Sharpener {
  public:
    Sharpener(int width, std::span<const RGBQUAD> source, std::span<const std::uint16_t> labels)
        : m_width(width),
          m_height(static_cast<int>(source.size() / static_cast<std::size_t>(width))),
          m_labels(labels),
          m_pixels(source.begin(), source.end()) {}

    std::vector<RGBQUAD> Sharpened() {
        for (int turn = 0; turn < kTurns; ++turn) {
            std::vector<RGBQUAD> next = m_pixels;
            for (int y = 0; y < m_height; ++y) {
                for (int x = 0; x < m_width; ++x) {
                    const std::size_t i = Index(x, y);
                    if (m_labels[i] != NO_LABEL && !IsFlat(x, y)) next[i] = WithoutBlend(x, y);
                }
            }
            m_pixels = std::move(next);
        }
        return std::move(m_pixels);
    }

  private:
    std::size_t Index(int x, int y) const {
        return static_cast<std::size_t>(y) * static_cast<std::size_t>(m_width) + static_cast<std::size_t>(x);
    }

    /// The pixel, or null where there is none that counts.
    const RGBQUAD* At(int x, int y) const {
        if (x < 0 || y < 0 || x >= m_width || y >= m_height || m_labels[Index(x, y)] == NO_LABEL)
            return nullptr;
        return &m_pixels[Index(x, y)];
    }

    bool IsFlat(int x, int y) const {
        if (x == 0 || y == 0 || x + 1 == m_width || y + 1 == m_height) return false;
        const std::uint32_t key = KeyOf(m_pixels[Index(x, y)]);
        return KeyOf(m_pixels[Index(x - 1, y)]) == key && KeyOf(m_pixels[Index(x + 1, y)]) == key &&
               KeyOf(m_pixels[Index(x, y - 1)]) == key && KeyOf(m_pixels[Index(x, y + 1)]) == key;
    }

    RGBQUAD WithoutBlend(int x, int y) const {
        static constexpr std::array<std::array<int, 2>, 4> pairs{{{1, 0}, {0, 1}, {1, 1}, {1, -1}}};
        const RGBQUAD& here = m_pixels[Index(x, y)];
        const RGBQUAD* nearer = &here;
        int farthest = kLeastEdge - 1;
        for (const auto& [dx, dy] : pairs) {
            const RGBQUAD* a = At(x - dx, y - dy);
            const RGBQUAD* b = At(x + dx, y + dy);
            if (a == nullptr || b == nullptr) continue;
            const int edge = Distance(*a, *b);
            if (edge <= farthest) continue;
            const int along = Product(*a, here, *b);
            if (along <= 0 || along >= edge) continue;
            // How far from the straight way between the two, squared.
            const double off = Distance(*a, here) - static_cast<double>(along) * along / edge;
            if (off > std::max(390.0, 0.05 * edge)) continue;
            farthest = edge;
            nearer = 2 * along < edge ? a : b;
        }
        return *nearer;
    }

    int m_width;
    int m_height;
    std::span<const std::uint16_t> m_labels;
    std::vector<RGBQUAD> m_pixels;
};

std::uint16_t Nearest(const RGBQUAD& c, std::span<const RGBQUAD> colors) {
    std::size_t nearest = 0;
    for (std::size_t i = 1; i < colors.size(); ++i) {
        if (Distance(colors[i], c) < Distance(colors[nearest], c)) nearest = i;
    }
    return static_cast<std::uint16_t>(nearest);
}

/// Adds the most frequent of the colours that are far from all.
void AddForeign(std::span<const RGBQUAD> pixels, std::span<const std::uint16_t> labels,
                std::vector<RGBQUAD>& colors, std::size_t most) {
    struct Bin {
        std::int64_t count = 0;
        std::int64_t red = 0, green = 0, blue = 0;
    };
    while (colors.size() < most) {
        std::vector<Bin> bins(4096);
        std::uint32_t lastKey = ~0U;
        bool isForeign = false;
        for (std::size_t i = 0; i < pixels.size(); ++i) {
            if (labels[i] == NO_LABEL) continue;
            const RGBQUAD& c = pixels[i];
            if (KeyOf(c) != lastKey) {
                lastKey = KeyOf(c);
                isForeign = Distance(c, colors[Nearest(c, colors)]) >= kForeign;
            }
            if (!isForeign) continue;
            Bin& bin =
                bins[static_cast<std::size_t>(c.rgbRed >> 4 << 8 | c.rgbGreen >> 4 << 4 | c.rgbBlue >> 4)];
            ++bin.count;
            bin.red += c.rgbRed;
            bin.green += c.rgbGreen;
            bin.blue += c.rgbBlue;
        }
        const Bin& fullest = *std::max_element(bins.begin(), bins.end(),
                                               [](const Bin& a, const Bin& b) { return a.count < b.count; });
        if (fullest.count * kLeastShare < static_cast<std::int64_t>(pixels.size()) || fullest.count == 0)
            return;
        const auto mean = [&](std::int64_t sum) { return static_cast<BYTE>(sum / fullest.count); };
        colors.push_back({mean(fullest.blue), mean(fullest.green), mean(fullest.red), 0});
    }
}

}  // namespace

std::vector<std::uint16_t> RestoreThinFeatures(int width, std::span<const RGBQUAD> source,
                                               std::span<const std::uint16_t> reduced,
                                               std::vector<RGBQUAD>& colors, std::size_t mostColors) {
    std::vector<std::uint16_t> labels(reduced.begin(), reduced.end());
    const bool fits = width > 0 && source.size() == reduced.size() &&
                      source.size() % static_cast<std::size_t>(width) == 0 &&
                      source.size() / static_cast<std::size_t>(width) <= INT32_MAX && !colors.empty() &&
                      colors.size() < NO_LABEL;
    if (!fits || std::any_of(labels.begin(), labels.end(), [&](std::uint16_t label) {
            return label != NO_LABEL && label >= colors.size();
        }))
        return labels;
    const std::vector<RGBQUAD> sharp = Sharpener(width, source, reduced).Sharpened();
    AddForeign(sharp, reduced, colors, std::min<std::size_t>(mostColors, NO_LABEL));
    std::uint32_t lastKey = ~0U;
    std::uint16_t nearest = 0;
    int distance = 0;
    for (std::size_t i = 0; i < labels.size(); ++i) {
        if (labels[i] == NO_LABEL) continue;
        if (KeyOf(sharp[i]) != lastKey) {
            lastKey = KeyOf(sharp[i]);
            nearest = Nearest(sharp[i], colors);
            distance = Distance(sharp[i], colors[nearest]);
        }
        if (Distance(sharp[i], colors[labels[i]]) > 2 * distance + kClearly) labels[i] = nearest;
    }
    return labels;
}

}  // namespace tarvex
