// Grey pictures for tests: drawn as text, or rendered with exact anti-aliasing from a shape.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tarvex/contours.h"

namespace tarvex::test {

struct GreyPicture {
    int width = 0;
    int height = 0;
    std::vector<std::uint8_t> levels;

    GreyPicture(int w, int h, std::uint8_t level = 255)
        : width(w), height(h), levels(static_cast<std::size_t>(w) * static_cast<std::size_t>(h), level) {}

    /// One string a row: '#' is black, '.' white, and a digit 1..9 that many tenths white.
    explicit GreyPicture(const std::vector<std::string>& rows)
        : GreyPicture(static_cast<int>(rows.at(0).size()), static_cast<int>(rows.size())) {
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x) {
                const char c = rows[static_cast<std::size_t>(y)].at(static_cast<std::size_t>(x));
                At(x, y) = static_cast<std::uint8_t>(c == '#' ? 0 : c == '.' ? 255 : (c - '0') * 255 / 10);
            }
    }

    std::uint8_t& At(int x, int y) {
        return levels[static_cast<std::size_t>(y) * static_cast<std::size_t>(width) +
                      static_cast<std::size_t>(x)];
    }
    std::uint8_t At(int x, int y) const { return const_cast<GreyPicture*>(this)->At(x, y); }

    GreyView View() const { return {levels.data(), width, height, width}; }
};

/// Black where `inside(x, y)` holds, each pixel grey by the part of the points sampled in it that are.
template <class Inside>
GreyPicture Render(int width, int height, const Inside& inside, int samples = 16) {
    GreyPicture picture(width, height);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            int covered = 0;
            for (int j = 0; j < samples; ++j)
                for (int i = 0; i < samples; ++i)
                    covered += inside(x + (i + 0.5) / samples, y + (j + 0.5) / samples) ? 1 : 0;
            picture.At(x, y) = static_cast<std::uint8_t>(255 - covered * 255 / (samples * samples));
        }
    return picture;
}

/// The picture in two levels.
inline GreyPicture Stairs(GreyPicture picture) {
    for (std::uint8_t& level : picture.levels) level = level <= 127 ? 0 : 255;
    return picture;
}

}  // namespace tarvex::test
