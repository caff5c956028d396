// The majority filter, 25 pixels for every pixel, at the cost of a few.
//
// After the reduction a picture has a few colours, so each can be a number, and which of them are almost
// equal is found out once per pair. What remains is counting 25 bytes:
//   - where the last filtering changed no pixel of eight windows side by side, it gave their pixels the label
//     of the same window already;
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
#include <functional>
#include <type_traits>

#include "raster/color/palette_index.h"

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace tarvex::color {

namespace {

constexpr int kSide = 5;
constexpr int kBlock = 8;
constexpr std::uint64_t kEverywhere = 0x0101010101010101;  // times a byte: eight of it

template <std::size_t count>
using Count = std::integral_constant<std::size_t, count>;
constexpr int kWindow = kSide * kSide;

std::uint64_t Eight(const std::uint8_t* p) {
    std::uint64_t word;
    std::memcpy(&word, p, sizeof word);
    return word;
}

/// Bits set among the lowest 25.
int SetBits(std::uint32_t mask) {
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

/// How many of the pixels from the first on, `most` at most, are certain to have its colour.
int SameColors(const RGBQUAD* pixels, int most) {
    std::array<std::uint32_t, 4> words;
    std::uint32_t mask;
    constexpr RGBQUAD colored{255, 255, 255, 0};
    std::memcpy(&mask, &colored, sizeof mask);
    int same = 0;
    for (std::uint32_t first = 0; most - same >= 4; same += 4) {
        std::memcpy(words.data(), pixels + same, sizeof words);
        if (same == 0) first = words[0];
        std::uint32_t different = 0;
        for (const std::uint32_t word : words) different |= word ^ first;
        if ((different & mask) != 0) break;
    }
    return std::max(same, 1);
}

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
      m_labels(m_stride * static_cast<std::size_t>(height)),
      m_blocks((static_cast<std::size_t>(width) + kBlock - 1) / kBlock),
      m_changed(m_blocks * static_cast<std::size_t>(height), 1) {}

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
                const int run = SameColors(pixel, image.width - x);
                std::memset(row + x, last, static_cast<std::size_t>(run));
                x += run - 1;
                pixel += run - 1;
                average += run - 1;
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
    if (m_near[centre].empty() && SetBits(window.PlacesOf(centre)) > kWindow / 2) return centre;
    std::uint8_t winner = 0;
    int best = 0;
    std::uint32_t left = Window::all;
    int remaining = kWindow;
    while (remaining > best) {
        const std::uint8_t label = window[std::countr_zero(left)];
        std::uint32_t members = window.PlacesOf(label);
        for (const std::uint8_t other : m_near[label]) members |= window.PlacesOf(other);
        members &= left;
        const int size = SetBits(members);
        if (size > best) {
            best = size;
            winner = label;
        }
        left &= ~members;
        remaining -= size;
    }
    return winner;
}

/// The blocks of a row in whose windows the last filtering changed something are not 0.
void Labels::FindUnsettled(int y, std::vector<std::uint8_t>& blocks) const {
    blocks.assign(m_blocks, 0);
    for (int v = std::max(y - 2, 0); v <= std::min(y + 2, m_height - 1); ++v) {
        const std::uint8_t* changed = m_changed.data() + static_cast<std::size_t>(v) * m_blocks;
        std::transform(changed, changed + m_blocks, blocks.begin(), blocks.begin(), std::bit_or<>());
    }
    std::uint8_t before = 0;
    for (std::size_t i = 0; i < m_blocks; ++i) {  // windows reach into both neighbours
        const std::uint8_t here = blocks[i];
        if (i + 1 < m_blocks) blocks[i] |= blocks[i + 1];
        blocks[i] |= before;
        before = here;
    }
}

void Labels::FilterRow(int y, const std::vector<std::uint8_t>& unsettled, std::uint8_t* out) const {
    std::array<const std::uint8_t*, kSide> rows;
    for (int k = 0; k < kSide; ++k)
        rows[static_cast<std::size_t>(k)] = Row(std::clamp(y + k - 2, 0, m_height - 1));
    for (int x = 0; x < m_width; x += kBlock) {
        const int end = std::min(x + kBlock, m_width);
        if (unsettled[static_cast<std::size_t>(x / kBlock)] == 0) {
            std::memcpy(out + x, rows[2] + x, kBlock);
            continue;
        }
        const std::uint64_t same = rows[2][x] * kEverywhere;
        std::uint64_t different = 0;
        for (const std::uint8_t* row : rows)
            different |= (Eight(row + x - 2) ^ same) | (Eight(row + x + 2) ^ same);
        if (different == 0) {
            std::memcpy(out + x, &same, kBlock);
        } else {
            for (int i = x; i < end; ++i) out[i] = Majority(rows, i);
        }
    }
}

/// Gives a row its new labels.
void Labels::Settle(int y, const std::uint8_t* labels) {
    std::uint8_t* row = Row(y);
    std::uint8_t* changed = m_changed.data() + static_cast<std::size_t>(y) * m_blocks;
    int x = 0;
    for (; x + kBlock <= m_width; x += kBlock) *changed++ = Eight(row + x) != Eight(labels + x) ? 1 : 0;
    if (x < m_width) *changed = std::equal(row + x, row + m_width, labels + x) ? 0 : 1;
    std::copy(labels, labels + m_width, row);
}

void Labels::Filter() {
    RepeatEdges();
    // Row y is no longer looked at when row y + 2 is done; until then its new labels wait.
    std::array<std::vector<std::uint8_t>, 3> waiting;
    std::vector<std::uint8_t> unsettled;
    for (auto& row : waiting) row.resize(m_blocks * kBlock);
    const auto settle = [&](int y) { Settle(y, waiting[static_cast<std::size_t>(y % 3)].data()); };
    for (int y = 0; y < m_height; ++y) {
        FindUnsettled(y, unsettled);
        FilterRow(y, unsettled, waiting[static_cast<std::size_t>(y % 3)].data());
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
    const auto paint = [&](auto count, auto word) {  // as many pixels, the i-th in word(i)
        std::array<std::uint32_t, decltype(count)::value> pixels;
        std::memcpy(pixels.data(), from, sizeof pixels);
        for (std::size_t i = 0; i < pixels.size(); ++i) pixels[i] = (pixels[i] & mask) | word(i);
        std::memcpy(static_cast<void*>(pixel), pixels.data(), sizeof pixels);
        from += pixels.size();
        pixel += pixels.size();
    };
    for (int y = to.height - 1; y >= 0; --y) {
        const std::uint8_t* label = Row(y);
        const std::uint8_t* end = label + to.width;
        for (; end - label >= kBlock; label += kBlock) {
            const std::uint32_t first = words[*label];
            if (Eight(label) == *label * kEverywhere) {
                paint(Count<kBlock>(), [&](std::size_t) { return first; });
            } else {
                paint(Count<kBlock>(), [&](std::size_t i) { return words[label[i]]; });
            }
        }
        for (; label != end; ++label) paint(Count<1>(), [&](std::size_t) { return words[*label]; });
    }
}

}  // namespace tarvex::color
