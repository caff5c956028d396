// Grids of bits and of bytes: scratch maps for code that works on rasters.
//
// Cells are addressed by column x and row y. Any access outside the grid is harmless: writes are
// dropped and reads give 0.
//
// Copying or assigning a matrix makes two matrices of the same cells: what one writes the other reads.
// The cells live until the last of them lets go; `SetSize` gives a matrix new cells of its own and
// leaves the others theirs. Nothing is locked, so matrices of the same cells belong on one thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

#include "tarvex/export.h"

namespace tarvex {

class CDC;

/// One bit per cell: eight columns to a byte, the leftmost in the least significant bit, rows padded
/// to whole bytes.
class TARVEX_API CBitMatrix {
  public:
    CBitMatrix() = default;
    CBitMatrix(int w, int h) { SetSize(w, h); }

    /// Makes the matrix one cell larger than asked in each direction, so that `w` and `h` themselves
    /// are valid indices, and clears it, also when its size stays the same. A size without cells is
    /// an empty matrix. Raises CInvalidArgException for a size that cannot be addressed and
    /// CMemoryException when there is no memory; the matrix is then as it was.
    void SetSize(int w, int h);

    /// Columns and rows there are: one more than asked for.
    int SizeX() const { return m_sizeX; }
    int SizeY() const { return m_sizeY; }
    /// Bytes from one row to the next.
    int RowBytes() const { return m_rowBytes; }

    /// The byte that holds the cell, and its bit in `mask`; outside the matrix null and 0.
    unsigned char* getP(int x, int y, int& mask) { return Locate(x, y, mask); }
    const unsigned char* getP(int x, int y, int& mask) const { return Locate(x, y, mask); }

    void Set(int x, int y) {
        int mask;
        if (unsigned char* byte = Locate(x, y, mask)) *byte = static_cast<unsigned char>(*byte | mask);
    }
    void Set(int x, int y, bool value) {
        if (value) {
            Set(x, y);
        } else {
            Clear(x, y);
        }
    }
    void Clear(int x, int y) {
        int mask;
        if (unsigned char* byte = Locate(x, y, mask)) *byte = static_cast<unsigned char>(*byte & ~mask);
    }
    void Toggle(int x, int y) {
        int mask;
        if (unsigned char* byte = Locate(x, y, mask)) *byte = static_cast<unsigned char>(*byte ^ mask);
    }
    bool Get(int x, int y) const {
        int mask;
        const unsigned char* byte = Locate(x, y, mask);
        return byte != nullptr && (*byte & mask) != 0;
    }

    /// Paints cell (x, y) at pixel (x, y), for inspection: set cells white, clear ones black. Null
    /// paints on the screen. A pixel at a time, so not for speed.
    void Dump(CDC* dc) const;

  private:
    unsigned char* Locate(int x, int y, int& mask) const {
        if (x < 0 || x >= m_sizeX || y < 0 || y >= m_sizeY) {
            mask = 0;
            return nullptr;
        }
        mask = 1 << (x & 7);
        return m_bits.get() + static_cast<std::ptrdiff_t>(y) * m_rowBytes + (x >> 3);
    }

    std::shared_ptr<unsigned char[]> m_bits;
    int m_sizeX = 0;
    int m_sizeY = 0;
    int m_rowBytes = 0;
};

/// One byte per cell.
class TARVEX_API CByteMatrix {
  public:
    /// No cells; both sizes are -1.
    CByteMatrix() = default;
    CByteMatrix(int w, int h) { SetSize(w, h); }

    /// Makes the matrix exactly `w` by `h` cells (unlike CBitMatrix, which adds one), all 0. A size
    /// without cells is an empty matrix. Raises CInvalidArgException for a size that cannot be
    /// addressed and CMemoryException when there is no memory; the matrix is then as it was.
    void SetSize(int w, int h);

    /// Columns and rows, as given to `SetSize`.
    int SizeX() const { return m_sizeX; }
    int SizeY() const { return m_sizeY; }

    void Set(int x, int y, unsigned char value) {
        if (Holds(x, y)) m_cells[Index(x, y)] = value;
    }
    unsigned char Get(int x, int y) const {
        return Holds(x, y) ? m_cells[Index(x, y)] : static_cast<unsigned char>(0);
    }

    /// The cells of row `y`, for code that works on whole rows; empty outside the matrix.
    std::span<unsigned char> Row(int y) { return RowCells(y); }
    std::span<const unsigned char> Row(int y) const { return RowCells(y); }

    /// Sets every cell.
    void SetAll(unsigned char value);
    /// Sets every cell that is `from` to `to`.
    void SetAllIf(unsigned char from, unsigned char to);

    /// Whether the square of cells from (x - r, y - r) to (x + r, y + r), its centre included, holds a
    /// cell that is neither 0 nor `value`. A negative `r` is an empty square. The cost is that of the
    /// part of the square that lies in the matrix.
    bool Hit(int x, int y, int r, unsigned char value) const;

    /// Paints cell (x, y) at pixel (x, y), for inspection, in one of eight colours by its value modulo
    /// 8: black, red, green, blue, yellow, magenta, cyan, white. Null paints on the screen. A pixel at a
    /// time, so not for speed.
    void Dump(CDC* dc) const;

  private:
    bool Holds(int x, int y) const { return x >= 0 && x < m_sizeX && y >= 0 && y < m_sizeY; }
    std::ptrdiff_t Index(int x, int y) const { return static_cast<std::ptrdiff_t>(y) * m_sizeX + x; }

    std::span<unsigned char> RowCells(int y) const {
        if (m_sizeX <= 0 || y < 0 || y >= m_sizeY) return {};
        return {m_cells.get() + Index(0, y), static_cast<std::size_t>(m_sizeX)};
    }
    std::span<unsigned char> AllCells() const {
        if (m_sizeX <= 0 || m_sizeY <= 0) return {};
        return {m_cells.get(), static_cast<std::size_t>(Index(0, m_sizeY))};
    }

    std::shared_ptr<unsigned char[]> m_cells;
    int m_sizeX = -1;
    int m_sizeY = -1;
};

}  // namespace tarvex
