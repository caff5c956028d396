// The Netpbm family: plain and raw, any maximum, comments anywhere between numbers.
#include "support/precompiled.h"

#include "apps/support/sample_pictures.h"
#include "tarvex/picture.h"

namespace tarvex::app::test {
namespace {

/// The pixels as text: a slash ends a row; greys are one number, colours three, with an alpha one more.
std::string Text(const Picture& picture) {
    std::string text;
    for (int y = 0; y < picture.height; ++y) {
        for (int x = 0; x < picture.width; ++x) {
            const Rgba c = picture.At(x, y);
            text += (x > 0 ? " " : "") + std::to_string(c.red);
            if (c.red != c.green || c.red != c.blue)
                text += "," + std::to_string(c.green) + "," + std::to_string(c.blue);
            if (c.alpha != 255) text += "," + std::to_string(c.alpha);
        }
        text += "/";
    }
    return text;
}

/// Bytes of which some may be zero.
template <std::size_t size>
std::string Raw(const char (&bytes)[size]) {
    return {bytes, size - 1};
}

TEST(NetpbmReader, EveryKindDecodesAsTheFormatDefinesIt) {
    using enum PixelFormat;
    const struct {
        const char* name;
        std::string file;
        PixelFormat format;
        const char* pixels;
    } cases[] = {
        {"plain bits, with and without space", "P1 3 2\n1 0 1\n010", Bit1, "0 255 0/255 0 255/"},
        {"comments between all numbers", "P1#c\n#\n3# w\n#h\n2\n#x\n1 0#y\n1 010", Bit1,
         "0 255 0/255 0 255/"},
        {"raw bits, rows padded to bytes", Raw("P4\n9 2\n\x80\xff\x7f\x00"), Bit1,
         "0 255 255 255 255 255 255 255 0/255 0 0 0 0 0 0 0 255/"},
        {"plain grey, scaled to the nearest", "P2 4 1 7 0 3 4 7", Grey8, "0 109 146 255/"},
        {"plain grey, 16 bits", "P2\n3 1 65535\n0 128 65535\n", Grey8, "0 0 255/"},
        {"plain colour", "P3 1 2 255 1 2 3 255 0 9", Rgb8, "1,2,3/255,0,9/"},
        {"raw grey", "P5 3 1 255\nabc", Grey8, "97 98 99/"},
        {"raw grey, small maximum", Raw("P5 2 1 1\n\x00\x01"), Grey8, "0 255/"},
        {"raw grey, 16 bits, most significant byte first", Raw("P5 3 1 65535\n\x80\x80\x00\xff\xff\xff"),
         Grey8, "128 1 255/"},
        {"raw pixels may look like a comment", "P5 2 1 255\n#\n", Grey8, "35 10/"},
        {"raw colour", "P6 2 1 255\nabcdef", Rgb8, "97,98,99 100,101,102/"},
        {"pam grey and alpha",
         "P7\nWIDTH 1\nHEIGHT 2\nDEPTH 2\nMAXVAL 255\nTUPLTYPE GRAYSCALE_ALPHA\nENDHDR\nabcd", GreyAlpha8,
         "97,98/99,100/"},
        {"pam colour and alpha, lines in any order",
         "P7\nMAXVAL 255\n# c\nDEPTH 4\nHEIGHT 1\nWIDTH 1\nENDHDR\nabcd", Rgba8, "97,98,99,100/"},
        {"pam bits: 1 is white", Raw("P7\nWIDTH 2\nHEIGHT 1\nDEPTH 1\nMAXVAL 1\nENDHDR\n\x00\x01"), Grey8,
         "0 255/"},
        {"what follows the first picture is ignored", "P5 1 1 255\naP5 1 1 255\nb", Grey8, "97/"},
    };
    for (const auto& c : cases) {
        const Picture picture = DecodePicture(BytesOf(c.file), {});
        EXPECT_EQ(picture.format, c.format) << c.name;
        EXPECT_EQ(Text(picture), c.pixels) << c.name;
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
    EXPECT_EQ(picture.At(3998, 3999), (Rgba{0, 0, 0, 255}));
    EXPECT_EQ(picture.At(3999, 3999), (Rgba{255, 255, 255, 255}));
}

}  // namespace
}  // namespace tarvex::app::test
