// Colour reduction: what can be asked of and done to single pixels, windows and rectangles.
#include <algorithm>
#include <array>

#include "raster/color/distance.h"
#include "raster/color/window.h"
#include "tarvex/colors.h"

namespace tarvex {

using namespace color;

namespace {

int ClampedInto(std::int64_t v, int size) {
    return static_cast<int>(std::clamp<std::int64_t>(v, 0, size - 1));
}

/// The 3 x 3 pixels around; the image has pixels.
std::array<RGBQUAD, 9> Around(const PixelView& image, int x, int y) {
    std::array<RGBQUAD, 9> pixels;
    std::size_t k = 0;
    for (int dy = -1; dy <= 1; ++dy) {
        const RGBQUAD* row = RowOf(image, ClampedInto(std::int64_t{y} + dy, image.height));
        for (int dx = -1; dx <= 1; ++dx) pixels[k++] = row[ClampedInto(std::int64_t{x} + dx, image.width)];
    }
    return pixels;
}

int RadiusOf(int size) { return std::clamp(size / 2, 0, largestRadius); }

void Split(const RGBQUAD& color, int& r, int& g, int& b) {
    r = color.rgbRed;
    g = color.rgbGreen;
    b = color.rgbBlue;
}

}  // namespace

bool CColorReduction::IsEqual(RGBQUAD a, RGBQUAD b) { return KeyOf(a) == KeyOf(b); }

bool CColorReduction::IsAlmostEqual(RGBQUAD a, RGBQUAD b) { return Distance(a, b) < almostEqual; }

RGBQUAD CColorReduction::GetPixel(const IMAGE& image, int x, int y) {
    if (IsEmpty(image)) return {};
    return RowOf(image, ClampedInto(y, image.height))[ClampedInto(x, image.width)];
}

void CColorReduction::GetPixel(const IMAGE& image, int x, int y, int& r, int& g, int& b) {
    Split(GetPixel(image, x, y), r, g, b);
}

void CColorReduction::SetPixel(const IMAGE& image, int x, int y, RGBQUAD color) {
    if (IsEmpty(image) || x < 0 || y < 0 || x >= image.width || y >= image.height) return;
    Paint(RowOf(image, y)[x], color);
}

void CColorReduction::SetPixel(const IMAGE& image, int x, int y, int r, int g, int b) {
    SetPixel(image, x, y,
             {static_cast<BYTE>(b & 255), static_cast<BYTE>(g & 255), static_cast<BYTE>(r & 255), 0});
}

RGBQUAD CColorReduction::GetMeanPixel(const IMAGE& image, int x, int y) {
    if (IsEmpty(image)) return {};
    int red = 0;
    int green = 0;
    int blue = 0;
    for (const RGBQUAD& pixel : Around(image, x, y)) {
        red += pixel.rgbRed;
        green += pixel.rgbGreen;
        blue += pixel.rgbBlue;
    }
    return {static_cast<BYTE>(blue / 9), static_cast<BYTE>(green / 9), static_cast<BYTE>(red / 9), 0};
}

RGBQUAD CColorReduction::GetMedianPixel(const IMAGE& image, int x, int y) {
    if (IsEmpty(image)) return {};
    std::array<RGBQUAD, 9> pixels = Around(image, x, y);
    const auto median = [&pixels](BYTE RGBQUAD::*channel) {
        std::nth_element(pixels.begin(), pixels.begin() + 4, pixels.end(),
                         [channel](const RGBQUAD& a, const RGBQUAD& b) { return a.*channel < b.*channel; });
        return pixels[4].*channel;
    };
    return {median(&RGBQUAD::rgbBlue), median(&RGBQUAD::rgbGreen), median(&RGBQUAD::rgbRed), 0};
}

int CColorReduction::GetMajorityPixel(const IMAGE& image, int x, int y, int size, int& r, int& g, int& b) {
    if (IsEmpty(image)) return 0;
    const std::int64_t least = std::int64_t{size} * size / 2;
    const Winner winner = MajorityOfWindow(image, x, y, RadiusOf(size));
    if (winner.count < least) return 0;
    Split(winner.color, r, g, b);
    return 1;
}

void CColorReduction::SetMajorityPixel(const IMAGE& to, const IMAGE& from, int x, int y, int size) {
    if (IsEmpty(from)) return;
    SetPixel(to, x, y, MajorityOfWindow(from, x, y, RadiusOf(size)).color);
}

int CColorReduction::AreRoundPixelsSame(const IMAGE& image, int x, int y, int radius, int& r, int& g,
                                        int& b) {
    if (IsEmpty(image)) return 0;
    // Clamping keeps the order, so the ring's clamped pixels are those of the rectangle clamped.
    const std::int64_t reach = std::max(radius, 0);
    const int left = ClampedInto(x - reach, image.width);
    const int right = ClampedInto(x + reach, image.width);
    const int top = ClampedInto(y - reach, image.height);
    const int bottom = ClampedInto(y + reach, image.height);
    const std::uint32_t first = KeyOf(RowOf(image, top)[left]);
    Split(RowOf(image, top)[left], r, g, b);
    for (const int row : {top, bottom}) {
        for (int column = left; column <= right; ++column)
            if (KeyOf(RowOf(image, row)[column]) != first) return 0;
    }
    for (int row = top; row <= bottom; ++row) {
        for (const int column : {left, right})
            if (KeyOf(RowOf(image, row)[column]) != first) return 0;
    }
    return 1;
}

void CColorReduction::FillRectAreaWithColor(const IMAGE& image, const RECT& area, RGBQUAD color) {
    if (IsEmpty(image)) return;
    const int left = static_cast<int>(std::max<LONG>(area.left, 0));
    const int right = static_cast<int>(std::min<LONG>(area.right, image.width));
    for (int y = static_cast<int>(std::max<LONG>(area.top, 0)); y < std::min<LONG>(area.bottom, image.height);
         ++y) {
        for (int x = left; x < right; ++x) Paint(RowOf(image, y)[x], color);
    }
}

}  // namespace tarvex
