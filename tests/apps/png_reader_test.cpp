// PNG: every colour type and depth, interlaced or not, gives the pixels that went in.
#include "support/precompiled.h"

#include "apps/support/picture_matchers.h"
#include "apps/support/sample_pictures.h"
#include "tarvex/picture.h"

namespace tarvex::app::test {
namespace {

struct PngCase {
    const char* name;
    PngColour colour;
    int depth;
    PixelFormat expectedFormat;
};

int Channels(PngColour colour) {
    switch (colour) {
        case PngColour::Rgb:
            return 3;
        case PngColour::Rgba:
            return 4;
        case PngColour::GreyAlpha:
            return 2;
        default:
            return 1;
    }
}

/// The 8-bit value nearest to a sample, by real arithmetic.
std::uint8_t Eight(std::uint32_t value, int depth) {
    return static_cast<std::uint8_t>(std::lround(value * 255.0 / ((1u << depth) - 1)));
}

Rgba ColourOf(const Samples& s, PngColour colour, int x, int y) {
    const auto at = [&](int channel) { return Eight(s.At(x, y, channel), s.depth); };
    switch (colour) {
        case PngColour::Grey:
            return {at(0), at(0), at(0), 255};
        case PngColour::GreyAlpha:
            return {at(0), at(0), at(0), at(1)};
        case PngColour::Rgb:
            return {at(0), at(1), at(2), 255};
        default:
            return {at(0), at(1), at(2), at(3)};
    }
}

TEST(PngReader, EveryColourTypeAndDepthDecodesExactly) {
    const PngCase cases[] = {
        {"grey 1", PngColour::Grey, 1, PixelFormat::Bit1},
        {"grey 2", PngColour::Grey, 2, PixelFormat::Grey8},
        {"grey 4", PngColour::Grey, 4, PixelFormat::Grey8},
        {"grey 8", PngColour::Grey, 8, PixelFormat::Grey8},
        {"grey 16", PngColour::Grey, 16, PixelFormat::Grey8},
        {"grey alpha 8", PngColour::GreyAlpha, 8, PixelFormat::GreyAlpha8},
        {"grey alpha 16", PngColour::GreyAlpha, 16, PixelFormat::GreyAlpha8},
        {"rgb 8", PngColour::Rgb, 8, PixelFormat::Rgb8},
        {"rgb 16", PngColour::Rgb, 16, PixelFormat::Rgb8},
        {"rgba 8", PngColour::Rgba, 8, PixelFormat::Rgba8},
        {"rgba 16", PngColour::Rgba, 16, PixelFormat::Rgba8},
    };
    for (const PngCase& c : cases) {
        for (const Interlace interlace : {Interlace::None, Interlace::Adam7}) {
            for (const int width : {1, 7, 33, 40}) {
                SCOPED_TRACE(testing::Message()
                             << c.name << (interlace == Interlace::None ? "" : ", interlaced") << ", width "
                             << width);
                const Samples samples = RandomSamples(width, 11, Channels(c.colour), c.depth, 7);
                const Picture picture = DecodePicture(MakePng(samples, {c.colour, interlace, {}, {}}), {});
                EXPECT_EQ(picture.format, c.expectedFormat);
                EXPECT_TRUE(Shows(picture, width, 11,
                                  [&](int x, int y) { return ColourOf(samples, c.colour, x, y); }));
            }
        }
    }
}

TEST(PngReader, ATransparentColourMakesItsPixelsTransparentAndNoOthers) {
    for (const int depth : {1, 2, 4, 8, 16}) {
        SCOPED_TRACE(depth);
        const Samples samples = RandomSamples(9, 9, 1, depth, 8);
        const std::uint32_t key = samples.At(4, 4, 0);
        const Picture picture =
            DecodePicture(MakePng(samples, {PngColour::Grey, Interlace::None, {}, {key}}), {});
        EXPECT_EQ(picture.format, PixelFormat::GreyAlpha8);
        EXPECT_TRUE(Shows(picture, 9, 9, [&](int x, int y) {
            Rgba colour = ColourOf(samples, PngColour::Grey, x, y);
            if (samples.At(x, y, 0) == key) colour.alpha = 0;
            return colour;
        }));
    }
    const Samples samples = RandomSamples(9, 9, 3, 8, 8);
    const std::vector<std::uint32_t> key = {samples.At(2, 3, 0), samples.At(2, 3, 1), samples.At(2, 3, 2)};
    const Picture picture = DecodePicture(MakePng(samples, {PngColour::Rgb, Interlace::None, {}, key}), {});
    EXPECT_EQ(picture.At(2, 3).alpha, 0);
    EXPECT_EQ(picture.At(3, 3).alpha, 255);
}

TEST(PngReader, APaletteKeepsItsColoursInTheSmallestFormat) {
    const std::vector<Rgba> greys = {{3, 3, 3, 255}, {250, 250, 250, 255}, {0, 0, 0, 255}, {77, 77, 77, 255}};
    const std::vector<Rgba> colours = {{3, 4, 5, 255}, {250, 0, 0, 255}, {0, 0, 255, 255}, {77, 77, 77, 255}};
    const std::vector<Rgba> sheer = {{3, 4, 5, 0}, {250, 0, 0, 255}, {0, 0, 255, 100}, {77, 77, 77, 255}};
    const std::pair<const std::vector<Rgba>*, PixelFormat> palettes[] = {
        {&greys, PixelFormat::Grey8}, {&colours, PixelFormat::Rgb8}, {&sheer, PixelFormat::Rgba8}};
    for (const auto& [palette, format] : palettes) {
        for (const int depth : {1, 2, 4, 8}) {
            SCOPED_TRACE(testing::Message() << "depth " << depth << ", format " << static_cast<int>(format));
            Samples samples = RandomSamples(19, 5, 1, depth, 9);
            for (std::uint32_t& value : samples.values) value %= 4;
            std::vector<Rgba> used = *palette;
            if (depth == 1) used.resize(2);
            const Picture picture =
                DecodePicture(MakePng(samples, {PngColour::Indexed, Interlace::None, used, {}}), {});
            EXPECT_EQ(picture.format, format);
            EXPECT_TRUE(Shows(picture, 19, 5, [&](int x, int y) { return used[samples.At(x, y, 0)]; }));
        }
    }
}

TEST(PngReader, AnIndexBeyondThePaletteIsDamage) {
    Samples samples = RandomSamples(8, 2, 1, 4, 9);
    samples.values[5] = 7;
    const std::vector<Rgba> three(3, Rgba{1, 2, 3, 255});
    EXPECT_THROW(DecodePicture(MakePng(samples, {PngColour::Indexed, Interlace::None, three, {}}), {}),
                 PictureError);
}

}  // namespace
}  // namespace tarvex::app::test
