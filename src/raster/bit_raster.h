// A 1-bit raster in memory: rows from the bottom up, padded to whole 32-bit words, the most significant bit
// of a byte its leftmost pixel. Looks at 3 x 3 neighbourhoods and at runs of pixels without asking for
// every single one.
#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "raster/follower.h"

namespace tarvex {

/// Bytes of a row of `bits` bits, padded to whole 32-bit words.
constexpr std::size_t PaddedRowBytes(std::uint64_t bits) {
    return static_cast<std::size_t>((bits + 31) >> 5 << 2);
}

/// A view of pixels that stay their owner's. Columns and rows must lie inside the raster unless a function
/// says otherwise; the padding is never read into an answer and never written.
class BitRaster {
  public:
    /// A raster without pixels.
    BitRaster() = default;
    /// A size that is not positive makes a raster without pixels.
    BitRaster(std::uint8_t* bits, int width, int height)
        : m_bits(bits),
          m_width(width > 0 && height > 0 ? width : 0),
          m_height(width > 0 && height > 0 ? height : 0),
          m_stride(PaddedRowBytes(static_cast<std::uint64_t>(m_width))) {}

    int Width() const { return m_width; }
    int Height() const { return m_height; }
    bool Inside(int x, int y) const { return x >= 0 && x < m_width && y >= 0 && y < m_height; }

    /// The bytes of a row, this many with the padding.
    std::uint8_t* Row(int y) const { return m_bits + static_cast<std::size_t>(m_height - 1 - y) * m_stride; }
    std::size_t Stride() const { return m_stride; }

    bool Get(int x, int y) const { return (Row(y)[x >> 3] & Bit(x)) != 0; }
    void Set(int x, int y) const {
        std::uint8_t& byte = Row(y)[x >> 3];
        byte = static_cast<std::uint8_t>(byte | Bit(x));
    }
    void Clear(int x, int y) const {
        std::uint8_t& byte = Row(y)[x >> 3];
        byte = static_cast<std::uint8_t>(byte & ~Bit(x));
    }

    /// Which neighbours are inside the raster and set.
    NeighbourMask Neighbours(int x, int y) const {
        const std::size_t byte = static_cast<std::size_t>(x - 1) >> 3;
        if (x < 1 || x > m_width - 2 || y < 1 || y > m_height - 2 || byte + 1 >= m_stride)
            return EdgeNeighbours(x, y);
        const std::uint8_t* here = Row(y) + byte;
        const int shift = 13 - ((x - 1) & 7);
        const unsigned above = Three(here + m_stride, shift);
        const unsigned level = Three(here, shift);
        const unsigned below = Three(here - m_stride, shift);
        return static_cast<NeighbourMask>((level & 1) | below << 1 | (level & 4) << 2 |
                                          ((kReversed >> (4 * above)) & 7) << 5);
    }

    /// The leftmost column, at least `from`, of the run of set pixels that ends at (x, y), a set pixel.
    int RunStart(int x, int y, int from = 0) const {
        const int start = BeforeRun(x, y, from) + 1;
        return start < from ? from : start;
    }

    // The rows' operations of FillFromSeed: set pixels are inside, filling clears them.

    int FillLeft(int x, int y) const {
        if (x < 0 || !Get(x, y)) return x;
        const int end = BeforeRun(x, y, 0);
        ClearRange(end + 1, x, y);
        return end;
    }
    int FillRight(int x, int y) const {
        const int end = Skip(x, m_width - 1, y, 0xFF);
        if (end > x) ClearRange(x, end - 1, y);
        return end;
    }
    int SkipRight(int x, int last, int y) const { return Skip(x, last, y, 0x00); }

  private:
    static constexpr unsigned kReversed = 0x73516240;  // nibble n: the three bits of n in reverse order

    static unsigned Bit(int x) { return 0x80U >> (x & 7); }
    static unsigned Three(const std::uint8_t* p, int shift) {
        return ((static_cast<unsigned>(p[0]) << 8 | p[1]) >> shift) & 7U;
    }
    NeighbourMask EdgeNeighbours(int x, int y) const {
        unsigned mask = 0;
        for (int dir = 0; dir < 8; ++dir) {
            const PixelPosition p = Stepped({x, y}, dir);
            if (Inside(p.x, p.y) && Get(p.x, p.y)) mask |= 1U << dir;
        }
        return static_cast<NeighbourMask>(mask);
    }

    /// The first column leftwards from x that is not set, -1 at the end. A run that goes on below `from`
    /// may end the search there.
    int BeforeRun(int x, int y, int from) const {
        const std::uint8_t* row = Row(y);
        while (x >= from) {
            std::uint64_t word;
            if ((x & 7) == 7 && x >= 63 &&
                (std::memcpy(&word, row + (x >> 3) - 7, sizeof word), word == ~std::uint64_t{0})) {
                x -= 64;
                continue;
            }
            const unsigned clear = (row[x >> 3] ^ 0xFFU) >> (7 - (x & 7));  // bit k: column x - k
            const int left = (x & 7) + 1;
            const int same = std::min(std::countr_zero(clear), left);
            x -= same;
            if (same < left) break;
        }
        return x;
    }

    /// The first column of x .. last whose pixel differs from `pattern`, or last + 1; x when x > last.
    int Skip(int x, int last, int y, std::uint8_t pattern) const {
        if (x > last) return x;
        const std::uint8_t* row = Row(y);
        const std::uint64_t words = pattern * 0x0101010101010101ULL;
        while (x <= last) {
            std::uint64_t word;
            if ((x & 7) == 0 && last - x >= 63 && (std::memcpy(&word, row + (x >> 3), 8), word == words)) {
                x += 64;
                continue;
            }
            const unsigned bits = (static_cast<unsigned>(row[x >> 3] ^ pattern) << (x & 7)) & 0xFFU;
            const int left = 8 - (x & 7);
            const int same = bits == 0 ? left : std::countl_zero(static_cast<std::uint8_t>(bits));
            x += same;
            if (same < left) break;
        }
        return x <= last ? x : last + 1;
    }

    void ClearRange(int first, int last, int y) const {
        std::uint8_t* row = Row(y);
        const unsigned head = 0xFFU >> (first & 7);
        const unsigned tail = (0xFF00U >> ((last & 7) + 1)) & 0xFFU;
        std::uint8_t* a = row + (first >> 3);
        std::uint8_t* b = row + (last >> 3);
        if (a == b) {
            *a = static_cast<std::uint8_t>(*a & ~(head & tail));
            return;
        }
        *a = static_cast<std::uint8_t>(*a & ~head);
        std::memset(a + 1, 0, static_cast<std::size_t>(b - a - 1));
        *b = static_cast<std::uint8_t>(*b & ~tail);
    }

    std::uint8_t* m_bits = nullptr;
    int m_width = 0;
    int m_height = 0;
    std::size_t m_stride = 0;
};

}  // namespace tarvex
