// The grids' storage, and what works on whole grids.
#include "tarvex/matrices.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "tarvex/framework.h"

namespace tarvex {

namespace {

/// Zeroed storage for `rows` rows of `rowBytes`; null when there is nothing to hold. It is asked for
/// as zeroed rather than filled, so that a large grid costs nothing until it is written.
std::shared_ptr<unsigned char[]> ZeroedCells(std::int64_t rowBytes, std::int64_t rows) {
    if (rowBytes <= 0 || rows <= 0) return nullptr;
    if (rowBytes > PTRDIFF_MAX / rows) AfxThrowInvalidArgException();
    void* cells = std::calloc(static_cast<std::size_t>(rows), static_cast<std::size_t>(rowBytes));
    if (cells == nullptr) AfxThrowMemoryException();
    return {static_cast<unsigned char*>(cells), [](unsigned char* p) { std::free(p); }};
}

}  // namespace

void CBitMatrix::SetSize(int w, int h) {
    if (w == INT32_MAX || h == INT32_MAX) AfxThrowInvalidArgException();
    const int sizeX = w + 1;
    const int sizeY = h + 1;
    const int rowBytes = sizeX > 0 ? sizeX / 8 + (sizeX % 8 != 0) : 0;
    m_bits = ZeroedCells(rowBytes, sizeY);
    m_sizeX = sizeX;
    m_sizeY = sizeY;
    m_rowBytes = rowBytes;
}

void CByteMatrix::SetSize(int w, int h) {
    m_cells = ZeroedCells(w, h);
    m_sizeX = w;
    m_sizeY = h;
}

void CByteMatrix::SetAll(unsigned char value) { std::ranges::fill(AllCells(), value); }

void CByteMatrix::SetAllIf(unsigned char from, unsigned char to) {
    std::ranges::replace(AllCells(), from, to);
}

bool CByteMatrix::Hit(int x, int y, int r, unsigned char value) const {
    if (r < 0) return false;
    const std::int64_t left = std::max<std::int64_t>(0, std::int64_t{x} - r);
    const std::int64_t right = std::min<std::int64_t>(m_sizeX, std::int64_t{x} + r + 1);
    const std::int64_t top = std::max<std::int64_t>(0, std::int64_t{y} - r);
    const std::int64_t bottom = std::min<std::int64_t>(m_sizeY, std::int64_t{y} + r + 1);
    if (left >= right) return false;
    const auto hits = [value](unsigned char cell) { return cell != 0 && cell != value; };
    for (std::int64_t row = top; row < bottom; ++row) {
        const auto cells = RowCells(static_cast<int>(row));
        const auto window =
            cells.subspan(static_cast<std::size_t>(left), static_cast<std::size_t>(right - left));
        if (std::ranges::any_of(window, hits)) return true;
    }
    return false;
}

}  // namespace tarvex
