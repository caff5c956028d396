// Looking at many pixels of a 1-bit raster at once, against looking at each.
#include "support/precompiled.h"

#include "raster/bit_raster.h"
#include "support/ascii_raster.h"
#include "support/property.h"

namespace tarvex {
namespace {

using test::BitPicture;

/// Widths around the ends of bytes and words, and densities that make long runs.
BitPicture Striped() {
    const int width = *rc::gen::element(1, 2, 3, 7, 8, 9, 31, 32, 33, 63, 64, 65, 128, 200, 300);
    const unsigned seed = *rc::gen::arbitrary<unsigned>();
    return test::Noise(width, *rc::gen::inRange(1, 5), *rc::gen::element(0.0, 0.5, 0.99, 1.0), seed);
}

TEST(BitRaster, NeighboursAndRunsAreThoseOfSinglePixels) {
    test::ExpectLaw(
        [] {
            const BitPicture picture = Striped();
            std::vector<std::uint8_t> memory = test::InMemory(picture);
            const BitRaster raster(memory.data(), picture.Width(), picture.Height());
            const int y = *rc::gen::inRange(0, picture.Height());
            const int from = *rc::gen::inRange(0, picture.Width());
            for (int x = 0; x < picture.Width(); ++x) {
                for (int dir = 0; dir < 8; ++dir) {
                    RC_ASSERT((raster.Neighbours(x, y) >> dir & 1) ==
                              (picture.Get(x + StepX(dir), y + StepY(dir)) ? 1 : 0));
                }
                int start = x;
                while (picture.Get(start - 1, y)) --start;
                if (picture.Get(x, y)) {
                    RC_ASSERT(raster.RunStart(x, y) == start);
                    if (from <= x) RC_ASSERT(raster.RunStart(x, y, from) == std::max(start, from));
                }
                for (const int last : {x - 1, x, from, picture.Width() - 1}) {
                    int skipped = x;
                    while (skipped <= last && !picture.Get(skipped, y)) ++skipped;
                    RC_ASSERT(raster.SkipRight(x, last, y) == skipped);
                }
            }
        },
        300);
}

TEST(BitRaster, FillingARunClearsItAndNothingElse) {
    test::ExpectLaw(
        [] {
            const BitPicture picture = Striped();
            const int y = *rc::gen::inRange(0, picture.Height());
            const int x = *rc::gen::inRange(0, picture.Width());
            for (const int step : {-1, 1}) {
                std::vector<std::uint8_t> memory = test::InMemory(picture);
                const BitRaster raster(memory.data(), picture.Width(), picture.Height());
                BitPicture expected = picture;
                int end = x;
                for (; picture.Get(end, y); end += step) expected.Set(end, y, false);
                RC_ASSERT((step < 0 ? raster.FillLeft(x, y) : raster.FillRight(x, y)) == end);
                RC_ASSERT(memory == test::InMemory(expected));
            }
        },
        300);
}

TEST(BitRaster, ASizeThatIsNotPositiveHasNoPixels) {
    for (const auto& [w, h] : {std::pair{0, 5}, {5, 0}, {-3, 5}, {5, -3}}) {
        const BitRaster raster(nullptr, w, h);
        EXPECT_EQ(raster.Width(), 0);
        EXPECT_FALSE(raster.Inside(0, 0));
    }
}

}  // namespace
}  // namespace tarvex
