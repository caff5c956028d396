// The majority filter, 25 pixels for every pixel, at the cost of a few.
//
// After the reduction a picture has a few colours, so each can be a number, and which of them are almost
// equal is found out once per pair. What remains is counting 25 bytes:
//   - where eight windows side by side hold one label only, that is seen by comparing words, and all
//     eight pixels are done; in a flat picture this is nearly every place;
//   - where the centre's label fills 13 of 25 pixels, and is almost equal to no other, it has won whatever
//     the others are; in a picture of regions this is nearly every place along a border;
//   - else classes are taken out of the window one after the other, as window.cpp explains, each by one
//     comparison of 25 bytes (and one more for each label almost equal to the representative).
// The answers are those of visiting all pixels one by one, bit for bit.
#include "raster/color/label_filter.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include "raster/color/palette_index.h"

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace tarvex::color {

namespace {

constexpr int kSide = 5;
constexpr int kWindow = kSide * kSide;

std::uint64_t Eight(const std::uint8_t* p) {
    std::uint64_t word;
    std::memcpy(&word, p, sizeof word);
    return word;
}

/// Bits set among the lowest 25.
int Count(std::uint32_t mask) {
    mask -= mask >> 1 & 0x55555555U;
    mask = (mask & 0x33333333U) + (mask >> 2 & 0x33333333U);
    mask = (mask + (mask >> 4)) & 0x0F0F0F0FU;
    return static_cast<int>(mask * 0x01010101U >> 24);
}

/// The 25 labels of a window in the order of rows, bit k of a mask standing for the k-th.
class Window {
  public:
    Window(const std::array<const std::uint8_t*, kSide>& rows, int x) {
        for (std::size_t k = 0; k < kSide; ++k) std::memcpy(m_labels + k * kSide, rows[k] + x - 2, 8);
    }

    std::uint8_t operator[](int k) const { return m_labels[k]; }

    std::uint32_t PlacesOf(std::uint8_t label) const {
#if defined(__SSE2__)
        const __m128i value = _mm_set1_epi8(static_cast<char>(label));
        const auto equal = [&](int from) {
            const __m128i labels = _mm_load_si128(reinterpret_cast<const __m128i*>(m_labels + from));
            return static_cast<std::uint32_t>(_mm_movemask_epi8(_mm_cmpeq_epi8(labels, value)));
        };
        return (equal(0) | equal(16) << 16) & all;
#else
        std::uint32_t places = 0;
        for (int k = 0; k < kWindow; ++k) places |= (m_labels[k] == label ? 1U : 0U) << k;
        return places;
#endif
    }

    static constexpr std::uint32_t all = (1U << kWindow) - 1;

  private:
    alignas(16) std::uint8_t m_labels[32] = {};  // each row's three bytes too many are the next row's
};

/// Colours by number, counted as they come.
class ColorNumbers {
  public:
    explicit ColorNumbers(std::vector<RGBQUAD>& colors) : m_colors(colors) { m_slots.fill(empty); }

    /// The colour's number, or mostColors when there are too many.
    std::size_t Of(const RGBQUAD& color) {
        const std::uint32_t key = KeyOf(color);
        std::size_t slot = (key * 0x9E3779B1U) >> (32 - slotBits);
        while (m_slots[slot] != empty) {
            if (KeyOf(m_colors[m_slots[slot]]) == key) return m_slots[slot];
            slot = (slot + 1) % m_slots.size();
        }
        if (m_colors.size() == Labels::mostColors) return Labels::mostColors;
        m_slots[slot] = static_cast<std::uint16_t>(m_colors.size());
        m_colors.push_back({color.rgbBlue, color.rgbGreen, color.rgbRed, 0});
        return m_colors.size() - 1;
    }

  private:
    static constexpr unsigned slotBits = 10;
    static constexpr std::uint16_t empty = 0xFFFF;

    std::vector<RGBQUAD>& m_colors;
    std::array<std::uint16_t, 1U << slotBits> m_slots;
};

}  // namespace

Labels::Labels(int width, int height)
    : m_width(width),
      m_height(height),
      m_stride(static_cast<std::size_t>(width) + margin + slack),
      m_labels(m_stride * static_cast<std::size_t>(height)) {}

Labels Labels::Replaced(const PixelView& image, const PixelView& mean, std::span<const RGBQUAD> palette) {
    Labels labels(image.width, image.height);
    for (const RGBQUAD& c : palette) labels.m_colors.push_back({c.rgbBlue, c.rgbGreen, c.rgbRed, 0});
    PaletteIndex index(palette);
    const auto numberOf = [&](const RGBQUAD* entry) {
        return static_cast<std::uint8_t>(entry - palette.data());
    };
    std::uint32_t lastKey = ~0U;  // of a pixel with an entry of its own
    std::uint8_t last = 0;
    const RGBQUAD* pixel = image.pixels;
    const RGBQUAD* average = mean.pixels;
    for (int y = image.height - 1; y >= 0; --y) {
        std::uint8_t* row = labels.Row(y);
        for (int x = 0; x < image.width; ++x, ++pixel, ++average) {
            const std::uint32_t key = KeyOf(*pixel);
            if (key == lastKey) {
                row[x] = last;
            } else if (const RGBQUAD* own = index.Own(*pixel)) {
                row[x] = last = numberOf(own);
                lastKey = key;
            } else {
                row[x] = numberOf(index.Nearest(*average));
            }
        }
    }
    labels.FindNeighbours();
    return labels;
}

std::optional<Labels> Labels::Of(const PixelView& image) {
    Labels labels(image.width, image.height);
    ColorNumbers numbers(labels.m_colors);
    std::uint32_t lastKey = ~0U;
    std::uint8_t last = 0;
    const RGBQUAD* pixel = image.pixels;
    for (int y = image.height - 1; y >= 0; --y) {
        std::uint8_t* row = labels.Row(y);
        for (int x = 0; x < image.width; ++x, ++pixel) {
            if (const std::uint32_t key = KeyOf(*pixel); key != lastKey) {
                const std::size_t number = numbers.Of(*pixel);
                if (number == mostColors) return std::nullopt;
                last = static_cast<std::uint8_t>(number);
                lastKey = key;
            }
            row[x] = last;
        }
    }
    labels.FindNeighbours();
    return labels;
}

void Labels::FindNeighbours() {
    m_near.resize(m_colors.size());
    for (std::size_t a = 0; a < m_colors.size(); ++a) {
        for (std::size_t b = 0; b < m_colors.size(); ++b) {
            if (a != b && Distance(m_colors[a], m_colors[b]) < almostEqual)
                m_near[a].push_back(static_cast<std::uint8_t>(b));
        }
    }
}

void Labels::RepeatEdges() {
    for (int y = 0; y < m_height; ++y) {
        std::uint8_t* row = Row(y);
        std::fill(row - margin, row, row[0]);
        std::fill(row + m_width, row + m_width + slack, row[m_width - 1]);
    }
}

std::uint8_t Labels::Majority(const std::array<const std::uint8_t*, 5>& rows, int x) const {
    const Window window(rows, x);
    const std::uint8_t centre = rows[2][x];
    if (m_near[centre].empty() && Count(window.PlacesOf(centre)) > kWindow / 2) return centre;
    std::uint8_t winner = 0;
    int best = 0;
    std::uint32_t left = Window::all;
    int count = kWindow;
    while (count > best) {
        const std::uint8_t label = window[std::countr_zero(left)];
        std::uint32_t members = window.PlacesOf(label);
        for (const std::uint8_t other : m_near[label]) members |= window.PlacesOf(other);
        members &= left;
        const int size = Count(members);
        if (size > best) {
            best = size;
            winner = label;
        }
        left &= ~members;
        count -= size;
    }
    return winner;
}

void Labels::FilterRow(int y, std::uint8_t* out) const {
    std::array<const std::uint8_t*, kSide> rows;
    for (int k = 0; k < kSide; ++k)
        rows[static_cast<std::size_t>(k)] = Row(std::clamp(y + k - 2, 0, m_height - 1));
    for (int x = 0; x < m_width; x += 8) {
        const int end = std::min(x + 8, m_width);
        const std::uint64_t same = rows[2][x] * 0x0101010101010101ULL;
        std::uint64_t different = 0;
        for (const std::uint8_t* row : rows)
            different |= (Eight(row + x - 2) ^ same) | (Eight(row + x + 2) ^ same);
        if (different == 0) {
            std::fill(out + x, out + end, rows[2][x]);
        } else {
            for (int i = x; i < end; ++i) out[i] = Majority(rows, i);
        }
    }
}

void Labels::Filter() {
    RepeatEdges();
    // Row y is no longer looked at when row y + 2 is done; until then its new labels wait.
    std::array<std::vector<std::uint8_t>, 3> waiting;
    for (auto& row : waiting) row.resize(static_cast<std::size_t>(m_width));
    const auto settle = [&](int y) {
        const auto& row = waiting[static_cast<std::size_t>(y % 3)];
        std::copy(row.begin(), row.end(), Row(y));
    };
    for (int y = 0; y < m_height; ++y) {
        FilterRow(y, waiting[static_cast<std::size_t>(y % 3)].data());
        if (y >= 2) settle(y - 2);
    }
    for (int y = std::max(0, m_height - 2); y < m_height; ++y) settle(y);
}

void Labels::Paint(const PixelView& to, const PixelView& reserved) const {
    std::array<std::uint32_t, mostColors> words{};
    RGBQUAD onlyReserved{0, 0, 0, 255};
    std::memcpy(words.data(), m_colors.data(), m_colors.size() * sizeof(RGBQUAD));
    std::uint32_t mask;
    std::memcpy(&mask, &onlyReserved, sizeof mask);
    const RGBQUAD* from = reserved.pixels;
    RGBQUAD* pixel = to.pixels;
    for (int y = to.height - 1; y >= 0; --y) {
        const std::uint8_t* row = Row(y);
        for (int x = 0; x < to.width; ++x, ++pixel, ++from) {
            std::uint32_t word;
            std::memcpy(&word, from, sizeof word);
            word = (word & mask) | words[row[x]];
            std::memcpy(static_cast<void*>(pixel), &word, sizeof word);
        }
    }
}

}  // namespace tarvex::color
