// Pictures in tests: drawn as text, made by chance, and turned into bitmaps.
#pragma once

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <random>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <gtest/gtest.h>
#include <rapidcheck.h>

#include "platform/handles.h"

namespace tarvex::test {

/// A plain black-and-white picture. Outside it nothing is set, and nothing can be.
class BitPicture {
  public:
    BitPicture(int width, int height)
        : m_width(width),
          m_height(height),
          m_pixels(static_cast<std::size_t>(width) * static_cast<std::size_t>(height)) {}

    int Width() const { return m_width; }
    int Height() const { return m_height; }
    bool Inside(int x, int y) const { return x >= 0 && y >= 0 && x < m_width && y < m_height; }
    bool Get(int x, int y) const { return Inside(x, y) && m_pixels[Index(x, y)]; }
    void Set(int x, int y, bool on = true) {
        if (Inside(x, y)) m_pixels[Index(x, y)] = on;
    }
    void FillRectangle(int left, int top, int right, int bottom, bool on = true) {
        for (int y = top; y <= bottom; ++y) {
            for (int x = left; x <= right; ++x) Set(x, y, on);
        }
    }

    /// Rows of '.' and '#'.
    std::string Text() const {
        std::string text;
        for (int y = 0; y < m_height; ++y) {
            for (int x = 0; x < m_width; ++x) text += Get(x, y) ? '#' : '.';
            text += '\n';
        }
        return text;
    }

    friend bool operator==(const BitPicture&, const BitPicture&) = default;
    friend void PrintTo(const BitPicture& picture, std::ostream* os) { *os << '\n' << picture.Text(); }

  private:
    std::size_t Index(int x, int y) const {
        return static_cast<std::size_t>(y) * static_cast<std::size_t>(m_width) + static_cast<std::size_t>(x);
    }

    int m_width;
    int m_height;
    std::vector<bool> m_pixels;
};

/// A picture from rows of equal length; '.' and ' ' are not set.
inline BitPicture Drawn(const std::vector<std::string_view>& rows) {
    BitPicture picture(rows.empty() ? 0 : static_cast<int>(rows[0].size()), static_cast<int>(rows.size()));
    for (int y = 0; y < picture.Height(); ++y) {
        const std::string_view row = rows[static_cast<std::size_t>(y)];
        EXPECT_EQ(static_cast<int>(row.size()), picture.Width()) << "row " << y;
        for (int x = 0; x < static_cast<int>(row.size()); ++x)
            picture.Set(x, y,
                        row[static_cast<std::size_t>(x)] != '.' && row[static_cast<std::size_t>(x)] != ' ');
    }
    return picture;
}

/// Every pixel is set with this probability.
inline BitPicture Noise(int width, int height, double density, unsigned seed) {
    std::mt19937 random(seed);
    BitPicture picture(width, height);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x)
            picture.Set(x, y, static_cast<double>(random()) < density * 4294967296.0);
    }
    return picture;
}

/// Round spots and holes of up to `radius` pixels, overlapping as it happens.
inline BitPicture Blobs(int width, int height, int count, int radius, unsigned seed) {
    std::mt19937 random(seed);
    const auto below = [&random](int bound) {
        return static_cast<int>(random() % static_cast<unsigned>(bound));
    };
    BitPicture picture(width, height);
    for (int i = 0; i < count; ++i) {
        const int cx = below(width), cy = below(height), r = 1 + below(radius);
        const bool on = below(4) != 0;
        for (int y = -r; y <= r; ++y) {
            for (int x = -r; x <= r; ++x) {
                if (x * x + y * y <= r * r) picture.Set(cx + x, cy + y, on);
            }
        }
    }
    return picture;
}

/// Lines one pixel wide that wander, branch, touch and cross.
inline BitPicture ThinLines(int width, int height, int count, unsigned seed) {
    std::mt19937 random(seed);
    const auto below = [&random](int bound) {
        return static_cast<int>(random() % static_cast<unsigned>(bound));
    };
    BitPicture picture(width, height);
    for (int i = 0; i < count; ++i) {
        int x = below(width), y = below(height), dx = below(3) - 1, dy = below(3) - 1;
        for (int steps = below(2 * (width + height)); steps > 0; --steps) {
            picture.Set(x, y);
            if (below(6) == 0) dx = below(3) - 1;
            if (below(6) == 0) dy = below(3) - 1;
            x += dx;
            y += dy;
        }
    }
    return picture;
}

/// One of the random kinds, for properties.
inline BitPicture AnyPicture() {
    const int width = *rc::gen::inRange(1, 140);
    const int height = *rc::gen::inRange(1, 80);
    const unsigned seed = *rc::gen::arbitrary<unsigned>();
    switch (*rc::gen::inRange(0, 3)) {
        case 0:
            return Noise(width, height, *rc::gen::element(0.1, 0.3, 0.45, 0.6, 0.8, 0.95, 1.0), seed);
        case 1:
            return Blobs(width, height, *rc::gen::inRange(1, 60), 12, seed);
        default:
            return ThinLines(width, height, *rc::gen::inRange(1, 12), seed);
    }
}

/// A coordinate in a row or column of `size` pixels, just outside, or at the ends of the range.
inline int AnyCoordinate(int size) {
    return *rc::gen::weightedOneOf<int>(
        {{12, rc::gen::inRange(-1, size + 1)},
         {1, rc::gen::element(std::numeric_limits<int>::min(), std::numeric_limits<int>::max())}});
}

/// The plain seed fill: the pixels that hang together with (x, y) by their sides, all of them `isOf` the
/// region.
template <class IsOf>
BitPicture Region(int width, int height, int x, int y, IsOf isOf) {
    BitPicture region(width, height);
    std::vector<std::pair<int, int>> open{{x, y}};
    while (!open.empty()) {
        const auto [px, py] = open.back();
        open.pop_back();
        if (!region.Inside(px, py) || region.Get(px, py) || !isOf(px, py)) continue;
        region.Set(px, py);
        open.insert(open.end(), {{px - 1, py}, {px + 1, py}, {px, py - 1}, {px, py + 1}});
    }
    return region;
}

/// Bytes of a row of 1-bit pixels in memory.
inline int PaddedBytes(int width) { return (width + 31) / 32 * 4; }

/// The pixels as they stand in memory, rows from the bottom up, the most significant bit leftmost. The
/// padding is all ones, to betray whoever reads it.
inline std::vector<std::uint8_t> InMemory(const BitPicture& picture) {
    const int stride = PaddedBytes(picture.Width());
    std::vector<std::uint8_t> bytes(static_cast<std::size_t>(stride * picture.Height()), 0xFF);
    for (int y = 0; y < picture.Height(); ++y) {
        for (int x = 0; x < picture.Width(); ++x) {
            if (picture.Get(x, y)) continue;
            auto& byte = bytes[static_cast<std::size_t>((picture.Height() - 1 - y) * stride + x / 8)];
            byte = static_cast<std::uint8_t>(byte & ~(0x80 >> x % 8));
        }
    }
    return bytes;
}

/// A 1-bit bitmap of the picture, white where it is set.
inline UniqueBitmap Bitmap1(const BitPicture& picture) {
    struct {
        BITMAPINFOHEADER header{};
        RGBQUAD colours[2] = {{0, 0, 0, 0}, {255, 255, 255, 0}};
    } info;
    info.header.biSize = sizeof(BITMAPINFOHEADER);
    info.header.biWidth = picture.Width();
    info.header.biHeight = picture.Height();
    info.header.biPlanes = 1;
    info.header.biBitCount = 1;
    void* bits = nullptr;
    UniqueBitmap bitmap(CreateDIBSection(nullptr, reinterpret_cast<const BITMAPINFO*>(&info), DIB_RGB_COLORS,
                                         &bits, nullptr, 0));
    if (bits != nullptr) {
        const auto bytes = InMemory(picture);
        std::memcpy(bits, bytes.data(), bytes.size());
    }
    return bitmap;
}

}  // namespace tarvex::test
