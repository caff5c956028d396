// Single pixels, the bitmaps they stand in, and CImgProc as the front of the line tracer (line_tracer.h).
#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>

#include "core/append.h"
#include "raster/bit_raster.h"
#include "raster/contour_appender.h"
#include "raster/dib.h"
#include "raster/line_tracer.h"
#include "tarvex/raster.h"

namespace tarvex {
namespace {

constexpr int kColourBytes = 4;

bool Holds(const BITMAP& bitmap, int x, int y) {
    return bitmap.bmBits != nullptr && x >= 0 && x < bitmap.bmWidth && y >= 0 && y < bitmap.bmHeight;
}

/// Image row `y` of a bitmap with rows of `rowBytes` bytes.
std::uint8_t* RowOf(const BITMAP& bitmap, int y, std::size_t rowBytes) {
    return static_cast<std::uint8_t*>(bitmap.bmBits) +
           static_cast<std::size_t>(bitmap.bmHeight - 1 - y) * rowBytes;
}

std::uint8_t* BitRow(const BITMAP& bitmap, int y) {
    return RowOf(bitmap, y, PaddedRowBytes(static_cast<std::uint64_t>(bitmap.bmWidth)));
}

/// The bytes blue, green, red, reserved.
std::uint8_t* ColourPixel(const BITMAP& bitmap, int x, int y) {
    return RowOf(bitmap, y, static_cast<std::size_t>(bitmap.bmWidth) * kColourBytes) +
           static_cast<std::size_t>(x) * kColourBytes;
}

bool TakePosition(const std::optional<POINT>& found, int& x, int& y) {
    if (!found) return false;
    x = found->x;
    y = found->y;
    return true;
}

unsigned BitOf(int x) { return 0x80U >> (x & 7); }

}  // namespace

CImgProc::CImgProc(HBITMAP bitmap) { InitMat(bitmap); }

CImgProc::~CImgProc() = default;

unsigned int CImgProc::WIDTHBYTES(unsigned int bits) {
    return static_cast<unsigned int>(PaddedRowBytes(bits));
}

bool CImgProc::GetPixel(const BITMAP& bitmap, int x, int y) {
    if (!Holds(bitmap, x, y)) return false;
    if (bitmap.bmBitsPixel == 1) return (BitRow(bitmap, y)[x >> 3] & BitOf(x)) != 0;
    if (bitmap.bmBitsPixel != 32) return false;
    const std::uint8_t* pixel = ColourPixel(bitmap, x, y);
    return (pixel[0] | pixel[1] | pixel[2]) != 0;
}

void CImgProc::SetPixel(const BITMAP& bitmap, int x, int y, bool on) {
    if (!Holds(bitmap, x, y)) return;
    std::uint8_t& byte = BitRow(bitmap, y)[x >> 3];
    byte = static_cast<std::uint8_t>(on ? byte | BitOf(x) : byte & ~BitOf(x));
}

COLORREF CImgProc::GetPixel32(const BITMAP& bitmap, int x, int y) {
    if (!Holds(bitmap, x, y)) return 0;
    const std::uint8_t* pixel = ColourPixel(bitmap, x, y);
    return RGB(pixel[2], pixel[1], pixel[0]);
}

void CImgProc::SetPixel32(const BITMAP& bitmap, int x, int y, COLORREF colour) {
    if (!Holds(bitmap, x, y)) return;
    std::uint8_t* pixel = ColourPixel(bitmap, x, y);
    pixel[0] = GetBValue(colour);
    pixel[1] = GetGValue(colour);
    pixel[2] = GetRValue(colour);
}

HBITMAP CImgProc::CreateBitmap32(int width, int height) {
    BITMAPINFO info{};
    info.bmiHeader = MakeHeader(width, height, 32);
    void* bits = nullptr;
    return CreateDIBSection(nullptr, &info, DIB_RGB_COLORS, &bits, nullptr, 0);
}

HBITMAP CImgProc::CreateBitmapBW(int width, int height) {
    return CreateMonochrome(MakeHeader(width, height, 1)).Detach();
}

int CImgProc::CountPointPaths(const BITMAP& bitmap, int x, int y) {
    if (!GetPixel(bitmap, x, y)) return 0;
    int count = -1;  // the pixel itself
    for (int dy = -1; dy <= 1; ++dy) {
        for (int dx = -1; dx <= 1; ++dx) count += GetPixel(bitmap, x + dx, y + dy) ? 1 : 0;
    }
    return count;
}

void CImgProc::DumpBmp(HBITMAP bitmap) {
    BITMAP description{};
    if (GetObject(bitmap, static_cast<int>(sizeof description), &description) == 0) return;
    const ScreenDC screen(GetDC(nullptr));
    const UniqueDC source(CreateCompatibleDC(screen.Get()));
    if (!screen || !source) return;
    const SelectedObject selected(source.Get(), bitmap);
    if (!selected) return;
    BitBlt(screen.Get(), 0, 0, description.bmWidth, description.bmHeight, source.Get(), 0, 0, SRCCOPY);
}

void CImgProc::InitMat(HBITMAP bitmap) {
    if (bitmap == nullptr) return;
    BITMAP description{};
    GdiFlush();
    GetObject(bitmap, static_cast<int>(sizeof description), &description);
    m_mat.SetSize(description.bmWidth, description.bmHeight);
    for (int y = 0; y < description.bmHeight; ++y) {
        int x = 0;
        for (unsigned char& cell : m_mat.Row(y)) {
            cell = GetPixel(description, x++, y) ? IMGPROC_LINE : IMGPROC_EMPTY;
        }
    }
}

int CImgProc::CountPointPaths(int x, int y) { return CountNeighbours(m_mat, x, y); }
int CImgProc::CountPointPaths(int x, int y, unsigned char value) {
    return CountNeighbours(m_mat, x, y, value);
}
int CImgProc::CountPointPaths2(int x, int y) { return CountBranches(m_mat, x, y); }
int CImgProc::CountPointPaths2(int x, int y, unsigned char value) {
    return CountBranches(m_mat, x, y, value);
}
int CImgProc::CountPointPaths3(int x, int y) { return CountPaths(m_mat, x, y); }
int CImgProc::CountPointPaths3(int x, int y, unsigned char value) { return CountPaths(m_mat, x, y, value); }

bool CImgProc::FindLinePoint(int& x, int& y, int n) { return TakePosition(FindLineCell(m_mat, n), x, y); }

bool CImgProc::TraceLinePoint(int& x, int& y) { return StepAlongLine(m_mat, x, y); }

bool CImgProc::GetNextAnchorPoint(int& x, int& y) { return TakePosition(FindOpenAnchor(m_mat), x, y); }

void CImgProc::GetPolylineFromAnchor(CArray<POINT, POINT>& line, int x, int y) {
    AppendAll(line, WalkFromAnchor(m_mat, x, y));
}

void CImgProc::TraceAnchorPointsAndLines(CPolyPolyPoint& lines, int maxLines) {
    MarkAnchors(m_mat);
    WalkAllAnchors(m_mat, lines, maxLines);
}

void CImgProc::TraceLoosePoints(CPolyPolyPoint& lines, int maxLines) {
    ContourAppender appender(lines);
    for (int y = 0; y < m_mat.SizeY(); ++y) {
        int x = -1;
        for (const unsigned char cell : m_mat.Row(y)) {
            ++x;
            if (cell == IMGPROC_EMPTY) continue;
            auto stub = std::make_unique<CArray<POINT, POINT>>();
            AppendAll(*stub, std::array{POINT{x - 1, y}, POINT{x, y}, POINT{x + 1, y}});
            appender.Add(std::move(stub));
            if (maxLines != 0 && lines.GetCount() >= maxLines) return;
        }
    }
}

void CImgProc::MakeLinesMat(const CPolyPolyPoint& lines) {
    m_mat.SetAll(IMGPROC_EMPTY);
    for (int i = 0; i < lines.GetCount(); ++i) {
        const CArray<POINT, POINT>* line = lines.GetAt(i);
        if (line == nullptr) continue;
        const int last = line->GetUpperBound();
        for (int k = 0; k <= last; ++k) {
            const POINT& p = (*line)[k];
            m_mat.Set(p.x, p.y, k == 0 || k == last ? IMGPROC_ANCHOR : IMGPROC_LINE);
        }
    }
}

void CImgProc::DumpMat() { m_mat.Dump(nullptr); }

}  // namespace tarvex
