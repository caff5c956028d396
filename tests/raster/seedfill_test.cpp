// The seed fill, on bits and on single pixels, against a fill that visits neighbours one by one.
#include "support/precompiled.h"

#include "raster/bit_raster.h"
#include "raster/seedfill.h"
#include "support/ascii_raster.h"
#include "support/property.h"

namespace tarvex {
namespace {

using test::BitPicture;

BitPicture ErasedPlainly(BitPicture picture, int x, int y) {
    std::vector<std::pair<int, int>> open{{x, y}};
    while (!open.empty()) {
        const auto [px, py] = open.back();
        open.pop_back();
        if (!picture.Get(px, py)) continue;
        picture.Set(px, py, false);
        for (const auto& [dx, dy] : {std::pair{1, 0}, {-1, 0}, {0, 1}, {0, -1}})
            open.emplace_back(px + dx, py + dy);
    }
    return picture;
}

TEST(SeedFill, ErasesExactlyThe4ConnectedRegion) {
    test::ExpectLaw(
        [] {
            const BitPicture picture = test::AnyPicture();
            const int x = *rc::gen::inRange(-1, picture.Width() + 1);
            const int y = *rc::gen::inRange(-1, picture.Height() + 1);
            const BitPicture expected = ErasedPlainly(picture, x, y);
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
            RC_ASSERT(filled == ErasedPlainly(picture, x, y));
            RC_ASSERT(stack.empty());
            RC_ASSERT(times ==
                      std::ranges::count(picture.Text(), '#') - std::ranges::count(filled.Text(), '#'));
        },
        400);
}

TEST(SeedFill, FindsItsWayThroughAWindingRegion) {
    const BitPicture spiral = test::Drawn({
        "#########",
        "........#",
        "#######.#",
        "#.....#.#",
        "#.###.#.#",
        "#.#...#.#",
        "#.#####.#",
        "#.......#",
        "#########",
    });
    CShapeTrace tracer(test::Bitmap1(spiral).Get());
    tracer.SeedFill(4, 4);
    int left = 0;
    for (int y = 0; y < 9; ++y) {
        for (int x = 0; x < 9; ++x) left += tracer.GetPixel(x, y) ? 1 : 0;
    }
    EXPECT_EQ(left, 0);
}

TEST(SeedFill, DiagonalNeighboursAreNotOfTheRegion) {
    CShapeTrace tracer(test::Bitmap1(test::Drawn({"#.", ".#"})).Get());
    tracer.SeedFill(0, 0);
    EXPECT_FALSE(tracer.GetPixel(0, 0));
    EXPECT_TRUE(tracer.GetPixel(1, 1));
}

}  // namespace
}  // namespace tarvex
