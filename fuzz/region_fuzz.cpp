// Tracing the colour region around any pixel of any small picture, compared with the rules pixel by pixel.
#include <cstddef>
#include <cstdint>

#include "input.h"
#include "platform/handles.h"
#include "raster/plain_auto_trace.h"
#include "tarvex/raster.h"

namespace tarvex::fuzz {
namespace {

test::ColourPicture TakePicture(Input& input) {
    test::ColourPicture picture(input.TakeBetween(1, 64), input.TakeBetween(1, 48));
    const auto bytes = input.Rest();
    for (std::size_t i = 0; i < picture.pixels.size() && !bytes.empty(); ++i) {
        const std::uint8_t byte = bytes[i % bytes.size()];  // few colours, near and far, and foreign marks
        picture.pixels[i] = {static_cast<BYTE>(byte & 1), static_cast<BYTE>(byte & 2 ? 200 : 3),
                             static_cast<BYTE>(byte & 4), byte};
    }
    return picture;
}

}  // namespace

void TryInput(Input input) {
    const int x = input.TakeBetween(-2, 66), y = input.TakeBetween(-2, 50);
    const int tolerance = input.Take<std::uint16_t>();
    const bool smooth = (input.Take<std::uint8_t>() & 1) != 0;
    const test::ColourPicture picture = TakePicture(input);
    const UniqueBitmap bitmap(CImgProc::CreateBitmap32(picture.width, picture.height));
    DIBSECTION section{};
    Require(GetObject(bitmap.Get(), static_cast<int>(sizeof section), &section) != 0,
            "a small bitmap can be had");
    auto* pixels = static_cast<RGBQUAD*>(section.dsBm.bmBits);
    for (int row = 0; row < picture.height; ++row) {
        for (int column = 0; column < picture.width; ++column)
            pixels[(picture.height - 1 - row) * picture.width + column] =
                picture.pixels[static_cast<std::size_t>(row * picture.width + column)];
    }
    CAutoTrace tracer(bitmap.Get(), 96);
    tracer.SetFillFilter(smooth);
    tracer.DoTrace(x, y, nullptr, tolerance, false, true, false);
    const auto plain = test::PlainAutoTrace(picture).DoTrace(x, y, tolerance, smooth);
    Require(static_cast<std::size_t>(tracer.TracedLines().GetCount()) == plain.size(),
            "the plain rules' outlines");
    for (std::size_t i = 0; i < plain.size(); ++i) {
        const auto& line = tracer.TracedLines()[static_cast<int>(i)];
        Require(static_cast<std::size_t>(line.GetSize()) == plain[i].size(), "their points");
        for (std::size_t k = 0; k < plain[i].size(); ++k)
            Require(line[static_cast<int>(k)] == plain[i][k], "where they are");
    }
    for (int i = 0; i < picture.width * picture.height; ++i)
        Require(pixels[i].rgbReserved == 0 || pixels[i].rgbReserved == PIXEL_ATTR_DIGI, "marks are cleared");
    CPolyPolyInclination inclinations;
    tracer.DoTrace(x, y, &inclinations, tolerance, true, true, false);
    Require(tracer.TracedLines().GetCount() == inclinations.GetCount(), "positions for every rail");
}

}  // namespace tarvex::fuzz
