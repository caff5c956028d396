// Small bitmaps for the platform's tests, and plain ways to make and read them.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "platform/handles.h"

namespace tarvex::test {

inline constexpr std::uint32_t kWhitePixel = 0x00FFFFFF;

/// A header with room for two colours behind it.
struct MonoInfo {
    BITMAPINFOHEADER header{};
    std::array<std::uint32_t, 2> table{0, kWhitePixel};
    const BITMAPINFO* Info() const { return reinterpret_cast<const BITMAPINFO*>(this); }
};

inline MonoInfo MakeInfo(int width, int height, int depth) {
    MonoInfo info;
    info.header.biSize = sizeof(BITMAPINFOHEADER);
    info.header.biWidth = width;
    info.header.biHeight = height;
    info.header.biPlanes = 1;
    info.header.biBitCount = static_cast<WORD>(depth);
    return info;
}

/// A bitmap with a context to draw on it. A negative height stores it top-down.
class Picture {
  public:
    Picture(int width, int height, int depth, std::array<std::uint32_t, 2> table = {0, kWhitePixel})
        : m_depth(depth), m_table(table) {
        MonoInfo info = MakeInfo(width, height, depth);
        info.table = table;
        m_bitmap.Reset(CreateDIBSection(nullptr, info.Info(), DIB_RGB_COLORS, nullptr, nullptr, 0));
        m_dc.Reset(CreateCompatibleDC(nullptr));
        SelectObject(m_dc.Get(), m_bitmap.Get());
        BITMAP description{};
        GetObject(m_bitmap.Get(), sizeof description, &description);
        m_bits = static_cast<std::uint8_t*>(description.bmBits);
        m_rowBytes = description.bmWidthBytes;
        m_width = description.bmWidth;
        m_height = description.bmHeight;
        m_topDown = height < 0;
    }
    Picture(const Picture&) = delete;
    Picture& operator=(const Picture&) = delete;

    HDC Dc() const { return m_dc.Get(); }
    HBITMAP Handle() const { return m_bitmap.Get(); }
    int Width() const { return m_width; }
    int Height() const { return m_height; }
    int Depth() const { return m_depth; }
    const std::array<std::uint32_t, 2>& Table() const { return m_table; }
    std::uint8_t* Bits() const { return m_bits; }
    std::size_t Bytes() const {
        return static_cast<std::size_t>(m_rowBytes) * static_cast<std::size_t>(m_height);
    }

    /// The stored value: 0 or 1, or all four bytes.
    std::uint32_t At(int x, int y) const {
        const std::uint8_t* row = Row(y);
        if (m_depth == 1) return row[x / 8] >> (7 - x % 8) & 1;
        std::uint32_t value;
        std::memcpy(&value, row + std::ptrdiff_t{4} * x, 4);
        return value;
    }
    void Set(int x, int y, std::uint32_t value) const {
        std::uint8_t* row = Row(y);
        if (m_depth == 1) {
            const int mask = 0x80 >> x % 8;
            row[x / 8] = static_cast<std::uint8_t>(value != 0 ? row[x / 8] | mask : row[x / 8] & ~mask);
        } else {
            std::memcpy(row + std::ptrdiff_t{4} * x, &value, 4);
        }
    }

    /// Fills the memory, the padding of the rows with it, from a seed.
    template <class Engine>
    void Scramble(Engine& engine) const {
        for (std::size_t i = 0; i < Bytes(); ++i) m_bits[i] = static_cast<std::uint8_t>(engine() >> 7);
    }

    std::vector<std::uint8_t> Memory() const { return {m_bits, m_bits + Bytes()}; }

    /// Rows of '.' (zero) and '#' (anything else).
    std::string Text() const {
        std::string text;
        for (int y = 0; y < m_height; ++y) {
            for (int x = 0; x < m_width; ++x) text += (At(x, y) & kWhitePixel) != 0 ? '#' : '.';
            text += '\n';
        }
        return text;
    }

  private:
    std::uint8_t* Row(int y) const {
        return m_bits + std::ptrdiff_t{m_rowBytes} * (m_topDown ? y : m_height - 1 - y);
    }

    UniqueBitmap m_bitmap;
    UniqueDC m_dc;
    std::uint8_t* m_bits = nullptr;
    int m_rowBytes = 0;
    int m_width = 0;
    int m_height = 0;
    int m_depth;
    std::array<std::uint32_t, 2> m_table;
    bool m_topDown = false;
};

}  // namespace tarvex::test
