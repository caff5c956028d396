// BMP: every depth, header and compression that is read gives the pixels that went in.
#include "support/precompiled.h"

#include <sstream>

#include "apps/support/picture_matchers.h"
#include "apps/support/sample_pictures.h"
#include "tarvex/picture.h"

namespace tarvex::app::test {
namespace {

const Rgba BLACK{0, 0, 0, 255};
const Rgba WHITE{255, 255, 255, 255};
const Rgba RED{255, 0, 0, 255};
const Rgba GREEN{0, 255, 0, 255};
const Rgba BLUE{0, 0, 255, 255};

std::vector<Rgba> Greys(std::size_t count) {
    std::vector<Rgba> greys;
    for (std::size_t i = 0; i < count; ++i) {
        const auto v = static_cast<std::uint8_t>(255 - i);
        greys.push_back({v, v, v, 255});
    }
    return greys;
}

std::vector<Rgba> Colours(std::size_t count) {
    std::vector<Rgba> colours = Greys(count);
    for (Rgba& c : colours) c.blue = static_cast<std::uint8_t>(c.blue ^ 0x55);
    return colours;
}

TEST(BmpReader, IndexedPixelsOfEveryDepthHeaderAndDirection) {
    for (const unsigned bits : {1u, 2u, 4u, 8u}) {
        for (const std::uint32_t headerSize : {12u, 40u, 56u, 64u, 108u, 124u}) {
            for (const bool isTopDown : {false, true}) {
                for (const bool isGrey : {false, true}) {
                    if (isTopDown && headerSize == 12) continue;  // that header's height has no sign
                    SCOPED_TRACE(testing::Message() << bits << " bits, header " << headerSize << ", top-down "
                                                    << isTopDown << ", grey " << isGrey);
                    const std::size_t count = std::size_t{1} << bits;
                    const std::vector<Rgba> palette = isGrey ? Greys(count) : Colours(count);
                    const Samples samples = RandomSamples(21, 6, 1, static_cast<int>(bits), 13);
                    const Picture picture = DecodePicture(
                        MakeBmp(21, 6, samples.values, {bits, headerSize, 0, isTopDown, palette, {}}), {});
                    EXPECT_EQ(picture.format, isGrey ? PixelFormat::Grey8 : PixelFormat::Rgb8);
                    EXPECT_TRUE(
                        Shows(picture, 21, 6, [&](int x, int y) { return palette[samples.At(x, y, 0)]; }));
                }
            }
        }
    }
}

TEST(BmpReader, BlackAndWhiteStaysOneBitAPixelInEitherOrderOfThePalette) {
    for (const std::vector<Rgba>& palette : {std::vector{BLACK, WHITE}, std::vector{WHITE, BLACK}}) {
        for (const int width : {1, 8, 31, 32, 33}) {
            const Samples samples = RandomSamples(width, 5, 1, 1, 14);
            const Picture picture =
                DecodePicture(MakeBmp(width, 5, samples.values, {1, 40, 0, false, palette, {}}), {});
            EXPECT_EQ(picture.format, PixelFormat::Bit1);
            EXPECT_TRUE(Shows(picture, width, 5, [&](int x, int y) { return palette[samples.At(x, y, 0)]; }));
            for (int bit = width; bit < static_cast<int>(picture.stride) * 8; ++bit) {
                EXPECT_EQ(picture.At(bit, 4), BLACK) << "padding bit " << bit;
            }
        }
    }
}

TEST(BmpReader, ColourFieldsOfEveryWidthAreScaledToTheNearestLevel) {
    const struct {
        const char* name;
        BmpSpec spec;
        std::vector<std::uint32_t> masks;  // as they apply, given in the file or not
    } cases[] = {
        {"16, implied", {16, 40, 0, false, {}, {}}, {0x7c00, 0x3e0, 0x1f}},
        {"24", {24, 40, 0, false, {}, {}}, {0xff0000, 0xff00, 0xff}},
        {"24, core header", {24, 12, 0, false, {}, {}}, {0xff0000, 0xff00, 0xff}},
        {"32, implied: the fourth byte means nothing", {32, 40, 0, true, {}, {}}, {0xff0000, 0xff00, 0xff}},
        {"16, 5-6-5", {16, 40, 3, false, {}, {0xf800, 0x7e0, 0x1f}}, {}},
        {"16, 4-4-4-4 in a long header", {16, 56, 3, false, {}, {0xf00, 0xf0, 0xf, 0xf000}}, {}},
        {"16, alpha fields", {16, 40, 6, false, {}, {0x7c00, 0x3e0, 0x1f, 0x8000}}, {}},
        {"32, 10-10-10", {32, 40, 3, false, {}, {0x3ff00000, 0xffc00, 0x3ff}}, {}},
        {"32, rgba in a long header", {32, 124, 3, true, {}, {0xff, 0xff00, 0xff0000, 0xff000000}}, {}},
        {"32, 11-11-10", {32, 108, 3, false, {}, {0xffe00000, 0x1ffc00, 0x3ff, 0}}, {}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const std::vector<std::uint32_t>& masks = c.masks.empty() ? c.spec.masks : c.masks;
        std::vector<std::uint32_t> pixels;
        std::mt19937 random(15);
        for (int i = 0; i < 9 * 7; ++i) {
            const auto value = static_cast<std::uint32_t>(random());
            pixels.push_back(c.spec.bits == 32 ? value : value & ((1u << c.spec.bits) - 1));
        }
        const auto channel = [&](std::uint32_t pixel, std::size_t i) {
            const double share = static_cast<double>(pixel & masks[i]) / static_cast<double>(masks[i]);
            return static_cast<std::uint8_t>(std::lround(255 * share));
        };
        EXPECT_TRUE(Shows(DecodePicture(MakeBmp(9, 7, pixels, c.spec), {}), 9, 7, [&](int x, int y) {
            const std::uint32_t pixel = pixels[static_cast<std::size_t>(y * 9 + x)];
            const bool hasAlpha = masks.size() == 4 && masks[3] != 0;
            return Rgba{channel(pixel, 0), channel(pixel, 1), channel(pixel, 2),
                        hasAlpha ? channel(pixel, 3) : std::uint8_t{255}};
        }));
    }
}

TEST(BmpReader, AnAlphaChannelThatIsZeroEverywhereIsIgnored) {
    const BmpSpec spec{32, 124, 3, false, {}, {0xff0000, 0xff00, 0xff, 0xff000000}};
    EXPECT_EQ(DecodePicture(MakeBmp(2, 1, {0xff0000, 0xff}, spec), {}).At(0, 0), RED);
    EXPECT_EQ(DecodePicture(MakeBmp(2, 1, {0xff0000, 0x010000ff}, spec), {}).At(0, 0).alpha, 0);
}

/// The bytes of hexadecimal digits, two each; spaces mean nothing.
FileBytes Hex(const std::string& digits) {
    FileBytes bytes;
    std::istringstream pairs(digits);
    for (std::string word; pairs >> word;)
        for (std::size_t i = 0; i < word.size(); i += 2)
            bytes.push_back(static_cast<std::uint8_t>(std::stoi(word.substr(i, 2), nullptr, 16)));
    return bytes;
}

TEST(BmpReader, RunLengthsDecodeAsTheFormatDefinesThem) {
    const struct {
        const char* name;
        unsigned bits;
        const char* data;
        std::string rows;  // from the top, a digit a pixel; empty when the data is damaged
    } cases[] = {
        {"runs, from the bottom up", 8, "0401 0000 0202 0203 0000 0400 0001", "0000/2233/1111"},
        {"literals are padded to 16 bits", 8, "0003 0102 0300 0101 0000 0004 0302 0100 0000 0402 0001",
         "2222/3210/1231"},
        {"a move skips with colour 0", 8, "0103 0002 0101 0201 0001", "0000/0011/3000"},
        {"the picture may end before its rows do", 8, "0201 0001", "0000/0000/1100"},
        {"the closing mark may be missing", 8, "0401 0000 0402 0000 0403", "3333/2222/1111"},
        {"a run stops at the end of its row", 8, "0901 0000 0902 0001", "0000/2222/1111"},
        {"4 bits: halves alternate", 4, "0412 0000 0330 0110 0000 0003 1230 0001", "1230/3031/1212"},
        {"4 bits: three literals need no padding", 4, "0003 1230 0001", "0000/0000/1230"},
        {"4 bits: five literals need one byte of padding", 4, "0005 1230 1000 0000 0411 0001",
         "0000/1111/1230"},
        {"the data ends inside a run", 8, "0401 0000 04", ""},
        {"the data ends between rows", 8, "0401 0000 0402 0000", ""},
        {"a move leaves the picture upwards", 8, "0002 0003 0001", ""},
        {"a move leaves the picture to the right", 8, "0201 0002 0300 0001", ""},
        {"a colour beyond the palette", 8, "0404 0001", ""},
    };
    const std::vector<Rgba> palette = {RED, GREEN, BLUE, WHITE};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const FileBytes file =
            MakeBmpAround(4, 3, Hex(c.data), {c.bits, 40, c.bits == 8 ? 1u : 2u, false, palette, {}});
        if (c.rows.empty()) {
            EXPECT_THROW(DecodePicture(file, {}), PictureError);
            continue;
        }
        EXPECT_TRUE(Shows(DecodePicture(file, {}), 4, 3, [&](int x, int y) {
            return palette[static_cast<std::size_t>(c.rows[static_cast<std::size_t>(5 * y + x)] - '0')];
        }));
    }
}

TEST(BmpReader, HeadersThatMakeNoSenseAreRefused) {
    const BmpSpec sound{24, 40, 0, false, {}, {}};
    const struct {
        const char* what;
        BmpSpec spec;
        std::size_t at = 0;  // of a byte that is changed
        std::uint8_t value = 'B';
    } cases[] = {
        {"length of the header", sound, 14, 20},
        {"25 bits", sound, 28, 25},
        {"pixels in the header", sound, 10, 20},
        {"negative width", sound, 21, 0x80},
        {"runs of 24-bit pixels", {24, 40, 1, false, {}, {}}},
        {"a PNG inside", {24, 40, 5, false, {}, {}}},
        {"overlapping fields", {32, 40, 3, false, {}, {0xff, 0xff, 0xff00}}},
        {"scattered fields", {32, 40, 3, false, {}, {0xf0f, 0xf0, 0xf000}}},
        {"fields beyond the pixel", {16, 40, 3, false, {}, {0x1f0000, 0xf0, 0xf}}},
    };
    EXPECT_NO_THROW(DecodePicture(MakeBmp(2, 2, {0, 0, 0, 0}, sound), {}));
    for (const auto& c : cases) {
        FileBytes file = MakeBmp(2, 2, {0, 0, 0, 0}, c.spec);
        file[c.at] = c.value;
        EXPECT_THROW(DecodePicture(file, {}), PictureError) << c.what;
    }
}

}  // namespace
}  // namespace tarvex::app::test
