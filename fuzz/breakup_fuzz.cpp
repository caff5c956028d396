// Breaking up any small picture with any outline, which need not be the picture's: it ends, and what it gives
// is consistent.
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <memory>

#include "input.h"
#include "platform/handles.h"
#include "tarvex/breakup.h"

namespace tarvex::fuzz {
namespace {

UniqueBitmap TakePicture(Input& input) {
    const int width = input.TakeBetween(1, 120), height = input.TakeBetween(1, 90);
    UniqueBitmap bitmap(CImgProc::CreateBitmapBW(width, height));
    BITMAP description{};
    GetObject(bitmap.Get(), static_cast<int>(sizeof description), &description);
    for (int i = input.TakeBetween(0, 12); i > 0; --i) {  // rectangles
        const int left = input.TakeBetween(0, width - 1), top = input.TakeBetween(0, height - 1);
        const int right = std::min(width, left + input.TakeBetween(1, 80)),
                  bottom = std::min(height, top + input.TakeBetween(1, 60));
        const bool on = (input.Take<std::uint8_t>() & 3) != 0;
        for (int y = top; y < bottom; ++y)
            for (int x = left; x < right; ++x) CImgProc::SetPixel(description, x, y, on);
    }
    return bitmap;
}

void TakeOutline(Input& input, CPolyPolyDPoint& outline) {
    for (int i = input.TakeBetween(0, 3); i > 0; --i) {
        auto polyline = std::make_unique<CArray<DPOINT, DPOINT>>();
        for (int k = input.TakeBetween(0, 40); k > 0; --k) {
            const double x = input.TakeBetween(-8, 130), y = input.TakeBetween(-8, 100);
            polyline->Add({x + input.Take<std::uint8_t>() / 256.0, y});
        }
        if ((input.Take<std::uint8_t>() & 1) != 0 && !polyline->IsEmpty())
            polyline->Add(DPOINT(polyline->GetAt(0)));
        outline.Add(std::move(polyline));
    }
}

void RequireConsistent(const CPolyPolyDPoint& regions, const CPolyPolyInclination& inclinations) {
    Require(regions.GetCount() == inclinations.GetCount() && regions.GetCount() % 2 == 0,
            "positions for every rail");
    for (int i = 0; i < regions.GetCount(); ++i) {
        Require(inclinations[i].GetSize() == inclinations[i / 2 * 2].GetSize(), "ends in pairs");
        double last = -1;
        for (const double at : inclinations[i]) {
            Require(at > last && at < 1, "positions grow along the rail");
            last = at;
        }
        for (const DPOINT& p : regions[i]) Require(std::isfinite(p.x) && std::isfinite(p.y), "finite rails");
    }
}

}  // namespace

void TryInput(Input input) {
    const bool check = (input.Take<std::uint8_t>() & 1) != 0;
    const double scale = input.Take<double>();
    const UniqueBitmap image = TakePicture(input);
    CPolyPolyDPoint outline, regions;
    TakeOutline(input, outline);
    CPolyPolyInclination inclinations;
    CAutoBreakUp breakUp;
    const bool done = breakUp.AutoBreakUp(image.Get(), scale, outline, regions, inclinations, check);
    Require(done == (breakUp.End() == BreakUpEnd::Done), "a reason for every failure");
    Require(done != regions.IsEmpty(), "regions on success only");
    RequireConsistent(regions, inclinations);
}

}  // namespace tarvex::fuzz
