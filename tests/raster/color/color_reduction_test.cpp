// Colour reduction beside its plain rules, bit for bit, and its members one by one.
#include "support/precompiled.h"

#include "platform/handles.h"
#include "raster/color/plain_reduction.h"
#include "support/ascii_raster.h"
#include "support/property.h"
#include "tarvex/colors.h"
#include "tarvex/raster.h"

namespace tarvex {
namespace {

using test::Color;
using test::ColorPicture;
using test::PlainReduction;
using IMAGE = CColorReduction::IMAGE;

Color Of(const RGBQUAD& c) { return {c.rgbRed, c.rgbGreen, c.rgbBlue}; }

RGBQUAD Quad(Color c, int reserved = 0) {
    return {static_cast<BYTE>(c.b), static_cast<BYTE>(c.g), static_cast<BYTE>(c.r),
            static_cast<BYTE>(reserved)};
}

IMAGE ImageOf(HBITMAP bitmap) {
    BITMAP description{};
    GetObject(bitmap, static_cast<int>(sizeof description), &description);
    return {static_cast<RGBQUAD*>(description.bmBits), description.bmWidth, description.bmHeight};
}

RGBQUAD& PixelAt(const IMAGE& image, int x, int y) {
    return image.pixels[static_cast<std::ptrdiff_t>(image.height - 1 - y) * image.width + x];
}

/// The reserved byte that every pixel gets, to see that it stays.
BYTE Mark(int x, int y) { return static_cast<BYTE>(x * 7 + y * 13); }

UniqueBitmap BitmapOf(const ColorPicture& picture) {
    UniqueBitmap bitmap(CImgProc::CreateBitmap32(picture.width, picture.height));
    const IMAGE image = ImageOf(bitmap.Get());
    for (int y = 0; y < picture.height; ++y)
        for (int x = 0; x < picture.width; ++x) PixelAt(image, x, y) = Quad(picture.At(x, y), Mark(x, y));
    return bitmap;
}

ColorPicture PictureOf(const IMAGE& image) {
    ColorPicture picture(image.width, image.height);
    for (int y = 0; y < picture.height; ++y)
        for (int x = 0; x < picture.width; ++x) picture.At(x, y) = Of(PixelAt(image, x, y));
    return picture;
}

bool ReservedBytesStayed(const IMAGE& image) {
    for (int y = 0; y < image.height; ++y)
        for (int x = 0; x < image.width; ++x)
            if (PixelAt(image, x, y).rgbReserved != Mark(x, y)) return false;
    return true;
}

struct Reduced {
    std::vector<Color> palette;
    ColorPicture picture;
    bool reservedStayed;
};

Reduced Reduce(const ColorPicture& picture, int wanted, int level) {
    const UniqueBitmap bitmap = BitmapOf(picture);
    CColorReduction reduction(bitmap.Get());
    std::vector<RGBQUAD> palette(static_cast<std::size_t>(std::max(wanted, 1)));
    int count = wanted;
    reduction.DoColorReduction(palette.data(), count, level);
    std::vector<Color> colors;
    for (int i = 0; i < count; ++i) colors.push_back(Of(palette[static_cast<std::size_t>(i)]));
    return {colors, PictureOf(ImageOf(bitmap.Get())), ReservedBytesStayed(ImageOf(bitmap.Get()))};
}

/// Discs, bars and slopes of some colours, with noise over them.
ColorPicture AnyPicture(std::mt19937& random, int width, int height, int colors, int noise) {
    const auto below = [&random](int n) { return static_cast<int>(random() % static_cast<unsigned>(n)); };
    std::vector<Color> paints;
    for (int i = 0; i < colors; ++i) paints.push_back({below(256), below(256), below(256)});
    // Some nearly equal pairs, on both sides of the limit.
    for (int i = 0; i < colors; i += 3)
        paints.push_back({paints[0].r ^ below(14), paints[0].g, paints[0].b ^ below(9)});
    ColorPicture picture(width, height, paints[0]);
    for (int shape = 0; shape < 14; ++shape) {
        const Color paint = paints[static_cast<std::size_t>(below(static_cast<int>(paints.size())))];
        const int cx = below(width);
        const int cy = below(height);
        const int rx = 1 + below(1 + width / 3);
        const int ry = 1 + below(1 + height / 3);
        const bool slope = below(4) == 0;
        for (int y = std::max(0, cy - ry); y < std::min(height, cy + ry); ++y) {
            for (int x = std::max(0, cx - rx); x < std::min(width, cx + rx); ++x) {
                if (shape % 2 == 0 &&
                    (x - cx) * (x - cx) * ry * ry + (y - cy) * (y - cy) * rx * rx > rx * rx * ry * ry)
                    continue;
                picture.At(x, y) = slope ? Color{paint.r, std::min(255, paint.g / 2 + x), paint.b} : paint;
            }
        }
    }
    if (noise > 0) {
        const auto noisy = [&](int v) { return std::clamp(v + below(2 * noise + 1) - noise, 0, 255); };
        for (Color& c : picture.pixels) c = {noisy(c.r), noisy(c.g), noisy(c.b)};
    }
    return picture;
}

TEST(ColorReduction, IsTheOneOfThePlainRulesToTheLastBit) {
    struct Case {
        int width, height, colors, noise, wanted, level;
    };
    const Case cases[] = {
        {30, 20, 3, 0, 8, 0},        {64, 40, 5, 3, 4, 0},         {99, 130, 9, 0, 12, -30},
        {100, 101, 6, 6, 8, 5},      {249, 120, 12, 0, 16, 0},     {250, 251, 8, 0, 8, 0},
        {260, 250, 20, 9, 300, -23}, {255, 300, 8, 40, 8, 1000},   {300, 250, 30, 2, 5, 1'000'000},
        {7, 3, 2, 0, 2, 0},          {251, 250, 400, 1, 999, -50}, {250, 250, 3, 128, 6, INT32_MAX},
    };
    std::mt19937 random(20240301);
    for (const Case& c : cases) {
        const ColorPicture picture = AnyPicture(random, c.width, c.height, c.colors, c.noise);
        PlainReduction plain(picture);
        const std::vector<Color> palette = plain.Reduce(c.wanted, c.level);
        const Reduced reduced = Reduce(picture, c.wanted, c.level);
        const std::string where = std::to_string(c.width) + " x " + std::to_string(c.height);
        EXPECT_EQ(reduced.palette, palette) << where;
#ifdef _WIN32  // which enlarges small pictures and shrinks them again by rules of its own
        if (c.width < 250 || c.height < 250) continue;
#endif
        EXPECT_TRUE(reduced.picture == plain.Result()) << where;
        EXPECT_TRUE(reduced.reservedStayed) << where;
    }
}

// Any number of colours, at any distance from each other, in windows of every size at every place.
TEST(ColorReduction, TakesTheMajorityOfAWindowInTheOrderOfClasses) {
    test::ExpectLaw(
        [](unsigned seed) {
            std::mt19937 random(seed);
            const int width = *rc::gen::inRange(1, 14);
            const int height = *rc::gen::inRange(1, 12);
            const int spread = *rc::gen::element(1, 4, 16, 40, 256);
            ColorPicture picture(width, height);
            for (Color& c : picture.pixels)
                c = {static_cast<int>(random() % static_cast<unsigned>(spread)),
                     static_cast<int>(random() % static_cast<unsigned>(spread)), 100};
            const UniqueBitmap bitmap = BitmapOf(picture);
            const IMAGE image = ImageOf(bitmap.Get());
            for (int y = -1; y <= height; ++y) {
                for (int x = -1; x <= width; ++x) {
                    for (const int size : {1, 3, 4, 5, 7, 9, 10}) {
                        const test::PlainClass expected = test::PlainMajority(picture, x, y, size);
                        Color c{-1, -1, -1};
                        const bool taken =
                            CColorReduction::GetMajorityPixel(image, x, y, size, c.r, c.g, c.b) != 0;
                        RC_ASSERT(taken == (expected.count >= size * size / 2));
                        RC_ASSERT(c == (taken ? expected.color : Color{-1, -1, -1}));
                    }
                }
            }
            // The filter takes another way when there are at most 256 colours.
            CColorReduction reduction(bitmap.Get());
            reduction.Majority();
            ColorPicture filtered = picture.Enlarged(4);
            for (int pass = 0; pass < 2; ++pass) {
                const ColorPicture copy = filtered;
                RC_ASSERT(pass == 0 || PictureOf(reduction.MeanImage()) == copy);
                for (int y = 0; y < filtered.height; ++y)
                    for (int x = 0; x < filtered.width; ++x)
                        filtered.At(x, y) = test::PlainMajority(copy, x, y, 5).color;
            }
            RC_ASSERT(PictureOf(reduction.Image()) == filtered);
        },
        60);
}

TEST(ColorReduction, PalettesHaveTheClustersThatTheRulesLeave) {
    struct Case {
        Color right;
        int wanted, level;
        std::size_t clusters;
    };
    // Limits go up from 1200 in steps of 30 and stay below the threshold, which is 3500 at level 0.
    const Color near{118, 104, 109}, far{120, 102, 102};  // 1198 and 1224 from the left half's colour
    for (const Case& c : {Case{near, 5, -30, 1}, Case{far, 5, 0, 1}, Case{far, 5, -23, 2},
                          Case{far, 5, INT32_MIN, 2}, Case{far, 1, -23, 1}, Case{far, 5, INT32_MAX, 1}}) {
        ColorPicture halves(300, 300, {100, 100, 100});
        for (int y = 0; y < 300; ++y)
            for (int x = 150; x < 300; ++x) halves.At(x, y) = c.right;
        EXPECT_EQ(Reduce(halves, c.wanted, c.level).palette.size(), c.clusters)
            << c.right.r << " level " << c.level;
    }
}

TEST(ColorReduction, BlackIsTheNearestToWhiteWhenThereIsNoOther) {
    const UniqueBitmap bitmap = BitmapOf(ColorPicture(300, 300, {255, 255, 255}));
    CColorReduction reduction(bitmap.Get());
    const RGBQUAD black{};
    reduction.ReplaceColors(&black, 1);
    EXPECT_TRUE(PictureOf(reduction.Image()) == ColorPicture(300, 300));
}

TEST(ColorReduction, WithoutAPaletteThePictureStays) {
    std::mt19937 random(7);
    for (const auto& [width, height] : {std::pair{1, 1}, {1, 500}, {260, 260}}) {
        const ColorPicture noise = AnyPicture(random, width, height, 1, 255);
        const Reduced reduced = Reduce(noise, 8, 0);
        EXPECT_TRUE(reduced.palette.empty()) << width;
        EXPECT_TRUE(reduced.picture == noise && reduced.reservedStayed) << width;
    }
    const ColorPicture picture = AnyPicture(random, 50, 50, 5, 0);
    for (const int wanted : {0, -1, INT32_MIN}) {
        EXPECT_TRUE(Reduce(picture, wanted, 0).picture == picture);
        const UniqueBitmap bitmap = BitmapOf(picture);
        int count = 5;
        CColorReduction(bitmap.Get()).DoColorReduction(nullptr, count, 0);
        EXPECT_EQ(count, 0);
        EXPECT_TRUE(PictureOf(ImageOf(bitmap.Get())) == picture);
    }
    const UniqueBitmap monochrome(CImgProc::CreateBitmapBW(40, 40));
    for (const HBITMAP bitmap : {HBITMAP{}, monochrome.Get()}) {
        int count = 1;
        RGBQUAD palette{};
        CColorReduction reduction(bitmap);
        reduction.DoColorReduction(&palette, count, 0);
        reduction.Majority();
        EXPECT_EQ(count, 0);
    }
}

TEST(ColorReduction, SmallPicturesAreWorkedOnEnlarged) {
    const std::tuple<int, int, int> cases[] = {
        {120, 300, 2}, {99, 500, 4}, {100, 100, 2}, {249, 900, 2}, {250, 250, 1}};
    for (const auto& [width, height, factor] : cases) {
        const UniqueBitmap bitmap = BitmapOf(ColorPicture(width, height));
        EXPECT_EQ(CColorReduction(bitmap.Get()).Factor(), factor) << width;
    }
}

TEST(ColorReduction, MeansAndMediansAreThoseOfNinePixels) {
    std::mt19937 random(5);
    const ColorPicture picture = AnyPicture(random, 9, 5, 4, 60);
    const UniqueBitmap bitmap = BitmapOf(picture);
    CColorReduction reduction(bitmap.Get());
    const ColorPicture big = picture.Enlarged(4);
    const auto median = [&](int x, int y, int Color::*channel) {
        std::vector<int> nine;
        for (int k = 0; k < 9; ++k) nine.push_back(big.At(x + k % 3 - 1, y + k / 3 - 1).*channel);
        std::sort(nine.begin(), nine.end());
        return nine[4];
    };
    const ColorPicture means = PictureOf(reduction.MeanImage());
    reduction.CreateMedianImage();
    const ColorPicture medians = PictureOf(reduction.MeanImage());
    for (int y = 0; y < big.height; ++y) {
        for (int x = 0; x < big.width; ++x) {
            ASSERT_EQ(means.At(x, y), test::PlainMean(big, x, y));
            ASSERT_EQ(Of(CColorReduction::GetMeanPixel(reduction.Image(), x, y)), means.At(x, y));
            ASSERT_EQ(medians.At(x, y),
                      (Color{median(x, y, &Color::r), median(x, y, &Color::g), median(x, y, &Color::b)}));
        }
    }
}

// Pixels beyond the image are the nearest ones inside.
TEST(ColorReduction, RingsAndRectanglesEndWhereTheImageDoes) {
    test::ExpectLaw([](unsigned seed) {
        std::mt19937 random(seed);
        ColorPicture picture(9, 7, {5, 6, 7});
        for (Color& c : picture.pixels) c.b += random() % 12 == 0 ? 1 : 0;  // one step away is not the same
        const UniqueBitmap bitmap = BitmapOf(picture);
        const IMAGE image = ImageOf(bitmap.Get());
        for (int y = -1; y <= 7; ++y) {
            for (int x = -1; x <= 9; ++x) {
                for (const int radius : {-1, 0, 1, 2, INT32_MAX}) {
                    const int reach = std::clamp(radius, 0, 20);
                    const Color first = picture.At(x - reach, y - reach);
                    bool same = true;
                    for (int k = -reach; k <= reach; ++k)
                        same = same && picture.At(x + k, y - reach) == first &&
                               picture.At(x + k, y + reach) == first &&
                               picture.At(x - reach, y + k) == first && picture.At(x + reach, y + k) == first;
                    Color c;
                    RC_ASSERT(CColorReduction::AreRoundPixelsSame(image, x, y, radius, c.r, c.g, c.b) ==
                              (same ? 1 : 0));
                    RC_ASSERT(c == first);
                }
            }
        }
        const RECT area = {test::AnyCoordinate(9), test::AnyCoordinate(7), test::AnyCoordinate(9),
                           test::AnyCoordinate(7)};
        CColorReduction::FillRectAreaWithColor(image, area, Quad({1, 2, 3}, 99));
        for (int y = 0; y < 7; ++y) {
            for (int x = 0; x < 9; ++x)
                if (x >= area.left && x < area.right && y >= area.top && y < area.bottom)
                    picture.At(x, y) = {1, 2, 3};
        }
        RC_ASSERT(PictureOf(image) == picture && ReservedBytesStayed(image));
    });
}

TEST(ColorReduction, SinglePixelsAreSetInsideAndReadAnywhere) {
    ColorPicture picture(9, 7, {5, 6, 7});
    const UniqueBitmap bitmap = BitmapOf(picture);
    const IMAGE image = ImageOf(bitmap.Get());
    CColorReduction::SetPixel(image, 8, 0, 1, 2, 3);
    CColorReduction::SetPixel(image, 9, 0, Quad({9, 9, 9}));
    CColorReduction::SetPixel(image, 0, -1, Quad({9, 9, 9}));
    picture.At(8, 0) = {1, 2, 3};
    EXPECT_TRUE(PictureOf(image) == picture && ReservedBytesStayed(image));
    EXPECT_EQ(Of(CColorReduction::GetPixel(image, INT32_MAX, INT32_MIN)), (Color{1, 2, 3}));
    int r = 4, g = 4, b = 4;
    EXPECT_EQ(CColorReduction::GetMajorityPixel({}, 0, 0, 5, r, g, b), 0);
    EXPECT_EQ(CColorReduction::GetMajorityPixel(image, INT32_MAX, INT32_MIN, INT32_MIN, r, g, b), 0);
    CColorReduction::SetMajorityPixel(image, {}, 0, 0, 5);
    EXPECT_TRUE(PictureOf(image) == picture);
    EXPECT_TRUE(CColorReduction::IsAlmostEqual(Quad({0, 0, 0}), Quad({11, 2, 2})));   // 363 + 16 + 8 = 387
    EXPECT_FALSE(CColorReduction::IsAlmostEqual(Quad({0, 0, 0}), Quad({11, 0, 4})));  // 363 + 32 = 395
}

}  // namespace
}  // namespace tarvex
