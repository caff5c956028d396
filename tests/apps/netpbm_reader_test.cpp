// The Netpbm family: plain and raw, any maximum, comments anywhere between numbers.
#include "support/precompiled.h"

#include "apps/support/picture_matchers.h"
#include "apps/support/sample_pictures.h"
#include "tarvex/picture.h"

namespace tarvex::app::test {
namespace {

constexpr Rgba Grey(std::uint8_t v) { return {v, v, v, 255}; }

struct NetpbmCase {
    const char* name;
    std::string file;
    PixelFormat format;
    int width;
    int height;
    std::vector<Rgba> pixels;  // row by row
};

TEST(NetpbmReader, EveryKindDecodesAsTheFormatDefinesIt) {
    const Rgba black = Grey(0);
    const Rgba white = Grey(255);
    const NetpbmCase cases[] = {
        {"plain bits, with and without space",
         "P1 3 2\n1 0 1\n010",
         PixelFormat::Bit1,
         3,
         2,
         {black, white, black, white, black, white}},
        {"comments between all numbers",
         "P1#c\n#\n3# w\n#h\n2\n#x\n1 0#y\n1 010",
         PixelFormat::Bit1,
         3,
         2,
         {black, white, black, white, black, white}},
        {"raw bits, rows padded to bytes",
         std::string("P4\n9 2\n\x80\xff\x7f\x00", 11),
         PixelFormat::Bit1,
         9,
         2,
         {black, white, white, white, white, white, white, white, black, white, black, black, black, black,
          black, black, black, white}},
        {"plain grey, scaled to the nearest",
         "P2 4 1 7 0 3 4 7",
         PixelFormat::Grey8,
         4,
         1,
         {Grey(0), Grey(109), Grey(146), Grey(255)}},
        {"plain grey, 16 bits",
         "P2\n3 1 65535\n0 128 65535\n",
         PixelFormat::Grey8,
         3,
         1,
         {Grey(0), Grey(0), Grey(255)}},
        {"plain colour",
         "P3 1 2 255 1 2 3 255 0 9",
         PixelFormat::Rgb8,
         1,
         2,
         {{1, 2, 3, 255}, {255, 0, 9, 255}}},
        {"raw grey", "P5 3 1 255\nabc", PixelFormat::Grey8, 3, 1, {Grey('a'), Grey('b'), Grey('c')}},
        {"raw grey, small maximum",
         std::string("P5 2 1 1\n\x00\x01", 11),
         PixelFormat::Grey8,
         2,
         1,
         {black, white}},
        {"raw grey, 16 bits, most significant byte first",
         std::string("P5 3 1 65535\n\x80\x80\x00\xff\xff\xff", 19),
         PixelFormat::Grey8,
         3,
         1,
         {Grey(128), Grey(1), Grey(255)}},
        {"raw pixels may look like a comment",
         "P5 2 1 255\n#\n",
         PixelFormat::Grey8,
         2,
         1,
         {Grey('#'), Grey('\n')}},
        {"raw colour",
         "P6 2 1 255\nabcdef",
         PixelFormat::Rgb8,
         2,
         1,
         {{'a', 'b', 'c', 255}, {'d', 'e', 'f', 255}}},
        {"pam grey and alpha",
         "P7\nWIDTH 1\nHEIGHT 2\nDEPTH 2\nMAXVAL 255\nTUPLTYPE GRAYSCALE_ALPHA\nENDHDR\nabcd",
         PixelFormat::GreyAlpha8,
         1,
         2,
         {{'a', 'a', 'a', 'b'}, {'c', 'c', 'c', 'd'}}},
        {"pam colour and alpha, lines in any order",
         "P7\nMAXVAL 255\n# c\nDEPTH 4\nHEIGHT 1\nWIDTH 1\nENDHDR\nabcd",
         PixelFormat::Rgba8,
         1,
         1,
         {{'a', 'b', 'c', 'd'}}},
        {"pam bits: 1 is white",
         std::string("P7\nWIDTH 2\nHEIGHT 1\nDEPTH 1\nMAXVAL 1\nENDHDR\n\x00\x01", 46),
         PixelFormat::Grey8,
         2,
         1,
         {black, white}},
        {"what follows the first picture is ignored",
         "P5 1 1 255\naP5 1 1 255\nb",
         PixelFormat::Grey8,
         1,
         1,
         {Grey('a')}},
    };
    for (const NetpbmCase& c : cases) {
        SCOPED_TRACE(c.name);
        const Picture picture = DecodePicture(BytesOf(c.file), {});
        EXPECT_EQ(picture.format, c.format);
        EXPECT_TRUE(Shows(picture, c.width, c.height,
                          [&](int x, int y) { return c.pixels[static_cast<std::size_t>(y * c.width + x)]; }));
    }
}

TEST(NetpbmReader, DamageIsAnError) {
    for (const char* file : {
             "P1 2 1 2 0",                                                 // not a bit
             "P2 1 1 255 256",                                             // above the maximum
             "P2 1 1 255 99999999999999999999",                            // above any
             "P2 1 1 255 -1",                                              // no number
             "P2 1 1 0 0",                                                 // no range of values
             "P2 1 1 65536 0",                                             // too wide a range
             "P5 1 1 3\n\xff",                                             // raw, above the maximum
             "P5 2 1 65535\nabc",                                          // half a value
             "P5 1 1 255x",                                                // no white space before the pixels
             "P6 x 1 255\nabc",                                            // no width
             "P7\nWIDTH 1\nHEIGHT 1\nDEPTH 5\nMAXVAL 255\nENDHDR\nabcde",  // no such pixel
             "P7\nWIDTH 1\nHEIGHT 1\nDEPTH 1\nENDHDR\na",                  // no maximum
             "P7\nCOLOUR 1\nENDHDR\na",                                    // no such line
         }) {
        EXPECT_THROW(DecodePicture(BytesOf(file), {}), PictureError) << file;
    }
}

TEST(NetpbmReader, ALargeBitmapTakesOneBitAPixel) {
    FileBytes file = BytesOf("P4 4000 4000\n");
    file.resize(file.size() + std::size_t{500} * 4000, 0xaa);
    const Picture picture = DecodePicture(file, {});
    EXPECT_EQ(picture.pixels.size(), 500u * 4000u);
    EXPECT_EQ(picture.At(3998, 3999), Grey(0));
    EXPECT_EQ(picture.At(3999, 3999), Grey(255));
}

}  // namespace
}  // namespace tarvex::app::test
