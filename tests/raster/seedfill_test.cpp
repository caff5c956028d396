// The seed fill, on bits and on single pixels, against a fill that visits neighbours one by one.
#include "support/precompiled.h"

#include "raster/bit_raster.h"
#include "raster/seedfill.h"
#include "support/ascii_raster.h"
#include "support/property.h"

namespace tarvex {
namespace {

using test::BitPicture;

/// The picture without the region around (x, y).
BitPicture Erased(BitPicture picture, int x, int y) {
    const BitPicture region = test::Region(picture.Width(), picture.Height(), x, y,
                                           [&](int px, int py) { return picture.Get(px, py); });
    for (int py = 0; py < picture.Height(); ++py) {
        for (int px = 0; px < picture.Width(); ++px)
            if (region.Get(px, py)) picture.Set(px, py, false);
    }
    return picture;
}

TEST(SeedFill, ErasesExactlyThe4ConnectedRegion) {
    test::ExpectLaw(
        [] {
            const BitPicture picture = test::AnyPicture();
            const int x = test::AnyCoordinate(picture.Width()), y = test::AnyCoordinate(picture.Height());
            const BitPicture expected = Erased(picture, x, y);
            CShapeTrace tracer(test::Bitmap1(picture).Get());
            tracer.SeedFill(x, y);
            for (int row = 0; row < picture.Height(); ++row) {
                for (int column = 0; column < picture.Width(); ++column)
                    RC_ASSERT(tracer.GetPixel(column, row) == expected.Get(column, row));
            }
        },
        400);
}

TEST(SeedFill, OnSinglePixelsFillsEachPixelOnce) {
    test::ExpectLaw(
        [] {
            const BitPicture picture = test::AnyPicture();
            const int x = *rc::gen::inRange(0, picture.Width());
            const int y = *rc::gen::inRange(0, picture.Height());
            if (!picture.Get(x, y)) return;  // not for this function to ask
            BitPicture filled = picture;
            FillStack stack{{3, 4, 5, 1}};  // what an earlier use may have left
            std::ptrdiff_t times = 0;
            FillFromSeed(PixelSpans(
                             picture.Width(), [&](int px, int py) { return filled.Get(px, py); },
                             [&](int px, int py) {
                                 filled.Set(px, py, false);
                                 ++times;
                             }),
                         stack, picture.Height(), x, y);
            RC_ASSERT(filled == Erased(picture, x, y));
            RC_ASSERT(stack.empty());
            RC_ASSERT(times ==
                      std::ranges::count(picture.Text(), '#') - std::ranges::count(filled.Text(), '#'));
        },
        400);
}

}  // namespace
}  // namespace tarvex
