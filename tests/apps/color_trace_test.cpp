// `tarvex trace --mode color`: what is painted, in which colours, and what the options may be.
#include "support/precompiled.h"

#include <regex>

#include "apps/support/program.h"
#include "apps/support/sample_pictures.h"
#include "tarvex/png_writer.h"

namespace tarvex::app::test {
namespace {

/// A flag: blue with a red square and a black line of one pixel; its right part transparent, a lone green
/// pixel in it.
Picture MakeFlag() {
    Picture picture(60, 40, PixelFormat::Rgba8);
    for (int y = 0; y < 40; ++y) {
        for (int x = 0; x < 60; ++x) {
            Rgba c{20, 40, 200, 255};
            if (x >= 10 && x < 25 && y >= 10 && y < 25) c = {220, 30, 20, 255};
            if (y == 32 && x > 4 && x < 40) c = {0, 0, 0, 255};
            if (x >= 45) c = {0, 200, 0, static_cast<std::uint8_t>(x == 50 && y == 20 ? 255 : 0)};
            const std::uint8_t bytes[4] = {c.red, c.green, c.blue, c.alpha};
            std::copy(bytes, bytes + 4, picture.Row(y) + std::ptrdiff_t{x} * 4);
        }
    }
    return picture;
}

std::vector<std::string> Fills(const std::string& svg) {
    const std::regex fill("fill=\"([^\"]*)\"| (d)=\"");  // a path without a fill is black
    std::vector<std::string> fills;
    bool named = false;
    for (std::sregex_iterator i(svg.begin(), svg.end(), fill), end; i != end; ++i) {
        if ((*i)[1].matched) fills.push_back((*i)[1]);
        if ((*i)[2].matched && !named) fills.push_back("#000");
        named = (*i)[1].matched;
    }
    return fills;
}

TEST(ColorTrace, PaintsTheColoursOfThePictureFromLargeToSmall) {
    const TemporaryDirectory directory;
    WriteFile(directory / "in.png", EncodePng(MakeFlag()));
    const std::string out = directory / "out.svg";
    const auto trace = [&](std::vector<std::string> more) {
        std::vector<std::string> arguments{"trace", directory / "in.png", "-o", out, "--mode", "color"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        const ProgramResult run = RunTarvex(arguments);
        EXPECT_EQ(run.status, 0) << run.errors;
        return ReadFile(out);
    };
    const std::string stacked = trace({"--colors", "5"});
    EXPECT_THAT(stacked, testing::HasSubstr("width=\"60\" height=\"40\" viewBox=\"0 0 60 40\""));
    EXPECT_THAT(Fills(stacked), testing::ElementsAre("#1428c8", "#dc1e14", "#000"));
    EXPECT_THAT(stacked, testing::HasSubstr("m0 0h45v40H0z"));  // nothing is cut out, nor is there a ground
    EXPECT_THAT(Fills(trace({"--colors", "5", "--cutout"})),
                testing::UnorderedElementsAre("#1428c8", "#dc1e14", "#000"));
    EXPECT_THAT(Fills(trace({"--colors", "2"})), testing::SizeIs(testing::Le(3)));
    // The lone pixel is there when specks are asked for, in the colour that is nearest or one of its own.
    const std::string withSpecks = trace({"--colors", "5", "--min-points", "0"});
    EXPECT_EQ(std::count(withSpecks.begin(), withSpecks.end(), 'z'), 4);
}

TEST(ColorTrace, SaysWhatIsWrong) {
    const TemporaryDirectory directory;
    WriteFile(directory / "in.png", EncodePng(MakeFlag()));
    WriteFile(directory / "clear.png", EncodePng(Picture(30, 30, PixelFormat::Rgba8)));
    WriteFile(directory / "dot.pgm", "P5 1 1 255\na");
    ExpectFailures(
        {
            {"trace @/in.png -o @/o.svg --mode color --colors 0", 2,
             "'0' is not a whole number from 1 to 256"},
            {"trace @/in.png -o @/o.svg --mode color --colors 1000", 2, "'1000' is not"},
            {"trace @/in.png -o @/o.svg --mode color --threshold 3", 2,
             "--threshold: is for --mode outline or centerline"},
            {"trace @/in.png -o @/o.svg --mode color --detail 2", 2, "--detail: is for --mode outline"},
            {"trace @/in.png -o @/o.svg --mode color --format json", 2, "color is written as svg only"},
            {"trace @/in.png -o @/o.svg --colors 3", 2, "--colors: is for --mode color"},
            {"trace @/in.png -o @/o.svg --cutout", 2, "--cutout: is for --mode color"},
            {"trace @/clear.png -o @/o.svg --mode color", 1, "transparent all over"},
            {"trace @/dot.pgm -o @/o.svg --mode color", 1, "no region is large enough"},
        },
        directory);
    OutputOf(
        {"trace", directory / "dot.pgm", "-o", directory / "o.svg", "--mode", "color", "--min-points", "0"});
}

}  // namespace
}  // namespace tarvex::app::test
