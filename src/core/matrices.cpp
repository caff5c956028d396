// The grids' storage, and what works on whole grids.
#include "tarvex/matrices.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "platform/handles.h"
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

/// Paints a grid of cells, rows in order, on the context or, without one, on the screen.
template <class ColourOf>
void PaintCells(const CDC* dc, int columns, int rows, ColourOf colourOf) {
    ScreenDC screen;
    if (dc == nullptr) screen.Reset(GetDC(nullptr));
    const HDC target = dc != nullptr ? dc->GetSafeHdc() : screen.Get();
    if (target == nullptr) return;
    for (int y = 0; y < rows; ++y)
        for (int x = 0; x < columns; ++x) SetPixel(target, x, y, colourOf(x, y));
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

void CBitMatrix::Dump(CDC* dc) const {
    PaintCells(dc, m_sizeX, m_sizeY,
               [this](int x, int y) { return Get(x, y) ? COLORREF{0xFFFFFF} : COLORREF{0}; });
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

void CByteMatrix::Dump(CDC* dc) const {
    static constexpr COLORREF palette[8] = {0x000000, 0x0000FF, 0x00FF00, 0xFF0000,
                                            0x00FFFF, 0xFF00FF, 0xFFFF00, 0xFFFFFF};
    PaintCells(dc, m_sizeX, m_sizeY, [this](int x, int y) { return palette[Get(x, y) % 8]; });
}

}  // namespace tarvex
