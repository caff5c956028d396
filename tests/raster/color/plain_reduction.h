// Colour reduction by its rules, pixel by pixel and class by class: what the fast one is compared with.
#pragma once

#include <algorithm>
#include <cstdint>
#include <vector>

#include "tarvex/colors.h"

namespace tarvex::test {

struct Color {
    int r = 0, g = 0, b = 0;
    friend bool operator==(const Color&, const Color&) = default;
};

inline int DistanceOf(Color a, Color b) {
    return 3 * (a.r - b.r) * (a.r - b.r) + 4 * (a.g - b.g) * (a.g - b.g) + 2 * (a.b - b.b) * (a.b - b.b);
}

/// Colours, rows from the top down.
struct ColorPicture {
    int width = 0;
    int height = 0;
    std::vector<Color> pixels;

    ColorPicture(int w, int h, Color c = {})
        : width(w), height(h), pixels(static_cast<std::size_t>(w) * static_cast<std::size_t>(h), c) {}
    Color& At(int x, int y) {
        x = std::clamp(x, 0, width - 1);
        y = std::clamp(y, 0, height - 1);
        return pixels[static_cast<std::size_t>(y) * static_cast<std::size_t>(width) +
                      static_cast<std::size_t>(x)];
    }
    Color At(int x, int y) const { return const_cast<ColorPicture*>(this)->At(x, y); }
    ColorPicture Enlarged(int factor) const {
        ColorPicture big(width * factor, height * factor);
        for (int y = 0; y < big.height; ++y)
            for (int x = 0; x < big.width; ++x) big.At(x, y) = At(x / factor, y / factor);
        return big;
    }
    friend bool operator==(const ColorPicture&, const ColorPicture&) = default;
};

struct PlainClass {
    Color color;
    int count;
};

inline PlainClass PlainMajority(const ColorPicture& picture, int x, int y, int size) {
    const int radius = std::min(size / 2, 3);
    std::vector<PlainClass> classes;
    for (int v = y - radius; v <= y + radius; ++v) {
        for (int u = x - radius; u <= x + radius; ++u) {
            const Color c = picture.At(u, v);
            const auto own = std::find_if(classes.begin(), classes.end(),
                                          [&](const PlainClass& k) { return DistanceOf(k.color, c) < 390; });
            if (own == classes.end()) {
                classes.push_back({c, 1});
            } else {
                ++own->count;
            }
        }
    }
    return *std::max_element(classes.begin(), classes.end(),
                             [](const PlainClass& a, const PlainClass& b) { return a.count < b.count; });
}

inline Color PlainMean(const ColorPicture& picture, int x, int y) {
    Color sum;
    for (int v = y - 1; v <= y + 1; ++v) {
        for (int u = x - 1; u <= x + 1; ++u) {
            const Color c = picture.At(u, v);
            sum = {sum.r + c.r, sum.g + c.g, sum.b + c.b};
        }
    }
    return {sum.r / 9, sum.g / 9, sum.b / 9};
}

class PlainReduction {
  public:
    explicit PlainReduction(const ColorPicture& source) : m_source(source), m_image(source), m_mean(source) {
        const int shorter = std::min(source.width, source.height);
        m_factor = shorter < 100 ? 4 : shorter < 250 ? 2 : 1;
        m_image = m_mean = source.Enlarged(m_factor);
        for (int y = 0; y < m_mean.height; ++y)
            for (int x = 0; x < m_mean.width; ++x) m_mean.At(x, y) = PlainMean(m_image, x, y);
    }

    /// The palette; afterwards Result() is the reduced picture.
    std::vector<Color> Reduce(int wanted, int level) {
        std::vector<Color> palette = Palette(wanted, level);
        if (!palette.empty()) Replace(palette);
        return palette;
    }

    ColorPicture Result() const {
        ColorPicture result(m_source.width, m_source.height);
        for (int y = 0; y < result.height; ++y)
            for (int x = 0; x < result.width; ++x)
                result.At(x, y) = m_image.At(x * m_factor + m_factor / 2, y * m_factor + m_factor / 2);
        return result;
    }

  private:
    static Color Mix(Color a, double countA, Color b, double countB) {
        const auto channel = [&](int x, int y) {
            return static_cast<int>((countA * x + countB * y) / (countA + countB) + 0.5);
        };
        return {channel(a.r, b.r), channel(a.g, b.g), channel(a.b, b.b)};
    }

    std::vector<Color> Palette(int wanted, int level) {
        std::vector<PlainClass> clusters;
        for (int y = 3; y < m_mean.height - 3; y += 3) {
            for (int x = 3; x < m_mean.width - 3; x += 3) {
                const PlainClass sample = PlainMajority(m_mean, x, y, 7);
                if (sample.count >= 24) AddSample(clusters, sample.color);
            }
        }
        for (std::int64_t limit = 1200;
             limit < std::min<std::int64_t>(600'000, level * std::int64_t{100} + 3500); limit += 30)
            MergeAt(clusters, limit);
        std::stable_sort(clusters.begin(), clusters.end(),
                         [](const PlainClass& a, const PlainClass& b) { return a.count > b.count; });
        std::vector<Color> palette;
        for (const PlainClass& cluster : clusters) {
            if (cluster.count > 0 && static_cast<int>(palette.size()) < wanted)
                palette.push_back(cluster.color);
        }
        return palette;
    }

    static void AddSample(std::vector<PlainClass>& clusters, Color c) {
        const auto nearest = std::min_element(
            clusters.begin(), clusters.end(),
            [&](const auto& a, const auto& b) { return DistanceOf(a.color, c) < DistanceOf(b.color, c); });
        if (nearest != clusters.end() && DistanceOf(nearest->color, c) < 1200) {
            nearest->color = Mix(nearest->color, nearest->count, c, 1);
            ++nearest->count;
        } else if (clusters.size() < 999) {
            clusters.push_back({c, 1});
        }
    }

    static void MergeAt(std::vector<PlainClass>& clusters, std::int64_t limit) {
        for (std::size_t i = 0; i < clusters.size(); ++i) {
            const PlainClass taken = clusters[i];
            if (taken.count == 0) continue;
            for (std::size_t j = i + 1; j < clusters.size(); ++j) {
                PlainClass& other = clusters[j];
                if (other.count == 0 || DistanceOf(taken.color, other.color) >= limit) continue;
                clusters[i].color = Mix(taken.color, taken.count, other.color, other.count);
                clusters[i].count += other.count;
                other.count = 0;
            }
        }
    }

    void Replace(const std::vector<Color>& palette) {
        for (int y = 0; y < m_image.height; ++y) {
            for (int x = 0; x < m_image.width; ++x) {
                Color& pixel = m_image.At(x, y);
                const Color mean = m_mean.At(x, y);
                const auto own = std::find_if(palette.begin(), palette.end(),
                                              [&](Color c) { return DistanceOf(c, pixel) < 1200; });
                pixel = own != palette.end()
                            ? *own
                            : *std::min_element(palette.begin(), palette.end(), [&](Color a, Color b) {
                                  return DistanceOf(a, mean) < DistanceOf(b, mean);
                              });
            }
        }
        for (int pass = 0; pass < 2; ++pass) {
            const ColorPicture copy = m_image;
            for (int y = 0; y < m_image.height; ++y)
                for (int x = 0; x < m_image.width; ++x) m_image.At(x, y) = PlainMajority(copy, x, y, 5).color;
        }
    }

    ColorPicture m_source;
    ColorPicture m_image;
    ColorPicture m_mean;
    int m_factor = 1;
};

}  // namespace tarvex::test
