// Reducing any small picture, compared with the rules followed pixel by pixel.
#include <cstddef>
#include <cstdint>
#include <vector>

#include "input.h"
#include "platform/handles.h"
#include "raster/color/plain_reduction.h"
#include "tarvex/colors.h"
#include "tarvex/raster.h"

namespace tarvex::fuzz {

void TryInput(Input input) {
    const int level = input.Take<std::int32_t>();
    const int wanted = input.TakeBetween(0, 40);
    // Runs of colours: a length, then a colour. Larger pictures take the other scale factors.
    const int width = input.TakeBetween(1, 40);
    const int height = input.TakeBetween(1, 30);
    test::ColorPicture picture(width, height);
    test::Color color;
    int left = 0;
    for (test::Color& pixel : picture.pixels) {
        if (left-- <= 0) {
            left = input.TakeBetween(0, 60);
            color = {input.TakeBetween(0, 255), input.TakeBetween(0, 255), input.TakeBetween(0, 255)};
        }
        pixel = color;
    }
    const UniqueBitmap bitmap(CImgProc::CreateBitmap32(width, height));
    Require(static_cast<bool>(bitmap), "a small bitmap can be had");
    BITMAP description{};
    GetObject(bitmap.Get(), static_cast<int>(sizeof description), &description);
    const CColorReduction::IMAGE image{static_cast<RGBQUAD*>(description.bmBits), width, height};
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const test::Color c = picture.At(x, y);
            CColorReduction::SetPixel(image, x, y, c.r, c.g, c.b);
        }
    }
    std::vector<RGBQUAD> palette(40);
    int count = wanted;
    CColorReduction(bitmap.Get()).DoColorReduction(palette.data(), count, level);
    test::PlainReduction plain(picture);
    const std::vector<test::Color> expected = plain.Reduce(wanted, level);
    Require(expected.size() == static_cast<std::size_t>(count), "the plain rules' number of colours");
    for (std::size_t i = 0; i < expected.size(); ++i) {
        const RGBQUAD& c = palette[i];
        Require(expected[i] == test::Color{c.rgbRed, c.rgbGreen, c.rgbBlue}, "the plain rules' palette");
    }
    const test::ColorPicture reduced = plain.Result();
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            test::Color c;
            CColorReduction::GetPixel(image, x, y, c.r, c.g, c.b);
            Require(c == reduced.At(x, y), "the plain rules' picture");
        }
    }
}

}  // namespace tarvex::fuzz
