// Colour spaces: the fixed points of the contract, and the way there and back.
#include "support/precompiled.h"

#include "tarvex/colors.h"

namespace tarvex {
namespace {

using Ints = std::vector<int>;
using Doubles = std::vector<double>;

Ints Cmyk(int r, int g, int b) {
    Ints v{-1, -1, -1, -1};
    RGB2CMYK(r, g, b, v[0], v[1], v[2], v[3]);
    return v;
}

Doubles Hls(int r, int g, int b) {
    Doubles v{-1, -1, -1};
    RGB2HLS(r, g, b, v[0], v[1], v[2]);
    return v;
}

Ints Rgb(double h, double l, double s) {
    Ints v{-1, -1, -1};
    HLS2RGB(h, l, s, v[0], v[1], v[2]);
    return v;
}

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

TEST(ColorSpaces, CmykTruncatesAndIsClamped) {
    const std::pair<Ints, Ints> cases[] = {
        {{0, 0, 0}, {0, 0, 0, 255}},         {{255, 255, 255}, {0, 0, 0, 0}},
        {{255, 0, 0}, {0, 255, 255, 0}},     {{128, 128, 128}, {0, 0, 0, 127}},
        {{200, 100, 50}, {0, 127, 191, 55}}, {{300, 0, -500}, {0, 255, 255, 0}},
        {{1, 0, 0}, {0, 255, 255, 254}},     {{INT32_MIN, 7, INT32_MAX}, {255, 254, 0, 0}},
    };
    for (const auto& [rgb, cmyk] : cases)
        EXPECT_EQ(Cmyk(rgb[0], rgb[1], rgb[2]), cmyk) << testing::PrintToString(rgb);
}

TEST(ColorSpaces, HuesAreShiftedBySixtyDegrees) {
    const std::pair<Ints, Doubles> cases[] = {
        {{255, 0, 0}, {60, 0.5, 1}},
        {{0, 255, 0}, {180, 0.5, 1}},
        {{0, 0, 255}, {300, 0.5, 1}},
        {{0, 0, 0}, {60, 0, 0}},
        {{255, 255, 255}, {60, 1, 0}},
        {{255, 0, 255}, {0, 0.5, 1}},
        {{255, 255, 0}, {120, 0.5, 1}},
        {{300, -5, 0}, {60, 0.5, 1}},
        {{INT32_MIN, INT32_MAX, 0}, {180, 0.5, 1}},
    };
    for (const auto& [rgb, hls] : cases) {
        EXPECT_EQ(Hls(rgb[0], rgb[1], rgb[2]), hls) << testing::PrintToString(rgb);
        if (rgb[0] >= 0 && rgb[0] <= 255) {
            EXPECT_EQ(Rgb(hls[0], hls[1], hls[2]), rgb);
        }
    }
    EXPECT_THAT(Hls(128, 128, 128), testing::ElementsAre(60, testing::DoubleNear(0.50196, 1e-5), 0));
}

TEST(ColorSpaces, ColorsComeBackFromHueLightnessSaturation) {
    for (int r = 0; r < 256; r += 5) {
        for (int g = 0; g < 256; g += 3) {
            for (int b = 0; b < 256; b += 5) {
                const Doubles hls = Hls(r, g, b);
                ASSERT_EQ(Rgb(hls[0], hls[1], hls[2]), (Ints{r, g, b}));
            }
        }
    }
}

TEST(ColorSpaces, WhatIsOutOfRangeIsClamped) {
    EXPECT_EQ(Rgb(-1e300, 0.5, 7), (Ints{255, 0, 255}));
    EXPECT_EQ(Rgb(kInfinity, 0.5, 1), Rgb(360, 0.5, 1));
    EXPECT_EQ(Rgb(kNaN, 0.5, 1), Rgb(0, 0.5, 1));
    EXPECT_EQ(Rgb(60, kNaN, 1), (Ints{0, 0, 0}));
    EXPECT_EQ(Rgb(60, 2, kNaN), (Ints{255, 255, 255}));
    EXPECT_EQ(Rgb(120, 0.25, 1), (Ints{128, 128, 0}));
}

}  // namespace
}  // namespace tarvex
