// Thinning any small bitmap, and tracing its centre lines: what the headers promise of every shape.
#include <cmath>
#include <cstddef>
#include <cstdint>

#include "checks.h"
#include "input.h"
#include "tarvex/imagetrace.h"
#include "tarvex/raster.h"
#include "tarvex/skeleton.h"

namespace tarvex::fuzz {
namespace {

BITMAP Describe(HBITMAP handle) {
    BITMAP bitmap{};
    Require(GetObject(handle, static_cast<int>(sizeof bitmap), &bitmap) != 0, "the bitmap is there");
    return bitmap;
}

void RequireFinite(const CPolyPolyBezier& contours) {
    for (int i = 0; i < contours.GetSize(); ++i) {
        Require(contours[i].GetSize() >= 2, "a contour has two nodes");
        fuzz::RequireFinite(contours[i]);
    }
}

}  // namespace

void TryInput(Input input) {
    const int width = input.TakeBetween(1, 130);
    const int height = input.TakeBetween(1, 70);
    CentreLineOptions options;
    options.side = ShapeSide::light;
    options.threshold = 127;
    options.speckPixels = input.Take<std::int8_t>();
    options.minBranch = input.TakeBetween(0, 20) / 2.0;
    options.tolerance = input.TakeBetween(0, 40) / 10.0;
    options.joinStrokes = input.TakeBetween(0, 1) != 0;

    const HBITMAP shape = CImgProc::CreateBitmapBW(width, height);
    Require(shape != nullptr, "a small bitmap can be had");
    const BITMAP pixels = Describe(shape);
    const auto bytes = input.Rest();
    for (std::size_t i = 0;
         !bytes.empty() && i < static_cast<std::size_t>(width) * static_cast<std::size_t>(height); ++i) {
        const bool isSet = (bytes[i / 8 % bytes.size()] >> (i % 8) & 1) != 0;
        CImgProc::SetPixel(pixels, static_cast<int>(i) % width, static_cast<int>(i) / width, isSet);
    }

    CSkeleton skeleton;
    CPolyPolyBezier lines;
    Require(skeleton.InputMono(shape) && skeleton.Output(lines), "a bitmap can be thinned");
    RequireFinite(lines);
    CSkeleton again;
    Require(again.InputMono(skeleton.Bitmap()) && again.DoSkeleton(), "a skeleton can be thinned");
    const BITMAP thinned = Describe(skeleton.Bitmap());
    const BITMAP twice = Describe(again.Bitmap());
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const bool isSet = CImgProc::GetPixel(thinned, x, y);
            Require(!isSet || CImgProc::GetPixel(pixels, x, y), "a skeleton lies in its shape");
            Require(isSet == CImgProc::GetPixel(twice, x, y), "thinning again changes nothing");
        }
    }

    CPolyPolyWidth widths;
    Require(CImageTrace(shape).DoTrace(options, lines, widths), "a picture can be traced");
    RequireFinite(lines);
    for (int i = 0; i < widths.GetSize(); ++i) {
        for (int k = 0; k < widths[i].GetSize(); ++k)
            Require(widths[i][k] > 0 && std::isfinite(widths[i][k]), "widths are lengths");
    }
    DeleteObject(shape);
}

}  // namespace tarvex::fuzz
