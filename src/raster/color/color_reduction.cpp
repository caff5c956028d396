// Colour reduction: the working picture and the course of the work. Majorities of windows are found in
// window.cpp and label_filter.cpp, clusters in clusters.cpp, pixels in color_pixels.cpp.
#include <algorithm>
#include <cstring>
#include <limits>
#include <memory>
#include <optional>
#include <span>
#include <utility>

#include "platform/handles.h"
#include "raster/color/clusters.h"
#include "raster/color/distance.h"
#include "raster/color/flat_windows.h"
#include "raster/color/label_filter.h"
#include "raster/color/palette_index.h"
#include "raster/color/window.h"
#include "raster/dib.h"
#include "tarvex/colors.h"
#include "tarvex/framework.h"

namespace tarvex {

using namespace color;

namespace {

constexpr int kSampleStep = 3;
constexpr int kSampleSize = 7;
constexpr int kFilterRadius = 2;

/// The picture of a 32-bit bitmap; empty for anything else.
PixelView PictureOf(HBITMAP bitmap) {
    BITMAP description{};
    if (bitmap == nullptr || GetObject(bitmap, static_cast<int>(sizeof description), &description) == 0 ||
        description.bmBitsPixel != 32)
        return {};
    const PixelView image{static_cast<RGBQUAD*>(description.bmBits), description.bmWidth,
                          description.bmHeight};
    return IsEmpty(image) ? PixelView{} : image;
}

/// Small pictures are enlarged, so that windows of five and seven pixels do not swallow their features.
int FactorFor(const PixelView& image) {
    const int shorter = std::min(image.width, image.height);
    return shorter < 100 ? 4 : shorter < 250 ? 2 : 1;
}

/// The bitmap's header; made up for one that was not made with a header.
BITMAPINFOHEADER HeaderOf(HBITMAP bitmap, const PixelView& image) {
    DIBSECTION section{};
    if (GetObject(bitmap, static_cast<int>(sizeof section), &section) == static_cast<int>(sizeof section))
        return section.dsBmih;
    return MakeHeader(image.width, image.height, 32);
}

bool Fits(std::int64_t v) {
    return v >= std::numeric_limits<LONG>::min() && v <= std::numeric_limits<LONG>::max();
}

/// Writes the sums of three neighbouring pixels of `columns`, divided by 9. Four bytes are a pixel in both;
/// `columns` has a pixel more at either end.
void MeanRow(const std::vector<std::uint16_t>& columns, int width, RGBQUAD* out) {
    // Of 65536, rounded up: exact for sums of nine bytes. Both factors have 16 bits, so that the compiler
    // takes the upper half of eight products at a time.
    constexpr std::uint16_t ninth = 7282;
    const auto count = static_cast<std::size_t>(width) * 4;
    const std::uint16_t* from = columns.data();
    auto* bytes = reinterpret_cast<std::uint8_t*>(out);
    for (std::size_t i = 0; i < count; ++i) {
        const auto sum = static_cast<std::uint16_t>(from[i] + from[i + 4] + from[i + 8]);
        bytes[i] = static_cast<std::uint8_t>(std::uint32_t{sum} * ninth >> 16);
    }
}

/// Filters twice, by way of the mean image, which is left with what the second pass read.
void FilterTwice(Labels labels, const PixelView& image, const PixelView& meanImage) {
    labels.Filter();
    labels.Paint(meanImage, image);
    labels.Filter();
    labels.Paint(image, image);
}

}  // namespace

CColorReduction::CColorReduction(HBITMAP bitmap) : m_hBitmap(bitmap) {
    GdiFlush();
    m_image = PictureOf(bitmap);
    if (IsEmpty(m_image)) return;
    m_factor = FactorFor(m_image);
    if (m_factor != 1) CreateBigBitmap(bitmap);
    try {
        m_meanPixels = std::make_unique_for_overwrite<RGBQUAD[]>(PixelCount(m_image));
        m_meanImage = {m_meanPixels.get(), m_image.width, m_image.height};
        CreateMeanImage();
    } catch (...) {
        DeleteObject(m_hBigBitmap);  // no destructor will
        throw;
    }
}

CColorReduction::~CColorReduction() {
    if (m_hBigBitmap != nullptr) DeleteObject(m_hBigBitmap);
}

bool CColorReduction::DrawStretchedBitmap(HDC to, HBITMAP bitmap, int x, int y, int width, int height) {
    BITMAP from{};
    if (bitmap == nullptr || GetObject(bitmap, static_cast<int>(sizeof from), &from) == 0) return false;
    const UniqueDC fromDC(CreateCompatibleDC(to));
    if (!fromDC) return false;
    const SelectedObject selected(fromDC.Get(), bitmap);
    if (!selected) return false;
    const int former = SetStretchBltMode(to, COLORONCOLOR);
    const bool drawn =
        StretchBlt(to, x, y, width, height, fromDC.Get(), 0, 0, from.bmWidth, from.bmHeight, SRCCOPY) != 0;
    if (former != 0) SetStretchBltMode(to, former);
    GdiFlush();
    return drawn;
}

void CColorReduction::CreateBigBitmap(HBITMAP bitmap) {
    BITMAPINFO info{};
    info.bmiHeader = HeaderOf(bitmap, m_image);
    const std::int64_t width = std::int64_t{info.bmiHeader.biWidth} * m_factor;
    const std::int64_t height = std::int64_t{info.bmiHeader.biHeight} * m_factor;
    if (!Fits(width) || !Fits(height)) AfxThrowMemoryException();
    info.bmiHeader.biWidth = static_cast<LONG>(width);
    info.bmiHeader.biHeight = static_cast<LONG>(height);
    info.bmiHeader.biSizeImage = 0;
    void* bits = nullptr;
    UniqueBitmap big(CreateDIBSection(nullptr, &info, DIB_RGB_COLORS, &bits, nullptr, 0));
    const UniqueDC dc(CreateCompatibleDC(nullptr));
    if (!big || !dc) AfxThrowMemoryException();
    const SelectedObject selected(dc.Get(), big.Get());
    const PixelView enlarged{static_cast<RGBQUAD*>(bits), m_image.width * m_factor,
                             m_image.height * m_factor};
    if (!selected || !DrawStretchedBitmap(dc.Get(), bitmap, 0, 0, enlarged.width, enlarged.height))
        AfxThrowMemoryException();
    m_image = enlarged;
    m_hBigBitmap = big.Detach();
}

void CColorReduction::CreateSmallBitmap() {
    const PixelView own = PictureOf(m_hBitmap);
    if (IsEmpty(own)) return;
    const UniqueDC dc(CreateCompatibleDC(nullptr));
    const SelectedObject selected(dc.Get(), m_hBitmap);
    if (!selected || !DrawStretchedBitmap(dc.Get(), m_hBigBitmap, 0, 0, own.width, own.height))
        AfxThrowMemoryException();
}

void CColorReduction::CreateMeanImage() {
    if (IsEmpty(m_image)) return;
    const int width = m_image.width;
    const auto count = static_cast<std::size_t>(width) * 4;
    std::vector<std::uint16_t> columns(count + 8);
    for (int y = 0; y < m_image.height; ++y) {
        const auto bytesOf = [&](int row) {
            return reinterpret_cast<const std::uint8_t*>(
                RowOf(m_image, std::clamp(row, 0, m_image.height - 1)));
        };
        const std::uint8_t* above = bytesOf(y - 1);
        const std::uint8_t* here = bytesOf(y);
        const std::uint8_t* below = bytesOf(y + 1);
        for (std::size_t i = 0; i < count; ++i)
            columns[i + 4] = static_cast<std::uint16_t>(above[i] + here[i] + below[i]);
        for (std::size_t k = 0; k < 4; ++k) {
            columns[k] = columns[k + 4];
            columns[count + 4 + k] = columns[count + k];
        }
        MeanRow(columns, width, RowOf(m_meanImage, y));
    }
}

void CColorReduction::CreateMedianImage() {
    for (int y = 0; y < m_image.height; ++y) {
        for (int x = 0; x < m_image.width; ++x) RowOf(m_meanImage, y)[x] = GetMedianPixel(m_image, x, y);
    }
}

void CColorReduction::GetColorPalette(RGBQUAD* palette, int& count) {
    const int wanted = palette == nullptr ? 0 : std::max(0, count);
    count = 0;
    if (wanted == 0) return;
    Clusters clusters;
    static_assert(kSampleSize == 2 * FlatWindows::radius + 1 && kSampleStep >= FlatWindows::radius);
    FlatWindows windows(m_meanImage);
    for (int y = kSampleStep; y < m_meanImage.height - kSampleStep; y += kSampleStep) {
        windows.MoveTo(y);
        for (int x = kSampleStep; x < m_meanImage.width - kSampleStep; x += kSampleStep) {
            if (windows.IsFlatAt(x)) {
                const RGBQUAD& c = RowOf(m_meanImage, y)[x];
                clusters.Add({c.rgbBlue, c.rgbGreen, c.rgbRed, 0});
                continue;
            }
            constexpr int least = kSampleSize * kSampleSize / 2;
            const Winner winner = MajorityOfWindow(m_meanImage, x, y, kSampleSize / 2, least);
            if (winner.count >= least) clusters.Add(winner.color);
        }
    }
    clusters.Merge(m_threshold);
    const std::vector<RGBQUAD> colors = clusters.Largest(static_cast<std::size_t>(wanted));
    std::copy(colors.begin(), colors.end(), palette);
    count = static_cast<int>(colors.size());
}

void CColorReduction::ReplaceColors(const RGBQUAD* palette, int count) {
    if (palette == nullptr || count <= 0 || IsEmpty(m_image)) return;
    const std::span colors(palette, static_cast<std::size_t>(count));
    if (colors.size() <= Labels::mostColors) {
        FilterTwice(Labels::Replaced(m_image, m_meanImage, colors), m_image, m_meanImage);
        return;
    }
    PaletteIndex index(colors);
    const std::size_t pixels = PixelCount(m_image);
    for (std::size_t i = 0; i < pixels; ++i) {
        RGBQUAD& pixel = m_image.pixels[i];
        const RGBQUAD* entry = index.Own(pixel);
        Paint(pixel, entry != nullptr ? *entry : *index.Nearest(m_meanImage.pixels[i]));
    }
    Majority();
}

void CColorReduction::Majority() {
    if (IsEmpty(m_image)) return;
    if (std::optional<Labels> labels = Labels::Of(m_image)) {
        FilterTwice(std::move(*labels), m_image, m_meanImage);
        return;
    }
    for (int pass = 0; pass < 2; ++pass) {
        std::memcpy(static_cast<void*>(m_meanImage.pixels), m_image.pixels,
                    PixelCount(m_image) * sizeof(RGBQUAD));
        for (int y = 0; y < m_image.height; ++y) {
            for (int x = 0; x < m_image.width; ++x)
                SetMajorityPixel(m_image, m_meanImage, x, y, 2 * kFilterRadius + 1);
        }
    }
}

void CColorReduction::DoColorReduction(RGBQUAD* palette, int& count, int level) {
    const std::int64_t threshold = std::int64_t{level} * 100 + 3500;
    m_threshold = static_cast<int>(std::clamp<std::int64_t>(threshold, std::numeric_limits<int>::min(),
                                                            std::numeric_limits<int>::max()));
    GetColorPalette(palette, count);
    ReplaceColors(palette, count);
    if (m_hBigBitmap != nullptr && count > 0) CreateSmallBitmap();
}

}  // namespace tarvex
