// Between pictures as read, the bitmaps that the reduction works on, and palette indices.
//
// Transparent pixels must not show in the palette, but the reduction looks at whole windows. So they are
// given the colour of the nearest opaque pixel in their row, or of the nearest row that has one: nothing new
// appears, and edges of the drawing do not mix with a ground that is not there.
#include "tarvex/color_picture.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <new>
#include <numeric>
#include <optional>
#include <unordered_map>

#include "tarvex/colors.h"
#include "tarvex/program_error.h"
#include "tarvex/raster.h"

namespace tarvex::app {

namespace {

constexpr std::size_t MOST_COLORS = 256;

/// A 32-bit bitmap and its pixels.
class Bitmap {
  public:
    Bitmap(int width, int height)
        : m_handle(CImgProc::CreateBitmap32(width, height)), m_width(width), m_height(height) {
        BITMAP description{};
        if (m_handle == nullptr ||
            GetObject(m_handle, static_cast<int>(sizeof description), &description) == 0) {
            if (m_handle != nullptr) DeleteObject(m_handle);
            throw std::bad_alloc();
        }
        m_pixels = static_cast<RGBQUAD*>(description.bmBits);
    }
    Bitmap(const Bitmap&) = delete;
    Bitmap& operator=(const Bitmap&) = delete;
    ~Bitmap() { DeleteObject(m_handle); }

    HBITMAP Handle() const { return m_handle; }
    RGBQUAD* Row(int y) const { return m_pixels + static_cast<std::ptrdiff_t>(m_height - 1 - y) * m_width; }

  private:
    HBITMAP m_handle;
    RGBQUAD* m_pixels = nullptr;
    int m_width;
    int m_height;
};

bool IsOpaque(const RGBQUAD& pixel) { return pixel.rgbReserved != 0; }

/// Sets the colours of the row's transparent pixels; false when none is opaque.
bool FillRow(RGBQUAD* row, int width) {
    int last = -1;  // the last opaque pixel
    for (int x = 0; x < width; ++x) {
        if (!IsOpaque(row[x])) continue;
        for (int k = last + 1; k < x; ++k) {
            const RGBQUAD& nearer = last >= 0 && k - last <= x - k ? row[last] : row[x];
            row[k] = {nearer.rgbBlue, nearer.rgbGreen, nearer.rgbRed, 0};
        }
        last = x;
    }
    if (last < 0) return false;
    for (int k = last + 1; k < width; ++k)
        row[k] = {row[last].rgbBlue, row[last].rgbGreen, row[last].rgbRed, 0};
    return true;
}

void CopyColors(const RGBQUAD* from, RGBQUAD* to, int width) {
    for (int x = 0; x < width; ++x) to[x] = {from[x].rgbBlue, from[x].rgbGreen, from[x].rgbRed, 0};
}

/// Copies the picture, the reserved byte saying what is opaque. False when nothing is.
bool Fill(const Picture& picture, const Bitmap& bitmap) {
    int lastFilled = -1;
    for (int y = 0; y < picture.height; ++y) {
        RGBQUAD* row = bitmap.Row(y);
        for (int x = 0; x < picture.width; ++x) {
            const Rgba c = picture.At(x, y);
            row[x] = {c.blue, c.green, c.red, static_cast<BYTE>(c.alpha >= OPAQUE_ALPHA ? 255 : 0)};
        }
        if (!FillRow(row, picture.width)) continue;
        for (int k = lastFilled + 1; k < y; ++k)
            CopyColors(bitmap.Row(lastFilled >= 0 && k - lastFilled <= y - k ? lastFilled : y), bitmap.Row(k),
                       picture.width);
        lastFilled = y;
    }
    if (lastFilled < 0) return false;
    for (int k = lastFilled + 1; k < picture.height; ++k)
        CopyColors(bitmap.Row(lastFilled), bitmap.Row(k), picture.width);
    return true;
}

std::uint32_t KeyOf(const RGBQUAD& c) {
    return static_cast<std::uint32_t>(c.rgbRed) << 16 | static_cast<std::uint32_t>(c.rgbGreen) << 8 |
           c.rgbBlue;
}

/// Indices in the order in which colours first occur, one entry for all that is transparent; nothing when
/// there are more opaque colours than `most`.
std::optional<IndexedPicture> Index(const Bitmap& bitmap, int width, int height, std::size_t most) {
    IndexedPicture indexed;
    indexed.width = width;
    indexed.height = height;
    indexed.indices.reserve(static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
    std::unordered_map<std::uint64_t, std::uint8_t> numbers;
    constexpr std::uint64_t transparentKey = std::uint64_t{1} << 32;
    std::uint64_t lastKey = ~std::uint64_t{0};
    std::uint8_t last = 0;
    std::size_t opaque = 0;
    for (int y = 0; y < height; ++y) {
        const RGBQUAD* row = bitmap.Row(y);
        for (int x = 0; x < width; ++x) {
            const std::uint64_t key = IsOpaque(row[x]) ? KeyOf(row[x]) : transparentKey;
            if (key != lastKey) {
                const auto [entry, added] =
                    numbers.try_emplace(key, static_cast<std::uint8_t>(indexed.palette.size()));
                if (added) {
                    const bool isOpaque = key != transparentKey;
                    indexed.hasTransparent = indexed.hasTransparent || !isOpaque;
                    if (isOpaque && ++opaque > most) return std::nullopt;
                    if (indexed.palette.size() == MOST_COLORS) return std::nullopt;
                    indexed.palette.push_back({isOpaque
                                                   ? Rgba{row[x].rgbRed, row[x].rgbGreen, row[x].rgbBlue, 255}
                                                   : Rgba{0, 0, 0, 0},
                                               0});
                }
                last = entry->second;
                lastKey = key;
            }
            ++indexed.palette[last].count;
            indexed.indices.push_back(last);
        }
    }
    return indexed;
}

/// The most frequent colour first, a transparent one last.
void Sort(IndexedPicture& picture) {
    std::vector<std::uint8_t> order(picture.palette.size());
    std::iota(order.begin(), order.end(), std::uint8_t{0});
    std::stable_sort(order.begin(), order.end(), [&](std::uint8_t a, std::uint8_t b) {
        const PaletteColor& first = picture.palette[a];
        const PaletteColor& second = picture.palette[b];
        return first.color.alpha != second.color.alpha ? first.color.alpha > second.color.alpha
                                                       : first.count > second.count;
    });
    std::array<std::uint8_t, MOST_COLORS> places{};
    std::vector<PaletteColor> sorted;
    for (const std::uint8_t index : order) {
        places[index] = static_cast<std::uint8_t>(sorted.size());
        sorted.push_back(picture.palette[index]);
    }
    picture.palette = std::move(sorted);
    for (std::uint8_t& index : picture.indices) index = places[index];
}

bool HasTransparent(const Bitmap& bitmap, int width, int height) {
    for (int y = 0; y < height; ++y) {
        if (!std::all_of(bitmap.Row(y), bitmap.Row(y) + width, IsOpaque)) return true;
    }
    return false;
}

}  // namespace

IndexedPicture ReduceColors(const Picture& picture, const ReduceSettings& settings, const std::string& name) {
    const Bitmap bitmap(picture.width, picture.height);
    if (!Fill(picture, bitmap))
        throw ProgramError(ExitStatus::NoResult, name, "the picture is transparent all over");
    const auto most = std::min(static_cast<std::size_t>(settings.colors),
                               MOST_COLORS - (HasTransparent(bitmap, picture.width, picture.height) ? 1 : 0));
    std::array<RGBQUAD, MOST_COLORS> palette;
    int count = static_cast<int>(most);
    CColorReduction(bitmap.Handle()).DoColorReduction(palette.data(), count, settings.level);
    auto indexed = Index(bitmap, picture.width, picture.height, most);
    if (!indexed) {
        throw ProgramError(
            ExitStatus::NoResult, name,
            "no colours found: no colour fills a neighbourhood of seven pixels, and there are more "
            "than " +
                std::to_string(most));
    }
    Sort(*indexed);
    return std::move(*indexed);
}

std::string ColorText(const Rgba& color) {
    char text[8];
    const bool isShort = color.red % 17 == 0 && color.green % 17 == 0 && color.blue % 17 == 0;
    if (isShort) {
        std::snprintf(text, sizeof text, "#%x%x%x", color.red / 17U, color.green / 17U, color.blue / 17U);
    } else {
        std::snprintf(text, sizeof text, "#%02x%02x%02x", unsigned{color.red}, unsigned{color.green},
                      unsigned{color.blue});
    }
    return text;
}

}  // namespace tarvex::app
