// Pixels in memory, and the copying and filling of rectangles of them. Knows nothing of handles and
// device contexts.
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace tarvex::platform {

static_assert(std::endian::native == std::endian::little, "a 32-bit pixel is read as one number");

enum class Depth : std::uint16_t { Mono = 1, Colour = 32 };

/// A 32-bit pixel as a number: blue in bits 0-7, green in 8-15, red in 16-23, the reserved byte above.
using PixelWord = std::uint32_t;
inline constexpr PixelWord kColourBits = 0x00FFFFFF;

/// Swaps red and blue and drops the highest byte, in either direction.
constexpr std::uint32_t SwapRedBlue(std::uint32_t v) {
    return (v & 0xFF) << 16 | (v & 0xFF00) | (v >> 16 & 0xFF);
}

/// A view of a bitmap's pixels.
struct Surface {
    std::byte* top = nullptr;  ///< image row 0
    std::ptrdiff_t pitch =
        0;  ///< bytes from an image row to the one below it; negative when stored bottom-up
    int width = 0;
    int height = 0;
    Depth depth = Depth::Colour;
    std::array<PixelWord, 2> table{};  ///< colours of a 1-bit surface, reserved bytes 0

    std::byte* Row(int y) const { return top + pitch * y; }
    bool Contains(int x, int y) const { return x >= 0 && y >= 0 && x < width && y < height; }
};

inline PixelWord LoadPixel(const std::byte* row, int x) {
    PixelWord word;
    std::memcpy(&word, row + std::ptrdiff_t{x} * 4, 4);
    return word;
}
inline void StorePixel(std::byte* row, int x, PixelWord word) {
    std::memcpy(row + std::ptrdiff_t{x} * 4, &word, 4);
}
inline bool LoadBit(const std::byte* row, int x) {
    return (static_cast<unsigned>(row[x >> 3]) >> (7 - (x & 7)) & 1) != 0;
}
inline void StoreBit(std::byte* row, int x, bool on) {
    const auto mask = static_cast<std::byte>(0x80 >> (x & 7));
    row[x >> 3] = on ? row[x >> 3] | mask : row[x >> 3] & ~mask;
}

/// Which of two colours is the nearer one: the difference of the squared distances is linear in the
/// pixel's channels. Equally near counts as the first.
class NearestOfTwo {
  public:
    explicit NearestOfTwo(const std::array<PixelWord, 2>& table);
    bool operator()(PixelWord word) const {
        const int blue = static_cast<int>(word & 0xFF);
        const int green = static_cast<int>(word >> 8 & 0xFF);
        const int red = static_cast<int>(word >> 16 & 0xFF);
        return blue * m_blue + green * m_green + red * m_red + m_constant > 0;
    }
    /// Whether the choice depends on blue + green + red alone, and rises with it.
    bool IsBrightness() const { return m_blue > 0 && m_blue == m_green && m_green == m_red; }
    /// For a brightness: the second colour is nearer where blue + green + red exceeds this.
    int BrightnessLimit() const;

  private:
    int m_blue, m_green, m_red, m_constant;
};

/// What a pixel of the given colour holds on this surface: a word, or 0 or 1.
PixelWord ValueOf(const Surface& surface, PixelWord colour);

/// A rectangle to copy, wholly inside both surfaces.
struct CopyArea {
    int toX, toY, fromX, fromY;
    int width, height;  ///< 0 when nothing is to be copied
};

/// What is left of a copy between surfaces of these sizes.
CopyArea ClipCopy(const Surface& to, int toX, int toY, int width, int height, const Surface& from, int fromX,
                  int fromY);

/// Copies as though the source were read whole before anything is written. Raises std::bad_alloc.
void CopyPixels(const Surface& to, const Surface& from, const CopyArea& area);

/// A rectangle by its corner and size, not clipped to anything.
struct Extent {
    int x, y, width, height;
};

/// Copies `source` into `target` by nearest pixels. Raises std::bad_alloc.
void StretchPixels(const Surface& to, const Extent& target, const Surface& from, const Extent& source);

/// Fills columns [left, right) of rows [top, bottom), clipped, with a value as ValueOf gives it.
void FillPixels(const Surface& surface, int left, int top, int right, int bottom, PixelWord value);

/// Fills columns [left, right), which must lie in the surface, of row y.
void FillSpan(const Surface& surface, int y, int left, int right, PixelWord value);

}  // namespace tarvex::platform
