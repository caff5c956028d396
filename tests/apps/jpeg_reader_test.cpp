// JPEG: colour spaces and orientations. The format loses precision, so values are compared to within
// a few levels, on pictures that are flat in blocks of its transform.
#include "support/precompiled.h"

#include "apps/support/picture_matchers.h"
#include "apps/support/sample_pictures.h"
#include "tarvex/picture.h"

namespace tarvex::app::test {
namespace {

/// Levels by which a flat block may move at best quality: rounding in the colour transform, in the
/// cosine transform and in its inverse.
constexpr int JPEG_TOLERANCE = 3;

/// Blocks of 8 x 8 pixels, each of one colour.
Samples Blocks(int columns, int rows, int channels) {
    const Samples colours = RandomSamples(columns, rows, channels, 8, 11);
    Samples samples{columns * 8, rows * 8, channels, 8, {}};
    for (int y = 0; y < samples.height; ++y) {
        for (int x = 0; x < samples.width; ++x) {
            for (int c = 0; c < channels; ++c) samples.values.push_back(colours.At(x / 8, y / 8, c));
        }
    }
    return samples;
}

std::uint8_t Byte(std::uint32_t value) { return static_cast<std::uint8_t>(value); }

TEST(JpegReader, GreyAndRgbKeepTheirValues) {
    for (const bool isProgressive : {false, true}) {
        for (const auto& [channels, colour, format] :
             {std::tuple(1, JpegColour::Grey, PixelFormat::Grey8), {3, JpegColour::Rgb, PixelFormat::Rgb8}}) {
            SCOPED_TRACE(testing::Message() << channels << " channels, progressive " << isProgressive);
            const Samples samples = Blocks(3, 2, channels);
            const Picture picture = DecodePicture(MakeJpeg(samples, {colour, isProgressive, 0, false}), {});
            EXPECT_EQ(picture.format, format);
            const auto expected = [&samples, last = channels - 1](int x, int y) {
                const auto at = [&](int c) { return Byte(samples.At(x, y, std::min(c, last))); };
                return Rgba{at(0), at(1), at(2), 255};
            };
            EXPECT_TRUE(Shows(picture, 24, 16, expected, JPEG_TOLERANCE));
        }
    }
}

TEST(JpegReader, InkIsTurnedIntoLightWhicheverWayItIsStored) {
    const Samples ink = Blocks(3, 2, 4);
    for (const bool isAdobe : {false, true}) {
        SCOPED_TRACE(isAdobe ? "Adobe marker: 255 is no ink" : "no marker: 255 is full ink");
        const JpegColour colour = isAdobe ? JpegColour::AdobeCmyk : JpegColour::Cmyk;
        const Picture picture = DecodePicture(MakeJpeg(ink, {colour, false, 0, false}), {});
        EXPECT_TRUE(Shows(
            picture, 24, 16,
            [&](int x, int y) {
                const auto light = [&](int channel) {
                    const double stored = ink.At(x, y, channel) / 255.0;
                    return isAdobe ? stored : 1 - stored;
                };
                const auto shown = [&](int channel) {
                    return static_cast<std::uint8_t>(std::lround(255 * light(channel) * light(3)));
                };
                return Rgba{shown(0), shown(1), shown(2), 255};
            },
            JPEG_TOLERANCE));
    }
}

TEST(JpegReader, ThePictureIsTurnedUprightAsTheCameraNoted) {
    const Samples stored = Blocks(3, 2, 1);  // 24 x 16
    struct Case {
        int orientation;
        bool isTurned;                                            // the sides are swapped
        std::function<std::pair<int, int>(int x, int y)> source;  // of the upright picture's pixel
    };
    const Case cases[] = {
        {1, false, [](int x, int y) { return std::pair(x, y); }},
        {2, false, [](int x, int y) { return std::pair(23 - x, y); }},
        {3, false, [](int x, int y) { return std::pair(23 - x, 15 - y); }},
        {4, false, [](int x, int y) { return std::pair(x, 15 - y); }},
        {5, true, [](int x, int y) { return std::pair(y, x); }},
        {6, true, [](int x, int y) { return std::pair(y, 15 - x); }},
        {7, true, [](int x, int y) { return std::pair(23 - y, 15 - x); }},
        {8, true, [](int x, int y) { return std::pair(23 - y, x); }},
        {9, false, [](int x, int y) { return std::pair(x, y); }},
    };
    for (const Case& c : cases) {
        for (const bool isBigEndian : {false, true}) {
            SCOPED_TRACE(testing::Message()
                         << "orientation " << c.orientation << ", big endian " << isBigEndian);
            const FileBytes file = MakeJpeg(stored, {JpegColour::Grey, false, c.orientation, isBigEndian});
            EXPECT_TRUE(Shows(
                DecodePicture(file, {}), c.isTurned ? 16 : 24, c.isTurned ? 24 : 16,
                [&](int x, int y) {
                    const auto [sourceX, sourceY] = c.source(x, y);
                    const std::uint8_t v = Byte(stored.At(sourceX, sourceY, 0));
                    return Rgba{v, v, v, 255};
                },
                JPEG_TOLERANCE));
        }
    }
}

}  // namespace
}  // namespace tarvex::app::test
