#include "tarvex/grey.h"

#include <array>
#include <cstring>
#include <utility>

namespace tarvex::app {

namespace {

/// Luma of one pixel, and its alpha; `pixel` points at its channels.
std::uint32_t Luma(const std::uint8_t* pixel, PixelFormat format) {
    if (format == PixelFormat::Grey8 || format == PixelFormat::GreyAlpha8) return pixel[0];
    return (77u * pixel[0] + 150u * pixel[1] + 29u * pixel[2] + 128u) >> 8;
}

bool HasAlpha(PixelFormat format) {
    return format == PixelFormat::GreyAlpha8 || format == PixelFormat::Rgba8;
}

std::uint32_t Alpha(const std::uint8_t* pixel, PixelFormat format) {
    return HasAlpha(format) ? pixel[ChannelCount(format) - 1] : 255u;
}

/// Eight pixels for each byte of a one-bit row.
std::array<std::array<std::uint8_t, 8>, 256> ByteExpansions() {
    std::array<std::array<std::uint8_t, 8>, 256> expansions{};
    for (std::size_t byte = 0; byte < 256; ++byte)
        for (std::size_t k = 0; k < 8; ++k) expansions[byte][k] = (byte >> (7 - k) & 1) != 0 ? 255 : 0;
    return expansions;
}

void ExpandBits(const std::uint8_t* bits, int width, std::uint8_t* levels) {
    static const auto expansions = ByteExpansions();
    int x = 0;
    for (; x + 8 <= width; x += 8) std::memcpy(levels + x, expansions[bits[x >> 3]].data(), 8);
    if (x < width)
        std::memcpy(levels + x, expansions[bits[x >> 3]].data(), static_cast<std::size_t>(width - x));
}

}  // namespace

Ground FindGround(const Picture& picture) {
    if (!HasAlpha(picture.format)) return Ground::white;
    const std::size_t channels = ChannelCount(picture.format);
    std::uint64_t alphas = 0;
    std::uint64_t darkAlphas = 0;
    bool transparent = false;
    for (int y = 0; y < picture.height; ++y) {
        const std::uint8_t* pixel = picture.Row(y);
        for (int x = 0; x < picture.width; ++x, pixel += channels) {
            const std::uint32_t alpha = Alpha(pixel, picture.format);
            transparent = transparent || alpha < 128;
            const std::uint32_t luma = Luma(pixel, picture.format);
            alphas += alpha;
            if (luma < 240) darkAlphas += alpha;
        }
    }
    return transparent && 50 * darkAlphas < alphas ? Ground::black : Ground::white;
}

GreyPicture::GreyPicture(Picture&& picture, Ground ground)
    : m_width(picture.width), m_height(picture.height), m_stride(picture.width) {
    if (picture.format == PixelFormat::Grey8) {
        m_stride = static_cast<std::ptrdiff_t>(picture.stride);
        m_levels = std::move(picture.pixels);
        return;
    }
    const std::uint32_t behind = ground == Ground::white ? 255 : 0;
    const std::size_t width = static_cast<std::size_t>(m_width);
    m_levels.resize(width * static_cast<std::size_t>(m_height));
    for (int y = 0; y < m_height; ++y) {
        std::uint8_t* levels = m_levels.data() + static_cast<std::size_t>(y) * width;
        if (picture.format == PixelFormat::Bit1) {
            ExpandBits(picture.Row(y), m_width, levels);
            continue;
        }
        const std::size_t channels = ChannelCount(picture.format);
        const std::uint8_t* pixel = picture.Row(y);
        for (int x = 0; x < m_width; ++x, pixel += channels) {
            const std::uint32_t alpha = Alpha(pixel, picture.format);
            const std::uint32_t level = alpha * Luma(pixel, picture.format) + (255 - alpha) * behind;
            levels[x] = static_cast<std::uint8_t>((level + 127) / 255);
        }
    }
}

}  // namespace tarvex::app
