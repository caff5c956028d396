// `tarvex reduce` on picture files of every kind, and the picture and palette that it writes.
#include "support/precompiled.h"

#include <array>
#include <filesystem>
#include <set>

#include "apps/support/picture_matchers.h"
#include "apps/support/program.h"
#include "apps/support/sample_pictures.h"
#include "raster/color/plain_reduction.h"
#include "tarvex/png_writer.h"

namespace tarvex::app::test {
namespace {

const Rgba kSand{200, 180, 40};
const Rgba kSea{0, 60, 160};
const Rgba kClear{0, 0, 0, 0};

/// Sea on the left, sand on the right, clear below; in the clear part and along its edge other colours that
/// must not show.
Rgba Shore(int x, int y) {
    if (y >= 30)
        return {static_cast<std::uint8_t>(x * 5), 255, static_cast<std::uint8_t>(y),
                static_cast<std::uint8_t>(x)};
    return x < 25 ? kSea : kSand;
}

Picture MakeShore() {
    Picture picture(40, 50, PixelFormat::Rgba8);
    for (int y = 0; y < 50; ++y) {
        for (int x = 0; x < 40; ++x) {
            const Rgba c = Shore(x, y);
            const std::uint8_t bytes[4] = {c.red, c.green, c.blue, c.alpha};
            std::copy(bytes, bytes + 4, picture.Row(y) + std::ptrdiff_t{x} * 4);
        }
    }
    return picture;
}

Picture ReadBack(const std::string& path) { return ReadPicture(path, {}); }

TEST(Reduce, KeepsColoursAndTransparencyAndTellsThePalette) {
    const TemporaryDirectory directory;
    WriteFile(directory / "in.png", EncodePng(MakeShore()));
    const ProgramResult run = RunTarvex({"reduce", directory / "in.png", "-o", directory / "out.png",
                                         "--colors", "8", "--palette", directory / "palette.json"});
    ASSERT_EQ(run.status, 0) << run.errors;
    EXPECT_TRUE(Shows(ReadBack(directory / "out.png"), 40, 50,
                      [](int x, int y) { return y >= 30 ? kClear : Shore(x, y); }));
    EXPECT_EQ(Json::parse(ReadFile(directory / "palette.json")),
              Json::parse(R"({"width": 40, "height": 50, "transparent": 800, "colors": [
        {"color": "#003ca0", "count": 750, "share": 0.375, "rgb": [0, 60, 160], "cmyk": [255, 159, 0, 95],
         "hls": [277.5, 0.3137, 1]},
        {"color": "#c8b428", "count": 450, "share": 0.225, "rgb": [200, 180, 40], "cmyk": [0, 25, 204, 55],
         "hls": [112.5, 0.4706, 0.6667]}]})"));
}

TEST(Reduce, TakesEveryKindOfPictureAndGivesAtMostTheColoursAskedFor) {
    const TemporaryDirectory directory;
    std::vector<NamedFile> files = OneOfEachKind();
    PngSpec rgb;
    rgb.colour = PngColour::Rgb;
    files.push_back({"sixteen", MakePng(RandomSamples(60, 60, 3, 16, 3), rgb)});
    JpegSpec cmyk;
    cmyk.colour = JpegColour::Cmyk;
    files.push_back({"cmyk", MakeJpeg(RandomSamples(64, 48, 4, 8, 2), cmyk)});
    for (const NamedFile& file : files) {
        const std::string in = directory / "in";
        WriteFile(in, std::string(file.bytes.begin(), file.bytes.end()));
        for (const char* colors : {"1", "3", "256"}) {
            std::filesystem::remove(directory / "out.png");
            const ProgramResult run =
                RunTarvex({"reduce", in, "-o", directory / "out.png", "--colors", colors});
            ASSERT_THAT(run.status, testing::AnyOf(0, 1)) << file.name << ": " << run.errors;
            ASSERT_EQ(std::filesystem::exists(directory / "out.png"), run.status == 0) << file.name;
            if (run.status != 0) {
                EXPECT_THAT(run.errors, testing::AnyOf(testing::HasSubstr("no colours found"),
                                                       testing::HasSubstr("transparent all over")))
                    << file.name;
                continue;
            }
            const Picture picture = ReadBack(directory / "out.png");
            std::set<std::array<int, 3>> seen;
            for (int y = 0; y < picture.height; ++y) {
                for (int x = 0; x < picture.width; ++x) {
                    const Rgba c = picture.At(x, y);
                    if (c.alpha != 0) seen.insert({c.red, c.green, c.blue});
                }
            }
            EXPECT_LE(seen.size(), static_cast<std::size_t>(std::stoi(colors))) << file.name;
        }
    }
}

TEST(Reduce, SaysWhatIsWrong) {
    const TemporaryDirectory directory;
    WriteFile(directory / "dot.pgm", "P5 1 1 255\na");
    WriteFile(directory / "noise.pgm", "P5 9 1 255\nabcdefghi");
    WriteFile(directory / "clear.png", EncodePng(Picture(30, 30, PixelFormat::Rgba8)));
    WriteFile(directory / "text.png", "no picture");
    const std::string out = directory / "out.png";
    for (const auto& [input, colors] : {std::pair("dot.pgm", "1"), {"noise.pgm", "9"}})
        EXPECT_EQ(OutputOf({"reduce", directory / input, "-o", out, "--colors", colors}), "");
    ExpectFailures(
        {
            {"reduce @/noise.pgm -o @/o.png --colors 8", 1, "noise.pgm: no colours found"},
            {"reduce @/clear.png -o @/o.png --colors 8", 1, "clear.png: the picture is transparent all over"},
            {"reduce @/text.png -o @/o.png --colors 8", 3, "text.png: not a picture"},
            {"reduce @/dot.pgm -o @/o.png", 2, "--colors is required"},
            {"reduce @/dot.pgm -o @/o.png --colors 0", 2, "'0' is not a whole number from 1 to 256"},
            {"reduce @/dot.pgm -o @/o.png --colors 257", 2, "'257' is not a whole number from 1 to 256"},
            {"reduce @/dot.pgm -o @/o.png --colors 99999999999999999999", 2, "is not a whole number"},
            {"reduce @/dot.pgm -o @/o.svg --colors 2", 2, "its ending is not .png"},
            {"reduce @/dot.pgm -o @/o.png --colors 2 --palette @/o.png", 2, "the same place"},
            {"reduce @/dot.pgm -o @/o.png --colors 2 --palette @/dot.pgm", 3, "it is the input"},
        },
        directory);
}

/// The plain rules on a drawing with smoothed edges and thin lines.
TEST(Reduce, GivesARealPictureThePlainRulesColours) {
    using tarvex::test::Color;
    const auto colorAt = [](const Picture& picture, int x, int y) {
        const Rgba c = picture.At(x, y);
        return Color{c.red, c.green, c.blue};
    };
    const TemporaryDirectory directory;
    const Picture picture = ReadBack(TARVEX_EXAMPLES "heron.png");
    const ProgramResult run =
        RunTarvex({"reduce", TARVEX_EXAMPLES "heron.png", "-o", directory / "out.png", "--colors", "12"});
    ASSERT_EQ(run.status, 0) << run.errors;
    tarvex::test::ColorPicture plain(picture.width, picture.height);
    for (int y = 0; y < picture.height; ++y)
        for (int x = 0; x < picture.width; ++x) plain.At(x, y) = colorAt(picture, x, y);
    tarvex::test::PlainReduction reduction(plain);
    EXPECT_GE(reduction.Reduce(12, 0).size(), 2U);
    const tarvex::test::ColorPicture expected = reduction.Result();
    const Picture reduced = ReadBack(directory / "out.png");
    for (int y = 0; y < picture.height; ++y)
        for (int x = 0; x < picture.width; ++x)
            ASSERT_EQ(colorAt(reduced, x, y), expected.At(x, y)) << x << ' ' << y;
}

}  // namespace
}  // namespace tarvex::app::test
